#include "engine/input/KeyNames.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using quorl::input::code_from_string;
using quorl::input::code_to_string;

namespace {

/// Each kind of input with the ends of its range and a few codes past gaps in its numbering, which have names, and
/// the codes just outside the range and inside those gaps, which have none.
struct Kind {
    char const* kind;
    std::vector<std::pair<int, char const*>> named;
    std::vector<int> unnamed;
};

Kind const Kinds[] = {
    {"KEY",
        {{32, "KEY_SPACE"}, {39, "KEY_APOSTROPHE"}, {48, "KEY_0"}, {87, "KEY_W"}, {96, "KEY_GRAVE_ACCENT"},
            {161, "KEY_WORLD_1"}, {256, "KEY_ESCAPE"}, {284, "KEY_PAUSE"}, {290, "KEY_F1"}, {314, "KEY_F25"},
            {320, "KEY_KP_0"}, {336, "KEY_KP_EQUAL"}, {340, "KEY_LEFT_SHIFT"}, {348, "KEY_MENU"}},
        {-1, 31, 33, 97, 285, 349}},
    {"MOUSE_BUTTON",
        {{0, "MOUSE_BUTTON_LEFT"}, {2, "MOUSE_BUTTON_MIDDLE"}, {3, "MOUSE_BUTTON_4"}, {7, "MOUSE_BUTTON_8"}}, {8}},
    {"GAMEPAD_AXIS", {{0, "GAMEPAD_AXIS_LEFT_X"}, {5, "GAMEPAD_AXIS_RIGHT_TRIGGER"}}, {6}},
    {"GAMEPAD_BUTTON", {{0, "GAMEPAD_BUTTON_A"}, {8, "GAMEPAD_BUTTON_GUIDE"}, {14, "GAMEPAD_BUTTON_DPAD_LEFT"}}, {15}},
    {"JOYSTICK_BUTTON", {{0, "JOYSTICK_BUTTON_1"}, {15, "JOYSTICK_BUTTON_16"}}, {16}},
    {"JOYSTICK_AXIS", {{0, "JOYSTICK_AXIS_1"}, {8, "JOYSTICK_AXIS_9"}}, {-1, 9}},
};

TEST(KeyNames, NamesTheCodesOfEachKindBothWaysAndNothingElse) {
    for (auto const& [kind, named, unnamed] : Kinds) {
        for (auto const& [code, name] : named) {
            EXPECT_STREQ(code_to_string(kind, code), name) << kind << " " << code;
            EXPECT_EQ(code_from_string(kind, name), code) << name;
        }
        for (int code : unnamed)
            EXPECT_STREQ(code_to_string(kind, code), "NONE") << kind << " " << code;
    }
    for (auto const& [kind, code] : {std::pair{"MOUSE", 0}, {"key", 87}, {"", 32}})
        EXPECT_STREQ(code_to_string(kind, code), "NONE") << kind;
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
