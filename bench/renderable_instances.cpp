// What the world's GPU records cost on the machine's Vulkan device (lavapipe in CI): 10,000 mesh instances made,
// each with its override records, and dropped; and one colour change through a setter.

#include "JsonLineReporter.h"

#include "game/Game.h"
#include "game/graphics/GameRenderer.h"
#include "game/graphics/RenderableInstance.h"

#include <memory>
#include <vector>

using game::graphics::RenderableInstance;

namespace {

constexpr int instanceCount = 10'000;

/// Headless and without validation, which would cost more than what is measured.
game::graphics::GameRenderer& TheRenderer() {
    static game::graphics::GameRenderer renderer(nullptr, "bench_renderable_instances", 1,
        quorl::vk::PhysicalDevice::Features{}, false);
    Game::renderer = &renderer;
    return renderer;
}

/// An instance as a mesh node makes it: shared geometry, and override records of its own.
std::shared_ptr<RenderableInstance> MeshInstance(std::shared_ptr<RenderableInstance::GeometryInterface> const& mesh) {
    auto instance = RenderableInstance::Make<RenderableInstance>(1);
    instance->geometries.push_back(mesh);
    instance->materials["paint"] = {0};
    instance->CreateRenderableData();
    return instance;
}

void InstancesMadeAndDropped(benchmark::State& state) {
    TheRenderer();
    auto const mesh = std::make_shared<RenderableInstance::TriangleGeometry>(3, 3);
    std::vector<std::shared_ptr<RenderableInstance>> instances(instanceCount);
    for (auto _ : state) {
        for (auto& instance : instances) {
            instance = MeshInstance(mesh);
        }
        for (auto& instance : instances) {
            instance.reset();
        }
    }
    state.counters["instances"] = instanceCount;
}

void ColourChange(benchmark::State& state) {
    TheRenderer();
    auto const instance = MeshInstance(std::make_shared<RenderableInstance::TriangleGeometry>(3, 3));
    float red = 0.0f;
    for (auto _ : state) {
        benchmark::DoNotOptimize(instance->SetColor("paint", {red, 0.5f, 0.5f, 1.0f}, 1.0f));
        red += 1e-6f;
    }
}

BENCHMARK(InstancesMadeAndDropped);
BENCHMARK(ColourChange);

}

int main(int argc, char** argv) {
    RunBenchmarks(argc, argv);
    Game::renderer = nullptr;
}
