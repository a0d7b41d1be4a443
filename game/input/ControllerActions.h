#pragma once

// The controller's action table: one row per action, in the order of Controller::State. Controller.h and
// Controller.cpp expand it into the state record and the six getters of every action, so adding an action here is
// all it takes. This header promises nothing to modules: use the getters of Controller.

#include <algorithm>

namespace game::input::actions {

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

}

// X(ActionName, Kind), Kind being one of the structs above.
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
