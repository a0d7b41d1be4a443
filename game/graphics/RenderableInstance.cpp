#include "game/graphics/RenderableInstance.h"

#include "engine/vk/Device.h"
#include "game/graphics/RenderDevice.h"

#include <cstring>

namespace game::graphics {

std::vector<std::weak_ptr<RenderableInstance>> RenderableInstance::_sharedObjects;
quorl::SharedMutex RenderableInstance::_sharedObjectsMutex;

namespace {

/// A named buffer of `count` records on the renderer's device.
template<class T>
std::shared_ptr<InstanceBuffer<T>> MakeBuffer(VkBufferUsageFlags usage, unsigned long count, char const* name) {
    auto* device = RenderDevice();
    auto buffer = std::make_shared<InstanceBuffer<T>>(device, usage, count);
    device->SetDebugName(buffer->allocation, name);
    return buffer;
}

}

// ---- Instances -----------------------------------------------------------------------------------------------------

RenderableInstance::RenderableInstance(uint32_t customIndex) : customIndex(customIndex) {}

RenderableInstance::RenderableInstance(std::shared_ptr<RenderableInstance> source, glm::dmat4 const& transform)
    : customIndex(source->customIndex)
    , transform(transform)
    , flags(source->flags)
    , firstGeometry(source->firstGeometry)
    , isClone(true) {
    if (source.get() != this) {
        geometries = source->geometries;
    }
    if (!firstGeometry && !geometries.empty()) {
        firstGeometry = geometries.front();
    }
}

void RenderableInstance::CreateRenderableData() {
    if (geometries.empty()) {
        return; // Vulkan has no empty buffers, and there is nothing to override.
    }
    renderableData = MakeBuffer<RenderableData>(VK_BUFFER_USAGE_STORAGE_BUFFER_BIT, geometries.size(), "RenderableData");
    records = renderableData->data;
    std::memset(records, 0, geometries.size() * sizeof(RenderableData));
    renderableDataAddress = renderableData->address;
}

template<class Write>
bool RenderableInstance::WriteRecords(std::string const& material, Write const& write) {
    if (!renderableData) {
        return false;
    }
    auto const found = materials.find(material);
    if (found == materials.end()) {
        return false;
    }
    for (unsigned int const index : found->second) {
        write(records[index]);
    }
    return true;
}

bool RenderableInstance::SetEmission(std::string const& material, glm::vec3 const& emission) {
    return WriteRecords(material, [&](RenderableData& record) { record.emission = emission; });
}

bool RenderableInstance::SetColor(std::string const& material, glm::vec4 const& color, float mix) {
    return WriteRecords(material, [&](RenderableData& record) {
        record.colorMix = mix;
        record.color = color;
    });
}

bool RenderableInstance::SetPbrMetallicRoughness(std::string const& material, float metallic, float roughness,
    float mix) {
    return WriteRecords(material, [&](RenderableData& record) {
        record.metallic = metallic;
        record.roughness = roughness;
        record.pbrMix = mix;
    });
}

bool RenderableInstance::SetMonitorTexture(std::string const& material, unsigned int textureIndex,
    glm::vec3 const& color) {
    return WriteRecords(material, [&](RenderableData& record) {
        record.emission = color;
        record.monitorTexture = textureIndex;
    });
}

// ---- Geometries ----------------------------------------------------------------------------------------------------

uint64_t RenderableInstance::GeometryInterface::GetIndexStride() const {
    return type == kTriangles16 ? 2 : type == kTriangles32 ? 4 : 0;
}

RenderableInstance::AabbGeometry::AabbGeometry(unsigned long count)
    : boxes(MakeBuffer<AabbData>(kGeometryUsage, count, "AabbGeometry boxes")) {
    type = kBoxes;
}

uint64_t RenderableInstance::AabbGeometry::GetPrimitiveCount() const {
    return boxes ? boxes->count : 0;
}

uint64_t RenderableInstance::AabbGeometry::GetPrimitivesAddr() const {
    return boxes ? boxes->address : 0;
}

RenderableInstance::TriangleGeometry::TriangleGeometry(unsigned long vertexCount, unsigned long indexCount) {
    type = indexCount == 0 ? kTriangles : vertexCount >= 1 && vertexCount <= 65536 ? kTriangles16 : kTriangles32;
    // A half-built geometry releases what it made through these shared pointers when a later buffer fails.
    if (vertexCount > 0) {
        vertices = MakeBuffer<glm::vec3>(kGeometryUsage, vertexCount, "TriangleGeometry vertices");
    }
    if (type == kTriangles32) {
        indices32 = MakeBuffer<unsigned int>(kGeometryUsage, indexCount, "TriangleGeometry indices32");
    } else if (type == kTriangles16) {
        indices16 = MakeBuffer<unsigned short>(kGeometryUsage, indexCount, "TriangleGeometry indices16");
    }
}

void RenderableInstance::TriangleGeometry::CreateNormals() {
    if (vertices) {
        vertexNormals = MakeBuffer<glm::vec3>(kGeometryUsage, vertices->count, "TriangleGeometry normals");
        normals = vertexNormals->address;
    }
}

uint64_t RenderableInstance::TriangleGeometry::GetPrimitiveCount() const {
    return vertices ? vertices->count : 0;
}

uint64_t RenderableInstance::TriangleGeometry::GetIndexCount() const {
    if (type == kTriangles32 && indices32) {
        return indices32->count;
    }
    if (type == kTriangles16 && indices16) {
        return indices16->count;
    }
    return 0;
}

uint64_t RenderableInstance::TriangleGeometry::GetPrimitivesAddr() const {
    return vertices ? vertices->address : 0;
}

uint64_t RenderableInstance::TriangleGeometry::GetIndicesAddr() const {
    if (type == kTriangles32 && indices32) {
        return indices32->address;
    }
    if (type == kTriangles16 && indices16) {
        return indices16->address;
    }
    return 0;
}

}
