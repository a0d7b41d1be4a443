#pragma once

#include "engine/Export.h"

#include <functional>
#include <string>

namespace quorl::graphics {

/// The game's window and the input devices seen through it, with GLFW's numbering and semantics throughout: keys,
/// buttons, input modes and joystick slots are GLFW numbers, and pointers to device arrays stay valid until the
/// next call for the same device. Callbacks are registered under a name so that their owner can remove them.
class QUORL_EXPORT Window {
public:
    /// GLFW's gamepad record: 15 button states, then 6 axes in -1..1.
    struct GamepadState {
        unsigned char buttons[15];
        float axes[6];
    };
    using KeyCallback = std::function<void(int key, int scancode, int action, int mods)>;
    using MouseButtonCallback = std::function<void(int button, int action, int mods)>;

    virtual ~Window() = default;

    /// Size of the window's content area in screen coordinates, kept by the backend. Mouse look measures cursor
    /// movement against `width`, so it is never 0.
    int width = 1280;
    int height = 720;

    virtual int GetKey(int key) = 0;
    virtual int GetMouseButton(int button) = 0;
    virtual void GetCursorPos(double& x, double& y) = 0;
    virtual void SetCursorPos(double x, double y) = 0;
    virtual int GetInputMode(int mode) = 0;
    virtual void SetInputMode(int mode, int value) = 0;
    virtual bool IsFocused() = 0;

    virtual void AddCallback_Key(std::string const& name, KeyCallback&& callback) = 0;
    virtual void RemoveCallback_Key(std::string const& name) = 0;
    virtual void AddCallback_MouseButton(std::string const& name, MouseButtonCallback&& callback) = 0;
    virtual void RemoveCallback_MouseButton(std::string const& name) = 0;

    /// False when the slot holds no gamepad; `state` is then left as it was.
    virtual bool GetGamepadState(int joystick, GamepadState* state) = 0;
    /// Null, with count 0, when the slot is empty.
    virtual float const* GetJoystickAxes(int joystick, int* count) = 0;
    virtual unsigned char const* GetJoystickButtons(int joystick, int* count) = 0;
    virtual unsigned char const* GetJoystickHats(int joystick, int* count) = 0;
    /// Null when the slot is empty.
    virtual char const* GetJoystickGUID(int joystick) = 0;
    virtual char const* GetJoystickName(int joystick) = 0;
    virtual bool JoystickIsGamepad(int joystick) = 0;
};

}
