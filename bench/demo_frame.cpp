// A frame of the demo world as the player first sees it, headless at 1280 x 720 on the machine's Vulkan device
// (lavapipe in CI): the launcher's modules from the build's game tree, a new world played for five seconds, the
// camera at the spawn point looking over the crate pile, the lamps and the sea. Reports milliseconds per finished
// frame (real time), MERIDON_render's CPU milliseconds spent gathering and recording, and its draw calls.

#include "JsonLineReporter.h"

#include "content/render/RenderStats.h"
#include "tests/content/demo/DemoGame.h"

#include <dlfcn.h>

#include <optional>
#include <stdexcept>

namespace {

void DemoWorldFromSpawn(benchmark::State& state) {
    // Headless and without validation, which would cost more than what is measured.
    game::graphics::GameRenderer renderer(nullptr, "bench_demo_frame", 1, quorl::vk::PhysicalDevice::Features{},
        false);
    Game::renderer = &renderer;
    Game::_is_server = true;
    Game::isActive = true;
    std::optional<DemoGame> demo;
    demo.emplace(MERIDON_GAME_MODULES, "bench-demo-frame");
    auto const stats = reinterpret_cast<render::StatsFunction>(
        dlsym(GAME_Mod::GetModule("MERIDON_render")->handle, "MERIDON_render_Stats"));
    DemoGame::LookFromSpawn(renderer);
    DemoGame::Play(5.0);
    if (!DemoGame::RenderUntilGroundShows(renderer))
        throw std::runtime_error("the planet's ground did not show");

    double recordMilliseconds = 0.0;
    for (auto _ : state) {
        renderer.RenderFrame();
        recordMilliseconds += stats()->recordMilliseconds;
    }
    // Each frame waits for the one before it in its slot, so the loop runs at the GPU's pace; the last is waited for
    // outside the timing, one frame in many.
    vkDeviceWaitIdle(renderer.device->handle);
    state.counters["instances"] = stats()->instances;
    state.counters["draw_calls"] = stats()->drawCalls;
    state.counters["record_ms"] = recordMilliseconds / double(state.iterations());
    demo.reset();
    GAME_Mod::UnloadModules();
    SERVER_Mod::UnloadModules();
    Game::renderer = nullptr;
}

}

// real_ns is the time of a frame.
BENCHMARK(DemoWorldFromSpawn)->UseRealTime()->MinTime(5.0);

int main(int argc, char** argv) {
    RunBenchmarks(argc, argv);
}
