// The controller: the bindings' accumulation, the input pass, the binding names and the 360 getters expanded from
// the action table.

#include "game/input/Controller.h"

#include "engine/graphics/Window.h"
#include "engine/input/KeyNames.h"
#include "game/Game.h"
#include "game/GameSettings.h"
#include "game/input/HoldTimer.h"
#include "game/input/Joystick.h"

#include <imgui.h>

#include <cmath>

namespace game::input {

Controller::State Controller::state;
Controller::State Controller::previousState;
bool Controller::vehicleGamepadLookMode = true;

namespace {
// Cursor movement is taken relative to the window's width; half of that is one unit of look.
constexpr double kMouseLookFactor = 0.5;

// Interface capture counts only when an interface context exists: a server or a test runs without one.
bool UiWantsKeyboard() {
    return ImGui::GetCurrentContext() && ImGui::GetIO().WantCaptureKeyboard;
}

bool UiWantsMouse() {
    return ImGui::GetCurrentContext() && ImGui::GetIO().WantCaptureMouse;
}

bool UiWindowFocused() {
    return ImGui::GetCurrentContext() && ImGui::IsWindowFocused(ImGuiFocusedFlags_AnyWindow);
}

void Add(bool& value, double amount) {
    value = value || amount != 0.0;
}

void Add(double& value, double amount) {
    value += amount;
}

template <class T>
void AddKeyboardAndMouse(T& value, Controller::InputBinding const& binding) {
    auto* window = Game::window;
    if (!window)
        return;
    if (binding.key >= 0 && !UiWantsKeyboard())
        Add(value, window->GetKey(binding.key));
    if (binding.mouse_button >= 0 && !UiWantsMouse() && Game::MouseLook())
        Add(value, window->GetMouseButton(binding.mouse_button));
}

/// One axis of a binding. Unipolar reads 0..1 from the axis's rest at -1, flipped to 1..0 for sign -1; bipolar reads
/// sign times the axis, where `triggerAxis` still reads 0..1.
template <class Read>
double ReadAxis(Read&& read, int sign, bool unipolar, bool triggerAxis) {
    if (!unipolar)
        return sign * read(triggerAxis);
    if (sign == -1)
        return 1.0 - read(true);
    return read(true);
}

template <class T>
void AddDevices(std::shared_ptr<Joystick> const& pad, T& value, Controller::InputBinding const& binding,
                bool unipolar) {
    auto const& settings = Game::settings;
    if (!settings)
        return;
    if (pad) {
        if (binding.gamepad_axis >= 0) {
            float deadzone = settings->input_gamepad_axis_deadzone;
            auto read = [&](bool axisUnipolar) {
                return pad->GetGamepadAxis(binding.gamepad_axis, deadzone, false, axisUnipolar);
            };
            // The triggers, from this axis on, read 0..1 even where the other axes read sign times -1..1.
            bool trigger = binding.gamepad_axis >= GamepadAxis::LeftTrigger;
            Add(value, ReadAxis(read, binding.gamepad_axis_sign, unipolar, trigger));
        }
        if (binding.gamepad_button >= 0)
            Add(value, pad->GetGamepadButton(binding.gamepad_button));
    }
    if (binding.joystick_button < 0 && binding.joystick_axis < 0)
        return;
    auto joystick = Game::GetJoystick(binding.joystick_id, binding.joystick_index);
    if (!joystick)
        return;
    if (binding.joystick_axis >= 0) {
        float deadzone = settings->input_joystick_axis_deadzone;
        auto read = [&](bool axisUnipolar) {
            return joystick->GetAxis(binding.joystick_axis, deadzone, false, axisUnipolar);
        };
        // A joystick has no fixed trigger axes: bipolar, all read -1..1.
        Add(value, ReadAxis(read, binding.joystick_axis_sign, unipolar, false));
    } else {
        Add(value, joystick->GetButton(binding.joystick_button));
    }
}

/// Hands every row of the binding table to `visit(value, binding, reading)`, `value` being the field of `next` that
/// the row's action fills: bool or double, so `visit` is generic.
template <class Visit>
void ForEachBinding(Controller::State& next, GameSettings const& s, Visit&& visit) {
#define MERIDON_VISIT_BINDING(name, Action, reading, file, help, ...)                                                \
    visit(next.Action, s.input_binding_##name, actions::reading);
    MERIDON_INPUT_BINDINGS(MERIDON_VISIT_BINDING)
#undef MERIDON_VISIT_BINDING
}

/// Whether the gamepad and joystick stage reads a binding in input `mode`; the look has a stage of its own.
bool ReadsPads(actions::Pads pads, uint8_t mode) {
    using enum actions::Pads;
    return pads == AnyMode || (pads == Play && mode == 1) || (pads == Station && mode == 2);
}

/// What one look binding adds to the view this pass: the stick's push squared, so that aim is fine near the
/// centre, or a whole unit for a button.
double GamepadLook(Joystick const& pad, Controller::InputBinding const& binding, double dt, double factor) {
    if (binding.gamepad_axis >= 0) {
        double push = binding.gamepad_axis_sign *
                      pad.GetGamepadAxis(binding.gamepad_axis, Game::settings->input_gamepad_axis_deadzone, false,
                                         false);
        return push > 0.0 ? push * push * dt * factor : 0.0;
    }
    if (binding.gamepad_button >= 0)
        return pad.GetGamepadButton(binding.gamepad_button) * dt;
    return 0.0;
}

char const* MouseButtonName(int button) {
    static char const* const names[] = {"MOUSE_LEFT", "MOUSE_RIGHT", "MOUSE_MIDDLE", "MOUSE_4",
                                        "MOUSE_5",    "MOUSE_6",     "MOUSE_7",      "MOUSE_8"};
    return button < static_cast<int>(std::size(names)) ? names[button] : "[NONE]";
}

bool IsOn(bool value) {
    return value;
}

bool IsOn(double value) {
    return value != 0.0;
}
}

// ---- Bindings -------------------------------------------------------------------------------------------------------

void Controller::InputBindingState(bool& value, InputBinding const& binding) {
    AddKeyboardAndMouse(value, binding);
}

void Controller::InputBindingState(double& value, InputBinding const& binding) {
    AddKeyboardAndMouse(value, binding);
}

void Controller::InputBindingState(std::shared_ptr<Joystick> const& pad, bool& value, InputBinding const& binding,
                                   bool) {
    AddDevices(pad, value, binding, true);
}

void Controller::InputBindingState(std::shared_ptr<Joystick> const& pad, double& value, InputBinding const& binding,
                                   bool unipolar) {
    AddDevices(pad, value, binding, unipolar);
}

// ---- The input pass -------------------------------------------------------------------------------------------------
//
// Each stage walks the binding table and reads the bindings whose reading says so; what is left are the cases that
// no row describes. An action adds up its bindings in the order of the stages: keyboard and mouse, then gamepad and
// joystick, then the gamepad look, then the sprint latch, which must see the walk of the whole pass. Within a stage
// no action has two bindings but the look, so the walk's order does not matter there.

void Controller::InputUpdate(double dt) {
    using namespace actions;
    static bool isSprinting = false;
    State next{};
    auto* window = Game::window;
    auto const& settings = Game::settings;
    if (!window || !settings) {
        previousState = state;
        state = next;
        return;
    }
    auto const& s = *settings;
    auto const mode = Game::InputMode();
    auto forEachBinding = [&](auto&& visit) { ForEachBinding(next, s, visit); };

    // Escape and chat (the bindings whose keys are read always) work in every mode, even while the interface has the
    // keyboard: they are how a user leaves it.
    next.Escape = window->GetKey(Key::Escape);
    forEachBinding([&](auto& value, InputBinding const& binding, Reading const& reading) {
        if (reading.keys == Keys::Always && binding.key >= 0)
            Add(value, window->GetKey(binding.key));
    });

    // Keyboard and mouse, outside the user interface mode.
    if (mode != 0) {
        bool const windowFocused = UiWindowFocused();
        forEachBinding([&](auto& value, InputBinding const& binding, Reading const& reading) {
            if (reading.keys == Keys::OutsideInterface || (reading.keys == Keys::Unfocused && !windowFocused))
                InputBindingState(value, binding);
        });
        // The cursor is disabled while mouse look is on, so its position is the movement since the last pass.
        if (Game::MouseLook()) {
            double x = 0.0, y = 0.0;
            window->GetCursorPos(x, y);
            window->SetCursorPos(0.0, 0.0);
            next.AvatarPitch += y / window->width * kMouseLookFactor;
            next.AvatarYaw += x / window->width * kMouseLookFactor;
        }
    }

    // Gamepad and joysticks. The binding's own gamepad id and index play no part: the first gamepad always serves.
    auto pad = Game::GetFirstGamepad();
    if (pad && pad->GetGamepadButton(GamepadButton::Start))
        next.Escape = true;
    std::shared_ptr<Joystick> const none;
    forEachBinding([&](auto& value, InputBinding const& binding, Reading const& reading) {
        if (!ReadsPads(reading.pads, mode))
            return;
        // A latched gamepad part is read below; a steering one waits while the sticks look around. A joystick's
        // part counts either way.
        bool const gamepad = reading.gamepad == GamepadPart::Read ||
                             (reading.gamepad == GamepadPart::WhileSteering && !vehicleGamepadLookMode);
        InputBindingState(gamepad ? pad : none, value, binding, reading.polarity == Polarity::Unipolar);
    });

    // Gamepad look, quadratic in the stick's push. Every look action takes its negative bindings first, then its
    // positive ones: a float sum rounds by its order, so the order is fixed rather than left to the table's.
    if (pad && (mode == 1 || (mode == 2 && vehicleGamepadLookMode))) {
        for (int sign : {-1, +1}) {
            forEachBinding([&](auto& value, InputBinding const& binding, Reading const& reading) {
                if (reading.pads == Pads::Look && reading.lookSign == sign)
                    Add(value, sign * GamepadLook(*pad, binding, dt, reading.lookSpeed));
            });
        }
    }

    // Gamepad sprint. A sprint button is a stick click, awkward to hold while walking, so it latches until the
    // sticks let go.
    auto const& sprint = s.input_binding_avatar_sprint;
    if (pad && mode == 1) {
        if (sprint.gamepad_axis >= 0) {
            double push = sprint.gamepad_axis_sign *
                          pad->GetGamepadAxis(sprint.gamepad_axis, s.input_gamepad_axis_deadzone, false, true);
            next.AvatarSprint = (push + next.AvatarSprint) != 0.0;
        } else if (sprint.gamepad_button >= 0) {
            double walking = std::abs(next.AvatarTranslateForward) + std::abs(next.AvatarTranslateBackward) +
                             std::abs(next.AvatarTranslateRight) + std::abs(next.AvatarTranslateLeft);
            bool down = pad->GetGamepadButton(sprint.gamepad_button);
            if (walking < 0.1)
                isSprinting = false;
            if (down)
                isSprinting = true;
            if (down || isSprinting)
                next.AvatarSprint = true;
        }
    }

#define MERIDON_CONTROLLER_CLAMP(Name, Kind) actions::Kind::Clamp(next.Name);
    MERIDON_CONTROLLER_ACTIONS(MERIDON_CONTROLLER_CLAMP)
#undef MERIDON_CONTROLLER_CLAMP

    previousState = state;
    state = next;

    if (GetVehicleGamepadLookToggle_Pressed())
        vehicleGamepadLookMode = !vehicleGamepadLookMode;
}

// ---- Binding names --------------------------------------------------------------------------------------------------

std::string Controller::BindingStr(InputBinding const& binding) {
    using quorl::input::code_to_string;
    if (binding.key >= 0)
        return code_to_string("KEY", binding.key) + 4; // "KEY_F" shows as "F"; "NONE" as ""
    if (binding.mouse_button >= 0)
        return MouseButtonName(binding.mouse_button);
    if (binding.gamepad_axis >= 0)
        return code_to_string("GAMEPAD_AXIS", binding.gamepad_axis);
    if (binding.gamepad_button >= 0)
        return code_to_string("GAMEPAD_BUTTON", binding.gamepad_button);
    if (binding.joystick_axis >= 0)
        return code_to_string("JOYSTICK_AXIS", binding.joystick_axis);
    if (binding.joystick_button >= 0)
        return code_to_string("JOYSTICK_BUTTON", binding.joystick_button);
    return "[NONE]";
}

// ---- Getters --------------------------------------------------------------------------------------------------------

double actions::Look::Read(double value) {
    return Game::settings ? value * Game::settings->look_sensitivity : value;
}

#define MERIDON_CONTROLLER_GETTERS(Name, Kind)                                                                       \
    actions::Kind::Value Controller::Get##Name() {                                                                   \
        return actions::Kind::Read(state.Name);                                                                      \
    }                                                                                                                \
    bool Controller::Get##Name##_Pressed() {                                                                         \
        return IsOn(state.Name) && !IsOn(previousState.Name);                                                        \
    }                                                                                                                \
    bool Controller::Get##Name##_Released() {                                                                        \
        return !IsOn(state.Name) && IsOn(previousState.Name);                                                        \
    }                                                                                                                \
    actions::Kind::Delta Controller::Get##Name##_Delta() {                                                           \
        return actions::Kind::Difference(state.Name, previousState.Name);                                            \
    }                                                                                                                \
    bool Controller::Get##Name##_Hold(double holdMs, double tapMs) {                                                 \
        static HoldTimer timer;                                                                                      \
        return timer.Poll(Get##Name##_Pressed(), Get##Name##_Released(), IsOn(state.Name), holdMs, tapMs);          \
    }                                                                                                                \
    bool Controller::Get##Name##_HoldOrToggle(double tapMs) {                                                        \
        if (Get##Name##_Hold(0.0, tapMs))                                                                            \
            return Get##Name##_Pressed();                                                                            \
        if (Get##Name##_Released())                                                                                  \
            return true;                                                                                             \
        return Get##Name##_Pressed();                                                                                \
    }
MERIDON_CONTROLLER_ACTIONS(MERIDON_CONTROLLER_GETTERS)
#undef MERIDON_CONTROLLER_GETTERS

}
