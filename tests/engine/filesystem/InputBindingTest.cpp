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

TEST(InputBindingText, WritesOnlySetPartsInFixedOrder) {
    Binding binding;
    binding.gamepad_axis_sign = -1;
    binding.key = 87;
    binding.gamepad_axis = 1;
    EXPECT_EQ(binding.ToText(), "key=87 gamepad_axis=1 gamepad_axis_sign=-1");
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
    EXPECT_THAT(messageOf("key=W"), HasSubstr("\"W\""));
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
