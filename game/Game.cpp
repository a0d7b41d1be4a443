// Game's state, its lifecycle and the bodies of the game and server loops.
//
// Index:
//   State                 every static member and its initial value
//   Lifecycle             Start, Ready, Stop, Quit
//   Loop bodies           Update, ClientUpdate, ServerUpdate (with the ancestor pass), Synchronize
//   Physics debug view    the server's hand-over into the triple buffer

#include "game/Game.h"

#include "game/Options.h"
#include "game/graphics/GameRenderer.h"
#include "game/entity/ClientSideEntity.h"
#include "game/entity/ServerSideEntityInterface.h"
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
std::unordered_map<game::entity::EnvironmentId, game::physics::EnvironmentFunction> Game::_environmentFunctions;

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
std::vector<Game::PhysicsLineDebug> Game::physicsDebugLines_front;
std::vector<Game::PhysicsLineDebug> Game::physicsDebugLines_staging;
std::vector<Game::PhysicsLineDebug> Game::physicsDebugLines_back;
std::vector<Game::PhysicsColliderDebug> Game::physicsDebugColliders_front;
std::vector<Game::PhysicsColliderDebug> Game::physicsDebugColliders_staging;
std::vector<Game::PhysicsColliderDebug> Game::physicsDebugColliders_back;
std::atomic<bool> Game::physicsDebugCollidersUpdated = false;
std::mutex Game::physicsDebugMutex;

std::vector<std::function<void()>> Game::_syncQueue;
std::mutex Game::_syncMutex;

quorl::FPSCounter Game::mainRenderingFramerate(0.3);
quorl::FPSCounter Game::serverFramerate(0.5);
quorl::FPSCounter Game::inputFramerate(0.5);
quorl::FPSCounter Game::gameFramerate(0.5);

// ---- Lifecycle -----------------------------------------------------------------------------------------------------

void Game::Start() {
    GAME_Mod::CallHooks(&GAME_Mod::Game_Start);
    if (renderer)
        renderer->StartRendering();
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
    if (renderer)
        renderer->StopRendering();
    MERIDON_Mod::CallHooks(&MERIDON_Mod::Unload);
    MERIDON_Mod::UnloadModules();
    GAME_Mod::CallHooks(&GAME_Mod::Game_Stop);
    game::entity::ClientSideEntity::ClearAll();
    game::graphics::GameRenderer::Cleanup();
}

void Game::Quit() noexcept {
    SetMouseLook(false);
    isActive = false;
    std::lock_guard optionsLock(game::Options::_mu);
    game::Options::_options.clear();
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

    using game::entity::ClientSideEntity;
    ClientSideEntity::ForEach([](std::shared_ptr<ClientSideEntity> const& entity) { entity->Update(avgDeltaTime); });
    ClientSideEntity::PhysicsUpdate(avgDeltaTime);
    GAME_Mod::CallSortedHooks("update", &GAME_Mod::Game_Update, avgDeltaTime);
    ClientSideEntity::ForEach(
        [](std::shared_ptr<ClientSideEntity> const& entity) { entity->AfterUpdate(avgDeltaTime); });
}

void Game::ClientUpdate() {
    GAME_Mod::CallHooks(&GAME_Mod::Game_ClientUpdate);
}

namespace {

using game::entity::ServerSideEntity;

/// Gathers what an entity takes from its chain of parents: the environment of its last ancestor, and whether some
/// ancestor is a moving body (`carried`), which keeps the entity from settling. A moving body is one that is
/// dynamic and has rested less than 2.0 s, the rest time a body loaded asleep gets.
void AncestorPass(ServerSideEntity& entity) {
    constexpr double kMovingRestTime = 2.0;
    constexpr int kMaxDepth = 4096;  // a parent loop made by a module must not hang the server
    entity.carried = false;
    game::entity::Id next = entity.parent;
    for (int depth = 0; !next.IsNull() && depth < kMaxDepth; ++depth) {
        auto parent = ServerSideEntity::Get(next);  // nested shared lock: readers only wait for an active writer
        if (!parent)
            break;
        entity.environment = parent->environment;
        entity.parent_environment = parent->parent_environment;
        if (parent->dynamic && parent->rest_time < kMovingRestTime)
            entity.carried = true;
        else
            entity.carried |= parent->carried;
        next = parent->parent;
    }
    if (entity.carried)
        entity.settled = false;
}

bool Started(ServerSideEntity const& entity) {
    return entity.interface && entity.interface->started;
}

}

void Game::ServerUpdate(double dt, int substeps) {
    if (timeActive) {
        auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::chrono::system_clock::now().time_since_epoch());
        timestamp = static_cast<double>(nanoseconds.count() / 1000000) * 0.001 + timeOffset;
    }
    SERVER_Mod::CallHooks(&SERVER_Mod::Server_BeforeUpdate, dt);
    ServerSideEntity::ForEach([dt](std::shared_ptr<ServerSideEntity> const& entity) {
        if (Started(*entity))
            entity->interface->CallBeforeUpdate(dt);
    });
    ServerSideEntity::ForEach([dt](std::shared_ptr<ServerSideEntity> const& entity) {
        entity->Update(dt);
        AncestorPass(*entity);
    });
    ServerSideEntity::PhysicsUpdate(dt, substeps);
    ServerSideEntity::ForEach([dt](std::shared_ptr<ServerSideEntity> const& entity) {
        AncestorPass(*entity);
        if (Started(*entity))
            entity->interface->CallAfterUpdate(dt);
    });
    SERVER_Mod::CallHooks(&SERVER_Mod::Server_GameUpdate, dt);
}

void Game::Synchronize(std::function<void()> function) {
    std::lock_guard lock(_syncMutex);
    _syncQueue.push_back(std::move(function));
}

// ---- Physics debug view --------------------------------------------------------------------------------------------

void Game::PublishPhysicsDebug(
    std::function<void(std::vector<PhysicsLineDebug>& lines, std::vector<PhysicsColliderDebug>& colliders)> const&
        fill) {
    // Filled outside the lock: the render thread waits only for the swap.
    physicsDebugLines_back.clear();
    physicsDebugColliders_back.clear();
    fill(physicsDebugLines_back, physicsDebugColliders_back);
    std::lock_guard lock(physicsDebugMutex);
    std::swap(physicsDebugLines_back, physicsDebugLines_staging);
    std::swap(physicsDebugColliders_back, physicsDebugColliders_staging);
    physicsDebugCollidersUpdated = true;
}
