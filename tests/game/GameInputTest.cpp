#include "tests/support/GameFixture.h"

#include "engine/graphics/WindowHeadless.h"
#include "game/input/Joystick.h"

namespace {
constexpr int kCursorMode = 0x33001;
constexpr int kCursorNormal = 0x34001;
constexpr int kCursorDisabled = 0x34003;
}

class GameInputTest : public GameTest {
protected:
    void SetUp() override {
        GameTest::SetUp();
        Game::window = &window;
    }
    void TearDown() override {
        Game::_joysticks.clear();
        Game::window = nullptr;
        GameTest::TearDown();
    }

    /// Plugs a device into `slot` and hands it to the game, as the launcher does.
    std::shared_ptr<game::input::Joystick> Plug(int slot, bool gamepad, int axes, std::string guid = "0300abcd") {
        quorl::graphics::WindowHeadless::Device device;
        device.guid = std::move(guid);
        device.name = "device " + std::to_string(slot);
        device.gamepad = gamepad;
        device.axes.assign(axes, 0.0f);
        window.ConnectJoystick(slot, device);
        auto joystick = std::make_shared<game::input::Joystick>(slot);
        Game::_joysticks[slot] = joystick;
        return joystick;
    }

    quorl::graphics::WindowHeadless window;
};

// ---- Input modes and mouse look -----------------------------------------------------------------------------------

TEST_F(GameInputTest, PlayModeOnAFocusedWindowCapturesTheCursor) {
    window.SetCursorPos(300, 200);
    Game::SetInputMode_Play();
    EXPECT_EQ(Game::_inputMode, 1);
    EXPECT_TRUE(Game::_mouseLook);
    EXPECT_EQ(window.GetInputMode(kCursorMode), kCursorDisabled);
    double x, y;
    window.GetCursorPos(x, y);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);

    Game::SetInputMode_Ui();
    EXPECT_EQ(Game::_inputMode, 0);
    EXPECT_FALSE(Game::_mouseLook);
    EXPECT_EQ(window.GetInputMode(kCursorMode), kCursorNormal);
}

TEST_F(GameInputTest, PlayModeOnAnUnfocusedWindowLeavesMouseLookOff) {
    window.SetFocused(false);
    Game::SetInputMode_Play();
    EXPECT_EQ(Game::_inputMode, 1);
    EXPECT_FALSE(Game::_mouseLook);
    EXPECT_EQ(window.GetInputMode(kCursorMode), kCursorNormal);
}

TEST_F(GameInputTest, StationModeAndPlayBothLookWithTheMouse) {
    Game::SetInputMode_Station();
    EXPECT_EQ(Game::_inputMode, 2);
    EXPECT_TRUE(Game::_mouseLook);
    Game::SetInputMode_Ui();
    Game::Play();
    EXPECT_EQ(Game::_inputMode, 1);
    EXPECT_TRUE(Game::_mouseLook);
}

TEST_F(GameInputTest, QuitFreesTheCursor) {
    Game::SetInputMode_Play();
    Game::Quit();
    EXPECT_FALSE(Game::_mouseLook);
    EXPECT_EQ(window.GetInputMode(kCursorMode), kCursorNormal);
}

TEST_F(GameInputTest, WithoutAWindowModesChangeAndMouseLookStaysOff) {
    Game::window = nullptr;
    Game::SetInputMode_Station();
    EXPECT_EQ(Game::_inputMode, 2);
    EXPECT_FALSE(Game::_mouseLook);
}

// ---- Device look-ups ----------------------------------------------------------------------------------------------

TEST_F(GameInputTest, JoysticksAreConnectedNonGamepadsWithMoreThanOneAxis) {
    Plug(0, false, 1);               // one axis: a pedal, never a joystick
    auto pad = Plug(1, true, 6);
    auto stick = Plug(2, false, 3);
    auto second = Plug(5, false, 2);

    EXPECT_EQ(Game::GetFirstJoystick(), stick);
    EXPECT_EQ(Game::GetFirstGamepad(), pad);
    EXPECT_EQ(Game::GetJoystick(0), stick);
    EXPECT_EQ(Game::GetJoystick(1), second);
    EXPECT_EQ(Game::GetJoystick(2), nullptr);

    stick->connected = false;
    EXPECT_EQ(Game::GetFirstJoystick(), second);
}

TEST_F(GameInputTest, GuidLookUpsIgnoreCaseAndCountOnlyMatches) {
    auto other = Plug(0, false, 2, "ffff0000");
    auto first = Plug(1, false, 2, "0300ABCD");
    auto second = Plug(2, false, 2, "0300abcd");
    auto pad = Plug(3, true, 6, "0300abcd");

    EXPECT_EQ(Game::GetJoystick("0300abcd", 0), first);
    EXPECT_EQ(Game::GetJoystick("0300ABCD", 1), second);
    EXPECT_EQ(Game::GetJoystick("0300abcd", 2), nullptr);
    EXPECT_EQ(Game::GetJoystick("", 0), other) << "an empty GUID matches any";
    EXPECT_EQ(Game::GetGamepad("0300abcd", 0), pad);
    EXPECT_EQ(Game::GetGamepad("0300abcd", 1), nullptr);
    EXPECT_EQ(Game::GetGamepad("", 0), pad);
}
