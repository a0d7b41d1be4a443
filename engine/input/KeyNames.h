#pragma once

#include "engine/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorl::input {

/// Display name of an input code, GLFW numbering: `kind` is "KEY", "MOUSE_BUTTON", "GAMEPAD_AXIS",
/// "GAMEPAD_BUTTON", "JOYSTICK_BUTTON" or "JOYSTICK_AXIS", and names carry the kind in front ("KEY_W",
/// "JOYSTICK_AXIS_1" for axis 0). "NONE" for an unknown kind or a code without a name. The text is static.
QUORL_EXPORT char const* code_to_string(std::string const& kind, int code);

/// Inverse of code_to_string: the code named `name` in `kind`, nothing for an unknown kind or name (and for "NONE").
/// Case-sensitive.
QUORL_EXPORT std::optional<int> code_from_string(std::string const& kind, std::string_view name);

}
