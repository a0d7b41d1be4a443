// The launcher: owns the process and the loops, and drives the game library through Game's entry points.

#include "CommandLine.h"
#include "RenderLoop.h"
#include "LoopThread.h"
#include "ModuleSetup.h"
#include "StatusLine.h"
#include "VerboseReport.h"

#include "engine/graphics/WindowGlfw.h"
#include "engine/graphics/WindowHeadless.h"
#include "game/Game.h"
#include "game/GameSettings.h"
#include "game/graphics/GameRenderer.h"
#include "game/entity/SavedWorld.h"
#include "game/input/Joystick.h"
#include "modules/GAME_Init.h"
#include "modules/SERVER_Mod.h"
#include "modules/SortedLists.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>

namespace {

/// SIGINT and SIGTERM are blocked in every thread and taken by the main thread with sigtimedwait, so quitting
/// runs as ordinary code rather than inside a signal handler.
sigset_t BlockQuitSignals() {
    sigset_t quitSignals;
    sigemptyset(&quitSignals);
    sigaddset(&quitSignals, SIGINT);
    sigaddset(&quitSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &quitSignals, nullptr);
    return quitSignals;
}

/// The player's settings, beside the worlds in the data folder; a first run writes them with every default.
constexpr char kSettingsFolder[] = "../Meridon-data/client";
constexpr char kSettingsFile[] = "../Meridon-data/client/settings.ini";

/// Keeps Game::_joysticks in step with the window's joystick slots, a device per occupied slot, and polls each one:
/// a device plugged in appears at the next input pass, one pulled out is dropped.
void UpdateJoysticks() {
    constexpr int kSlots = 16;
    for (int slot = 0; slot < kSlots; ++slot) {
        bool const present = Game::window->GetJoystickGUID(slot) != nullptr;
        auto found = Game::_joysticks.find(slot);
        if (present && found == Game::_joysticks.end())
            Game::_joysticks.emplace(slot, std::make_shared<game::input::Joystick>(slot));
        else if (!present && found != Game::_joysticks.end())
            Game::_joysticks.erase(found);
    }
    for (auto const& [slot, joystick] : Game::_joysticks)
        joystick->InputUpdate();
}

std::vector<std::unique_ptr<LoopThread>> StartLoops(LauncherConfig const& config, game::entity::SavedWorld& world) {
    std::vector<std::unique_ptr<LoopThread>> loops;
    auto ticksLeft = std::make_shared<std::atomic<long>>(config.ticks);
    // With --ticks, the loop that counts quits the game after its last pass.
    auto countPass = [ticksLeft, limited = config.ticks > 0] {
        if (limited && --*ticksLeft <= 0)
            Game::Quit();
    };

    bool countGamePasses = !Game::_is_server;
    loops.push_back(std::make_unique<LoopThread>("game", config.gameHz, Game::gameFramerate, [=](double dt) {
        Game::Update(dt);
        Game::ClientUpdate();
        if (countGamePasses)
            countPass();
        return true;
    }));
    if (!config.server) {
        loops.push_back(std::make_unique<LoopThread>("input", config.inputHz, Game::inputFramerate, [](double dt) {
            UpdateJoysticks();
            Game::InputUpdate(dt);
            if (Game::InputMode() == 2)
                Game::InputUpdate_Station(dt);
            else
                Game::InputUpdate_Play(dt);
            return true;
        }));
    }
    if (Game::_is_server) {
        // The server steps by a fixed time so that the simulation does not depend on how the thread was scheduled.
        double step = config.serverHz > 0 ? 1.0 / config.serverHz : 0.0;
        int substeps = config.serverSubsteps;
        loops.push_back(std::make_unique<LoopThread>("server", config.serverHz, Game::serverFramerate,
                                                     [=, &world](double dt) {
                                                         Game::ServerUpdate(step > 0 ? step : dt, substeps);
                                                         world.AutosaveIfDue();
                                                         countPass();
                                                         return true;
                                                     }));
    }
    return loops;
}

/// A client's window: on the display when there is one, else a window without a screen, whose input stays idle.
/// A dedicated server has none.
std::unique_ptr<quorl::graphics::Window> OpenWindow(LauncherConfig const& config) {
    if (config.server)
        return nullptr;
    if (std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY")) {
        try {
            return std::make_unique<quorl::graphics::WindowGlfw>("Meridon", 1280, 720);
        } catch (std::exception const& error) {
            std::cerr << "meridon: running without a window: " << error.what() << std::endl;
        }
    }
    return std::make_unique<quorl::graphics::WindowHeadless>();
}

/// The client's renderer, presenting to the window or headless; null for a dedicated server, or when no Vulkan
/// device can be made, which is reported and leaves a client that runs without frames.
std::unique_ptr<game::graphics::GameRenderer> OpenRenderer(LauncherConfig const& config,
                                                           quorl::graphics::Window* window) {
    if (config.server)
        return nullptr;
#ifndef NDEBUG
    bool const validation = true;
#else
    bool const validation = config.validation;
#endif
    try {
        return std::make_unique<game::graphics::GameRenderer>(window, "Meridon", 1, quorl::vk::PhysicalDevice::Features{},
                                                              validation);
    } catch (std::exception const& error) {
        std::cerr << "meridon: running without a renderer: " << error.what() << std::endl;
        return nullptr;
    }
}

/// Waits for the loops to end: a quit signal, --seconds running out, closing the window, or a loop quitting the
/// game. Renders the frames and handles the window's events, which GLFW takes on this thread only, and redraws the
/// status line once a second.
void Supervise(LauncherConfig const& config, sigset_t const& quitSignals,
               std::vector<std::unique_ptr<LoopThread>> const& loops, quorl::graphics::WindowGlfw* window,
               RenderLoop* frames) {
    bool terminal = isatty(STDOUT_FILENO);
    bool showStatus = config.verbose || terminal;
    quorl::FPSCounter const* render = frames ? &Game::mainRenderingFramerate : nullptr;
    auto start = std::chrono::steady_clock::now();
    auto nextStatus = start + std::chrono::seconds(1);
    while (Game::isActive) {
        // A window's events wait no longer than a few milliseconds; without one the signals are all there is.
        long waitNs = window ? 4'000'000 : 50'000'000;
        if (frames)
            waitNs = std::min<long>(waitNs, static_cast<long>(frames->Poll() * 1e9));
        timespec wait{0, std::max(waitNs, 0L)};
        if (sigtimedwait(&quitSignals, nullptr, &wait) > 0) {
            Game::Quit();
            break;
        }
        if (window) {
            window->PollEvents();
            if (window->ShouldClose())
                Game::Quit();
        }
        auto now = std::chrono::steady_clock::now();
        if (config.seconds > 0 && now - start >= std::chrono::duration<double>(config.seconds))
            Game::Quit();
        if (showStatus && now >= nextStatus) {
            // A terminal redraws one line in place; a log gets a line per second.
            if (terminal)
                std::cout << '\r' << StatusLine(render, loops) << "\x1b[K" << std::flush;
            else
                std::cout << StatusLine(render, loops) << std::endl;
            nextStatus += std::chrono::seconds(1);
        }
    }
    if (showStatus && terminal)
        std::cout << std::endl;
}

/// Runs one step of the game's life. What it throws, a module's hook included, is reported and quits the game, so
/// that what follows takes the normal way down. False when it threw.
template <class Step>
bool Attempt(Step&& step) {
    try {
        step();
        return true;
    } catch (std::exception const& error) {
        std::cerr << "meridon: " << error.what() << std::endl;
    } catch (...) {
        std::cerr << "meridon: unknown exception" << std::endl;
    }
    Game::Quit();
    return false;
}

/// The game from its world's folders to Game::Stop. A failure on the way, in a start-up call, a loop or a frame,
/// quits the game and still takes the whole way down: the loops end and are joined, the world is unloaded, Stop
/// runs. False when anything failed.
bool RunGame(LauncherConfig const& config, sigset_t const& quitSignals, quorl::graphics::Window* window,
             RenderLoop* frames) {
    // The world is held, checked and recovered before anything plays in it.
    std::optional<game::entity::SavedWorld> world;
    try {
        world.emplace();
    } catch (std::exception const& error) {
        std::cerr << "meridon: " << error.what() << std::endl;
        return false;
    }
    world->autosaveSeconds = config.autosaveMinutes * 60.0;

    Game::isActive = true;
    bool failed = !Attempt([&] {
        Game::Start();
        if (config.verbose)
            PrintLoaded(std::cout);
        // Content modules have registered their entity types by now, so saved entities find their behaviour.
        size_t const loaded = world->Load();
        if (config.verbose)
            std::cout << "meridon: world '" << config.world << "': " << loaded << " entities loaded" << std::endl;
        SERVER_Mod::CallHooks(&SERVER_Mod::Server_Load, config.world.c_str());
        Game::Ready();
        GAME_Init::CallHooks(&GAME_Init::SplashEnd);
    });
    if (!failed) {
        auto loops = StartLoops(config, *world);
        // A frame that throws is caught here, before the joins: the loops end only once the game is quit.
        failed = !Attempt([&] {
            Supervise(config, quitSignals, loops, dynamic_cast<quorl::graphics::WindowGlfw*>(window), frames);
        });
        for (auto& loop : loops) {
            loop->Join();
            failed |= loop->Failed();
        }
        // One more frame, so that even a run shorter than a frame leaves one, with the world as it ended. A run that
        // failed leaves none: its last frame may be half drawn.
        if (!failed && !config.screenshot.empty()) {
            if (!frames)
                std::cerr << "meridon: no screenshot without a renderer" << std::endl;
            else if (!Attempt([&] { frames->RenderFrame(); }) || !frames->SaveScreenshot(config.screenshot))
                failed = true;
        }
    }

    // The world closes once nothing runs in it any more, whether or not the run `failed`, and before Stop unloads
    // the modules whose code its entities' interfaces run.
    bool saved = false;
    if (!Attempt([&] { saved = world->Close(failed); }) || !saved)
        failed = true;
    else if (config.verbose)
        std::cout << "meridon: world '" << config.world << "': " << world->LastSaveEntities() << " entities saved"
                  << std::endl;
    if (!Attempt([] { Game::Stop(); }))
        failed = true;
    return !failed;
}

}

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t quitSignals = BlockQuitSignals();

    LauncherConfig config;
    std::string configPath = "launcher.ini";
    if (auto exitCode = ApplyCommandLine(argc, argv, config, configPath))
        return *exitCode;

    Game::_is_server = true;
    Game::_current_world = config.world;
    Game::_mods = config.mods;

    if (!ContentModulesExist(config.mods, config.modulePath))
        return 2;
    if (int status = LoadLauncherModules(config.modules, config.server, config.verbose, config.modulePath)) {
        UnloadLauncherModules();
        return status;
    }
    if (int status = LoadContentModulesElsewhere(config.mods, config.verbose, config.modulePath)) {
        UnloadLauncherModules();
        return status;
    }
    // Nothing has started yet: a module failing here needs only the modules closed again.
    if (!Attempt([] {
            modules::SortGameModLists();
            GAME_Init::CallHooks(&GAME_Init::SplashBegin);
        })) {
        UnloadLauncherModules();
        return 1;
    }

    auto window = OpenWindow(config);
    Game::window = window.get();
    if (!config.server) {
        std::error_code ignored;  // a folder that cannot be made shows as the settings file's own error
        std::filesystem::create_directories(kSettingsFolder, ignored);
        Game::settings = game::GameSettings::Instance(kSettingsFile, std::nullopt);
        Game::settings->ClampToRanges();
    }
    auto renderer = OpenRenderer(config, window.get());
    Game::renderer = renderer.get();
    std::optional<RenderLoop> frames;
    if (renderer)
        frames.emplace(*renderer, window.get(), config.renderHz);

    bool failed = !RunGame(config, quitSignals, window.get(), frames ? &*frames : nullptr);
    frames.reset();
    Game::renderer = nullptr;
    renderer.reset();
    failed |= !UnloadLauncherModules();
    Game::settings.reset();
    Game::window = nullptr;
    return failed ? 1 : 0;
}
