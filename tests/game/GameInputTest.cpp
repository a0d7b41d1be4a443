#include "tests/support/GameInputFixture.h"

#include <string>
#include <utility>

namespace {
constexpr int kCursorMode = 0x33001;
constexpr int kCursorNormal = 0x34001;
constexpr int kCursorDisabled = 0x34003;
}

TEST_F(GameInputTest, PlayAndStationLookWithTheMouseOnAFocusedWindowOnly) {
    struct Step {
        char const* name;
        void (*enter)();
        bool focused, hasWindow;
        uint8_t mode;
        bool mouseLook;
    };
    // In order: each step starts where the one before left.
    Step const steps[] = {
        {"play", Game::SetInputMode_Play, true, true, 1, true},
        {"interface", Game::SetInputMode_Ui, true, true, 0, false},
        {"station", Game::SetInputMode_Station, true, true, 2, true},
        {"interface", Game::SetInputMode_Ui, true, true, 0, false},
        {"Game::Play", Game::Play, true, true, 1, true},
        {"quit frees the cursor", Game::Quit, true, true, 1, false},
        {"play on an unfocused window", Game::SetInputMode_Play, false, true, 1, false},
        {"station without a window", Game::SetInputMode_Station, true, false, 2, false},
    };
    for (auto const& step : steps) {
        SCOPED_TRACE(step.name);
        window.SetFocused(step.focused);
        window.SetCursorPos(300, 200);
        Game::window = step.hasWindow ? &window : nullptr;
        step.enter();
        EXPECT_EQ(Game::_inputMode, step.mode);
        EXPECT_EQ(Game::_mouseLook, step.mouseLook);
        if (!step.hasWindow)
            continue;
        EXPECT_EQ(window.GetInputMode(kCursorMode), step.mouseLook ? kCursorDisabled : kCursorNormal);
        double x, y;
        window.GetCursorPos(x, y);
        EXPECT_EQ(x == 0.0 && y == 0.0, step.mouseLook) << "the cursor is centred when captured";
    }
}

TEST_F(GameInputTest, JoysticksAreConnectedNonGamepadsWithMoreThanOneAxisAndGuidsMatchWholeIgnoringCase) {
    auto device = [](bool gamepad, int axes, std::string guid = "0300abcd") {
        quorl::graphics::WindowHeadless::Device made;
        made.guid = std::move(guid);
        made.gamepad = gamepad;
        made.axes.assign(axes, 0.0f);
        return made;
    };
    Plug(0, device(false, 1));  // one axis: a pedal, never a joystick
    auto pad = Plug(1, device(true, 6));
    auto other = Plug(2, device(false, 3, "ffff0000"));
    auto first = Plug(3, device(false, 2, "0300ABCD"));
    auto second = Plug(4, device(false, 2));
    auto prefix = Plug(5, device(false, 2, "0300ab"));

    EXPECT_EQ(Game::GetFirstJoystick(), other);
    EXPECT_EQ(Game::GetFirstGamepad(), pad);
    EXPECT_EQ(Game::GetJoystick(0), other);
    EXPECT_EQ(Game::GetJoystick(3), prefix);
    EXPECT_EQ(Game::GetJoystick(4), nullptr);
    EXPECT_EQ(Game::GetJoystick("0300abcd", 0), first);
    EXPECT_EQ(Game::GetJoystick("0300ABCD", 1), second);
    EXPECT_EQ(Game::GetJoystick("0300abcd", 2), nullptr) << "a prefix is no match";
    EXPECT_EQ(Game::GetJoystick("", 0), other) << "an empty GUID matches any";
    EXPECT_EQ(Game::GetGamepad("0300abcd", 0), pad);
    EXPECT_EQ(Game::GetGamepad("0300abcd", 1), nullptr);
    EXPECT_EQ(Game::GetGamepad("", 0), pad);

    other->connected = false;
    EXPECT_EQ(Game::GetFirstJoystick(), first);
}
