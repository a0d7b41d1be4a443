#include "game/input/Joystick.h"

#include "tests/support/GameInputFixture.h"

using game::input::Joystick;

class JoystickTest : public GameInputTest {
protected:
    /// A device in slot 0 with its second button, its hat and the gamepad state's last button on.
    Joystick& Plug(bool gamepad, std::vector<float> axes) {
        quorl::graphics::WindowHeadless::Device device;
        device.name = "Test Pad";
        device.gamepad = gamepad;
        device.axes = std::move(axes);
        device.buttons = {0, 1};
        device.hats = {8};
        device.gamepadState.axes[1] = -0.5f;
        device.gamepadState.buttons[14] = 1;
        return *GameInputTest::Plug(0, device);
    }
};

TEST_F(JoystickTest, ReadsWhatItPolledTheGamepadPartOnlyOfAGamepadAndNothingOnceDisconnected) {
    for (bool gamepad : {true, false}) {
        SCOPED_TRACE(gamepad ? "gamepad" : "joystick");
        Joystick& device = Plug(gamepad, {0.25f, 0.05f, -0.95f, -0.5f});
        EXPECT_EQ(device.name, "Test Pad");
        // Uncalibrated: a dead zone, and no rescaling but unipolar's -1..1 onto 0..1.
        EXPECT_FLOAT_EQ(device.GetAxis(0, 0.1f, false, false), 0.25f);
        EXPECT_EQ(device.GetAxis(1, 0.1f, false, false), 0.0f);
        EXPECT_EQ(device.GetAxis(2, 0.1f, false, true), 0.0f);
        EXPECT_FLOAT_EQ(device.GetAxis(3, 0.1f, false, true), 0.25f);
        EXPECT_EQ(device.GetAxis(4, 0.1f, false, false), 0.0f) << "out of range";
        EXPECT_TRUE(device.GetButton(1));
        EXPECT_EQ(device.GetHat(0), 8);
        EXPECT_EQ(device.GetGamepadButton(14), gamepad);
        EXPECT_FALSE(device.GetGamepadButton(15));
        EXPECT_FLOAT_EQ(device.GetGamepadAxis(1, 0.1f, false, false), gamepad ? -0.5f : 0.0f);

        device.connected = false;
        EXPECT_EQ(device.GetAxis(0, 0.1f, false, false), 0.0f);
        EXPECT_FALSE(device.GetButton(1));
        EXPECT_EQ(device.GetHat(0), 0);
        EXPECT_EQ(device.GetGamepadAxis(1, 0.1f, false, false), 0.0f);
    }
}

TEST_F(JoystickTest, CalibratedAxesWidenTheirRangeWithEveryReading) {
    Joystick& stick = Plug(false, {-1.0f, 0.0f});
    EXPECT_EQ(stick.GetAxis(0, 0.1f, true, false), 0.0f) << "range collapsed to one value so far";
    window.GetDevice(0)->axes[0] = 1.0f;
    stick.InputUpdate();
    EXPECT_FLOAT_EQ(stick.GetAxis(0, 0.1f, true, false), 1.0f);
    window.GetDevice(0)->axes[0] = 0.0f;
    stick.InputUpdate();
    EXPECT_EQ(stick.GetAxis(0, 0.1f, true, false), 0.0f) << "inside the dead zone of a range across zero";
}
