// What the planet's ground costs, with MERIDON_planet's own libraries on the machine's Vulkan device (lavapipe in
// CI): the time from the camera passing the rebuild distance to the new patch on show, which the worker spends
// making it, and the longest frame on the render thread meanwhile, whose stage copies the patch into GPU buffers and
// whose trash collection frees the old one. A plain main printing one JSON line, as the figures are of whole
// rebuilds; it runs in the tests' game tree, where the module lies.

#include "content/planet/GroundPatch.h"
#include "content/planet/Planet.h"
#include "game/Game.h"
#include "game/graphics/GameRenderer.h"
#include "game/graphics/RenderableInstance.h"
#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SortedLists.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <shared_mutex>
#include <thread>
#include <vector>

using Clock = std::chrono::steady_clock;

namespace {

constexpr int kRebuilds = 20;

double Milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

/// The instance on show: the ground's patch, the only instance there is.
game::graphics::RenderableInstance const* Shown() {
    std::shared_lock lock(game::graphics::RenderableInstance::_sharedObjectsMutex);
    for (auto const& slot : game::graphics::RenderableInstance::_sharedObjects)
        if (auto instance = slot.lock(); instance && instance->flags.visible)
            return instance.get();
    return nullptr;
}

}

int main() {
    // Headless and without validation, which would cost more than what is measured.
    game::graphics::GameRenderer renderer(nullptr, "bench_planet_ground", 1, quorl::vk::PhysicalDevice::Features{},
        false);
    Game::renderer = &renderer;
    auto content = MERIDON_Mod::LoadModule("MERIDON_planet", true);
    auto client = GAME_Mod::LoadModule("MERIDON_planet", true);
    if (!content || !client) {
        std::cerr << "bench_planet_ground: MERIDON_planet is not in modules/ of the working folder" << std::endl;
        return 1;
    }
    content->Load();
    modules::SortGameModLists();

    std::vector<double> rebuilds, longestStages;
    for (int rebuild = 0; rebuild <= kRebuilds; ++rebuild) {
        // Along the shore, so that every patch has land, the step and water to make.
        double const z = rebuild * 2.0 * planet::ground::kRebuildDistance;
        renderer.frame.cameraPosition = planet::AtAltitude(planet::kOceanStartX - 20.0, z, 1.7);
        auto const* before = Shown();
        auto const start = Clock::now();
        Clock::duration longest{};
        while (Shown() == before) {
            auto const stage = Clock::now();
            renderer.FrameBeforeUpdate();
            renderer.CollectTrash();
            longest = std::max(longest, Clock::now() - stage);
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        // The first also pays for the first allocations of the device's memory.
        if (rebuild > 0) {
            rebuilds.push_back(Milliseconds(Clock::now() - start));
            longestStages.push_back(Milliseconds(longest));
        }
    }

    client->Renderer_StopRendering();
    renderer.CollectAllTrash();
    content->Unload();
    GAME_Mod::UnloadModules();
    MERIDON_Mod::UnloadModules();
    Game::renderer = nullptr;

    std::cout << "{\"name\": \"planet_ground\", \"rebuilds\": " << kRebuilds
              << ", \"rebuild_ms_median\": " << Median(rebuilds)
              << ", \"rebuild_ms_max\": " << *std::max_element(rebuilds.begin(), rebuilds.end())
              << ", \"frame_stage_ms_median\": " << Median(longestStages)
              << ", \"frame_stage_ms_max\": " << *std::max_element(longestStages.begin(), longestStages.end())
              << "}" << std::endl;
}
