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
// GLFW's numbers.
constexpr int kKeyEscape = 256;
constexpr int kGamepadButtonStart = 7;
// Gamepad axes from this one on are triggers, at rest at -1, and read 0..1.
constexpr int kFirstTriggerAxis = 4;
// Yaw turns faster than pitch on a stick: the view has further to go around than up and down.
constexpr double kGamepadYawFactor = 1.5;
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
    if (binding.mouse_button >= 0 && !UiWantsMouse() && Game::_mouseLook)
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
            bool trigger = binding.gamepad_axis >= kFirstTriggerAxis;
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

void Controller::InputUpdate(double dt) {
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
    auto const mode = Game::_inputMode;

    // Escape and chat work in every mode, even while the interface has the keyboard: they are how a user leaves it.
    next.Escape = window->GetKey(kKeyEscape);
    if (s.input_binding_input_chat.key >= 0)
        next.InputChat = window->GetKey(s.input_binding_input_chat.key);

    // Keyboard and mouse, outside the user interface mode.
    if (mode != 0) {
        InputBindingState(next.AvatarInventory, s.input_binding_avatar_inventory_toggle);
        InputBindingState(next.AvatarInventorySelectNext, s.input_binding_avatar_inventory_select_next);
        InputBindingState(next.AvatarInventorySelectPrev, s.input_binding_avatar_inventory_select_prev);
        InputBindingState(next.AvatarInventorySelect1, s.input_binding_avatar_inventory_select_1);
        InputBindingState(next.AvatarInventorySelect2, s.input_binding_avatar_inventory_select_2);
        InputBindingState(next.AvatarInventorySelect3, s.input_binding_avatar_inventory_select_3);
        InputBindingState(next.AvatarInventorySelect4, s.input_binding_avatar_inventory_select_4);
        InputBindingState(next.AvatarInventorySelect5, s.input_binding_avatar_inventory_select_5);
        InputBindingState(next.AvatarInventorySelect6, s.input_binding_avatar_inventory_select_6);
        InputBindingState(next.AvatarInventorySelect7, s.input_binding_avatar_inventory_select_7);
        InputBindingState(next.AvatarInventorySelect8, s.input_binding_avatar_inventory_select_8);
        InputBindingState(next.AvatarInventorySelect9, s.input_binding_avatar_inventory_select_9);
        InputBindingState(next.AvatarInventoryDeselect, s.input_binding_avatar_inventory_deselect);

        // The cursor is disabled while mouse look is on, so its position is the movement since the last pass.
        if (Game::_mouseLook) {
            double x = 0.0, y = 0.0;
            window->GetCursorPos(x, y);
            window->SetCursorPos(0.0, 0.0);
            next.AvatarPitch += y / window->width * kMouseLookFactor;
            next.AvatarYaw += x / window->width * kMouseLookFactor;
        }

        if (!UiWindowFocused()) {
            InputBindingState(next.Sit, s.input_binding_sit);
            InputBindingState(next.ThirdPerson, s.input_binding_third_person);
            InputBindingState(next.Zoom, s.input_binding_zoom);
            InputBindingState(next.AvatarTranslateForward, s.input_binding_avatar_translate_forward);
            InputBindingState(next.AvatarTranslateBackward, s.input_binding_avatar_translate_backward);
            InputBindingState(next.AvatarTranslateRight, s.input_binding_avatar_translate_right);
            InputBindingState(next.AvatarTranslateLeft, s.input_binding_avatar_translate_left);
            InputBindingState(next.AvatarJump, s.input_binding_avatar_jump);
            InputBindingState(next.AvatarLight, s.input_binding_avatar_light);
            InputBindingState(next.AvatarSprint, s.input_binding_avatar_sprint);
            InputBindingState(next.AvatarCrouch, s.input_binding_avatar_crouch);
            InputBindingState(next.AvatarJetpack, s.input_binding_avatar_jetpack);
            InputBindingState(next.AvatarInteract, s.input_binding_avatar_interact);
            InputBindingState(next.AvatarToolConfigure, s.input_binding_avatar_tool_configure);
            InputBindingState(next.AvatarToolSpecialMode, s.input_binding_avatar_tool_special_mode);
            InputBindingState(next.GetInfo, s.input_binding_get_info);
            InputBindingState(next.AvatarLookToggle, s.input_binding_avatar_look_toggle);
            InputBindingState(next.AvatarToolPrimary, s.input_binding_avatar_tool_primary);
            InputBindingState(next.AvatarToolSecondary, s.input_binding_avatar_tool_secondary);
            InputBindingState(next.VehicleTranslateForward, s.input_binding_vehicle_translate_forward);
            InputBindingState(next.VehicleTranslateBackward, s.input_binding_vehicle_translate_backward);
            InputBindingState(next.VehicleTranslateRight, s.input_binding_vehicle_translate_right);
            InputBindingState(next.VehicleTranslateLeft, s.input_binding_vehicle_translate_left);
            InputBindingState(next.VehicleTranslateUp, s.input_binding_vehicle_translate_up);
            InputBindingState(next.VehicleTranslateDown, s.input_binding_vehicle_translate_down);
            InputBindingState(next.VehicleMainThrust, s.input_binding_vehicle_main_thrust);
            InputBindingState(next.VehiclePitchUp, s.input_binding_vehicle_pitch_up);
            InputBindingState(next.VehiclePitchDown, s.input_binding_vehicle_pitch_down);
            InputBindingState(next.VehicleYawRight, s.input_binding_vehicle_yaw_right);
            InputBindingState(next.VehicleYawLeft, s.input_binding_vehicle_yaw_left);
            InputBindingState(next.VehicleRollRight, s.input_binding_vehicle_roll_right);
            InputBindingState(next.VehicleRollLeft, s.input_binding_vehicle_roll_left);
            InputBindingState(next.VehicleAux0, s.input_binding_vehicle_aux_0);
            InputBindingState(next.VehicleAux1, s.input_binding_vehicle_aux_1);
            InputBindingState(next.VehicleAux2, s.input_binding_vehicle_aux_2);
            InputBindingState(next.VehicleAux3, s.input_binding_vehicle_aux_3);
            InputBindingState(next.VehicleAux4, s.input_binding_vehicle_aux_4);
            InputBindingState(next.VehicleAux5, s.input_binding_vehicle_aux_5);
            InputBindingState(next.VehicleAux6, s.input_binding_vehicle_aux_6);
            InputBindingState(next.VehicleAux7, s.input_binding_vehicle_aux_7);
            InputBindingState(next.VehicleAux8, s.input_binding_vehicle_aux_8);
            InputBindingState(next.VehicleAux9, s.input_binding_vehicle_aux_9);
        }
    }

    // Gamepad and joysticks. The binding's own gamepad id and index play no part: the first gamepad always serves.
    auto pad = Game::GetFirstGamepad();
    std::shared_ptr<Joystick> const none;
    constexpr bool bipolar = false;
    constexpr bool unipolar = true;
    if (pad && pad->GetGamepadButton(kGamepadButtonStart))
        next.Escape = true;
    InputBindingState(pad, next.Sit, s.input_binding_sit, unipolar);
    InputBindingState(pad, next.ThirdPerson, s.input_binding_third_person, unipolar);
    InputBindingState(pad, next.Zoom, s.input_binding_zoom, unipolar);
    if (mode == 1) {
        InputBindingState(pad, next.AvatarInventory, s.input_binding_avatar_inventory_toggle, unipolar);
        InputBindingState(pad, next.AvatarInventorySelectNext, s.input_binding_avatar_inventory_select_next, unipolar);
        InputBindingState(pad, next.AvatarInventorySelectPrev, s.input_binding_avatar_inventory_select_prev, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect1, s.input_binding_avatar_inventory_select_1, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect2, s.input_binding_avatar_inventory_select_2, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect3, s.input_binding_avatar_inventory_select_3, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect4, s.input_binding_avatar_inventory_select_4, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect5, s.input_binding_avatar_inventory_select_5, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect6, s.input_binding_avatar_inventory_select_6, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect7, s.input_binding_avatar_inventory_select_7, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect8, s.input_binding_avatar_inventory_select_8, unipolar);
        InputBindingState(pad, next.AvatarInventorySelect9, s.input_binding_avatar_inventory_select_9, unipolar);
        InputBindingState(pad, next.AvatarInventoryDeselect, s.input_binding_avatar_inventory_deselect, unipolar);
        InputBindingState(pad, next.AvatarTranslateForward, s.input_binding_avatar_translate_forward, bipolar);
        InputBindingState(pad, next.AvatarTranslateBackward, s.input_binding_avatar_translate_backward, bipolar);
        InputBindingState(pad, next.AvatarTranslateRight, s.input_binding_avatar_translate_right, bipolar);
        InputBindingState(pad, next.AvatarTranslateLeft, s.input_binding_avatar_translate_left, bipolar);
        InputBindingState(pad, next.AvatarJump, s.input_binding_avatar_jump, unipolar);
        // A gamepad's sprint button latches, below; here only a joystick's counts.
        InputBindingState(none, next.AvatarSprint, s.input_binding_avatar_sprint, unipolar);
        InputBindingState(pad, next.AvatarCrouch, s.input_binding_avatar_crouch, unipolar);
        InputBindingState(pad, next.AvatarJetpack, s.input_binding_avatar_jetpack, unipolar);
        InputBindingState(pad, next.AvatarInteract, s.input_binding_avatar_interact, unipolar);
        InputBindingState(pad, next.AvatarToolConfigure, s.input_binding_avatar_tool_configure, unipolar);
        InputBindingState(pad, next.AvatarToolSpecialMode, s.input_binding_avatar_tool_special_mode, unipolar);
    }
    InputBindingState(pad, next.GetInfo, s.input_binding_get_info, unipolar);
    InputBindingState(pad, next.AvatarLight, s.input_binding_avatar_light, unipolar);
    InputBindingState(pad, next.AvatarLookToggle, s.input_binding_avatar_look_toggle, unipolar);
    InputBindingState(pad, next.AvatarToolPrimary, s.input_binding_avatar_tool_primary, unipolar);
    InputBindingState(pad, next.AvatarToolSecondary, s.input_binding_avatar_tool_secondary, unipolar);
    if (mode == 2) {
        // While the sticks look around, they do not also steer.
        auto const& steer = vehicleGamepadLookMode ? none : pad;
        InputBindingState(pad, next.VehicleTranslateForward, s.input_binding_vehicle_translate_forward, bipolar);
        InputBindingState(pad, next.VehicleTranslateBackward, s.input_binding_vehicle_translate_backward, bipolar);
        InputBindingState(pad, next.VehicleTranslateRight, s.input_binding_vehicle_translate_right, bipolar);
        InputBindingState(pad, next.VehicleTranslateLeft, s.input_binding_vehicle_translate_left, bipolar);
        InputBindingState(pad, next.VehicleTranslateUp, s.input_binding_vehicle_translate_up, bipolar);
        InputBindingState(pad, next.VehicleTranslateDown, s.input_binding_vehicle_translate_down, bipolar);
        InputBindingState(pad, next.VehicleMainThrust, s.input_binding_vehicle_main_thrust, unipolar);
        InputBindingState(steer, next.VehiclePitchUp, s.input_binding_vehicle_pitch_up, bipolar);
        InputBindingState(steer, next.VehiclePitchDown, s.input_binding_vehicle_pitch_down, bipolar);
        InputBindingState(steer, next.VehicleYawRight, s.input_binding_vehicle_yaw_right, bipolar);
        InputBindingState(steer, next.VehicleYawLeft, s.input_binding_vehicle_yaw_left, bipolar);
        InputBindingState(pad, next.VehicleRollRight, s.input_binding_vehicle_roll_right, bipolar);
        InputBindingState(pad, next.VehicleRollLeft, s.input_binding_vehicle_roll_left, bipolar);
        InputBindingState(pad, next.VehicleAux0, s.input_binding_vehicle_aux_0, unipolar);
        InputBindingState(pad, next.VehicleAux1, s.input_binding_vehicle_aux_1, unipolar);
        InputBindingState(pad, next.VehicleAux2, s.input_binding_vehicle_aux_2, unipolar);
        InputBindingState(pad, next.VehicleAux3, s.input_binding_vehicle_aux_3, unipolar);
        InputBindingState(pad, next.VehicleAux4, s.input_binding_vehicle_aux_4, unipolar);
        InputBindingState(pad, next.VehicleAux5, s.input_binding_vehicle_aux_5, unipolar);
        InputBindingState(pad, next.VehicleAux6, s.input_binding_vehicle_aux_6, unipolar);
        InputBindingState(pad, next.VehicleAux7, s.input_binding_vehicle_aux_7, unipolar);
        InputBindingState(pad, next.VehicleAux8, s.input_binding_vehicle_aux_8, unipolar);
        InputBindingState(pad, next.VehicleAux9, s.input_binding_vehicle_aux_9, unipolar);
        InputBindingState(pad, next.VehicleGamepadLookToggle, s.input_binding_vehicle_gamepad_look_toggle, unipolar);
    }

    // Gamepad look, quadratic in the stick's push.
    if (pad && (mode == 1 || (mode == 2 && vehicleGamepadLookMode))) {
        next.AvatarPitch -= GamepadLook(*pad, s.input_binding_avatar_pitch_down, dt, 1.0);
        next.AvatarPitch += GamepadLook(*pad, s.input_binding_avatar_pitch_up, dt, 1.0);
        next.AvatarYaw -= GamepadLook(*pad, s.input_binding_avatar_yaw_left, dt, kGamepadYawFactor);
        next.AvatarYaw += GamepadLook(*pad, s.input_binding_avatar_yaw_right, dt, kGamepadYawFactor);
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
