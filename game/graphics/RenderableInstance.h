#pragma once

#include "engine/SharedMutex.h"
#include "engine/vk/Buffer.h"
#include "game/Export.h"
#include "game/graphics/SlotRegistry.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace game::graphics {

/// Per-geometry overrides of an instance, read by shaders at `index * 64` from the buffer's device address. Zero
/// means "no override".
struct RenderableData {
    glm::vec3 emission;
    float colorMix;
    glm::vec4 color;
    float pbrMix;
    float metallic;
    float roughness;
    uint32_t monitorTexture;
    uint8_t reserved[16];
};
static_assert(sizeof(RenderableData) == 64 && offsetof(RenderableData, colorMix) == 12
    && offsetof(RenderableData, color) == 16 && offsetof(RenderableData, pbrMix) == 32
    && offsetof(RenderableData, metallic) == 36 && offsetof(RenderableData, roughness) == 40
    && offsetof(RenderableData, monitorTexture) == 44 && offsetof(RenderableData, reserved) == 48);

/// One procedural box of an AabbGeometry; `payload` is the device address of what its intersection shader reads.
struct AabbData {
    glm::vec3 min;
    glm::vec3 max;
    uint64_t payload;
};
static_assert(sizeof(AabbData) == 32 && offsetof(AabbData, max) == 12 && offsetof(AabbData, payload) == 24);

/// Memory the host writes and the GPU reads, for every record of the world: device memory where the host can reach
/// it, written front to back.
template<class T>
using InstanceBuffer = quorl::vk::MappedBuffer<T, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
    VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT>;
/// Usage of geometry buffers: input of acceleration-structure builds, and storage for shaders that fetch vertices.
constexpr VkBufferUsageFlags kGeometryUsage =
    VK_BUFFER_USAGE_ACCELERATION_STRUCTURE_BUILD_INPUT_READ_ONLY_BIT_KHR | VK_BUFFER_USAGE_STORAGE_BUFFER_BIT;

/// One thing in the ray-traced scene: a transform, a list of geometries and their override records. The library
/// makes and moves instances; a rendering module walks `_sharedObjects` each frame and builds acceleration
/// structures from them. Instances are data with a fixed GPU-facing layout, not drawers.
class MERIDON_EXPORT RenderableInstance : public std::enable_shared_from_this<RenderableInstance> {
public:
    class GeometryInterface;
    class AabbGeometry;
    class TriangleGeometry;

    explicit RenderableInstance(uint32_t customIndex);
    /// A copy placed at `transform` that shares the source's geometries and has no override records of its own.
    RenderableInstance(std::shared_ptr<RenderableInstance> source, glm::dmat4 const& transform);
    virtual ~RenderableInstance() = default;
    RenderableInstance(RenderableInstance const&) = delete;
    RenderableInstance& operator=(RenderableInstance const&) = delete;

    /// Makes a T and enters it into `_sharedObjects`, in the first slot of a dead instance if there is one.
    template<class T, class... A>
    static std::shared_ptr<T> Make(A&&... arguments) {
        auto object = std::make_shared<T>(std::forward<A>(arguments)...);
        std::lock_guard lock(_sharedObjectsMutex);
        object->_id = TakeFirstFreeSlot<RenderableInstance>(_sharedObjects, object);
        return object;
    }

    /// Calls `visit(RenderableInstance&)` for every live instance, under the shared side of the registry: how a
    /// rendering module walks the world each frame.
    template<class Visit>
    static void ForEach(Visit&& visit) {
        ForEachLiveSlot(_sharedObjects, _sharedObjectsMutex, std::forward<Visit>(visit));
    }

    /// Gives the instance one zeroed override record per geometry, named "RenderableData".
    void CreateRenderableData();

    /// The override setters: each writes the records of every geometry listed under `material`. False, with
    /// nothing written, when the instance has no records or the material is unknown.
    bool SetEmission(std::string const& material, glm::vec3 const& emission);
    bool SetColor(std::string const& material, glm::vec4 const& color, float mix);
    bool SetPbrMetallicRoughness(std::string const& material, float metallic, float roughness, float mix);
    bool SetMonitorTexture(std::string const& material, unsigned int textureIndex, glm::vec3 const& color);
    /// The index GameRenderer::AddAimReference gave, which shaders write where the player aims.
    void SetAimID(unsigned int id) { aimId = id; }

    /// What the entity update sets each frame, in one word that clones copy.
    struct Flags {
        uint8_t visible = 0;
        uint8_t active = 0;
        /// The transform changed since the rendering module last read it.
        uint8_t moved = 0;
        /// Others may clone this instance; a mesh instance clears it.
        uint8_t cloneSource = 1;
    };

    size_t _id = 0;
    /// Picks the hit group in the shaders: 1 for meshes, 8 for plasma trails, 9 for light boxes.
    uint32_t customIndex;
    glm::dmat4 transform{1.0};
    Flags flags;
    std::shared_ptr<GeometryInterface> firstGeometry;
    std::shared_ptr<InstanceBuffer<RenderableData>> renderableData;
    RenderableData* records = nullptr;
    /// Geometry indices by material name, as the setters find them.
    std::map<std::string, std::vector<unsigned int>> materials;
    std::vector<std::shared_ptr<GeometryInterface>> geometries;
    /// The rendering module's acceleration structure of this instance.
    std::shared_ptr<void> accelerationStructure;
    uint32_t aimId = 0;
    uint64_t renderableDataAddress = 0;
    bool isClone = false;

    static std::vector<std::weak_ptr<RenderableInstance>> _sharedObjects;
    static quorl::SharedMutex _sharedObjectsMutex;

private:
    /// The records of `material`'s geometries, or none when there is no buffer or no such material.
    template<class Write>
    bool WriteRecords(std::string const& material, Write const& write);
};

/// What a rendering module needs of any geometry: its primitives and indices by device address.
class MERIDON_EXPORT RenderableInstance::GeometryInterface {
public:
    enum Type : uint32_t { kBoxes = 0, kTriangles = 1, kTriangles16 = 2, kTriangles32 = 3 };

    virtual ~GeometryInterface() = default;
    virtual uint64_t GetPrimitiveCount() const = 0;
    virtual uint64_t GetPrimitiveStride() const = 0;
    virtual uint64_t GetIndexCount() const = 0;
    virtual uint64_t GetPrimitivesAddr() const = 0;
    virtual uint64_t GetIndicesAddr() const = 0;
    /// 2 or 4 bytes for indexed triangles, 0 otherwise.
    virtual uint64_t GetIndexStride() const;

    uint32_t type = kTriangles;
    glm::vec4 color{1.0f};
    glm::vec3 emission{0.0f};
    uint32_t monitorTexture = 0;
    float metallic = 0.0f;
    float roughness = 0.0f;
    /// Device addresses of the optional vertex streams; 0 when absent.
    uint64_t texCoords0 = 0;
    uint64_t texCoords1 = 0;
    uint64_t normals = 0;
    uint64_t colors8 = 0;
    uint64_t colorsFloat = 0;
};

/// Procedural boxes, which intersection shaders fill: lights, plasma trails.
class MERIDON_EXPORT RenderableInstance::AabbGeometry : public GeometryInterface {
public:
    explicit AabbGeometry(unsigned long boxes);

    uint64_t GetPrimitiveCount() const override;
    uint64_t GetPrimitiveStride() const override { return sizeof(AabbData); }
    uint64_t GetIndexCount() const override { return 0; }
    uint64_t GetPrimitivesAddr() const override;
    uint64_t GetIndicesAddr() const override { return 0; }

    std::shared_ptr<InstanceBuffer<AabbData>> boxes;
};

/// Triangles whose vertices (and indices) the host writes. Indices are 16-bit when every vertex number fits, so
/// for 1 to 65536 vertices; no indices at all for an index count of 0.
class MERIDON_EXPORT RenderableInstance::TriangleGeometry : public GeometryInterface {
public:
    TriangleGeometry(unsigned long vertexCount, unsigned long indexCount);

    uint64_t GetPrimitiveCount() const override;
    uint64_t GetPrimitiveStride() const override { return sizeof(glm::vec3); }
    uint64_t GetIndexCount() const override;
    uint64_t GetPrimitivesAddr() const override;
    uint64_t GetIndicesAddr() const override;
    /// Gives every vertex a normal, which shaders read at `normals`; nothing for a geometry without vertices.
    void CreateNormals();

    std::shared_ptr<InstanceBuffer<glm::vec3>> vertices;
    std::shared_ptr<InstanceBuffer<glm::vec3>> vertexNormals;
    std::shared_ptr<InstanceBuffer<unsigned int>> indices32;
    std::shared_ptr<InstanceBuffer<unsigned short>> indices16;
};

}
