#include "game/input/Joystick.h"

#include "engine/graphics/WindowHeadless.h"
#include "game/Game.h"

#include <gtest/gtest.h>

using game::input::Joystick;
using quorl::graphics::WindowHeadless;

class JoystickTest : public testing::Test {
protected:
    void SetUp() override { Game::window = &window; }
    void TearDown() override { Game::window = nullptr; }

    Joystick Plug(bool gamepad, std::vector<float> axes) {
        WindowHeadless::Device device;
        device.guid = "030000005e0400008e02000014010000";
        device.name = "Test Pad";
        device.gamepad = gamepad;
        device.axes = std::move(axes);
        device.buttons = {0, 1};
        device.hats = {8};
        device.gamepadState.axes[1] = -0.5f;
        device.gamepadState.buttons[14] = 1;
        window.ConnectJoystick(0, device);
        return Joystick(0);
    }

    WindowHeadless window;
};

TEST_F(JoystickTest, ReadsIdentityAndPollsOnConstruction) {
    Joystick pad = Plug(true, {0.25f, -1.0f});
    EXPECT_EQ(pad.guid, "030000005e0400008e02000014010000");
    EXPECT_EQ(pad.name, "Test Pad");
    EXPECT_TRUE(pad.gamepad);
    EXPECT_EQ(pad.axisCount, 2);
    EXPECT_EQ(pad.axisMin.size(), 2u);
    EXPECT_EQ(pad.gamepadAxisMin.size(), 6u);
    EXPECT_TRUE(pad.GetButton(1));
    EXPECT_EQ(pad.GetHat(0), 8);
    EXPECT_TRUE(pad.GetGamepadButton(14));
    EXPECT_FALSE(pad.GetGamepadButton(15));
    EXPECT_FLOAT_EQ(pad.GetGamepadAxis(1, 0.1f, false, false), -0.5f);
}

TEST_F(JoystickTest, UncalibratedAxesHaveADeadZoneAndNoRescaling) {
    Joystick stick = Plug(false, {0.05f, 0.5f, -0.95f, -0.5f});
    EXPECT_EQ(stick.GetAxis(0, 0.1f, false, false), 0.0f);
    EXPECT_FLOAT_EQ(stick.GetAxis(1, 0.1f, false, false), 0.5f);
    EXPECT_EQ(stick.GetAxis(2, 0.1f, false, true), 0.0f);
    EXPECT_FLOAT_EQ(stick.GetAxis(3, 0.1f, false, true), 0.25f);
    EXPECT_EQ(stick.GetAxis(4, 0.1f, false, false), 0.0f) << "out of range";
}

TEST_F(JoystickTest, CalibratedAxesWidenTheirRangeWithEveryReading) {
    Joystick stick = Plug(false, {-1.0f, 0.0f});
    EXPECT_EQ(stick.GetAxis(0, 0.1f, true, false), 0.0f) << "range collapsed to one value so far";
    window.GetDevice(0)->axes[0] = 1.0f;
    stick.InputUpdate();
    EXPECT_FLOAT_EQ(stick.GetAxis(0, 0.1f, true, false), 1.0f);
    window.GetDevice(0)->axes[0] = 0.0f;
    stick.InputUpdate();
    EXPECT_EQ(stick.GetAxis(0, 0.1f, true, false), 0.0f) << "inside the dead zone of a range across zero";
}

TEST_F(JoystickTest, DeviceWithoutGamepadMappingReadsZeroAsGamepad) {
    Joystick stick = Plug(false, {0.8f, 0.8f});
    EXPECT_FLOAT_EQ(stick.GetAxis(0, 0.1f, false, false), 0.8f);
    EXPECT_EQ(stick.GetGamepadAxis(0, 0.1f, false, false), 0.0f);
    EXPECT_FALSE(stick.GetGamepadButton(14));
}

TEST_F(JoystickTest, DisconnectedDeviceReadsNothing) {
    Joystick stick = Plug(true, {0.8f, 0.8f});
    stick.connected = false;
    EXPECT_EQ(stick.GetAxis(0, 0.1f, false, false), 0.0f);
    EXPECT_FALSE(stick.GetButton(1));
    EXPECT_EQ(stick.GetHat(0), 0);
    EXPECT_EQ(stick.GetGamepadAxis(1, 0.1f, false, false), 0.0f);
}
