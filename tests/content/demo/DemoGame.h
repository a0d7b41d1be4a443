#pragma once

// The demo world as `meridon` plays it single player, in one process, for the tests and benchmarks that look at it:
// the launcher's default modules opened from the build's game tree, a new world seeded and the game started and
// stopped as the launcher does it, the server ticking at 30 Hz and the game loop passing twice a tick. The caller
// makes the renderer (Game::renderer) first; the loops run on the caller's thread, on a clock of their own.

#include "content/planet/Planet.h"
#include "engine/FPSCounter.h"
#include "game/Game.h"
#include "game/entity/SavedWorld.h"
#include "game/graphics/GameRenderer.h"
#include "game/graphics/RenderableInstance.h"
#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"
#include "modules/SortedLists.h"

#include <glm/ext/matrix_transform.hpp>
#include <glm/matrix.hpp>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <shared_mutex>
#include <stdexcept>
#include <string>

class DemoGame {
public:
    static constexpr double kTick = 1.0 / 30.0;
    static constexpr int kSubsteps = 4;
    static constexpr int kPassesPerTick = 2;

    /// Opens the modules under `modules` (a game tree's modules/ folder) and starts a new world named `world`.
    /// Throws std::runtime_error naming a library that did not open.
    DemoGame(std::string const& modules, std::string const& world) : _modules(modules) {
        Open<MERIDON_Mod>({"MERIDON_example", "MERIDON_planet"});
        Open<SERVER_Mod>({"MERIDON_demo", "MERIDON_link"});
        Open<GAME_Mod>({"MERIDON_link", "MERIDON_planet", "MERIDON_render"});
        modules::SortGameModLists();
        _realClock = quorl::FPSCounter::now;
        quorl::FPSCounter::now = &Now;
        Game::timeActive = false;
        Game::_current_world = world;
        Game::_mods.clear();  // opened above from the build's tree, not from the working folder's modules/
        std::filesystem::remove_all(game::entity::SavedWorld::Folder());
        Game::Start();
        _world.emplace();
        _world->Load();
        SERVER_Mod::CallHooks(&SERVER_Mod::Server_Load, world.c_str());
        Game::Ready();
        // The player stands on the planet: the sky and the client entities are the planet's.
        Game::parentEnvironmentId = planet::kEnvironmentId;
    }

    ~DemoGame() {
        _world->Close(false);
        _world.reset();
        Game::Stop();
        Game::parentEnvironmentId = 0;
        std::filesystem::remove_all(game::entity::SavedWorld::Folder());
        quorl::FPSCounter::now = _realClock;
    }

    DemoGame(DemoGame const&) = delete;
    DemoGame& operator=(DemoGame const&) = delete;

    /// Server ticks and game loop passes for `seconds` of game time, as the launcher's rates have them; no frame.
    static void Play(double seconds) {
        for (long tick = 0; tick < std::lround(seconds / kTick); ++tick) {
            Game::ServerUpdate(kTick, kSubsteps);
            for (int pass = 0; pass < kPassesPerTick; ++pass) {
                Clock() += std::chrono::duration_cast<quorl::FPSCounter::Clock::duration>(
                    std::chrono::duration<double>(kTick / kPassesPerTick));
                Game::mainRenderingFramerate.Tick();
                Game::Update(0.0);
                Game::ClientUpdate();
            }
        }
    }

    /// The camera where the player spawns: eyes 1.7 m over (0, 0), looking east (+x) level with the ground.
    static void LookFromSpawn(game::graphics::GameRenderer& renderer) {
        glm::dvec3 const eye = planet::AtAltitude(0.0, 0.0, 1.7);
        glm::dvec3 const up = glm::normalize(eye);
        glm::dvec3 const east = glm::normalize(glm::dvec3(1.0, 0.0, 0.0) - up * up.x);
        renderer.frame.cameraPosition = eye;
        renderer.frame.cameraMatrix = glm::inverse(glm::lookAtRH(eye, eye + east, up));
    }

    /// Renders frames until the planet's ground, which is made off the render thread, is on show, and returns its
    /// patch: the visible instance with a "ground" material. Null when none shows within a minute.
    static std::shared_ptr<game::graphics::RenderableInstance> RenderUntilGroundShows(
        game::graphics::GameRenderer& renderer) {
        using game::graphics::RenderableInstance;
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (std::chrono::steady_clock::now() < deadline) {
            renderer.RenderFrame();
            std::shared_lock lock(RenderableInstance::_sharedObjectsMutex);
            for (auto const& slot : RenderableInstance::_sharedObjects) {
                auto instance = slot.lock();
                if (instance && instance->flags.visible && instance->materials.contains("ground"))
                    return instance;
            }
        }
        return nullptr;
    }

private:
    static quorl::FPSCounter::Clock::time_point& Clock() {
        static quorl::FPSCounter::Clock::time_point clock;
        return clock;
    }
    static quorl::FPSCounter::Clock::time_point Now() { return Clock(); }

    template <class Module>
    void Open(std::initializer_list<char const*> names) {
        for (std::string const name : names) {
            std::string const library = _modules + "/" + name + "/" + name + "." + Module::CLASS;
            if (!Module::LoadModuleLib(name, Module::CLASS, true, library))
                throw std::runtime_error("cannot open " + library + ".so");
        }
    }

    std::string _modules;
    std::optional<game::entity::SavedWorld> _world;
    decltype(quorl::FPSCounter::now) _realClock = nullptr;
};
