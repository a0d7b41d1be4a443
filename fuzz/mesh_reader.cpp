// The glTF reader, which takes meshes from content modules and from downloads: any file either loads or throws, and
// every address that a loaded geometry hands to the GPU lies inside its buffer, positions and indices with all their
// elements. The inputs are the glTF text; each names the binary file "mesh.bin" beside it, or any other.

#include "engine/vk/Buffer.h"
#include "engine/vk/Device.h"
#include "game/graphics/Mesh.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

using game::graphics::Mesh;

namespace {

/// A folder per fuzzing process, so that parallel jobs do not read each other's files. Globals rather than function
/// statics: those would be destroyed before the exit handler that removes the folder runs.
std::filesystem::path folder;
std::string meshPath;
/// Made once: a device costs far more than a load. No validation layer, which would cost more still.
std::unique_ptr<quorl::vk::Device> device;

void RemoveFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

/// Aborts unless `address`, and `count` elements of `size` bytes from it, lie inside `buffer`. Divides rather than
/// multiplies, so that a count the loader let through cannot wrap into a small size here too.
void CheckInside(quorl::vk::Buffer const& buffer, uint64_t address, uint64_t count, uint64_t size) {
    if (address < buffer.address || address - buffer.address >= buffer.size)
        std::abort();
    if (size != 0 && count > (buffer.size - (address - buffer.address)) / size)
        std::abort();
}

}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    folder = std::filesystem::temp_directory_path() / ("meridon-fuzz-mesh-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    std::atexit(RemoveFolder);
    meshPath = (folder / "mesh.gltf").string();
    // 64 floats, as many bytes as the seeds' buffers declare.
    std::vector<float> floats(64);
    for (size_t i = 0; i < floats.size(); ++i)
        floats[i] = static_cast<float>(i) * 0.5f;
    std::ofstream(folder / "mesh.bin", std::ios::binary)
        .write(reinterpret_cast<char const*>(floats.data()), static_cast<std::streamsize>(floats.size() * 4));

    quorl::vk::Device::CreateInfo info;
    info.features.vulkan12.bufferDeviceAddress = VK_TRUE;
    device = std::make_unique<quorl::vk::Device>(info);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    std::ofstream(meshPath, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
    std::shared_ptr<Mesh const> mesh;
    try {
        mesh = std::make_shared<Mesh const>(meshPath, device.get());
    } catch (std::exception const&) {
        return 0;
    }
    for (auto const& [name, geometries] : mesh->nodes) {
        for (auto const& geometry : geometries) {
            quorl::vk::Buffer const& buffer = *geometry->buffer;
            CheckInside(buffer, geometry->positions, geometry->primitiveCount, 12);
            // Indices of a component type other than 16 and 32 bits have no stride: their address at least.
            if (geometry->indices != 0)
                CheckInside(buffer, geometry->indices, geometry->indexCount, geometry->indexStride);
            // What the other streams hold per element depends on their types in the file; their first one at least.
            for (uint64_t stream : {geometry->normals, geometry->texCoords0, geometry->texCoords1, geometry->colors8,
                     geometry->colorsFloat})
                if (stream != 0)
                    CheckInside(buffer, stream, 1, 1);
        }
    }
    return 0;
}
