#pragma once

#include "engine/graphics/Window.h"
#include "game/Export.h"

#include <string>
#include <vector>

namespace game::input {

/// One GLFW joystick slot, read through Game::window: a joystick and, when the device has a gamepad mapping, a
/// gamepad too. The launcher keeps these in Game::_joysticks and calls InputUpdate before each input pass.
class MERIDON_EXPORT Joystick {
public:
    /// Reads the device's identity and polls it once. Game::window must be set.
    explicit Joystick(int id);

    /// Polls axes, buttons, hats and, for a gamepad, the gamepad state.
    void InputUpdate();

    /// Axis value with a dead zone, 0 when not connected or out of range. `calibrate` widens the axis's range to
    /// every value seen and maps it onto -1..1 (0..1 when `unipolar`); without it raw values are taken as -1..1.
    /// Values inside the dead zone read 0, and the reading jumps to the zone's edge beyond it.
    float GetAxis(int axis, float deadzone, bool calibrate, bool unipolar) const;
    bool GetButton(int button) const;
    unsigned char GetHat(int hat) const;
    /// As GetAxis, on the gamepad mapping; 0 for a device without one.
    float GetGamepadAxis(int axis, float deadzone, bool calibrate, bool unipolar) const;
    bool GetGamepadButton(int button) const;
    /// Compares GUIDs ignoring case.
    bool IsSameGUID(std::string const& other) const;

    int id;
    bool connected = true;
    std::string guid;
    std::string name;
    bool gamepad = false;
    int axisCount = 0;
    int buttonCount = 0;
    int hatCount = 0;
    quorl::graphics::Window::GamepadState gamepadState{};
    /// The window's arrays, valid until the next poll.
    float const* axes = nullptr;
    unsigned char const* buttons = nullptr;
    unsigned char const* hats = nullptr;
    /// Calibration ranges, widened by every calibrated read.
    mutable std::vector<float> axisMin;
    mutable std::vector<float> axisMax;
    mutable std::vector<float> gamepadAxisMin;
    mutable std::vector<float> gamepadAxisMax;
};

}
