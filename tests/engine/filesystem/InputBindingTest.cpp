#include "engine/filesystem/ConfigFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Binding = quorl::filesystem::ConfigFile::InputBinding;
using testing::HasSubstr;

namespace {

TEST(InputBindingText, UnsetBindingIsEmptyText) {
    EXPECT_EQ(Binding{}.ToText(), "");
    EXPECT_EQ(Binding::FromText(""), Binding{});
    EXPECT_EQ(Binding::FromText("   "), Binding{});
}

TEST(InputBindingText, WritesOnlySetPartsInFixedOrderWithCodesByName) {
    Binding binding;
    binding.gamepad_axis_sign = -1;
    binding.key = 87;
    binding.gamepad_axis = 1;
    binding.joystick_button = 2;
    EXPECT_EQ(binding.ToText(), "key=KEY_W gamepad_axis=GAMEPAD_AXIS_LEFT_Y gamepad_axis_sign=-1 "
                                "joystick_button=JOYSTICK_BUTTON_3");
}

TEST(InputBindingText, CodesWithoutANameAreWrittenAsNumbers) {
    Binding binding;
    binding.key = 500;
    binding.mouse_button = 8;
    binding.joystick_axis = 9;
    EXPECT_EQ(binding.ToText(), "key=500 mouse_button=8 joystick_axis=9");
    EXPECT_EQ(Binding::FromText(binding.ToText()), binding);
}

TEST(InputBindingText, ReadsNamesAndNumbersAlike) {
    // The first form is how files were written before codes had names; hand edits may still use numbers.
    Binding const expected{.key = 87, .mouse_button = 0, .gamepad_button = 0, .gamepad_axis = 1,
                           .gamepad_axis_sign = -1, .joystick_button = 2, .joystick_axis = 1};
    for (auto const* text : {
             "key=87 mouse_button=0 gamepad_button=0 gamepad_axis=1 gamepad_axis_sign=-1 joystick_button=2 "
             "joystick_axis=1",
             "key=KEY_W mouse_button=MOUSE_BUTTON_LEFT gamepad_button=GAMEPAD_BUTTON_A "
             "gamepad_axis=GAMEPAD_AXIS_LEFT_Y gamepad_axis_sign=-1 joystick_button=JOYSTICK_BUTTON_3 "
             "joystick_axis=JOYSTICK_AXIS_2",
             "joystick_axis=JOYSTICK_AXIS_2 key=87 gamepad_axis_sign=-1 mouse_button=MOUSE_BUTTON_LEFT "
             "gamepad_axis=1 gamepad_button=GAMEPAD_BUTTON_A joystick_button=2",
         }) {
        EXPECT_EQ(Binding::FromText(text), expected) << text;
    }
}

TEST(InputBindingText, EveryPartSurvivesARoundTrip) {
    Binding binding{
        .key = 32,
        .mouse_button = 2,
        .gamepad_id = "030000005e0400008e02000000007200",
        .gamepad_index = 1,
        .gamepad_button = 3,
        .gamepad_axis = 4,
        .gamepad_axis_sign = -1,
        .joystick_id = "stick-1",
        .joystick_index = 2,
        .joystick_button = 5,
        .joystick_axis = 6,
        .joystick_axis_sign = -1,
    };
    EXPECT_EQ(Binding::FromText(binding.ToText()), binding);
}

TEST(InputBindingText, RejectsWhatItCannotRead) {
    auto messageOf = [](std::string const& text) {
        try {
            Binding::FromText(text);
        } catch (std::invalid_argument const& error) {
            return std::string(error.what());
        }
        return std::string("accepted");
    };
    EXPECT_THAT(messageOf("key=87 trigger=2"), HasSubstr("unknown input binding part \"trigger\""));
    EXPECT_THAT(messageOf("key=W"), HasSubstr("needs a KEY_ name or a whole number"));
    EXPECT_THAT(messageOf("key=KEY_WW"), HasSubstr("got \"KEY_WW\""));
    EXPECT_THAT(messageOf("key=key_w"), HasSubstr("got \"key_w\""));
    EXPECT_THAT(messageOf("gamepad_button=KEY_A"), HasSubstr("needs a GAMEPAD_BUTTON_ name"));
    EXPECT_THAT(messageOf("gamepad_axis_sign=GAMEPAD_AXIS_LEFT_Y"), HasSubstr("needs a whole number"));
    EXPECT_THAT(messageOf("key=NONE"), HasSubstr("got \"NONE\""));
    EXPECT_THAT(messageOf("key=87x"), HasSubstr("key"));
    EXPECT_THAT(messageOf("gamepad_axis=40000"), HasSubstr("-32768 to 32767"));
    EXPECT_THAT(messageOf("key"), HasSubstr("no '=value'"));
}

TEST(InputBindingText, RefusesIdsItCouldNotReadBack) {
    Binding binding;
    binding.joystick_id = "Logitech Extreme 3D";
    EXPECT_THROW(binding.ToText(), std::invalid_argument);
}

}
