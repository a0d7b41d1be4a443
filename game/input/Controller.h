#pragma once

#include "engine/filesystem/ConfigFile.h"
#include "game/Export.h"
#include "game/input/ControllerActions.h"

#include <memory>
#include <string>

namespace game::input {

class Joystick;

/// Turns keyboard, mouse, gamepad and joystick state into one table of named actions, once per input loop pass
/// (Game::InputUpdate). Readers ask by action: for every action X of ControllerActions.h there are GetX, and
/// GetX_Pressed, _Released, _Delta, _Hold and _HoldOrToggle, which compare this pass with the one before.
/// InputUpdate runs on the input loop; the getters may be read from any thread without a lock, at the cost of at
/// most one frame of torn state.
class MERIDON_EXPORT Controller {
public:
    using InputBinding = quorl::filesystem::ConfigFile::InputBinding;

    /// Every action's value for one pass, rebuilt from zero by each InputUpdate.
    struct State {
#define MERIDON_CONTROLLER_FIELD(Name, Kind) actions::Kind::Stored Name{};
        MERIDON_CONTROLLER_ACTIONS(MERIDON_CONTROLLER_FIELD)
#undef MERIDON_CONTROLLER_FIELD
    };

    Controller() = delete;

    static State state;
    static State previousState;
    /// In station mode the gamepad's look sticks turn the view instead of the vehicle; the vehicle gamepad look
    /// toggle flips this. Starts true.
    static bool vehicleGamepadLookMode;

    /// One pass: reads every device through Game::window, Game::settings and Game::_joysticks into a new state.
    /// Without a window or settings the new state stays all zero.
    static void InputUpdate(double dt);

    /// Keyboard and mouse part of a binding: on if its key or button is down.
    static void InputBindingState(bool& value, InputBinding const& binding);
    /// Keyboard and mouse part of a binding: adds 1 for its key down and 1 for its button down.
    static void InputBindingState(double& value, InputBinding const& binding);
    /// Gamepad part of a binding on `pad` (none when null) and joystick part: on if any reading is non-zero. Axes are
    /// always read as unipolar here, whatever `unipolar` says.
    static void InputBindingState(std::shared_ptr<Joystick> const& pad, bool& value, InputBinding const& binding,
                                  bool unipolar);
    /// Gamepad part of a binding on `pad` (none when null) and joystick part: adds every reading. `unipolar` reads
    /// axes as 0..1 (inverted for sign -1) instead of sign times -1..1.
    static void InputBindingState(std::shared_ptr<Joystick> const& pad, double& value, InputBinding const& binding,
                                  bool unipolar);

    /// The binding's first set part, in the order key, mouse button, gamepad, joystick, as the panels show it: "F",
    /// "MOUSE_LEFT", "GAMEPAD_BUTTON_A", "JOYSTICK_AXIS_2"; "" for a key without a name, "[NONE]" when nothing is set.
    static std::string BindingStr(InputBinding const& binding);

    // For every action X. GetX: the value; AvatarPitch and AvatarYaw come scaled by the look sensitivity setting,
    // AvatarJump as on or off. _Pressed: on now (non-zero), off before. _Released: the reverse. _Delta: value now
    // minus value before (-1..1 for a button). _Hold(holdMs, tapMs): true once at the release of a tap (shorter than
    // tapMs, or than three passes; never when tapMs is 0), or once when a hold reaches holdMs (never when holdMs is
    // 0). _HoldOrToggle(tapMs): true at every press, and at a release after a press longer than tapMs; flip a state
    // on each true, and a tap toggles while a hold acts only while held.
#define MERIDON_CONTROLLER_GETTERS(Name, Kind)                                                                       \
    static actions::Kind::Value Get##Name();                                                                         \
    static bool Get##Name##_Pressed();                                                                               \
    static bool Get##Name##_Released();                                                                              \
    static actions::Kind::Delta Get##Name##_Delta();                                                                 \
    static bool Get##Name##_Hold(double holdMs, double tapMs);                                                       \
    static bool Get##Name##_HoldOrToggle(double tapMs);
    MERIDON_CONTROLLER_ACTIONS(MERIDON_CONTROLLER_GETTERS)
#undef MERIDON_CONTROLLER_GETTERS
};

}
