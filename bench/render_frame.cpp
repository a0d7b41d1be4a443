// A frame of MERIDON_render on the machine's Vulkan device (lavapipe in CI), headless at 1280 x 720: 10,000 crates
// of the example module's mesh in a square field, 16 point lights among them, seen from above one corner. Reports
// milliseconds per finished frame (real time), the module's CPU milliseconds spent gathering and recording, and its
// draw calls, which stay at one per distinct geometry however many crates there are.

#include "JsonLineReporter.h"

#include "content/render/RenderStats.h"
#include "game/Game.h"
#include "game/graphics/GameRenderer.h"
#include "game/graphics/LightSourceInstance.h"
#include "game/graphics/Mesh.h"
#include "game/graphics/RenderableInstance.h"
#include "modules/GAME_Mod.h"
#include "modules/SortedLists.h"

#include <dlfcn.h>
#include <glm/ext/matrix_transform.hpp>
#include <glm/matrix.hpp>

#include <memory>
#include <stdexcept>
#include <vector>

using game::graphics::LightSourceInstance;
using game::graphics::RenderableInstance;

namespace {

constexpr int kSide = 100;  // crates a row: 10,000 in all
constexpr double kSpacing = 2.0;
constexpr int kLights = 16;

void CratesWithLights(benchmark::State& state) {
    // Headless and without validation, which would cost more than what is measured.
    game::graphics::GameRenderer renderer(nullptr, "bench_render_frame", 1, quorl::vk::PhysicalDevice::Features{},
        false);
    Game::renderer = &renderer;
    auto const module = GAME_Mod::LoadModuleLib("MERIDON_render", "GAME_Mod", true, MERIDON_RENDER_MODULE);
    if (!module)
        throw std::runtime_error("MERIDON_render did not load");
    modules::SortGameModLists();
    auto const stats = reinterpret_cast<render::StatsFunction>(dlsym(module->handle, "MERIDON_render_Stats"));

    auto const crate = std::make_shared<game::graphics::Mesh>(MERIDON_EXAMPLE_ENTITIES "/crate.gltf");
    std::vector<std::shared_ptr<RenderableInstance>> crates;
    for (int x = 0; x < kSide; ++x) {
        for (int z = 0; z < kSide; ++z) {
            auto instance = RenderableInstance::Make<RenderableInstance>(1);
            for (auto const& geometry : crate->nodes.at("planks")) {
                instance->materials[geometry->material].push_back(unsigned(instance->geometries.size()));
                instance->geometries.push_back(geometry);
            }
            instance->CreateRenderableData();
            instance->flags.visible = 1;
            instance->transform = glm::translate(glm::dmat4(1.0), {x * kSpacing, 0.0, z * kSpacing});
            crates.push_back(instance);
        }
    }
    std::vector<std::shared_ptr<LightSourceInstance>> lights;
    for (int i = 0; i < kLights; ++i)
        lights.push_back(LightSourceInstance::Make(glm::vec3((i % 4) * 12.0f + 4.0f, 2.0f, (i / 4) * 12.0f + 4.0f),
            0.1f, glm::vec3(0.0f, -1.0f, 0.0f), 0.0f, glm::vec3(1.0f, 0.8f, 0.6f), 50.0f));
    glm::dvec3 const eye(-10.0, 25.0, -10.0);
    renderer.frame.cameraMatrix = glm::inverse(glm::lookAtRH(eye, glm::dvec3(60.0, 0.0, 60.0), {0.0, 1.0, 0.0}));
    renderer.frame.cameraPosition = eye;

    renderer.StartRendering();
    renderer.RenderFrame();
    double recordMilliseconds = 0.0;
    for (auto _ : state) {
        renderer.RenderFrame();
        recordMilliseconds += stats()->recordMilliseconds;
    }
    // Each frame waits for the one before it in its slot, so the loop runs at the GPU's pace; the last is waited for
    // outside the timing, one frame in many.
    vkDeviceWaitIdle(renderer.device->handle);
    state.counters["crates"] = double(crates.size());
    state.counters["lights"] = kLights;
    state.counters["draw_calls"] = stats()->drawCalls;
    state.counters["record_ms"] = recordMilliseconds / double(state.iterations());
    renderer.StopRendering();
    crates.clear();
    lights.clear();
    GAME_Mod::UnloadModules();
    Game::renderer = nullptr;
}

}

// real_ns is the time of a frame.
BENCHMARK(CratesWithLights)->UseRealTime()->MinTime(5.0);

int main(int argc, char** argv) {
    RunBenchmarks(argc, argv);
}
