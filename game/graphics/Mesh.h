#pragma once

#include "game/Export.h"
#include "game/graphics/RenderableInstance.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quorl::vk {
class Buffer;
class Device;
}

namespace game::graphics {

/// One glTF 2.0 file with external binary buffers, loaded into GPU buffers. Each primitive becomes a Geometry whose
/// streams are device addresses into the file's own layout: nothing is interleaved, reordered or converted, so
/// positions must be tightly packed floats (a stride of 12). Scene graph, transforms, textures and animation are not
/// read. Made with std::make_shared on a loading thread and shared as std::shared_ptr<const Mesh>.
///
/// A malformed file throws from the constructor, before any address is kept: the JSON library's errors for bad
/// syntax, missing keys, wrong types and array indices past the end; std::out_of_range for a buffer index past the
/// end, and, naming the file, for a byteLength, count or byteOffset that is no whole number (or a byteLength of 0), a
/// stream without a size glTF defines, a stream with fewer elements than the positions, and a stream that would reach
/// past its buffer; std::runtime_error, naming the file, for a mesh file that can't be opened and a buffer that is no
/// relative file name or is larger than the device allocates. A binary file that is missing or short is no error:
/// its buffer keeps what it holds past what was read.
class MERIDON_EXPORT Mesh {
public:
    class Geometry;

    /// Loads `path` onto the renderer's device (RenderDevice()).
    explicit Mesh(std::string const& path);
    /// Loads `path` onto `device`, for tools that have a device but no game renderer.
    Mesh(std::string const& path, quorl::vk::Device* device);

    /// The primitives of every node that has a mesh, by node name; nodes of one name pool theirs.
    std::map<std::string, std::vector<std::shared_ptr<Geometry>>> nodes;
    /// One buffer per glTF buffer, in the file's order, which keeps what the geometries point at alive.
    std::vector<std::shared_ptr<quorl::vk::Buffer>> buffers;
};

/// One glTF primitive: triangles whose streams all lie in one buffer, the one that holds the positions. Material
/// fields start as the file's factors; the monitor texture is the renderer's default texture ("no texture").
class MERIDON_EXPORT Mesh::Geometry : public RenderableInstance::GeometryInterface {
public:
    uint64_t GetPrimitiveCount() const override { return primitiveCount; }
    uint64_t GetPrimitiveStride() const override { return primitiveStride; }
    uint64_t GetIndexCount() const override { return indexCount; }
    uint64_t GetPrimitivesAddr() const override { return positions; }
    uint64_t GetIndicesAddr() const override { return indices; }
    uint64_t GetIndexStride() const override { return indexStride; }

    /// The buffer of the positions, and so of every other stream.
    std::shared_ptr<quorl::vk::Buffer> buffer;
    /// Device address of the first position.
    uint64_t positions = 0;
    /// Three floats a vertex, the only layout read.
    uint64_t primitiveStride = 12;
    /// Vertices: the POSITION accessor's count.
    uint64_t primitiveCount = 0;
    /// Device address of the first index; 0 without indices.
    uint64_t indices = 0;
    /// 2 or 4; 0 without indices or for indices of another component type.
    uint64_t indexStride = 0;
    uint64_t indexCount = 0;
    /// The glTF material's name, the key of the instance's override setters; empty without a material.
    std::string material;
};

}
