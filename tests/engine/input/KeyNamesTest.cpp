#include "engine/input/KeyNames.h"

#include <gtest/gtest.h>

#include <string>

using quorl::input::code_from_string;
using quorl::input::code_to_string;

namespace {

struct Named {
    char const* kind;
    int code;
    char const* name;
};

// The ends of each kind's range and a few codes past gaps in the key numbering.
constexpr Named NamedCodes[] = {
    {"KEY", 32, "KEY_SPACE"},
    {"KEY", 39, "KEY_APOSTROPHE"},
    {"KEY", 48, "KEY_0"},
    {"KEY", 87, "KEY_W"},
    {"KEY", 96, "KEY_GRAVE_ACCENT"},
    {"KEY", 161, "KEY_WORLD_1"},
    {"KEY", 256, "KEY_ESCAPE"},
    {"KEY", 284, "KEY_PAUSE"},
    {"KEY", 290, "KEY_F1"},
    {"KEY", 314, "KEY_F25"},
    {"KEY", 320, "KEY_KP_0"},
    {"KEY", 336, "KEY_KP_EQUAL"},
    {"KEY", 340, "KEY_LEFT_SHIFT"},
    {"KEY", 348, "KEY_MENU"},
    {"MOUSE_BUTTON", 0, "MOUSE_BUTTON_LEFT"},
    {"MOUSE_BUTTON", 2, "MOUSE_BUTTON_MIDDLE"},
    {"MOUSE_BUTTON", 3, "MOUSE_BUTTON_4"},
    {"MOUSE_BUTTON", 7, "MOUSE_BUTTON_8"},
    {"GAMEPAD_AXIS", 0, "GAMEPAD_AXIS_LEFT_X"},
    {"GAMEPAD_AXIS", 5, "GAMEPAD_AXIS_RIGHT_TRIGGER"},
    {"GAMEPAD_BUTTON", 0, "GAMEPAD_BUTTON_A"},
    {"GAMEPAD_BUTTON", 8, "GAMEPAD_BUTTON_GUIDE"},
    {"GAMEPAD_BUTTON", 14, "GAMEPAD_BUTTON_DPAD_LEFT"},
    {"JOYSTICK_BUTTON", 0, "JOYSTICK_BUTTON_1"},
    {"JOYSTICK_BUTTON", 15, "JOYSTICK_BUTTON_16"},
    {"JOYSTICK_AXIS", 0, "JOYSTICK_AXIS_1"},
    {"JOYSTICK_AXIS", 8, "JOYSTICK_AXIS_9"},
};

TEST(KeyNames, NamesCodesBothWays) {
    for (auto const& named : NamedCodes) {
        EXPECT_STREQ(code_to_string(named.kind, named.code), named.name) << named.kind << " " << named.code;
        EXPECT_EQ(code_from_string(named.kind, named.name), named.code) << named.name;
    }
}

TEST(KeyNames, UnknownKindsCodesAndNamesAreNone) {
    struct Unnamed {
        char const* kind;
        int code;
    };
    for (auto const& unnamed : {Unnamed{"KEY", 31}, Unnamed{"KEY", 33}, Unnamed{"KEY", 349}, Unnamed{"KEY", -1},
                                Unnamed{"KEY", 97}, Unnamed{"KEY", 285}, Unnamed{"MOUSE_BUTTON", 8},
                                Unnamed{"GAMEPAD_AXIS", 6}, Unnamed{"GAMEPAD_BUTTON", 15},
                                Unnamed{"JOYSTICK_BUTTON", 16}, Unnamed{"JOYSTICK_AXIS", 9},
                                Unnamed{"JOYSTICK_AXIS", -1}, Unnamed{"MOUSE", 0}, Unnamed{"key", 87},
                                Unnamed{"", 32}}) {
        EXPECT_STREQ(code_to_string(unnamed.kind, unnamed.code), "NONE") << unnamed.kind << " " << unnamed.code;
    }
    // Names of another kind or case, and numbers, are no names.
    for (auto const& [kind, name] : {std::pair{"KEY", "NONE"}, {"KEY", "key_w"}, {"KEY", "W"}, {"KEY", "87"},
             {"GAMEPAD_BUTTON", "KEY_A"}, {"JOYSTICK", "JOYSTICK_AXIS_1"}})
        EXPECT_EQ(code_from_string(kind, name), std::nullopt) << kind << " " << name;
}

TEST(KeyNames, EveryKeyNameReadsBackToItsCode) {
    int named = 0;
    for (int code = -1; code <= 400; ++code) {
        std::string name = code_to_string("KEY", code);
        if (name != "NONE") {
            ++named;
            EXPECT_EQ(code_from_string("KEY", name), code) << name;
        }
    }
    EXPECT_EQ(named, 120);
}

}
