// MERIDON_player, client side: MERIDON_player.GAME_Mod.so. The input loop turns the controller's avatar actions into
// the player's wishes; the game loop sends them to the server (PlayerInput.h) and places the eye, at the avatar's
// head or wherever the drone has flown; the renderer takes that eye at the start of each frame.
//
// The interact binding opens and shuts a door in front of the avatar. Keys of their own, read from the window:
// F2 drone mode (the eye flies freely through everything while the avatar waits), F3 the interface shown or hidden,
// F10 back to the spawn point.

#include "content/player/Avatar.h"
#include "content/player/PlayerInput.h"
#include "content/player/View.h"
#include "content/planet/Planet.h"

#include "engine/graphics/Window.h"
#include "game/Game.h"
#include "game/entity/ClientSideEntity.h"
#include "game/graphics/GameRenderer.h"
#include "game/input/Controller.h"
#include "modules/ModuleApi.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <mutex>
#include <utility>

using game::entity::ClientSideEntity;
using game::input::Controller;

namespace {

quorl::modular::ModuleID const kExample("MERIDON_example");
constexpr char kAvatarType[] = "avatar";

enum Key : int { kF2 = 291, kF3 = 292, kF10 = 299 };

/// What the three loops share, under one lock: each holds it for a few copies.
struct Shared {
    std::mutex mutex;
    player::Input input;
    double pitch = 0.0;
    bool drone = false;
    glm::dvec3 droneEye{0.0};
    /// F3 was pressed: the render thread, which reads Game::uiVisible, flips it.
    bool flipInterface = false;
    /// The eye for the next frame; the spawn point's until the avatar arrives.
    glm::dvec3 eye = player::SpawnPosition() + glm::normalize(player::SpawnPosition()) * player::kEyeHeight;
    glm::dmat4 camera = player::CameraMatrix(eye, 0.0, 0.0);
} shared;

/// Edges of the module's own keys; input loop only.
struct KeyEdges {
    bool down[3] = {};
    /// Whether `key` (one of F2, F3, F10, at `slot`) went down since the last pass.
    bool Pressed(quorl::graphics::Window& window, int key, int slot) {
        bool const now = window.GetKey(key) != 0;
        bool const pressed = now && !down[slot];
        down[slot] = now;
        return pressed;
    }
} keys;

/// The jetpack is switched on and off; while on, the jump binding thrusts. Input loop only.
bool jetpackOn = false;

/// The first look reading after the cursor is captured, or after the window regains the focus, is the distance the
/// pointer was warped, not a movement of the hand. Input loop only.
bool lookCaptured = false;
bool lookWarpPending = false;

std::shared_ptr<ClientSideEntity> OwnAvatar() {
    std::shared_ptr<ClientSideEntity> found;
    ClientSideEntity::ForEach([&](std::shared_ptr<ClientSideEntity> const& entity) {
        if (!found && entity->module == kExample && entity->type == kAvatarType)
            found = entity;
    });
    return found;
}

}

// Before the loops start: the player lives on the planet, whose air and light the renderer shows around them.
extern "C" void Game_Ready() {
    Game::parentEnvironmentId = planet::kEnvironmentId;
}

extern "C" void Input_Update_Play(double deltaSeconds) {
    double const forward = std::clamp(
        Controller::GetAvatarTranslateForward() - Controller::GetAvatarTranslateBackward(), -1.0, 1.0);
    double const right =
        std::clamp(Controller::GetAvatarTranslateRight() - Controller::GetAvatarTranslateLeft(), -1.0, 1.0);
    bool const jump = Controller::GetAvatarJump();
    bool const crouch = Controller::GetAvatarCrouch();
    if (Controller::GetAvatarJetpack_Pressed())
        jetpackOn = !jetpackOn;
    bool droneKey = false, interfaceKey = false, respawnKey = false;
    if (auto* window = Game::window) {
        droneKey = keys.Pressed(*window, kF2, 0);
        interfaceKey = keys.Pressed(*window, kF3, 1);
        respawnKey = keys.Pressed(*window, kF10, 2);
    }

    bool const captured = Game::MouseLook() && Game::window && Game::window->IsFocused();
    lookWarpPending |= captured && !lookCaptured;
    lookCaptured = captured;
    double yaw = Controller::GetAvatarYaw(), pitch = Controller::GetAvatarPitch();
    if (lookWarpPending && (yaw != 0.0 || pitch != 0.0)) {
        lookWarpPending = false;
        yaw = pitch = 0.0;
    }
    std::lock_guard lock(shared.mutex);
    auto& input = shared.input;
    // The mouse moved right turns the view right: clockwise seen from above, a falling heading.
    input.heading = float(std::remainder(input.heading - yaw * player::kTurnPerLookUnit, 2.0 * 3.141592653589793));
    shared.pitch = std::clamp(shared.pitch - pitch * player::kTurnPerLookUnit, -player::kMaxPitch, player::kMaxPitch);
    input.sprint = Controller::GetAvatarSprint();
    if (droneKey) {
        shared.drone = !shared.drone;
        shared.droneEye = shared.eye;
    }
    shared.flipInterface ^= interfaceKey;
    input.respawns += respawnKey ? 1 : 0;
    input.interactions += Controller::GetAvatarInteract_Pressed() && !shared.drone ? 1 : 0;
    if (shared.drone) {
        // The avatar stands still while the drone flies.
        shared.droneEye = player::Fly(shared.droneEye, input.heading, shared.pitch,
                                      {forward, (jump ? 1.0 : 0.0) - (crouch ? 1.0 : 0.0), right}, input.sprint,
                                      deltaSeconds);
        input.forward = input.right = 0.0f;
        input.jump = input.crouch = input.jetpack = false;
        return;
    }
    input.forward = float(forward);
    input.right = float(right);
    input.crouch = crouch;
    input.jetpack = jetpackOn && jump;
    input.jump = !jetpackOn && jump;
}

// After the client entities have moved for this pass: the eye follows the avatar as it is drawn.
extern "C" void Game_ClientUpdate() {
    player::Input input;
    {
        std::lock_guard lock(shared.mutex);
        input = shared.input;
    }
    auto const packet = player::Encode(input);
    GAME_Mod::CallHooks(&GAME_Mod::Client_Send, packet.data(), static_cast<unsigned long>(packet.size()));

    auto const avatar = OwnAvatar();
    std::lock_guard lock(shared.mutex);
    if (avatar) {
        // It may stand on another body, in whose frame its position is.
        glm::dvec3 const feet(avatar->GetAbsoluteTransformInEnvironment()[3]);
        double const height = input.crouch ? player::kCrouchEyeHeight : player::kEyeHeight;
        if (!shared.drone)
            shared.eye = feet + glm::normalize(feet) * height;
        // Seen from inside, the body would fill the view; the drone sees it.
        if (avatar->visible != shared.drone)
            avatar->SetVisibility(shared.drone);
    }
    if (shared.drone)
        shared.eye = shared.droneEye;
    shared.camera = player::CameraMatrix(shared.eye, input.heading, shared.pitch);
}

extern "C" void Renderer_FrameInit() {
    auto& frame = Game::renderer->frame;
    std::lock_guard lock(shared.mutex);
    frame.cameraPosition = shared.eye;
    frame.cameraMatrix = shared.camera;
    if (std::exchange(shared.flipInterface, false))
        Game::uiVisible = !Game::uiVisible;
}

// Physics_PlayerPosition and Physics_CameraPosition answer a launcher that asks where the player is.
extern "C" void Physics_CameraPosition(glm::dvec3& position) {
    std::lock_guard lock(shared.mutex);
    position = shared.eye;
}
