#pragma once

// The controller's two tables. Actions: one row per action, in the order of Controller::State, expanded by
// Controller.h and Controller.cpp into the state record and the six getters of every action. Bindings: one row per
// binding of GameSettings, in the order of its fields and of the settings file, expanded by GameSettings.h/.cpp into
// the fields, their defaults, keys and comments, and by Controller.cpp into the input pass; the settings panels walk
// it for their rows. A new action is one row in each. They stay two lists because the state record and the settings
// file each have an order of their own, and because an action may have no binding (Escape) or two (the look). This
// header promises nothing to modules: use the getters of Controller.

#include <algorithm>

// ---- Codes ----------------------------------------------------------------------------------------------------------

namespace game::input {

// GLFW's numbers for the codes the default bindings use, named as in the settings file without the prefix: Key::W
// is KEY_W, GamepadAxis::LeftY is GAMEPAD_AXIS_LEFT_Y, JoystickAxis::Axis1 is JOYSTICK_AXIS_1 (axis 0). Structs
// rather than namespaces, so that GameSettings can name them from inside its class.
struct Key {
    enum : int {
        Space = 32, Minus = 45, Digit0 = 48, Digit1, Digit2, Digit3, Digit4, Digit5, Digit6, Digit7, Digit8, Digit9,
        Equal = 61, A = 65, B, C, D, E, F, G, H, I, J, K, L, M, N, O, P, Q, R, S, T, U, V, W, X, Y, Z,
        GraveAccent = 96, Escape = 256, Enter, Tab, Right = 262, Left, Down, Up, LeftShift = 340, LeftControl, LeftAlt
    };
};
struct MouseButton {
    enum : int { Left, Right };
};
struct GamepadButton {
    enum : int {
        A, B, X, Y, LeftBumper, RightBumper, Back, Start, Guide, LeftThumb, RightThumb, DpadUp, DpadRight, DpadDown,
        DpadLeft
    };
};
struct GamepadAxis {
    /// The triggers rest at -1.
    enum : int { LeftX, LeftY, RightX, RightY, LeftTrigger, RightTrigger };
};
struct JoystickAxis {
    enum : int { Axis1, Axis2, Axis3, Axis4 };
};

}

namespace game::input::actions {

// ---- Kinds of action ------------------------------------------------------------------------------------------------

/// On or off.
struct Button {
    using Stored = bool;
    using Value = bool;
    using Delta = int;
    static bool Read(bool value) { return value; }
    static int Difference(bool now, bool before) { return int(now) - int(before); }
    static void Clamp(bool&) {}
};

/// An amount from 0 to 1: keys, buttons and axes that share the binding add up, then the sum is clamped.
struct Axis {
    using Stored = double;
    using Value = double;
    using Delta = double;
    static double Read(double value) { return value; }
    static double Difference(double now, double before) { return now - before; }
    static void Clamp(double& value) { value = std::clamp(value, 0.0, 1.0); }
};

/// An amount read back as on or off.
struct AxisReadAsButton : Axis {
    using Value = bool;
    static bool Read(double value) { return value != 0.0; }
};

/// Look movement gathered in one pass, unclamped; read back scaled by the look sensitivity setting.
struct Look {
    using Stored = double;
    using Value = double;
    using Delta = double;
    static double Read(double value);
    static double Difference(double now, double before) { return Read(now) - Read(before); }
    static void Clamp(double&) {}
};

// ---- How the input pass reads a binding -----------------------------------------------------------------------------

/// When the pass reads a binding's keyboard and mouse part.
enum class Keys {
    Never,
    /// The key alone, in every mode and even while the interface has the keyboard: a way out of the interface.
    Always,
    /// In play and station mode.
    OutsideInterface,
    /// In play and station mode, while no interface window has focus.
    Unfocused,
};

/// In which input modes the pass reads a binding's gamepad and joystick part.
enum class Pads {
    Never,
    AnyMode,
    Play,
    Station,
    /// The gamepad part alone, as look movement: in play, and in station mode while the sticks look around.
    Look,
};

/// How an axis reads: from its rest 0..1 (1..0 for sign -1), or sign times -1..1 (a trigger still 0..1). Button
/// actions read every axis as unipolar.
enum class Polarity { Unipolar, Bipolar };

/// Whether the pass reads a binding's gamepad part along with its joystick part.
enum class GamepadPart {
    Read,
    /// Read after the pass by the gamepad sprint latch.
    Latched,
    /// Read only while the sticks steer (Controller::vehicleGamepadLookMode off).
    WhileSteering,
};

struct Reading {
    Keys keys;
    Pads pads;
    Polarity polarity = Polarity::Unipolar;
    GamepadPart gamepad = GamepadPart::Read;
    /// Look bindings: the way the binding turns the view, +1 or -1, and how fast a full push on the stick turns it.
    int lookSign = 0;
    double lookSpeed = 1.0;
};

// Yaw turns faster than pitch on a stick: the view has further to go around than up and down.
inline constexpr double kGamepadYawSpeed = 1.5;

// The readings the binding table names.
inline constexpr Reading Chat{.keys = Keys::Always, .pads = Pads::Never};
inline constexpr Reading Shared{.keys = Keys::Unfocused, .pads = Pads::AnyMode};
inline constexpr Reading Inventory{.keys = Keys::OutsideInterface, .pads = Pads::Play};
inline constexpr Reading Avatar{.keys = Keys::Unfocused, .pads = Pads::Play};
inline constexpr Reading Walk{.keys = Keys::Unfocused, .pads = Pads::Play, .polarity = Polarity::Bipolar};
inline constexpr Reading Sprint{.keys = Keys::Unfocused, .pads = Pads::Play, .gamepad = GamepadPart::Latched};
inline constexpr Reading LookUp{.keys = Keys::Never, .pads = Pads::Look, .lookSign = +1};
inline constexpr Reading LookDown{.keys = Keys::Never, .pads = Pads::Look, .lookSign = -1};
inline constexpr Reading LookLeft{
    .keys = Keys::Never, .pads = Pads::Look, .lookSign = -1, .lookSpeed = kGamepadYawSpeed};
inline constexpr Reading LookRight{
    .keys = Keys::Never, .pads = Pads::Look, .lookSign = +1, .lookSpeed = kGamepadYawSpeed};
inline constexpr Reading LookModeToggle{.keys = Keys::Never, .pads = Pads::Station};
inline constexpr Reading Vehicle{.keys = Keys::Unfocused, .pads = Pads::Station};
inline constexpr Reading Fly{.keys = Keys::Unfocused, .pads = Pads::Station, .polarity = Polarity::Bipolar};
inline constexpr Reading Steer{.keys = Keys::Unfocused, .pads = Pads::Station, .polarity = Polarity::Bipolar,
                               .gamepad = GamepadPart::WhileSteering};

}

// ---- Actions --------------------------------------------------------------------------------------------------------

// X(ActionName, Kind), Kind being one of the kinds above.
#define MERIDON_CONTROLLER_ACTIONS(X)                 \
    X(Escape, Button)                                 \
    X(InputChat, Button)                              \
    X(Sit, Button)                                    \
    X(ThirdPerson, Button)                            \
    X(Zoom, Button)                                   \
    X(AvatarLight, Button)                            \
    X(AvatarSprint, Button)                           \
    X(AvatarCrouch, Button)                           \
    X(AvatarJetpack, Button)                          \
    X(AvatarInteract, Button)                         \
    X(AvatarInventory, Button)                        \
    X(AvatarInventorySelectNext, Button)              \
    X(AvatarInventorySelectPrev, Button)              \
    X(AvatarInventorySelect1, Button)                 \
    X(AvatarInventorySelect2, Button)                 \
    X(AvatarInventorySelect3, Button)                 \
    X(AvatarInventorySelect4, Button)                 \
    X(AvatarInventorySelect5, Button)                 \
    X(AvatarInventorySelect6, Button)                 \
    X(AvatarInventorySelect7, Button)                 \
    X(AvatarInventorySelect8, Button)                 \
    X(AvatarInventorySelect9, Button)                 \
    X(AvatarInventoryDeselect, Button)                \
    X(AvatarToolConfigure, Button)                    \
    X(AvatarToolSpecialMode, Button)                  \
    X(GetInfo, Button)                                \
    X(AvatarLookToggle, Button)                       \
    X(AvatarPitch, Look)                              \
    X(AvatarYaw, Look)                                \
    X(AvatarJump, AxisReadAsButton)                   \
    X(AvatarTranslateForward, Axis)                   \
    X(AvatarTranslateBackward, Axis)                  \
    X(AvatarTranslateRight, Axis)                     \
    X(AvatarTranslateLeft, Axis)                      \
    X(AvatarToolPrimary, Axis)                        \
    X(AvatarToolSecondary, Axis)                      \
    X(VehicleAux0, Button)                            \
    X(VehicleAux1, Button)                            \
    X(VehicleAux2, Button)                            \
    X(VehicleAux3, Button)                            \
    X(VehicleAux4, Button)                            \
    X(VehicleAux5, Button)                            \
    X(VehicleAux6, Button)                            \
    X(VehicleAux7, Button)                            \
    X(VehicleAux8, Button)                            \
    X(VehicleAux9, Button)                            \
    X(VehicleTranslateForward, Axis)                  \
    X(VehicleTranslateBackward, Axis)                 \
    X(VehicleTranslateRight, Axis)                    \
    X(VehicleTranslateLeft, Axis)                     \
    X(VehicleTranslateUp, Axis)                       \
    X(VehicleTranslateDown, Axis)                     \
    X(VehicleMainThrust, Axis)                        \
    X(VehicleRollRight, Axis)                         \
    X(VehicleRollLeft, Axis)                          \
    X(VehiclePitchUp, Axis)                           \
    X(VehiclePitchDown, Axis)                         \
    X(VehicleYawRight, Axis)                          \
    X(VehicleYawLeft, Axis)                           \
    X(VehicleGamepadLookToggle, Button)


// ---- Bindings -------------------------------------------------------------------------------------------------------

// ROW(name, Action, Reading, Saved or Unsaved, help, default...). `name` gives the GameSettings field and the
// settings key, both "input_binding_" + name; `Action` is the field of Controller::State the binding feeds; `Reading`
// one of the readings above; an Unsaved binding is neither read from nor written to the settings file, so it holds its
// default at every start; `help` is the comment a new settings file shows above the key; the rest are the default
// binding's parts. Keys share codes on purpose: Key::Digit1 both selects inventory slot 1 and is vehicle aux 1, and
// Key::Down pitches a vehicle up, as a flight stick does. (The parameter is not X, since X is a code: Key::X.)
#define MERIDON_INPUT_BINDINGS(ROW)                                                                                 \
    ROW(input_chat, InputChat, Chat, Saved, "Open the chat input", .key = Key::Enter)                                  \
    ROW(sit, Sit, Shared, Saved, "Sit down or stand up", .key = Key::R, .gamepad_button = GamepadButton::B)            \
    ROW(third_person, ThirdPerson, Shared, Saved, "Switch between first and third person view", .key = Key::K)         \
    ROW(zoom, Zoom, Shared, Saved, "Zoom the view", .key = Key::Z)                                                     \
    ROW(avatar_jump, AvatarJump, Avatar, Saved, "Jump", .key = Key::Space, .gamepad_button = GamepadButton::A)         \
    ROW(avatar_look_toggle, AvatarLookToggle, Shared, Saved, "Free the mouse cursor or look around",                   \
        .key = Key::LeftAlt)                                                                                           \
    ROW(get_info, GetInfo, Shared, Saved, "Show information about what you aim at",                                    \
        .key = Key::V, .gamepad_button = GamepadButton::X)                                                             \
    ROW(avatar_interact, AvatarInteract, Avatar, Saved, "Interact with what you aim at",                               \
        .key = Key::F, .gamepad_button = GamepadButton::Y)                                                             \
    ROW(avatar_light, AvatarLight, Shared, Saved, "Switch the avatar's light",                                         \
        .key = Key::L, .gamepad_button = GamepadButton::RightBumper)                                                   \
    ROW(avatar_sprint, AvatarSprint, Sprint, Saved, "Sprint while held",                                               \
        .key = Key::LeftShift, .gamepad_button = GamepadButton::LeftThumb)                                             \
    ROW(avatar_crouch, AvatarCrouch, Avatar, Saved, "Crouch while held",                                               \
        .key = Key::LeftControl, .gamepad_button = GamepadButton::RightThumb)                                          \
    ROW(avatar_jetpack, AvatarJetpack, Avatar, Saved, "Switch the jetpack",                                            \
        .key = Key::J, .gamepad_button = GamepadButton::LeftBumper)                                                    \
    ROW(avatar_inventory_toggle, AvatarInventory, Inventory, Saved, "Open or close the inventory",                     \
        .key = Key::Tab, .gamepad_button = GamepadButton::DpadUp)                                                      \
    ROW(avatar_inventory_select_prev, AvatarInventorySelectPrev, Inventory, Saved,                                     \
        "Select the previous inventory slot", .key = Key::Minus, .gamepad_button = GamepadButton::DpadLeft)            \
    ROW(avatar_inventory_select_next, AvatarInventorySelectNext, Inventory, Saved, "Select the next inventory slot",   \
        .key = Key::Equal, .gamepad_button = GamepadButton::DpadRight)                                                 \
    ROW(avatar_inventory_select_1, AvatarInventorySelect1, Inventory, Saved, "Select inventory slot 1",                \
        .key = Key::Digit1)                                                                                            \
    ROW(avatar_inventory_select_2, AvatarInventorySelect2, Inventory, Saved, "Select inventory slot 2",                \
        .key = Key::Digit2)                                                                                            \
    ROW(avatar_inventory_select_3, AvatarInventorySelect3, Inventory, Saved, "Select inventory slot 3",                \
        .key = Key::Digit3)                                                                                            \
    ROW(avatar_inventory_select_4, AvatarInventorySelect4, Inventory, Saved, "Select inventory slot 4",                \
        .key = Key::Digit4)                                                                                            \
    ROW(avatar_inventory_select_5, AvatarInventorySelect5, Inventory, Saved, "Select inventory slot 5",                \
        .key = Key::Digit5)                                                                                            \
    ROW(avatar_inventory_select_6, AvatarInventorySelect6, Inventory, Saved, "Select inventory slot 6",                \
        .key = Key::Digit6)                                                                                            \
    ROW(avatar_inventory_select_7, AvatarInventorySelect7, Inventory, Saved, "Select inventory slot 7",                \
        .key = Key::Digit7)                                                                                            \
    ROW(avatar_inventory_select_8, AvatarInventorySelect8, Inventory, Saved, "Select inventory slot 8",                \
        .key = Key::Digit8)                                                                                            \
    ROW(avatar_inventory_select_9, AvatarInventorySelect9, Inventory, Saved, "Select inventory slot 9",                \
        .key = Key::Digit9)                                                                                            \
    ROW(avatar_inventory_deselect, AvatarInventoryDeselect, Inventory, Saved, "Put the selected item away",            \
        .key = Key::GraveAccent, .gamepad_button = GamepadButton::DpadDown)                                            \
    ROW(avatar_tool_primary, AvatarToolPrimary, Shared, Saved, "Use the tool in hand",                                 \
        .mouse_button = MouseButton::Left, .gamepad_axis = GamepadAxis::RightTrigger)                                  \
    ROW(avatar_tool_secondary, AvatarToolSecondary, Shared, Saved, "Secondary use of the tool in hand",                \
        .mouse_button = MouseButton::Right, .gamepad_axis = GamepadAxis::LeftTrigger)                                  \
    ROW(avatar_tool_configure, AvatarToolConfigure, Avatar, Saved, "Configure the tool in hand", .key = Key::C)        \
    ROW(avatar_tool_special_mode, AvatarToolSpecialMode, Avatar, Unsaved, "Use the special mode of the tool in hand",  \
        .key = Key::X)                                                                                                 \
    ROW(avatar_translate_forward, AvatarTranslateForward, Walk, Saved, "Walk forward",                                 \
        .key = Key::W, .gamepad_axis = GamepadAxis::LeftY, .gamepad_axis_sign = -1)                                    \
    ROW(avatar_translate_backward, AvatarTranslateBackward, Walk, Saved, "Walk backward",                              \
        .key = Key::S, .gamepad_axis = GamepadAxis::LeftY)                                                             \
    ROW(avatar_translate_left, AvatarTranslateLeft, Walk, Saved, "Walk left",                                          \
        .key = Key::A, .gamepad_axis = GamepadAxis::LeftX, .gamepad_axis_sign = -1)                                    \
    ROW(avatar_translate_right, AvatarTranslateRight, Walk, Saved, "Walk right",                                       \
        .key = Key::D, .gamepad_axis = GamepadAxis::LeftX)                                                             \
    ROW(avatar_pitch_up, AvatarPitch, LookUp, Saved, "Look up", .gamepad_axis = GamepadAxis::RightY)                   \
    ROW(avatar_pitch_down, AvatarPitch, LookDown, Saved, "Look down",                                                  \
        .gamepad_axis = GamepadAxis::RightY, .gamepad_axis_sign = -1)                                                  \
    ROW(avatar_yaw_left, AvatarYaw, LookLeft, Saved, "Look left",                                                      \
        .gamepad_axis = GamepadAxis::RightX, .gamepad_axis_sign = -1)                                                  \
    ROW(avatar_yaw_right, AvatarYaw, LookRight, Saved, "Look right", .gamepad_axis = GamepadAxis::RightX)              \
    ROW(vehicle_gamepad_look_toggle, VehicleGamepadLookToggle, LookModeToggle, Saved,                                  \
        "Switch the right stick between looking and steering", .gamepad_button = GamepadButton::RightThumb)            \
    ROW(vehicle_aux_0, VehicleAux0, Vehicle, Saved, "Vehicle auxiliary input 0",                                       \
        .key = Key::Digit0, .gamepad_button = GamepadButton::A)                                                        \
    ROW(vehicle_aux_1, VehicleAux1, Vehicle, Saved, "Vehicle auxiliary input 1",                                       \
        .key = Key::Digit1, .gamepad_button = GamepadButton::X)                                                        \
    ROW(vehicle_aux_2, VehicleAux2, Vehicle, Saved, "Vehicle auxiliary input 2",                                       \
        .key = Key::Digit2, .gamepad_button = GamepadButton::Y)                                                        \
    ROW(vehicle_aux_3, VehicleAux3, Vehicle, Saved, "Vehicle auxiliary input 3",                                       \
        .key = Key::Digit3, .gamepad_button = GamepadButton::RightBumper)                                              \
    ROW(vehicle_aux_4, VehicleAux4, Vehicle, Saved, "Vehicle auxiliary input 4",                                       \
        .key = Key::Digit4, .gamepad_button = GamepadButton::LeftBumper)                                               \
    ROW(vehicle_aux_5, VehicleAux5, Vehicle, Saved, "Vehicle auxiliary input 5",                                       \
        .key = Key::Digit5, .gamepad_button = GamepadButton::LeftThumb)                                                \
    ROW(vehicle_aux_6, VehicleAux6, Vehicle, Saved, "Vehicle auxiliary input 6", .key = Key::Digit6)                   \
    ROW(vehicle_aux_7, VehicleAux7, Vehicle, Saved, "Vehicle auxiliary input 7", .key = Key::Digit7)                   \
    ROW(vehicle_aux_8, VehicleAux8, Vehicle, Saved, "Vehicle auxiliary input 8", .key = Key::Digit8)                   \
    ROW(vehicle_aux_9, VehicleAux9, Vehicle, Saved, "Vehicle auxiliary input 9", .key = Key::Digit9)                   \
    ROW(vehicle_translate_up, VehicleTranslateUp, Fly, Saved, "Move the vehicle up",                                   \
        .key = Key::Space, .gamepad_button = GamepadButton::DpadUp)                                                    \
    ROW(vehicle_translate_down, VehicleTranslateDown, Fly, Saved, "Move the vehicle down",                             \
        .key = Key::LeftControl, .gamepad_button = GamepadButton::DpadDown)                                            \
    ROW(vehicle_roll_left, VehicleRollLeft, Fly, Saved, "Roll the vehicle left",                                       \
        .key = Key::Q, .gamepad_button = GamepadButton::DpadLeft, .joystick_axis = JoystickAxis::Axis1,                \
        .joystick_axis_sign = -1)                                                                                      \
    ROW(vehicle_roll_right, VehicleRollRight, Fly, Saved, "Roll the vehicle right",                                    \
        .key = Key::E, .gamepad_button = GamepadButton::DpadRight, .joystick_axis = JoystickAxis::Axis1)               \
    ROW(vehicle_translate_forward, VehicleTranslateForward, Fly, Saved, "Move the vehicle forward",                    \
        .key = Key::W, .gamepad_axis = GamepadAxis::LeftY, .gamepad_axis_sign = -1)                                    \
    ROW(vehicle_translate_backward, VehicleTranslateBackward, Fly, Saved, "Move the vehicle backward",                 \
        .key = Key::S, .gamepad_axis = GamepadAxis::LeftY)                                                             \
    ROW(vehicle_translate_left, VehicleTranslateLeft, Fly, Saved, "Move the vehicle left",                             \
        .key = Key::A, .gamepad_axis = GamepadAxis::LeftX, .gamepad_axis_sign = -1)                                    \
    ROW(vehicle_translate_right, VehicleTranslateRight, Fly, Saved, "Move the vehicle right",                          \
        .key = Key::D, .gamepad_axis = GamepadAxis::LeftX)                                                             \
    ROW(vehicle_pitch_up, VehiclePitchUp, Steer, Saved, "Pitch the vehicle's nose up",                                 \
        .key = Key::Down, .gamepad_axis = GamepadAxis::RightY, .joystick_axis = JoystickAxis::Axis2)                   \
    ROW(vehicle_pitch_down, VehiclePitchDown, Steer, Saved, "Pitch the vehicle's nose down",                           \
        .key = Key::Up, .gamepad_axis = GamepadAxis::RightY, .gamepad_axis_sign = -1,                                  \
        .joystick_axis = JoystickAxis::Axis2, .joystick_axis_sign = -1)                                                \
    ROW(vehicle_yaw_left, VehicleYawLeft, Steer, Saved, "Turn the vehicle left",                                       \
        .key = Key::Left, .gamepad_axis = GamepadAxis::RightX, .gamepad_axis_sign = -1,                                \
        .joystick_axis = JoystickAxis::Axis4, .joystick_axis_sign = -1)                                                \
    ROW(vehicle_yaw_right, VehicleYawRight, Steer, Saved, "Turn the vehicle right",                                    \
        .key = Key::Right, .gamepad_axis = GamepadAxis::RightX, .joystick_axis = JoystickAxis::Axis4)                  \
    ROW(vehicle_main_thrust, VehicleMainThrust, Vehicle, Saved, "Main engine thrust",                                  \
        .key = Key::T, .gamepad_axis = GamepadAxis::RightTrigger, .joystick_axis = JoystickAxis::Axis3)

