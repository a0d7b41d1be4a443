// What loading a glTF mesh of one million triangles costs on the machine's Vulkan device (lavapipe in CI), against a
// plain read() of the same binary file into memory, which is the floor: the loader reads the file straight into
// mapped GPU memory. Both read from the page cache.

#include "JsonLineReporter.h"

#include "engine/vk/Device.h"
#include "game/graphics/Mesh.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// A grid of 1000 x 500 quads in two triangles each: positions, normals and 32-bit indices.
constexpr uint32_t kColumns = 1000;
constexpr uint32_t kRows = 500;
constexpr uint32_t kVertices = (kColumns + 1) * (kRows + 1);
constexpr uint32_t kTriangles = 2 * kColumns * kRows;

/// Without validation, which would cost more than the load.
quorl::vk::Device& TheDevice() {
    static quorl::vk::Device device([] {
        quorl::vk::Device::CreateInfo info;
        info.features.vulkan12.bufferDeviceAddress = VK_TRUE;
        return info;
    }());
    return device;
}

/// Writes grid.gltf and grid.bin into a folder of their own, once; the path of grid.gltf.
std::filesystem::path const& GridMesh() {
    static std::filesystem::path const path = [] {
        auto const folder = std::filesystem::temp_directory_path() / ("meridon-bench-mesh-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
        std::vector<float> positions, normals;
        std::vector<uint32_t> indices;
        for (uint32_t row = 0; row <= kRows; ++row) {
            for (uint32_t column = 0; column <= kColumns; ++column) {
                positions.insert(positions.end(), {float(column), 0.0f, float(row)});
                normals.insert(normals.end(), {0.0f, 1.0f, 0.0f});
            }
        }
        for (uint32_t row = 0; row < kRows; ++row) {
            for (uint32_t column = 0; column < kColumns; ++column) {
                uint32_t const corner = row * (kColumns + 1) + column;
                uint32_t const above = corner + kColumns + 1;
                indices.insert(indices.end(), {corner, above, corner + 1, corner + 1, above, above + 1});
            }
        }
        size_t const positionBytes = positions.size() * 4, indexBytes = indices.size() * 4;
        std::ofstream bin(folder / "grid.bin", std::ios::binary);
        bin.write(reinterpret_cast<char const*>(positions.data()), static_cast<std::streamsize>(positionBytes));
        bin.write(reinterpret_cast<char const*>(normals.data()), static_cast<std::streamsize>(positionBytes));
        bin.write(reinterpret_cast<char const*>(indices.data()), static_cast<std::streamsize>(indexBytes));
        std::string const n = std::to_string(kVertices);
        std::ofstream(folder / "grid.gltf")
            << R"({"buffers": [{"uri": "grid.bin", "byteLength": )" << 2 * positionBytes + indexBytes << R"(}],
                "bufferViews": [{"buffer": 0}, {"buffer": 0, "byteOffset": )" << positionBytes << R"(},
                    {"buffer": 0, "byteOffset": )" << 2 * positionBytes << R"(}],
                "accessors": [{"bufferView": 0, "componentType": 5126, "count": )" << n << R"(, "type": "VEC3"},
                    {"bufferView": 1, "componentType": 5126, "count": )" << n << R"(, "type": "VEC3"},
                    {"bufferView": 2, "componentType": 5125, "count": )" << indices.size() << R"(, "type": "SCALAR"}],
                "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "NORMAL": 1}, "indices": 2}]}],
                "nodes": [{"name": "Grid", "mesh": 0}]})";
        return folder / "grid.gltf";
    }();
    return path;
}

uint64_t BinaryBytes() {
    return std::filesystem::file_size(std::filesystem::path(GridMesh()).replace_filename("grid.bin"));
}

void LoadMesh(benchmark::State& state) {
    std::string const path = GridMesh().string();
    auto& device = TheDevice();
    for (auto _ : state) {
        game::graphics::Mesh mesh(path, &device);
        if (mesh.nodes.at("Grid").front()->GetIndexCount() != 3ull * kTriangles)
            throw std::logic_error("the grid lost triangles");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * BinaryBytes()));
    state.counters["triangles"] = kTriangles;
}

void PlainRead(benchmark::State& state) {
    std::string const path = std::filesystem::path(GridMesh()).replace_filename("grid.bin").string();
    uint64_t const bytes = BinaryBytes();
    auto const memory = std::make_unique<char[]>(bytes);
    for (auto _ : state) {
        char* const target = memory.get();
        int const file = open(path.c_str(), O_RDONLY);
        uint64_t done = 0;
        while (done < bytes) {
            ssize_t const got = read(file, target + done, bytes - done);
            if (got <= 0)
                break;
            done += static_cast<uint64_t>(got);
        }
        close(file);
        benchmark::DoNotOptimize(target);
        if (done != bytes)
            throw std::runtime_error("short read of " + path);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

}

BENCHMARK(LoadMesh);
BENCHMARK(PlainRead);

int main(int argc, char** argv) {
    RunBenchmarks(argc, argv);
    std::filesystem::remove_all(GridMesh().parent_path());
}
