#pragma once

#include "engine/graphics/Window.h"

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorl::graphics {

/// A window with no screen: its input state is whatever the program sets, which makes it the window of dedicated
/// servers and of input tests. Setting a key or button calls the callbacks as a real window would. Not thread-safe:
/// set and poll it from one thread.
class QUORL_EXPORT WindowHeadless final : public Window {
public:
    /// A joystick or gamepad plugged into a slot.
    struct Device {
        std::string guid;
        std::string name;
        bool gamepad = false;
        std::vector<float> axes;
        std::vector<unsigned char> buttons;
        std::vector<unsigned char> hats;
        GamepadState gamepadState{};
    };

    /// action: GLFW_PRESS (1) or GLFW_RELEASE (0).
    void SetKey(int key, int action, int mods = 0);
    void SetMouseButton(int button, int action, int mods = 0);
    void SetFocused(bool focused) { _focused = focused; }
    void ConnectJoystick(int joystick, Device device) { _devices[joystick] = std::move(device); }
    void DisconnectJoystick(int joystick) { _devices.erase(joystick); }
    /// The device in a slot, to move its axes and buttons; null for an empty slot.
    Device* GetDevice(int joystick);

    int GetKey(int key) override;
    int GetMouseButton(int button) override;
    void GetCursorPos(double& x, double& y) override;
    void SetCursorPos(double x, double y) override;
    int GetInputMode(int mode) override;
    void SetInputMode(int mode, int value) override;
    bool IsFocused() override { return _focused; }

    void AddCallback_Key(std::string const& name, KeyCallback&& callback) override;
    void RemoveCallback_Key(std::string const& name) override;
    void AddCallback_MouseButton(std::string const& name, MouseButtonCallback&& callback) override;
    void RemoveCallback_MouseButton(std::string const& name) override;

    bool GetGamepadState(int joystick, GamepadState* state) override;
    float const* GetJoystickAxes(int joystick, int* count) override;
    unsigned char const* GetJoystickButtons(int joystick, int* count) override;
    unsigned char const* GetJoystickHats(int joystick, int* count) override;
    char const* GetJoystickGUID(int joystick) override;
    char const* GetJoystickName(int joystick) override;
    bool JoystickIsGamepad(int joystick) override;

private:
    std::unordered_map<int, int> _keys;
    std::unordered_map<int, int> _mouseButtons;
    std::unordered_map<int, int> _inputModes;
    double _cursorX = 0.0;
    double _cursorY = 0.0;
    bool _focused = true;
    std::map<std::string, KeyCallback> _keyCallbacks;
    std::map<std::string, MouseButtonCallback> _mouseButtonCallbacks;
    std::map<int, Device> _devices;
};

}
