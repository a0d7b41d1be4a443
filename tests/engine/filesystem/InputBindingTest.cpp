#include "engine/filesystem/ConfigFile.h"

#include "tests/support/Capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Binding = quorl::filesystem::ConfigFile::InputBinding;
using testing::HasSubstr;

namespace {

TEST(InputBindingText, WritesOnlySetPartsInFixedOrderWithCodesByNameWhereTheyHaveOneAndReadsAnySpellingBack) {
    struct Case {
        Binding binding;
        std::string text;
    };
    Case const cases[] = {
        {{}, ""},
        {{.key = 87, .mouse_button = 0, .gamepad_button = 0, .gamepad_axis = 1, .gamepad_axis_sign = -1,
             .joystick_button = 2, .joystick_axis = 1},
            "key=KEY_W mouse_button=MOUSE_BUTTON_LEFT gamepad_button=GAMEPAD_BUTTON_A gamepad_axis=GAMEPAD_AXIS_LEFT_Y "
            "gamepad_axis_sign=-1 joystick_button=JOYSTICK_BUTTON_3 joystick_axis=JOYSTICK_AXIS_2"},
        {{.key = 500, .mouse_button = 8, .joystick_axis = 9}, "key=500 mouse_button=8 joystick_axis=9"},
    };
    for (auto const& [binding, text] : cases) {
        EXPECT_EQ(binding.ToText(), text);
        EXPECT_EQ(Binding::FromText(text), binding) << text;
    }
    // Files written before codes had names hold numbers, and hand edits may mix both, in any order.
    EXPECT_EQ(Binding::FromText("joystick_axis=JOYSTICK_AXIS_2 key=87 gamepad_axis_sign=-1 "
                                "mouse_button=MOUSE_BUTTON_LEFT gamepad_axis=1 gamepad_button=GAMEPAD_BUTTON_A "
                                "joystick_button=2"),
        cases[1].binding);
    EXPECT_EQ(Binding::FromText("   "), Binding{});

    Binding const every{.key = 32, .mouse_button = 2, .gamepad_id = "030000005e0400008e02000000007200",
        .gamepad_index = 1, .gamepad_button = 3, .gamepad_axis = 4, .gamepad_axis_sign = -1, .joystick_id = "stick-1",
        .joystick_index = 2, .joystick_button = 5, .joystick_axis = 6, .joystick_axis_sign = -1};
    EXPECT_EQ(Binding::FromText(every.ToText()), every);
}

TEST(InputBindingText, RejectsWhatItCannotReadOrWrite) {
    struct Case {
        char const* text;
        char const* error;
    };
    Case const cases[] = {
        {"key=87 trigger=2", "unknown input binding part \"trigger\""},
        {"key=W", "needs a KEY_ name or a whole number"},
        {"key=KEY_WW", "got \"KEY_WW\""},
        {"gamepad_button=KEY_A", "needs a GAMEPAD_BUTTON_ name"},
        {"gamepad_axis_sign=GAMEPAD_AXIS_LEFT_Y", "needs a whole number"},
        {"key=87x", "key"},
        {"gamepad_axis=40000", "-32768 to 32767"},
        {"key", "no '=value'"},
    };
    for (auto const& [text, error] : cases)
        EXPECT_THAT(ErrorOf<std::invalid_argument>([&] { Binding::FromText(text); }), HasSubstr(error)) << text;
    // An id with a space could not be read back.
    EXPECT_NE(ErrorOf<std::invalid_argument>([] { Binding{.joystick_id = "Logitech Extreme 3D"}.ToText(); }),
        "no exception");
}

}
