#include "engine/graphics/WindowHeadless.h"

namespace quorl::graphics {

namespace {
// GLFW's defaults for the input modes a program may ask about: cursor normal, everything else off.
constexpr int kCursorMode = 0x33001;
constexpr int kCursorNormal = 0x34001;

template <class T>
T const* DeviceArray(std::vector<T> const& values, int* count) {
    *count = static_cast<int>(values.size());
    return values.data();
}
}

void WindowHeadless::SetKey(int key, int action, int mods) {
    _keys[key] = action;
    for (auto& [name, callback] : _keyCallbacks)
        callback(key, 0, action, mods);
}

void WindowHeadless::SetMouseButton(int button, int action, int mods) {
    _mouseButtons[button] = action;
    for (auto& [name, callback] : _mouseButtonCallbacks)
        callback(button, action, mods);
}

WindowHeadless::Device* WindowHeadless::GetDevice(int joystick) {
    auto found = _devices.find(joystick);
    return found == _devices.end() ? nullptr : &found->second;
}

int WindowHeadless::GetKey(int key) {
    auto found = _keys.find(key);
    return found == _keys.end() ? 0 : found->second;
}

int WindowHeadless::GetMouseButton(int button) {
    auto found = _mouseButtons.find(button);
    return found == _mouseButtons.end() ? 0 : found->second;
}

void WindowHeadless::GetCursorPos(double& x, double& y) {
    x = _cursorX;
    y = _cursorY;
}

void WindowHeadless::SetCursorPos(double x, double y) {
    _cursorX = x;
    _cursorY = y;
}

int WindowHeadless::GetInputMode(int mode) {
    auto found = _inputModes.find(mode);
    if (found != _inputModes.end())
        return found->second;
    return mode == kCursorMode ? kCursorNormal : 0;
}

void WindowHeadless::SetInputMode(int mode, int value) {
    _inputModes[mode] = value;
}

void WindowHeadless::AddCallback_Key(std::string const& name, KeyCallback&& callback) {
    _keyCallbacks[name] = std::move(callback);
}

void WindowHeadless::RemoveCallback_Key(std::string const& name) {
    _keyCallbacks.erase(name);
}

void WindowHeadless::AddCallback_MouseButton(std::string const& name, MouseButtonCallback&& callback) {
    _mouseButtonCallbacks[name] = std::move(callback);
}

void WindowHeadless::RemoveCallback_MouseButton(std::string const& name) {
    _mouseButtonCallbacks.erase(name);
}

bool WindowHeadless::GetGamepadState(int joystick, GamepadState* state) {
    auto* device = GetDevice(joystick);
    if (!device || !device->gamepad)
        return false;
    *state = device->gamepadState;
    return true;
}

float const* WindowHeadless::GetJoystickAxes(int joystick, int* count) {
    auto* device = GetDevice(joystick);
    *count = 0;
    return device ? DeviceArray(device->axes, count) : nullptr;
}

unsigned char const* WindowHeadless::GetJoystickButtons(int joystick, int* count) {
    auto* device = GetDevice(joystick);
    *count = 0;
    return device ? DeviceArray(device->buttons, count) : nullptr;
}

unsigned char const* WindowHeadless::GetJoystickHats(int joystick, int* count) {
    auto* device = GetDevice(joystick);
    *count = 0;
    return device ? DeviceArray(device->hats, count) : nullptr;
}

char const* WindowHeadless::GetJoystickGUID(int joystick) {
    auto* device = GetDevice(joystick);
    return device ? device->guid.c_str() : nullptr;
}

char const* WindowHeadless::GetJoystickName(int joystick) {
    auto* device = GetDevice(joystick);
    return device ? device->name.c_str() : nullptr;
}

bool WindowHeadless::JoystickIsGamepad(int joystick) {
    auto* device = GetDevice(joystick);
    return device && device->gamepad;
}

}
