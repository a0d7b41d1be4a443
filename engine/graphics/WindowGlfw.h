#pragma once

#include "engine/graphics/Window.h"

#include <array>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct GLFWwindow;

namespace quorl::graphics {

/// The game's window on a display, through GLFW, with no client API: Vulkan draws into it.
///
/// GLFW takes its calls on the main thread only, while the input loop reads devices on a thread of its own. So the
/// main thread calls PollEvents, which takes what GLFW reports (keys, buttons, cursor, focus, every joystick slot)
/// into a snapshot; the queries answer from that snapshot under a lock, from any thread. Cursor moves and input
/// modes asked for elsewhere reach GLFW at the next PollEvents. Callbacks run on the main thread, inside PollEvents.
class QUORL_EXPORT WindowGlfw final : public Window {
public:
    /// Throws std::runtime_error with GLFW's own description when there is no display or the window cannot open.
    WindowGlfw(std::string const& title, int width, int height);
    ~WindowGlfw() override;
    WindowGlfw(WindowGlfw const&) = delete;
    WindowGlfw& operator=(WindowGlfw const&) = delete;

    /// Main thread only: handles pending events and requests, and reads the joystick slots.
    void PollEvents();
    /// Whether the user has asked to close the window.
    bool ShouldClose() const;
    GLFWwindow* Handle() const { return _window; }

    int GetKey(int key) override;
    int GetMouseButton(int button) override;
    void GetCursorPos(double& x, double& y) override;
    void SetCursorPos(double x, double y) override;
    int GetInputMode(int mode) override;
    void SetInputMode(int mode, int value) override;
    bool IsFocused() override;

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
    /// One joystick slot as the last PollEvents saw it. No member initialisers: clang would judge the struct not
    /// default-constructible inside this still incomplete class; emplace() value-initialises it to zero instead.
    struct Device {
        std::string guid;
        std::string name;
        bool gamepad;
        std::vector<float> axes;
        std::vector<unsigned char> buttons;
        std::vector<unsigned char> hats;
        GamepadState gamepadState;
    };
    /// The arrays handed to the reader (the input loop), kept until its next call for the same slot while
    /// PollEvents refills the snapshot.
    struct HandedOut {
        std::vector<float> axes;
        std::vector<unsigned char> buttons;
        std::vector<unsigned char> hats;
        std::string guid;
        std::string name;
    };
    static constexpr int kKeys = 349;
    static constexpr int kMouseButtons = 8;
    static constexpr int kJoysticks = 16;

    static void OnKey(GLFWwindow* window, int key, int scancode, int action, int mods);
    static void OnMouseButton(GLFWwindow* window, int button, int action, int mods);
    static void OnCursorPos(GLFWwindow* window, double x, double y);
    static void OnFocus(GLFWwindow* window, int focused);
    static void OnSize(GLFWwindow* window, int width, int height);
    void ReadJoysticks();
    Device const* FindDevice(int joystick) const;

    GLFWwindow* _window = nullptr;
    mutable std::mutex _mutex;
    std::array<int, kKeys> _keys{};
    std::array<int, kMouseButtons> _mouseButtons{};
    double _cursorX = 0.0;
    double _cursorY = 0.0;
    bool _focused = false;
    std::optional<std::pair<double, double>> _cursorRequest;
    std::vector<std::pair<int, int>> _inputModeRequests;
    std::map<int, int> _inputModes;
    std::map<std::string, KeyCallback> _keyCallbacks;
    std::map<std::string, MouseButtonCallback> _mouseButtonCallbacks;
    std::array<std::optional<Device>, kJoysticks> _devices;
    std::array<HandedOut, kJoysticks> _handedOut;
};

}
