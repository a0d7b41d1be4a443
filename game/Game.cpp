// Game's state, its lifecycle and the bodies of the game and server loops.
//
// Index:
//   State                 every static member and its initial value
//   Lifecycle             Start, Ready, Stop, Quit
//   Loop bodies           Update, ClientUpdate, ServerUpdate, Synchronize

#include "game/Game.h"

#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

#include <chrono>
#include <iostream>

// ---- State ---------------------------------------------------------------------------------------------------------

game::graphics::GameRenderer* Game::renderer = nullptr;
quorl::graphics::Window* Game::window = nullptr;
quorl::audio::Studio* Game::audio = nullptr;
std::shared_ptr<game::GameSettings> Game::settings;
std::atomic<bool> Game::isActive = false;
bool Game::_is_server = false;
std::string Game::_current_world;
std::vector<std::string> Game::_mods;

std::map<int, std::shared_ptr<game::input::Joystick>> Game::_joysticks;
bool Game::_mouseLook = false;
uint8_t Game::_inputMode = 0;
bool Game::uiVisible = true;

bool Game::timeActive = true;
double Game::timeOffset = 0.0;
double Game::timestamp = 0.0;
game::entity::EnvironmentId Game::parentEnvironmentId = 0;
game::entity::EnvironmentId Game::relativeEnvironmentId = 0;
bool Game::environmentIsLoaded = false;
glm::dmat4 Game::backgroundTransform(1.0);

bool Game::adminWindowOpen = false;
bool Game::settingsWindowOpen = false;
std::array<float, 5> Game::testSlider{};
unsigned int Game::currentMonitorID = 0;
double Game::currentMonitorX = 0.0;
double Game::currentMonitorY = 0.0;
double Game::currentMonitorDistance = 0.0;
std::unordered_map<unsigned int, std::string> Game::_monitors;
std::mutex Game::_monitorsMutex;
int Game::debugGizmoOp = 0;
glm::dmat4 Game::debugGizmoTransform(1.0);
bool Game::debugClientSidePhysics = false;
bool Game::debugServerSidePhysics = false;

std::vector<std::function<void()>> Game::_syncQueue;
std::mutex Game::_syncMutex;

quorl::FPSCounter Game::mainRenderingFramerate(0.3);
quorl::FPSCounter Game::serverFramerate(0.5);
quorl::FPSCounter Game::inputFramerate(0.5);
quorl::FPSCounter Game::gameFramerate(0.5);

// ---- Lifecycle -----------------------------------------------------------------------------------------------------

void Game::Start() {
    GAME_Mod::CallHooks(&GAME_Mod::Game_Start);
    // A content module that fails to load is skipped in silence: worlds name optional content.
    for (auto const& name : _mods)
        MERIDON_Mod::LoadModule(name, false);
    MERIDON_Mod::CallHooks(&MERIDON_Mod::Load);
    std::cout << "Shader compilation may take several minutes before starting the game the first time or after an "
                 "update..."
              << std::endl;
}

void Game::Ready() {
    std::cout << "Starting game..." << std::endl;
    GAME_Mod::CallHooks(&GAME_Mod::Game_Ready);
}

void Game::Stop() {
    MERIDON_Mod::CallHooks(&MERIDON_Mod::Unload);
    MERIDON_Mod::UnloadModules();
    GAME_Mod::CallHooks(&GAME_Mod::Game_Stop);
}

void Game::Quit() noexcept {
    SetMouseLook(false);
    isActive = false;
}

void Game::Pause() {}

void Game::Play() {
    SetInputMode_Play();
}

// ---- Loop bodies ---------------------------------------------------------------------------------------------------

void Game::Update(double) {
    // Smoothed over passes; the first pass sees half the frame time, as the average starts at zero.
    static double avgDeltaTime = 0.0;
    avgDeltaTime = 0.5 * avgDeltaTime + 0.5 * mainRenderingFramerate.FrameTime();

    {
        std::lock_guard lock(_syncMutex);
        for (auto& function : _syncQueue)
            function();
        _syncQueue.clear();
    }

    GAME_Mod::CallSortedHooks("update", &GAME_Mod::Game_Update, avgDeltaTime);
}

void Game::ClientUpdate() {
    GAME_Mod::CallHooks(&GAME_Mod::Game_ClientUpdate);
}

void Game::ServerUpdate(double dt, int) {
    if (timeActive) {
        auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::chrono::system_clock::now().time_since_epoch());
        timestamp = static_cast<double>(nanoseconds.count() / 1000000) * 0.001 + timeOffset;
    }
    SERVER_Mod::CallHooks(&SERVER_Mod::Server_BeforeUpdate, dt);
    SERVER_Mod::CallHooks(&SERVER_Mod::Server_GameUpdate, dt);
}

void Game::Synchronize(std::function<void()> function) {
    std::lock_guard lock(_syncMutex);
    _syncQueue.push_back(std::move(function));
}
