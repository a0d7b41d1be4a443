// Game's input mode, mouse look, the input loop bodies and the device look-ups.

#include "game/Game.h"

#include "engine/graphics/Window.h"
#include "game/input/Controller.h"
#include "game/input/Joystick.h"
#include "modules/GAME_Mod.h"

#include <imgui.h>

namespace {
// GLFW's numbers, which the window interface speaks.
constexpr int kCursorMode = 0x33001;
constexpr int kCursorNormal = 0x34001;
constexpr int kCursorDisabled = 0x34003;

using JoystickPtr = std::shared_ptr<game::input::Joystick>;

/// The index-th connected device that passes `accept`, in joystick-number order.
template <class Accept>
JoystickPtr FindDevice(int index, Accept&& accept) {
    for (auto const& [number, device] : Game::_joysticks) {
        if (!device || !device->connected || !accept(*device))
            continue;
        if (index-- == 0)
            return device;
    }
    return nullptr;
}

bool IsJoystick(game::input::Joystick const& device) {
    return !device.gamepad && device.axisCount > 1;
}

bool MatchesGuid(game::input::Joystick const& device, std::string const& guid) {
    return guid.empty() || device.IsSameGUID(guid);
}
}

// ---- Input loop ----------------------------------------------------------------------------------------------------

void Game::InputUpdate(double dt) {
    game::input::Controller::InputUpdate(dt);
    GAME_Mod::CallHooks(&GAME_Mod::Input_Update, dt);
}

void Game::InputUpdate_Play(double dt) {
    GAME_Mod::CallHooks(&GAME_Mod::Input_Update_Play, dt);
}

void Game::InputUpdate_Station(double dt) {
    GAME_Mod::CallHooks(&GAME_Mod::Input_Update_Station, dt);
}

// ---- Input mode ----------------------------------------------------------------------------------------------------

void Game::SetMouseLook(bool on) {
    if (!window || MouseLook() == on)
        return;
    std::atomic_ref mouseLook(_mouseLook);
    if (on && window->IsFocused()) {
        window->SetInputMode(kCursorMode, kCursorDisabled);
        window->SetCursorPos(0.0, 0.0);
        if (ImGui::GetCurrentContext())
            ImGui::SetWindowFocus(nullptr);
        mouseLook.store(true, std::memory_order_relaxed);
        return;
    }
    window->SetInputMode(kCursorMode, kCursorNormal);
    mouseLook.store(false, std::memory_order_relaxed);
}

void Game::SetInputMode_Ui() {
    SetMouseLook(false);
    std::atomic_ref(_inputMode).store(0, std::memory_order_relaxed);
}

void Game::SetInputMode_Play() {
    SetMouseLook(true);
    std::atomic_ref(_inputMode).store(1, std::memory_order_relaxed);
}

void Game::SetInputMode_Station() {
    SetMouseLook(true);
    std::atomic_ref(_inputMode).store(2, std::memory_order_relaxed);
}

// ---- Devices -------------------------------------------------------------------------------------------------------

JoystickPtr Game::GetFirstJoystick() {
    return FindDevice(0, IsJoystick);
}

JoystickPtr Game::GetFirstGamepad() {
    return FindDevice(0, [](auto const& device) { return device.gamepad; });
}

JoystickPtr Game::GetJoystick(int index) {
    return FindDevice(index, IsJoystick);
}

JoystickPtr Game::GetJoystick(std::string const& guid, int index) {
    return FindDevice(index, [&](auto const& device) { return IsJoystick(device) && MatchesGuid(device, guid); });
}

JoystickPtr Game::GetGamepad(std::string const& guid, int index) {
    return FindDevice(index, [&](auto const& device) { return device.gamepad && MatchesGuid(device, guid); });
}
