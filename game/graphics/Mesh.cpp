#include "game/graphics/Mesh.h"

#include "engine/renderer/QuorlRenderer.h"
#include "engine/vk/Buffer.h"
#include "engine/vk/Device.h"
#include "game/graphics/RenderDevice.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

// The loader reads a fixed subset of glTF 2.0 and lets the JSON library's and the standard library's own errors
// leave the constructor. On top of that it checks every stream against its buffer before it keeps the address: a
// rendering module dereferences these addresses on the GPU, where reading past a buffer is no exception but a lost
// device or another object's memory.

namespace game::graphics {

namespace {

using nlohmann::json;
using Slot = uint64_t RenderableInstance::GeometryInterface::*;

constexpr uint64_t kPositionStride = 12;

// ---- Numbers from the file -----------------------------------------------------------------------------------------

/// 2^64, the first double past every uint64_t.
constexpr double kPastUint64 = 18446744073709551616.0;

/// An array index as the JSON library reads it, except for a floating-point number outside the range of size_t,
/// whose conversion C++ leaves undefined: that becomes an index that no array has, so that `at` refuses it.
size_t Index(json const& value) {
    if (!value.is_number_float()) {
        return value.get<size_t>();
    }
    double const number = value.get<double>();
    return number >= 0.0 && number < kPastUint64 ? static_cast<size_t>(number) : std::numeric_limits<size_t>::max();
}

/// A count, offset or length: a whole JSON number from 0 to 2^64 - 1. A negative or fractional one would wrap or
/// truncate into a plausible-looking value.
std::optional<uint64_t> WholeNumber(json const& value) {
    if (value.is_number_unsigned()) {
        return value.get<uint64_t>();
    }
    if (value.is_number_float()) {
        double const number = value.get<double>();
        if (number >= 0.0 && number < kPastUint64 && std::floor(number) == number) {
            return static_cast<uint64_t>(number);
        }
    }
    return std::nullopt; // negative integers, and whatever is no number
}

/// Bytes of one element of an accessor, as glTF lays out its componentType and type; 0 for a pair that glTF doesn't
/// define. Compared as JSON values, so that no number of the file is ever converted.
uint64_t ElementSize(json const& accessor) {
    static constexpr std::pair<int, uint64_t> kComponentBytes[] = {
        {5120, 1}, {5121, 1}, {5122, 2}, {5123, 2}, {5125, 4}, {5126, 4}};
    static constexpr std::pair<std::string_view, uint64_t> kComponents[] = {
        {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT2", 4}, {"MAT3", 9}, {"MAT4", 16}};
    auto const componentType = accessor.find("componentType");
    auto const type = accessor.find("type");
    if (componentType == accessor.end() || type == accessor.end() || !type->is_string()) {
        return 0;
    }
    uint64_t bytes = 0;
    for (auto const& [code, size] : kComponentBytes) {
        if (*componentType == code) {
            bytes = size;
        }
    }
    for (auto const& [name, count] : kComponents) {
        if (type->get_ref<std::string const&>() == name) {
            return bytes * count;
        }
    }
    return 0;
}

/// The largest buffer that `device` promises to allocate. Beyond it drivers differ: some fail cleanly, others
/// (lavapipe among them) pass the size on to the host's allocator.
VkDeviceSize LargestAllocation(quorl::vk::Device const* device) {
    VkPhysicalDeviceMaintenance3Properties maintenance3{};
    maintenance3.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_MAINTENANCE_3_PROPERTIES;
    VkPhysicalDeviceProperties2 properties{};
    properties.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PROPERTIES_2;
    properties.pNext = &maintenance3;
    vkGetPhysicalDeviceProperties2(device->physicalDevice.handle, &properties);
    return maintenance3.maxMemoryAllocationSize;
}

// ---- One load ------------------------------------------------------------------------------------------------------

/// The document being read into a mesh.
class Loader {
public:
    Loader(std::string const& path, Mesh& mesh, quorl::vk::Device* device)
        : _path(path)
        , _mesh(mesh)
        , _device(device) {
        std::ifstream file(path);
        if (!file) {
            throw std::runtime_error(path + ": cannot open the mesh file");
        }
        _root = json::parse(file);
    }

    void LoadBuffers();
    void ReadNodes();

private:
    std::shared_ptr<Mesh::Geometry> ReadPrimitive(json const& primitive) const;
    void ReadMaterial(json const& primitive, Mesh::Geometry& geometry) const;
    uint64_t Count(size_t accessor) const;
    uint64_t Address(size_t buffer, size_t accessor, uint64_t elementSize, uint64_t count) const;
    uint64_t CheckedElementSize(size_t accessor) const;

    json const& Accessor(size_t index) const { return _root.at("accessors").at(index); }
    json const& ViewOf(json const& accessor) const {
        return _root.at("bufferViews").at(Index(accessor.at("bufferView")));
    }
    std::string AccessorName(size_t index) const { return _path + ": accessor " + std::to_string(index); }

    std::string const& _path;
    Mesh& _mesh;
    quorl::vk::Device* _device;
    json _root;
};

// ---- Buffers -------------------------------------------------------------------------------------------------------

void Loader::LoadBuffers() {
    VkDeviceSize const largest = LargestAllocation(_device);
    std::filesystem::path const directory = std::filesystem::path(_path).parent_path();
    for (json const& entry : _root.at("buffers")) {
        std::string const name = _path + ": buffer " + std::to_string(_mesh.buffers.size());
        json const& lengthValue = entry.at("byteLength");
        // Vulkan has no empty buffers, and glTF none either.
        std::optional<uint64_t> const byteLength = WholeNumber(lengthValue);
        if (!byteLength || *byteLength == 0) {
            throw std::out_of_range(name + " has byteLength " + lengthValue.dump() + ", which is no size");
        }
        if (*byteLength > largest) {
            throw std::runtime_error(name + " has byteLength " + std::to_string(*byteLength) +
                ", more than the device allocates at once (" + std::to_string(largest) + ")");
        }
        std::string const uri = entry.at("uri").get<std::string>();
        // Buffers are files beside the glTF file, read straight into GPU memory: an embedded one would need a
        // decoding copy, and an absolute path would read whatever file a downloaded mesh names.
        if (uri.starts_with("data:")) {
            throw std::runtime_error(name + " is a data: URI; only binary files beside the glTF file are read");
        }
        if (std::filesystem::path(uri).is_absolute()) {
            throw std::runtime_error(
                name + "'s uri \"" + uri + "\" is an absolute path; only binary files beside the glTF file are read");
        }

        auto buffer = std::make_shared<quorl::vk::Buffer>(_device, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, kGeometryUsage,
            *byteLength, VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT);
        _device->SetDebugName(buffer->allocation, uri);
        // A missing or short file is no error: the read stops, and the buffer keeps what it holds beyond.
        std::ifstream binary(directory / uri, std::ios::binary);
        binary.read(static_cast<char*>(buffer->Map()), static_cast<std::streamsize>(*byteLength));
        buffer->Flush();
        _mesh.buffers.push_back(std::move(buffer));
    }
}

// ---- Streams -------------------------------------------------------------------------------------------------------

uint64_t Loader::Count(size_t accessor) const {
    json const& value = Accessor(accessor).at("count");
    std::optional<uint64_t> const count = WholeNumber(value);
    if (!count) {
        throw std::out_of_range(AccessorName(accessor) + " has count " + value.dump() + ", which is no element count");
    }
    return *count;
}

uint64_t Loader::CheckedElementSize(size_t accessor) const {
    uint64_t const size = ElementSize(Accessor(accessor));
    if (size == 0) {
        throw std::out_of_range(
            AccessorName(accessor) + " has a componentType and type that glTF gives no size, so it can't be bounded");
    }
    return size;
}

/// The address of accessor `accessor`'s first element: the address of `buffer`, the buffer of the primitive's
/// positions, plus its view's and its own byteOffset. It is kept only once the first element's address and `count`
/// elements of `elementSize` bytes from it lie inside that buffer.
uint64_t Loader::Address(size_t buffer, size_t accessor, uint64_t elementSize, uint64_t count) const {
    json const& entry = Accessor(accessor);
    json const& view = ViewOf(entry);
    uint64_t const byteLength = _mesh.buffers[buffer]->size;
    uint64_t offset = 0;
    for (json const* part : {&view, &entry}) {
        auto const found = part->find("byteOffset");
        if (found == part->end()) {
            continue;
        }
        std::optional<uint64_t> const byteOffset = WholeNumber(*found);
        if (!byteOffset) {
            throw std::out_of_range(AccessorName(accessor) + (part == &view ? "'s bufferView" : "") +
                " has byteOffset " + found->dump() + ", which is no byte offset");
        }
        if (*byteOffset >= byteLength - offset) {
            throw std::out_of_range(AccessorName(accessor) + " starts past the end of buffer " +
                std::to_string(buffer) + " (" + std::to_string(byteLength) + " bytes)");
        }
        offset += *byteOffset;
    }
    if (count > (byteLength - offset) / elementSize) {
        throw std::out_of_range(AccessorName(accessor) + " reaches past the end of buffer " + std::to_string(buffer) +
            ": " + std::to_string(count) + " elements of " + std::to_string(elementSize) + " bytes from byte " +
            std::to_string(offset) + " of " + std::to_string(byteLength));
    }
    return _mesh.buffers[buffer]->address + offset;
}

// ---- Nodes and primitives ------------------------------------------------------------------------------------------

void Loader::ReadNodes() {
    for (json const& node : _root.at("nodes")) {
        if (!node.contains("mesh")) {
            continue;
        }
        std::string const name = node.at("name").get<std::string>();
        json const& primitives = _root.at("meshes").at(Index(node.at("mesh"))).at("primitives");
        auto& geometries = _mesh.nodes[name];
        for (json const& primitive : primitives) {
            geometries.push_back(ReadPrimitive(primitive));
        }
    }
}

/// The slot of an optional vertex stream: COLOR_0's follows its component type, and one of another type has none.
Slot StreamSlot(std::string_view attribute, json const& accessor) {
    using Geometry = RenderableInstance::GeometryInterface;
    if (attribute == "NORMAL") {
        return &Geometry::normals;
    }
    if (attribute == "TEXCOORD_0") {
        return &Geometry::texCoords0;
    }
    if (attribute == "TEXCOORD_1") {
        return &Geometry::texCoords1;
    }
    json const& componentType = accessor.at("componentType");
    return componentType == 5121 ? &Geometry::colors8 : componentType == 5126 ? &Geometry::colorsFloat : nullptr;
}

std::shared_ptr<Mesh::Geometry> Loader::ReadPrimitive(json const& primitive) const {
    auto geometry = std::make_shared<Mesh::Geometry>();
    json const& attributes = primitive.at("attributes");

    // Every stream of a primitive lies in the buffer of its positions: that buffer's address is their base.
    size_t const positions = Index(attributes.at("POSITION"));
    size_t const buffer = Index(ViewOf(Accessor(positions)).at("buffer"));
    geometry->buffer = _mesh.buffers.at(buffer);
    geometry->primitiveCount = Count(positions);
    geometry->positions = Address(buffer, positions, kPositionStride, geometry->primitiveCount);

    if (primitive.contains("indices")) {
        size_t const indices = Index(primitive.at("indices"));
        json const& componentType = Accessor(indices).at("componentType");
        if (componentType == 5123) {
            geometry->type = Mesh::Geometry::kTriangles16;
            geometry->indexStride = 2;
        } else if (componentType == 5125) {
            geometry->type = Mesh::Geometry::kTriangles32;
            geometry->indexStride = 4;
        }
        geometry->indexCount = Count(indices);
        geometry->indices = Address(buffer, indices, CheckedElementSize(indices), geometry->indexCount);
    }

    for (char const* attribute : {"NORMAL", "COLOR_0", "TEXCOORD_0", "TEXCOORD_1"}) {
        if (!attributes.contains(attribute)) {
            continue;
        }
        size_t const accessor = Index(attributes.at(attribute));
        Slot const slot = StreamSlot(attribute, Accessor(accessor));
        if (!slot) {
            continue;
        }
        // Shaders fetch one element per vertex, so a stream shorter than the positions would be read past its end.
        uint64_t const count = Count(accessor);
        if (count < geometry->primitiveCount) {
            throw std::out_of_range(AccessorName(accessor) + " holds " + std::to_string(count) + " elements for " +
                std::to_string(geometry->primitiveCount) + " vertices");
        }
        (*geometry).*slot = Address(buffer, accessor, CheckedElementSize(accessor), count);
    }

    ReadMaterial(primitive, *geometry);
    geometry->monitorTexture = quorl::renderer::QuorlRenderer::kDefaultTextureIndex;
    return geometry;
}

void Loader::ReadMaterial(json const& primitive, Mesh::Geometry& geometry) const {
    geometry.color = glm::vec4(1.0f);
    geometry.metallic = 0.0f;
    geometry.roughness = 1.0f;
    if (!primitive.contains("material")) {
        return;
    }
    json const& material = _root.at("materials").at(Index(primitive.at("material")));
    geometry.material = material.at("name").get<std::string>();
    if (material.contains("pbrMetallicRoughness")) {
        json const& pbr = material.at("pbrMetallicRoughness");
        if (pbr.contains("baseColorFactor")) {
            json const& factor = pbr.at("baseColorFactor");
            for (int i = 0; i < 4; ++i) {
                geometry.color[i] = factor.at(i).get<float>();
            }
        }
        if (pbr.contains("metallicFactor")) {
            geometry.metallic = pbr.at("metallicFactor").get<float>();
        }
        if (pbr.contains("roughnessFactor")) {
            geometry.roughness = pbr.at("roughnessFactor").get<float>();
        }
    }
    if (material.contains("emissiveFactor")) {
        json const& factor = material.at("emissiveFactor");
        for (int i = 0; i < 3; ++i) {
            geometry.emission[i] = factor.at(i).get<float>();
        }
    }
}

}

// ---- Mesh ----------------------------------------------------------------------------------------------------------

Mesh::Mesh(std::string const& path) : Mesh(path, RenderDevice()) {}

Mesh::Mesh(std::string const& path, quorl::vk::Device* device) {
    Loader loader(path, *this, device);
    loader.LoadBuffers();
    loader.ReadNodes();
}

}
