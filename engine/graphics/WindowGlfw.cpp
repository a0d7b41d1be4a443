#include "engine/graphics/WindowGlfw.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <algorithm>
#include <stdexcept>

namespace quorl::graphics {

namespace {

static_assert(GLFW_KEY_LAST + 1 == 349 && GLFW_MOUSE_BUTTON_LAST + 1 == 8 && GLFW_JOYSTICK_LAST + 1 == 16);

std::string GlfwError() {
    char const* description = nullptr;
    glfwGetError(&description);
    return description ? description : "unknown GLFW error";
}

WindowGlfw& Owner(GLFWwindow* window) {
    return *static_cast<WindowGlfw*>(glfwGetWindowUserPointer(window));
}

template <class T>
T const* HandOut(std::vector<T>& handed, std::vector<T> const& current, int* count) {
    handed = current;
    *count = static_cast<int>(handed.size());
    return handed.data();
}

}

// ---- The window ----------------------------------------------------------------------------------------------------

WindowGlfw::WindowGlfw(std::string const& title, int width, int height) {
    if (!glfwInit())
        throw std::runtime_error("cannot start GLFW: " + GlfwError());
    glfwWindowHint(GLFW_CLIENT_API, GLFW_NO_API);
    _window = glfwCreateWindow(width, height, title.c_str(), nullptr, nullptr);
    if (!_window) {
        std::string const error = GlfwError();
        glfwTerminate();
        throw std::runtime_error("cannot open a window: " + error);
    }
    glfwSetWindowUserPointer(_window, this);
    glfwSetKeyCallback(_window, OnKey);
    glfwSetMouseButtonCallback(_window, OnMouseButton);
    glfwSetCursorPosCallback(_window, OnCursorPos);
    glfwSetWindowFocusCallback(_window, OnFocus);
    glfwSetWindowSizeCallback(_window, OnSize);
    this->width = width;
    this->height = height;
    _focused = glfwGetWindowAttrib(_window, GLFW_FOCUSED);
    glfwGetCursorPos(_window, &_cursorX, &_cursorY);
    ReadJoysticks();
}

WindowGlfw::~WindowGlfw() {
    glfwDestroyWindow(_window);
    glfwTerminate();
}

void WindowGlfw::PollEvents() {
    std::optional<std::pair<double, double>> cursor;
    std::vector<std::pair<int, int>> modes;
    {
        std::lock_guard lock(_mutex);
        cursor = std::exchange(_cursorRequest, std::nullopt);
        modes = std::exchange(_inputModeRequests, {});
    }
    for (auto [mode, value] : modes)
        glfwSetInputMode(_window, mode, value);
    if (cursor)
        glfwSetCursorPos(_window, cursor->first, cursor->second);
    glfwPollEvents();
    ReadJoysticks();
}

bool WindowGlfw::ShouldClose() const {
    return glfwWindowShouldClose(_window);
}

// ---- Events, on the main thread ------------------------------------------------------------------------------------

void WindowGlfw::OnKey(GLFWwindow* window, int key, int scancode, int action, int mods) {
    auto& self = Owner(window);
    std::map<std::string, KeyCallback> callbacks;
    {
        std::lock_guard lock(self._mutex);
        // A held key repeats; its state stays pressed.
        if (key >= 0 && key < kKeys)
            self._keys[key] = action == GLFW_RELEASE ? GLFW_RELEASE : GLFW_PRESS;
        callbacks = self._keyCallbacks;
    }
    // Called without the lock, so that a callback may add or remove callbacks.
    for (auto& [name, callback] : callbacks)
        callback(key, scancode, action, mods);
}

void WindowGlfw::OnMouseButton(GLFWwindow* window, int button, int action, int mods) {
    auto& self = Owner(window);
    std::map<std::string, MouseButtonCallback> callbacks;
    {
        std::lock_guard lock(self._mutex);
        if (button >= 0 && button < kMouseButtons)
            self._mouseButtons[button] = action;
        callbacks = self._mouseButtonCallbacks;
    }
    for (auto& [name, callback] : callbacks)
        callback(button, action, mods);
}

void WindowGlfw::OnCursorPos(GLFWwindow* window, double x, double y) {
    auto& self = Owner(window);
    std::lock_guard lock(self._mutex);
    self._cursorX = x;
    self._cursorY = y;
}

void WindowGlfw::OnFocus(GLFWwindow* window, int focused) {
    auto& self = Owner(window);
    std::lock_guard lock(self._mutex);
    self._focused = focused == GLFW_TRUE;
}

void WindowGlfw::OnSize(GLFWwindow* window, int width, int height) {
    auto& self = Owner(window);
    self.width = width;
    self.height = height;
}

void WindowGlfw::ReadJoysticks() {
    std::array<std::optional<Device>, kJoysticks> devices;
    for (int slot = 0; slot < kJoysticks; ++slot) {
        if (!glfwJoystickPresent(slot))
            continue;
        Device& device = devices[slot].emplace();
        char const* guid = glfwGetJoystickGUID(slot);
        char const* name = glfwGetJoystickName(slot);
        device.guid = guid ? guid : "";
        device.name = name ? name : "";
        int count = 0;
        float const* axes = glfwGetJoystickAxes(slot, &count);
        device.axes.assign(axes, axes + (axes ? count : 0));
        unsigned char const* buttons = glfwGetJoystickButtons(slot, &count);
        device.buttons.assign(buttons, buttons + (buttons ? count : 0));
        unsigned char const* hats = glfwGetJoystickHats(slot, &count);
        device.hats.assign(hats, hats + (hats ? count : 0));
        GLFWgamepadstate state;
        device.gamepad = glfwJoystickIsGamepad(slot) && glfwGetGamepadState(slot, &state);
        if (device.gamepad) {
            std::copy(std::begin(state.buttons), std::end(state.buttons), device.gamepadState.buttons);
            std::copy(std::begin(state.axes), std::end(state.axes), device.gamepadState.axes);
        }
    }
    std::lock_guard lock(_mutex);
    _devices = std::move(devices);
}

// ---- Queries, from any thread --------------------------------------------------------------------------------------

int WindowGlfw::GetKey(int key) {
    std::lock_guard lock(_mutex);
    return key >= 0 && key < kKeys ? _keys[key] : GLFW_RELEASE;
}

int WindowGlfw::GetMouseButton(int button) {
    std::lock_guard lock(_mutex);
    return button >= 0 && button < kMouseButtons ? _mouseButtons[button] : GLFW_RELEASE;
}

void WindowGlfw::GetCursorPos(double& x, double& y) {
    std::lock_guard lock(_mutex);
    x = _cursorX;
    y = _cursorY;
}

void WindowGlfw::SetCursorPos(double x, double y) {
    std::lock_guard lock(_mutex);
    _cursorX = x;
    _cursorY = y;
    _cursorRequest = {x, y};
}

int WindowGlfw::GetInputMode(int mode) {
    std::lock_guard lock(_mutex);
    auto found = _inputModes.find(mode);
    if (found != _inputModes.end())
        return found->second;
    return mode == GLFW_CURSOR ? GLFW_CURSOR_NORMAL : GLFW_FALSE;
}

void WindowGlfw::SetInputMode(int mode, int value) {
    std::lock_guard lock(_mutex);
    _inputModes[mode] = value;
    _inputModeRequests.emplace_back(mode, value);
}

bool WindowGlfw::IsFocused() {
    std::lock_guard lock(_mutex);
    return _focused;
}

void WindowGlfw::AddCallback_Key(std::string const& name, KeyCallback&& callback) {
    std::lock_guard lock(_mutex);
    _keyCallbacks[name] = std::move(callback);
}

void WindowGlfw::RemoveCallback_Key(std::string const& name) {
    std::lock_guard lock(_mutex);
    _keyCallbacks.erase(name);
}

void WindowGlfw::AddCallback_MouseButton(std::string const& name, MouseButtonCallback&& callback) {
    std::lock_guard lock(_mutex);
    _mouseButtonCallbacks[name] = std::move(callback);
}

void WindowGlfw::RemoveCallback_MouseButton(std::string const& name) {
    std::lock_guard lock(_mutex);
    _mouseButtonCallbacks.erase(name);
}

WindowGlfw::Device const* WindowGlfw::FindDevice(int joystick) const {
    if (joystick < 0 || joystick >= kJoysticks || !_devices[joystick])
        return nullptr;
    return &*_devices[joystick];
}

bool WindowGlfw::GetGamepadState(int joystick, GamepadState* state) {
    std::lock_guard lock(_mutex);
    auto const* device = FindDevice(joystick);
    if (!device || !device->gamepad)
        return false;
    *state = device->gamepadState;
    return true;
}

float const* WindowGlfw::GetJoystickAxes(int joystick, int* count) {
    std::lock_guard lock(_mutex);
    *count = 0;
    auto const* device = FindDevice(joystick);
    return device ? HandOut(_handedOut[joystick].axes, device->axes, count) : nullptr;
}

unsigned char const* WindowGlfw::GetJoystickButtons(int joystick, int* count) {
    std::lock_guard lock(_mutex);
    *count = 0;
    auto const* device = FindDevice(joystick);
    return device ? HandOut(_handedOut[joystick].buttons, device->buttons, count) : nullptr;
}

unsigned char const* WindowGlfw::GetJoystickHats(int joystick, int* count) {
    std::lock_guard lock(_mutex);
    *count = 0;
    auto const* device = FindDevice(joystick);
    return device ? HandOut(_handedOut[joystick].hats, device->hats, count) : nullptr;
}

char const* WindowGlfw::GetJoystickGUID(int joystick) {
    std::lock_guard lock(_mutex);
    auto const* device = FindDevice(joystick);
    if (!device)
        return nullptr;
    _handedOut[joystick].guid = device->guid;
    return _handedOut[joystick].guid.c_str();
}

char const* WindowGlfw::GetJoystickName(int joystick) {
    std::lock_guard lock(_mutex);
    auto const* device = FindDevice(joystick);
    if (!device)
        return nullptr;
    _handedOut[joystick].name = device->name;
    return _handedOut[joystick].name.c_str();
}

bool WindowGlfw::JoystickIsGamepad(int joystick) {
    std::lock_guard lock(_mutex);
    auto const* device = FindDevice(joystick);
    return device && device->gamepad;
}

}
