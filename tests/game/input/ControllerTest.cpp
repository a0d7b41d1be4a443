#include "game/input/Controller.h"

#include "engine/graphics/WindowHeadless.h"
#include "game/GameSettings.h"
#include "game/input/HoldTimer.h"
#include "game/input/Joystick.h"
#include "tests/support/GameFixture.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

using game::input::Controller;
using game::input::HoldTimer;
using quorl::graphics::WindowHeadless;
using Binding = Controller::InputBinding;

namespace {
// GLFW's numbers.
constexpr int kKeyEscape = 256;
constexpr int kKeyEnter = 257;
constexpr int kKeyW = 87;
constexpr int kKeyF = 70;
constexpr int kKeySpace = 32;
constexpr int kKeyLeftShift = 340;
constexpr int kLastKey = 348;
constexpr int kMouseLeft = 0;
constexpr int kAxisLeftY = 1;
constexpr int kAxisRightX = 2;
constexpr int kAxisRightY = 3;
constexpr int kAxisLeftTrigger = 4;
constexpr int kAxisRightTrigger = 5;
constexpr int kButtonBack = 6;
constexpr int kButtonStart = 7;
constexpr int kButtonGuide = 8;
constexpr int kButtonLeftThumb = 9;
constexpr int kButtonRightThumb = 10;
constexpr int kPadSlot = 0;
constexpr int kJoystickSlot = 1;

double nowMs = 0.0;

/// The names of the actions that are on (non-zero) in the current state.
std::set<std::string> ActionsOn() {
    std::set<std::string> on;
#define MERIDON_COLLECT_ON(Name, Kind)                                                                               \
    if (Controller::state.Name != decltype(Controller::state.Name){})                                                \
        on.insert(#Name);
    MERIDON_CONTROLLER_ACTIONS(MERIDON_COLLECT_ON)
#undef MERIDON_COLLECT_ON
    return on;
}

/// The names of all actions but `except`.
std::set<std::string> AllActionsBut(std::set<std::string> const& except) {
    std::set<std::string> all;
#define MERIDON_COLLECT_NAME(Name, Kind)                                                                             \
    if (!except.contains(#Name))                                                                                     \
        all.insert(#Name);
    MERIDON_CONTROLLER_ACTIONS(MERIDON_COLLECT_NAME)
#undef MERIDON_COLLECT_NAME
    return all;
}
}

class ControllerTest : public GameTest {
protected:
    void SetUp() override {
        GameTest::SetUp();
        Game::window = &window;
        // Never read or written: the defaults are what these tests bind against.
        settings = std::make_shared<game::GameSettings>("controller-test-settings.ini", std::nullopt);
        Game::settings = settings;
        nowMs = 1000.0;
        HoldTimer::clock = [] { return nowMs; };
        Controller::state = {};
        Controller::previousState = {};
        Controller::vehicleGamepadLookMode = true;
    }
    void TearDown() override {
        HoldTimer::clock = savedClock;
        Game::_joysticks.clear();
        Game::settings = nullptr;
        Game::window = nullptr;
        GameTest::TearDown();
    }

    static void Pass(double dt = 0.01) { Controller::InputUpdate(dt); }

    /// A gamepad at rest: sticks centred, triggers out at -1.
    void PlugGamepad() {
        WindowHeadless::Device device;
        device.guid = "030000005e0400008e02000014010000";
        device.name = "Test Pad";
        device.gamepad = true;
        device.axes.assign(6, 0.0f);
        device.buttons.assign(15, 0);
        device.gamepadState.axes[kAxisLeftTrigger] = -1.0f;
        device.gamepadState.axes[kAxisRightTrigger] = -1.0f;
        window.ConnectJoystick(kPadSlot, device);
        Game::_joysticks[kPadSlot] = std::make_shared<game::input::Joystick>(kPadSlot);
    }
    void PlugJoystick() {
        WindowHeadless::Device device;
        device.guid = "0300000044040000";
        device.name = "Test Stick";
        device.axes.assign(4, 0.0f);
        device.buttons.assign(8, 0);
        window.ConnectJoystick(kJoystickSlot, device);
        Game::_joysticks[kJoystickSlot] = std::make_shared<game::input::Joystick>(kJoystickSlot);
    }
    /// Moves a control and polls the device, as the launcher does before each pass.
    void SetPadAxis(int axis, float value) {
        window.GetDevice(kPadSlot)->gamepadState.axes[axis] = value;
        Game::_joysticks[kPadSlot]->InputUpdate();
    }
    void SetPadButton(int button, bool down) {
        window.GetDevice(kPadSlot)->gamepadState.buttons[button] = down;
        Game::_joysticks[kPadSlot]->InputUpdate();
    }
    void SetJoystickAxis(int axis, float value) {
        window.GetDevice(kJoystickSlot)->axes[axis] = value;
        Game::_joysticks[kJoystickSlot]->InputUpdate();
    }

    /// Plays one press of F (AvatarInteract) lasting `pressMs` over `heldPolls` passes between the press and the
    /// release, calling `poll` after every pass; returns what it answered at the press, each held pass, the release
    /// and one pass after.
    std::vector<bool> PlayPress(double pressMs, int heldPolls, std::function<bool()> const& poll) {
        Game::_inputMode = 1;
        std::vector<bool> answers;
        double const startMs = nowMs;
        window.SetKey(kKeyF, 1);
        Pass();
        answers.push_back(poll());
        for (int i = 1; i <= heldPolls; ++i) {
            nowMs = startMs + pressMs * i / (heldPolls + 1);
            Pass();
            answers.push_back(poll());
        }
        nowMs = startMs + pressMs;
        window.SetKey(kKeyF, 0);
        Pass();
        answers.push_back(poll());
        Pass();
        answers.push_back(poll());
        return answers;
    }

    WindowHeadless window;
    std::shared_ptr<game::GameSettings> settings;
    double (*savedClock)() = HoldTimer::clock;
};

// ---- Accumulation of bindings ---------------------------------------------------------------------------------------

TEST_F(ControllerTest, KeyboardAndGamepadAddUpAndAreClampedToZeroToOne) {
    struct Case {
        char const* name;
        bool keyW;
        float leftStickY;
        double expected;
    };
    Case const cases[] = {
        {"nothing", false, 0.0f, 0.0},
        {"key alone", true, 0.0f, 1.0},
        {"stick half forward", false, -0.5f, 0.5},
        {"key and stick both forward", true, -1.0f, 1.0},
        {"key and stick half forward", true, -0.5f, 1.0},
        {"stick back reads negative, clamped to 0", false, 0.5f, 0.0},
        {"stick inside the dead zone", false, -0.05f, 0.0},
    };
    PlugGamepad();
    Game::_inputMode = 1;
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        window.SetKey(kKeyW, c.keyW);
        SetPadAxis(kAxisLeftY, c.leftStickY);
        Pass();
        EXPECT_DOUBLE_EQ(Controller::GetAvatarTranslateForward(), c.expected);
    }
}

TEST_F(ControllerTest, GamepadAndJoystickDeadZonesComeFromTheirOwnSettings) {
    struct Case {
        char const* name;
        float gamepadDeadzone;
        float joystickDeadzone;
        float reading;
        double expectedForward;
        double expectedRollLeft;
    };
    Case const cases[] = {
        {"both outside", 0.1f, 0.1f, -0.5f, 0.5, 0.5},
        {"gamepad zone wider", 0.6f, 0.1f, -0.5f, 0.0, 0.5},
        {"joystick zone wider", 0.1f, 0.6f, -0.5f, 0.5, 0.0},
        {"just outside", 0.25f, 0.25f, -0.3f, 0.3, 0.3},
    };
    PlugGamepad();
    PlugJoystick();
    Game::_inputMode = 2;
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        settings->input_gamepad_axis_deadzone = c.gamepadDeadzone;
        settings->input_joystick_axis_deadzone = c.joystickDeadzone;
        SetPadAxis(kAxisLeftY, c.reading);
        SetJoystickAxis(0, c.reading); // JOYSTICK_AXIS_1, bound with sign -1 to the roll left
        Pass();
        EXPECT_NEAR(Controller::GetVehicleTranslateForward(), c.expectedForward, 1e-6);
        EXPECT_NEAR(Controller::GetVehicleRollLeft(), c.expectedRollLeft, 1e-6);
    }
}

TEST_F(ControllerTest, EachModeReadsOnlyItsOwnActions) {
    struct Case {
        char const* name;
        uint8_t mode;
        bool keyboardAndMouse;
        bool gamepad;
        std::set<std::string> expected;
    };
    std::set<std::string> const gamepadInEveryMode = {
        "Escape", "Sit", "ThirdPerson", "Zoom", "GetInfo", "AvatarLight", "AvatarLookToggle", "AvatarToolPrimary",
        "AvatarToolSecondary"};
    auto gamepadAnd = [&](std::set<std::string> more) {
        more.insert(gamepadInEveryMode.begin(), gamepadInEveryMode.end());
        return more;
    };
    // Only the look bindings and the vehicle look toggle have no keys; the look is tested apart, sticks are at rest.
    auto const keyboardOutsideTheInterface = AllActionsBut({"AvatarPitch", "AvatarYaw", "VehicleGamepadLookToggle"});
    Case const cases[] = {
        {"interface, keyboard and mouse", 0, true, false, {"Escape", "InputChat"}},
        {"interface, gamepad", 0, false, true, gamepadInEveryMode},
        {"interface, both", 0, true, true, gamepadAnd({"InputChat"})},
        {"play, keyboard and mouse", 1, true, false, keyboardOutsideTheInterface},
        {"station, keyboard and mouse", 2, true, false, keyboardOutsideTheInterface},
        {"play, gamepad", 1, false, true,
         gamepadAnd({"AvatarInventory", "AvatarInventorySelectPrev", "AvatarInventorySelectNext",
                     "AvatarInventoryDeselect", "AvatarJump", "AvatarSprint", "AvatarCrouch", "AvatarJetpack",
                     "AvatarInteract"})},
        {"station, gamepad", 2, false, true,
         gamepadAnd({"VehicleTranslateUp", "VehicleTranslateDown", "VehicleMainThrust", "VehicleRollLeft",
                     "VehicleRollRight", "VehicleAux0", "VehicleAux1", "VehicleAux2", "VehicleAux3", "VehicleAux4",
                     "VehicleAux5", "VehicleGamepadLookToggle"})},
    };
    PlugGamepad();
    // Give the actions without a default gamepad binding one, so that a missing read shows.
    settings->input_binding_third_person.gamepad_button = kButtonBack;
    settings->input_binding_zoom.gamepad_button = kButtonGuide;
    settings->input_binding_avatar_look_toggle.gamepad_button = kButtonLeftThumb;
    Game::_mouseLook = true;
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Game::_inputMode = c.mode;
        for (int key = kKeySpace; key <= kLastKey; ++key)
            window.SetKey(key, c.keyboardAndMouse);
        for (int button = 0; button < 8; ++button)
            window.SetMouseButton(button, c.keyboardAndMouse);
        for (int button = 0; button < 15; ++button)
            SetPadButton(button, c.gamepad);
        SetPadAxis(kAxisLeftTrigger, c.gamepad ? 1.0f : -1.0f);
        SetPadAxis(kAxisRightTrigger, c.gamepad ? 1.0f : -1.0f);
        Pass();
        EXPECT_EQ(ActionsOn(), c.expected);
    }
}

TEST_F(ControllerTest, MouseButtonsCountOnlyWithMouseLook) {
    Game::_inputMode = 1;
    window.SetMouseButton(kMouseLeft, 1);
    Pass();
    EXPECT_EQ(Controller::GetAvatarToolPrimary(), 0.0);
    Game::_mouseLook = true;
    Pass();
    EXPECT_EQ(Controller::GetAvatarToolPrimary(), 1.0);
}

TEST_F(ControllerTest, AnUnsetBindingAddsNothing) {
    PlugGamepad();
    for (int button = 0; button < 15; ++button)
        SetPadButton(button, true);
    double value = 0.0;
    Controller::InputBindingState(value, Binding{});
    Controller::InputBindingState(Game::GetFirstGamepad(), value, Binding{}, false);
    EXPECT_EQ(value, 0.0);
}

// ---- Edges, holds and toggles ---------------------------------------------------------------------------------------

TEST_F(ControllerTest, AHeldKeyIsPressedOnceAndReleasedOnce) {
    Game::_inputMode = 1;
    int pressed = 0, released = 0, jumpPressed = 0;
    std::vector<int> deltas;
    std::vector<double> jumpDeltas;
    for (bool down : {true, true, true, false, false}) {
        window.SetKey(kKeyF, down);
        window.SetKey(kKeySpace, down);
        Pass();
        pressed += Controller::GetAvatarInteract_Pressed();
        released += Controller::GetAvatarInteract_Released();
        jumpPressed += Controller::GetAvatarJump_Pressed();
        deltas.push_back(Controller::GetAvatarInteract_Delta());
        jumpDeltas.push_back(Controller::GetAvatarJump_Delta());
        EXPECT_EQ(Controller::GetAvatarJump(), down) << "the jump amount reads as on or off";
    }
    EXPECT_EQ(pressed, 1);
    EXPECT_EQ(released, 1);
    EXPECT_EQ(jumpPressed, 1);
    EXPECT_EQ(deltas, (std::vector<int>{1, 0, 0, -1, 0}));
    EXPECT_EQ(jumpDeltas, (std::vector<double>{1.0, 0.0, 0.0, -1.0, 0.0}));
}

TEST_F(ControllerTest, HoldTellsTapsAndHoldsApart) {
    struct Case {
        char const* name;
        double holdMs;
        double tapMs;
        double pressMs;
        int heldPolls;
        // At the press, each held pass, the release and one pass after.
        std::vector<bool> expected;
    };
    Case const cases[] = {
        {"release within the tap time is a tap", 0.0, 200.0, 100.0, 3, {false, false, false, false, true, false}},
        {"release after the tap time is no tap", 0.0, 200.0, 300.0, 3, {false, false, false, false, false, false}},
        {"fewer than three polls are a tap however long", 0.0, 200.0, 300.0, 2, {false, false, false, true, false}},
        {"tap time 0 never taps", 0.0, 0.0, 100.0, 3, {false, false, false, false, false, false}},
        {"a hold fires once when it reaches the hold time", 250.0, 0.0, 400.0, 7,
         {false, false, false, false, false, true, false, false, false, false}},
        {"a hold of fewer than three polls never fires", 250.0, 0.0, 400.0, 2, {false, false, false, false, false}},
        {"after a hold has fired, its release within the tap time is a tap too", 250.0, 500.0, 400.0, 5,
         {false, false, false, false, true, false, true, false}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        auto answers = PlayPress(c.pressMs, c.heldPolls, [&] {
            return Controller::GetAvatarInteract_Hold(c.holdMs, c.tapMs);
        });
        EXPECT_EQ(answers, c.expected);
    }
}

TEST_F(ControllerTest, HoldOrToggleFiresAtThePressAndAtTheEndOfALongPress) {
    struct Case {
        char const* name;
        double pressMs;
        std::vector<bool> expected;
    };
    Case const cases[] = {
        {"short press toggles", 100.0, {true, false, false, false, false, false}},
        {"long press acts while held", 300.0, {true, false, false, false, true, false}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        auto answers = PlayPress(c.pressMs, 3, [] { return Controller::GetAvatarInteract_HoldOrToggle(200.0); });
        EXPECT_EQ(answers, c.expected);
    }
}

// ---- Look ---------------------------------------------------------------------------------------------------------

TEST_F(ControllerTest, MouseLookTakesTheCursorMovementAgainstTheWindowWidth) {
    struct Case {
        char const* name;
        uint8_t mode;
        bool mouseLook;
        double expectedYaw;
        double expectedPitch;
        bool cursorReset;
    };
    Case const cases[] = {
        {"play with mouse look", 1, true, 0.05, -0.025, true},
        {"station with mouse look", 2, true, 0.05, -0.025, true},
        {"play without mouse look", 1, false, 0.0, 0.0, false},
        {"interface mode reads no mouse", 0, true, 0.0, 0.0, false},
    };
    window.width = 1000;
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Game::_inputMode = c.mode;
        Game::_mouseLook = c.mouseLook;
        window.SetCursorPos(100.0, -50.0);
        Pass();
        EXPECT_DOUBLE_EQ(Controller::state.AvatarYaw, c.expectedYaw);
        EXPECT_DOUBLE_EQ(Controller::state.AvatarPitch, c.expectedPitch);
        double x, y;
        window.GetCursorPos(x, y);
        EXPECT_EQ(x == 0.0 && y == 0.0, c.cursorReset);
    }
}

TEST_F(ControllerTest, LookIsScaledBySensitivityAndSoIsItsDelta) {
    Game::_inputMode = 1;
    Game::_mouseLook = true;
    window.width = 1000;
    settings->look_sensitivity = 3.0f;
    window.SetCursorPos(200.0, 0.0);
    Pass();
    EXPECT_DOUBLE_EQ(Controller::GetAvatarYaw(), 0.3);
    EXPECT_DOUBLE_EQ(Controller::GetAvatarYaw_Delta(), 0.3);
    Pass();
    EXPECT_DOUBLE_EQ(Controller::GetAvatarYaw(), 0.0);
    EXPECT_DOUBLE_EQ(Controller::GetAvatarYaw_Delta(), -0.3);
}

TEST_F(ControllerTest, GamepadLookIsQuadraticInTheStickAndFasterInYaw) {
    struct Case {
        char const* name;
        int axis;
        float reading;
        double expectedPitch;
        double expectedYaw;
    };
    double const dt = 0.1;
    Case const cases[] = {
        {"right stick down pitches up", kAxisRightY, 0.5f, 0.25 * dt, 0.0},
        {"right stick up pitches down", kAxisRightY, -0.5f, -0.25 * dt, 0.0},
        {"right stick right yaws right, 1.5 times", kAxisRightX, 0.5f, 0.0, 0.25 * dt * 1.5},
        {"full left", kAxisRightX, -1.0f, 0.0, -1.0 * dt * 1.5},
        {"inside the dead zone", kAxisRightX, 0.05f, 0.0, 0.0},
    };
    PlugGamepad();
    Game::_inputMode = 1;
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        SetPadAxis(kAxisRightX, 0.0f);
        SetPadAxis(kAxisRightY, 0.0f);
        SetPadAxis(c.axis, c.reading);
        Pass(dt);
        EXPECT_DOUBLE_EQ(Controller::state.AvatarPitch, c.expectedPitch);
        EXPECT_DOUBLE_EQ(Controller::state.AvatarYaw, c.expectedYaw);
    }
}

TEST_F(ControllerTest, GamepadLookButtonsTurnAtOneUnitPerSecond) {
    PlugGamepad();
    Game::_inputMode = 1;
    settings->input_binding_avatar_yaw_left = Binding{.gamepad_button = kButtonBack};
    SetPadButton(kButtonBack, true);
    Pass(0.1);
    EXPECT_DOUBLE_EQ(Controller::state.AvatarYaw, -0.1);
}

// ---- Gamepad sprint and the vehicle look toggle ---------------------------------------------------------------------

TEST_F(ControllerTest, AStickClickSprintsUntilTheStickIsLetGo) {
    struct Step {
        char const* name;
        float leftStickY;
        bool click;
        bool shift;
        bool expected;
    };
    Step const steps[] = {
        {"standing", 0.0f, false, false, false},
        {"walking", -1.0f, false, false, false},
        {"click while walking", -1.0f, true, false, true},
        {"click let go, still walking", -1.0f, false, false, true},
        {"walking slowly", -0.5f, false, false, true},
        {"stick let go", 0.0f, false, false, false},
        {"walking again", -1.0f, false, false, false},
        {"the keyboard's sprint still counts", -1.0f, false, true, true},
    };
    PlugGamepad();
    Game::_inputMode = 1;
    for (auto const& step : steps) {
        SCOPED_TRACE(step.name);
        SetPadAxis(kAxisLeftY, step.leftStickY);
        SetPadButton(kButtonLeftThumb, step.click);
        window.SetKey(kKeyLeftShift, step.shift);
        Pass();
        EXPECT_EQ(Controller::GetAvatarSprint(), step.expected);
    }
}

TEST_F(ControllerTest, TheVehicleLookToggleActsOnlyInStationMode) {
    PlugGamepad();
    auto click = [&] {
        SetPadButton(kButtonRightThumb, true);
        Pass();
        Pass();
        SetPadButton(kButtonRightThumb, false);
        Pass();
    };
    Game::_inputMode = 1;
    click();
    EXPECT_TRUE(Controller::vehicleGamepadLookMode);
    Game::_inputMode = 2;
    click();
    EXPECT_FALSE(Controller::vehicleGamepadLookMode) << "one click, held over two passes, flips once";
    click();
    EXPECT_TRUE(Controller::vehicleGamepadLookMode);
}

TEST_F(ControllerTest, InStationModeTheRightStickLooksOrSteersByTheLookMode) {
    PlugGamepad();
    Game::_inputMode = 2;
    SetPadAxis(kAxisRightY, 1.0f);
    Pass(0.1);
    EXPECT_DOUBLE_EQ(Controller::state.AvatarPitch, 0.1);
    EXPECT_EQ(Controller::GetVehiclePitchUp(), 0.0);
    Controller::vehicleGamepadLookMode = false;
    Pass(0.1);
    EXPECT_EQ(Controller::state.AvatarPitch, 0.0);
    EXPECT_EQ(Controller::GetVehiclePitchUp(), 1.0);
}

TEST_F(ControllerTest, AJoystickStillCountsWhereTheGamepadPartWaits) {
    PlugGamepad();
    PlugJoystick();
    // While the sticks look around, the gamepad does not steer, but a joystick still does.
    Game::_inputMode = 2;
    ASSERT_TRUE(Controller::vehicleGamepadLookMode);
    SetJoystickAxis(1, 0.5f); // JOYSTICK_AXIS_2, bound to the vehicle's pitch up
    Pass();
    EXPECT_NEAR(Controller::GetVehiclePitchUp(), 0.5, 1e-6);
    // The gamepad's sprint latches apart from the pass, but a joystick's sprint button counts as it is.
    Game::_inputMode = 1;
    settings->input_binding_avatar_sprint.joystick_button = 2;
    window.GetDevice(kJoystickSlot)->buttons[2] = 1;
    Game::_joysticks[kJoystickSlot]->InputUpdate();
    Pass();
    EXPECT_TRUE(Controller::GetAvatarSprint());
}

// ---- Wiring ---------------------------------------------------------------------------------------------------------

TEST_F(ControllerTest, GameInputUpdatePollsTheController) {
    window.SetKey(kKeyEnter, 1);
    Game::InputUpdate(0.01);
    EXPECT_TRUE(Controller::GetInputChat());
    EXPECT_FALSE(Controller::GetEscape());
    window.SetKey(kKeyEscape, 1);
    Game::InputUpdate(0.01);
    EXPECT_TRUE(Controller::GetEscape_Pressed());
}

TEST_F(ControllerTest, WithoutAWindowOrSettingsTheStateStaysZero) {
    window.SetKey(kKeyEscape, 1);
    for (auto unplug : {std::function<void()>([] { Game::window = nullptr; }),
                        std::function<void()>([] { Game::settings = nullptr; })}) {
        Game::window = &window;
        Game::settings = settings;
        Pass();
        ASSERT_TRUE(Controller::GetEscape());
        unplug();
        Pass();
        EXPECT_TRUE(ActionsOn().empty());
        EXPECT_TRUE(Controller::GetEscape_Released());
    }
}

// ---- Binding names ------------------------------------------------------------------------------------------------

TEST(ControllerBindingStrTest, ShowsTheFirstSetPart) {
    struct Case {
        Binding binding;
        std::string expected;
    };
    Case const cases[] = {
        {{.key = kKeyF}, "F"},
        {{.key = kKeyLeftShift}, "LEFT_SHIFT"},
        {{.key = 31}, ""},
        {{.key = 33}, ""},
        {{.key = kKeyW, .mouse_button = kMouseLeft}, "W"},
        {{.mouse_button = kMouseLeft}, "MOUSE_LEFT"},
        {{.mouse_button = 2}, "MOUSE_MIDDLE"},
        {{.mouse_button = 7}, "MOUSE_8"},
        {{.mouse_button = 8}, "[NONE]"},
        {{.gamepad_button = 0, .gamepad_axis = kAxisRightTrigger}, "GAMEPAD_AXIS_RIGHT_TRIGGER"},
        {{.gamepad_button = kButtonStart}, "GAMEPAD_BUTTON_START"},
        {{.gamepad_button = 0, .joystick_axis = 0}, "GAMEPAD_BUTTON_A"},
        {{.joystick_button = 3, .joystick_axis = 1}, "JOYSTICK_AXIS_2"},
        {{.joystick_button = 0}, "JOYSTICK_BUTTON_1"},
        {{.gamepad_id = "0300abcd", .gamepad_index = 1}, "[NONE]"},
        {{}, "[NONE]"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.binding.ToText());
        EXPECT_EQ(Controller::BindingStr(c.binding), c.expected);
    }
}
