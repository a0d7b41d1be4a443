#include "game/input/Joystick.h"

#include "game/Game.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace game::input {

namespace {
constexpr int kGamepadAxes = 6;
constexpr int kGamepadButtons = 15;

float ReadAxis(float value, float& min, float& max, float deadzone, bool calibrate, bool unipolar) {
    if (calibrate) {
        min = std::min(value, min);
        max = std::max(value, max);
        if (min == max)
            return 0.0f;
        float t = (value - min) / (max - min);
        if (!unipolar) {
            t = 2.0f * t - 1.0f;
            if (min < 0.0f && 0.0f < max)
                return std::fabs(value) > deadzone ? t : 0.0f;
        }
        return value > min + deadzone ? t : 0.0f;
    }
    min = -1.0f;
    max = 1.0f;
    if (unipolar)
        return value > -1.0f + deadzone ? value * 0.5f + 0.5f : 0.0f;
    return std::fabs(value) > deadzone ? value : 0.0f;
}
}

Joystick::Joystick(int id) : id(id) {
    auto* window = Game::window;
    if (char const* text = window->GetJoystickGUID(id))
        guid = text;
    if (char const* text = window->GetJoystickName(id))
        name = text;
    gamepad = window->JoystickIsGamepad(id);
    InputUpdate();
    axisMin.assign(axisCount, 0.0f);
    axisMax.assign(axisCount, 0.0f);
    gamepadAxisMin.assign(kGamepadAxes, 0.0f);
    gamepadAxisMax.assign(kGamepadAxes, 0.0f);
}

void Joystick::InputUpdate() {
    auto* window = Game::window;
    axes = window->GetJoystickAxes(id, &axisCount);
    buttons = window->GetJoystickButtons(id, &buttonCount);
    hats = window->GetJoystickHats(id, &hatCount);
    if (gamepad)
        window->GetGamepadState(id, &gamepadState);
}

float Joystick::GetAxis(int axis, float deadzone, bool calibrate, bool unipolar) const {
    if (!connected || axis < 0 || axis >= axisCount || axis >= static_cast<int>(axisMin.size()))
        return 0.0f;
    return ReadAxis(axes[axis], axisMin[axis], axisMax[axis], deadzone, calibrate, unipolar);
}

bool Joystick::GetButton(int button) const {
    if (!connected || button < 0 || button >= buttonCount)
        return false;
    return buttons[button] != 0;
}

unsigned char Joystick::GetHat(int hat) const {
    if (!connected || hat < 0 || hat >= hatCount)
        return 0;
    return hats[hat];
}

float Joystick::GetGamepadAxis(int axis, float deadzone, bool calibrate, bool unipolar) const {
    if (!connected || !gamepad || axis < 0 || axis >= kGamepadAxes)
        return 0.0f;
    return ReadAxis(gamepadState.axes[axis], gamepadAxisMin[axis], gamepadAxisMax[axis], deadzone, calibrate,
                    unipolar);
}

bool Joystick::GetGamepadButton(int button) const {
    if (!connected || !gamepad || button < 0 || button >= kGamepadButtons)
        return false;
    return gamepadState.buttons[button] != 0;
}

bool Joystick::IsSameGUID(std::string const& other) const {
    return std::equal(guid.begin(), guid.end(), other.begin(), other.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    });
}

}
