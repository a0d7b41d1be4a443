#include "game/input/Controller.h"

#include "game/GameSettings.h"
#include "game/input/HoldTimer.h"
#include "tests/support/GameInputFixture.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

using game::input::Controller;
using game::input::HoldTimer;
using quorl::graphics::WindowHeadless;
using Binding = Controller::InputBinding;

namespace {
// GLFW's numbers, written out here so that a wrong code in the binding table shows.
constexpr int kKeyEscape = 256, kKeyW = 87, kKeyF = 70, kKeySpace = 32, kKeyLeftShift = 340, kLastKey = 348;
constexpr int kMouseLeft = 0;
constexpr int kAxisLeftY = 1, kAxisRightX = 2, kAxisRightY = 3, kAxisLeftTrigger = 4, kAxisRightTrigger = 5;
constexpr int kButtonBack = 6, kButtonGuide = 8, kButtonLeftThumb = 9, kButtonRightThumb = 10;
constexpr int kPadSlot = 0, kJoystickSlot = 1;

double nowMs = 0.0;

/// The names of the actions but `except`; with `onlyOn`, only of those on (non-zero) in the current state.
std::set<std::string> Actions(bool onlyOn, std::set<std::string> const& except = {}) {
    std::set<std::string> names;
#define MERIDON_COLLECT_NAME(Name, Kind)                                                                             \
    if (!except.contains(#Name) && (!onlyOn || Controller::state.Name != decltype(Controller::state.Name){}))       \
        names.insert(#Name);
    MERIDON_CONTROLLER_ACTIONS(MERIDON_COLLECT_NAME)
#undef MERIDON_COLLECT_NAME
    return names;
}
}

class ControllerTest : public GameInputTest {
protected:
    void SetUp() override {
        GameInputTest::SetUp();
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
        Game::settings = nullptr;
        GameInputTest::TearDown();
    }

    /// Polls every device, as the launcher does, then runs one pass.
    static void Pass(double dt = 0.01) {
        for (auto const& [slot, device] : Game::_joysticks)
            device->InputUpdate();
        Controller::InputUpdate(dt);
    }

    /// Plugs a gamepad at rest (sticks centred, triggers out at -1) into kPadSlot, or a joystick into kJoystickSlot.
    void Plug(int slot) {
        WindowHeadless::Device device;
        device.gamepad = slot == kPadSlot;
        device.axes.assign(6, 0.0f);
        device.buttons.assign(15, 0);
        device.gamepadState.axes[kAxisLeftTrigger] = device.gamepadState.axes[kAxisRightTrigger] = -1.0f;
        GameInputTest::Plug(slot, device);
    }
    /// The controls of the plugged devices, read at the next Pass.
    float& PadAxis(int axis) { return window.GetDevice(kPadSlot)->gamepadState.axes[axis]; }
    unsigned char& PadButton(int button) { return window.GetDevice(kPadSlot)->gamepadState.buttons[button]; }
    WindowHeadless::Device& Stick() { return *window.GetDevice(kJoystickSlot); }

    /// Plays one press of F and Space (AvatarInteract, AvatarJump) lasting `pressMs` over `heldPolls` passes between
    /// the press and the release, calling `poll` after every pass; returns what it answered at the press, each held
    /// pass, the release and one pass after.
    std::vector<double> PlayPress(double pressMs, int heldPolls, std::function<double()> const& poll) {
        Game::_inputMode = 1;
        std::vector<double> answers;
        double const startMs = nowMs;
        auto press = [&](bool down) {
            window.SetKey(kKeyF, down);
            window.SetKey(kKeySpace, down);
            Pass();
            answers.push_back(poll());
        };
        press(true);
        for (int i = 1; i <= heldPolls; ++i) {
            nowMs = startMs + pressMs * i / (heldPolls + 1);
            Pass();
            answers.push_back(poll());
        }
        nowMs = startMs + pressMs;
        press(false);
        Pass();
        answers.push_back(poll());
        return answers;
    }

    std::shared_ptr<game::GameSettings> settings;
    double (*savedClock)() = HoldTimer::clock;
};

// ---- Accumulation of bindings ---------------------------------------------------------------------------------------

TEST_F(ControllerTest, BindingsAddUpAreClampedToZeroToOneAndUseTheirDevicesDeadZone) {
    struct Case {
        char const* name;
        bool keyW;
        float reading; // of the gamepad's left stick Y and of JOYSTICK_AXIS_1, bound with sign -1 to the roll left
        float padDeadzone, stickDeadzone;
        double forward, rollLeft;
    };
    Case const cases[] = {
        {"key alone", true, 0.0f, 0.1f, 0.1f, 1.0, 0.0},
        {"sticks half forward", false, -0.5f, 0.1f, 0.1f, 0.5, 0.5},
        {"key and stick add up", true, 0.5f, 0.1f, 0.1f, 0.5, 0.0},
        {"key and stick add up, clamped to 1", true, -0.5f, 0.1f, 0.1f, 1.0, 0.5},
        {"sticks back read negative, clamped to 0", false, 0.5f, 0.1f, 0.1f, 0.0, 0.0},
        {"sticks inside the dead zones", false, -0.05f, 0.1f, 0.1f, 0.0, 0.0},
        {"gamepad zone wider", false, -0.5f, 0.6f, 0.1f, 0.0, 0.5},
        {"joystick zone wider", false, -0.5f, 0.1f, 0.6f, 0.5, 0.0},
    };
    Plug(kPadSlot);
    Plug(kJoystickSlot);
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        settings->input_gamepad_axis_deadzone = c.padDeadzone;
        settings->input_joystick_axis_deadzone = c.stickDeadzone;
        window.SetKey(kKeyW, c.keyW);
        PadAxis(kAxisLeftY) = Stick().axes[0] = c.reading;
        Game::_inputMode = 1;
        Pass();
        EXPECT_NEAR(Controller::GetAvatarTranslateForward(), c.forward, 1e-6);
        Game::_inputMode = 2;
        Pass();
        EXPECT_NEAR(Controller::GetVehicleTranslateForward(), c.forward, 1e-6);
        EXPECT_NEAR(Controller::GetVehicleRollLeft(), c.rollLeft, 1e-6);
    }
}

TEST_F(ControllerTest, EachModeReadsOnlyItsOwnActions) {
    struct Case {
        char const* name;
        uint8_t mode;
        bool keyboardAndMouse, gamepad;
        std::set<std::string> expected;
        bool mouseLook = true;
    };
    std::set<std::string> const gamepadInEveryMode = {
        "Escape", "Sit", "ThirdPerson", "Zoom", "GetInfo", "AvatarLight", "AvatarLookToggle", "AvatarToolPrimary",
        "AvatarToolSecondary"};
    auto gamepadAnd = [&](std::set<std::string> more) {
        more.insert(gamepadInEveryMode.begin(), gamepadInEveryMode.end());
        return more;
    };
    // Only the look bindings and the vehicle look toggle have no keys; the look is tested apart, sticks are at rest.
    std::set<std::string> const keyless = {"AvatarPitch", "AvatarYaw", "VehicleGamepadLookToggle"};
    auto keyboardOutsideTheInterface = Actions(false, keyless);
    auto withoutMouseButtons = keyboardOutsideTheInterface;
    withoutMouseButtons.erase("AvatarToolPrimary");
    withoutMouseButtons.erase("AvatarToolSecondary");
    Case const cases[] = {
        {"interface, keyboard and mouse", 0, true, false, {"Escape", "InputChat"}},
        {"interface, gamepad", 0, false, true, gamepadInEveryMode},
        {"play, keyboard and mouse", 1, true, false, keyboardOutsideTheInterface},
        {"play, mouse buttons count only with mouse look", 1, true, false, withoutMouseButtons, false},
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
    Plug(kPadSlot);
    // Give the actions without a default gamepad binding one, so that a missing read shows.
    settings->input_binding_third_person.gamepad_button = kButtonBack;
    settings->input_binding_zoom.gamepad_button = kButtonGuide;
    settings->input_binding_avatar_look_toggle.gamepad_button = kButtonLeftThumb;
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Game::_inputMode = c.mode;
        Game::_mouseLook = c.mouseLook;
        for (int key = kKeySpace; key <= kLastKey; ++key)
            window.SetKey(key, c.keyboardAndMouse);
        for (int button = 0; button < 8; ++button)
            window.SetMouseButton(button, c.keyboardAndMouse);
        for (int button = 0; button < 15; ++button)
            PadButton(button) = c.gamepad;
        PadAxis(kAxisLeftTrigger) = PadAxis(kAxisRightTrigger) = c.gamepad ? 1.0f : -1.0f;
        Pass();
        EXPECT_EQ(Actions(true), c.expected);
    }
}

// ---- Edges, holds and toggles ---------------------------------------------------------------------------------------

TEST_F(ControllerTest, OnePressSeenThroughEachGetter) {
    using C = Controller;
    using Poll = std::function<double()>;
    auto hold = [](double holdMs, double tapMs) {
        return Poll([=] { return C::GetAvatarInteract_Hold(holdMs, tapMs); });
    };
    auto holdOrToggle = [](double tapMs) { return Poll([=] { return C::GetAvatarInteract_HoldOrToggle(tapMs); }); };
    struct Case {
        char const* name;
        Poll poll;
        double pressMs;
        int heldPolls;
        // At the press, each held pass, the release and one pass after.
        std::vector<double> expected;
    };
    Case const cases[] = {
        {"pressed once", [] { return C::GetAvatarInteract_Pressed(); }, 100.0, 3, {1, 0, 0, 0, 0, 0}},
        {"released once", [] { return C::GetAvatarInteract_Released(); }, 100.0, 3, {0, 0, 0, 0, 1, 0}},
        {"a button's delta", [] { return C::GetAvatarInteract_Delta(); }, 100.0, 3, {1, 0, 0, 0, -1, 0}},
        {"the jump amount reads as on or off", [] { return C::GetAvatarJump(); }, 100.0, 3, {1, 1, 1, 1, 0, 0}},
        {"the jump pressed once", [] { return C::GetAvatarJump_Pressed(); }, 100.0, 3, {1, 0, 0, 0, 0, 0}},
        {"the jump amount's delta", [] { return C::GetAvatarJump_Delta(); }, 100.0, 3, {1, 0, 0, 0, -1, 0}},
        {"release within the tap time is a tap", hold(0, 200), 100.0, 3, {0, 0, 0, 0, 1, 0}},
        {"release after the tap time is no tap", hold(0, 200), 300.0, 3, {0, 0, 0, 0, 0, 0}},
        {"fewer than three polls are a tap however long", hold(0, 200), 300.0, 2, {0, 0, 0, 1, 0}},
        {"tap time 0 never taps", hold(0, 0), 100.0, 3, {0, 0, 0, 0, 0, 0}},
        {"a hold fires once when it reaches the hold time", hold(250, 0), 400.0, 7, {0, 0, 0, 0, 0, 1, 0, 0, 0, 0}},
        {"a hold of fewer than three polls never fires", hold(250, 0), 400.0, 2, {0, 0, 0, 0, 0}},
        {"after a hold has fired, its release within the tap time is a tap too", hold(250, 500), 400.0, 5,
         {0, 0, 0, 0, 1, 0, 1, 0}},
        {"hold or toggle: a short press toggles", holdOrToggle(200), 100.0, 3, {1, 0, 0, 0, 0, 0}},
        {"hold or toggle: a long press acts while held", holdOrToggle(200), 300.0, 3, {1, 0, 0, 0, 1, 0}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(PlayPress(c.pressMs, c.heldPolls, c.poll), c.expected);
    }
}

// ---- Look ---------------------------------------------------------------------------------------------------------

TEST_F(ControllerTest, MouseLookTakesTheCursorMovementAgainstTheWindowWidthTimesTheSensitivity) {
    struct Case {
        char const* name;
        uint8_t mode;
        bool mouseLook;
        double yaw, pitch;
    };
    Case const cases[] = {
        {"play with mouse look", 1, true, 0.1, -0.05},
        {"station with mouse look", 2, true, 0.1, -0.05},
        {"play without mouse look", 1, false, 0.0, 0.0},
        {"interface mode reads no mouse", 0, true, 0.0, 0.0},
    };
    window.width = 1000;
    settings->look_sensitivity = 2.0f;
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Game::_inputMode = c.mode;
        Game::_mouseLook = c.mouseLook;
        window.SetCursorPos(100.0, -50.0);
        Pass();
        EXPECT_DOUBLE_EQ(Controller::GetAvatarYaw(), c.yaw);
        EXPECT_DOUBLE_EQ(Controller::GetAvatarPitch(), c.pitch);
        double x, y;
        window.GetCursorPos(x, y);
        EXPECT_EQ(x == 0.0 && y == 0.0, c.yaw != 0.0) << "the cursor is reset where it is read";
        Pass();
        EXPECT_DOUBLE_EQ(Controller::GetAvatarYaw_Delta(), -c.yaw) << "the delta is scaled too";
    }
}

TEST_F(ControllerTest, TheRightStickLooksQuadraticallyAndFasterInYawOrSteersAVehicle) {
    struct Case {
        char const* name;
        uint8_t mode;
        bool sticksLook; // Controller::vehicleGamepadLookMode
        int axis;
        float reading;
        double pitch, yaw, vehiclePitchUp;
    };
    double const dt = 0.1;
    Case const cases[] = {
        {"right stick down pitches up", 1, true, kAxisRightY, 0.5f, 0.25 * dt, 0.0, 0.0},
        {"right stick up pitches down", 1, true, kAxisRightY, -0.5f, -0.25 * dt, 0.0, 0.0},
        {"right stick right yaws right, 1.5 times", 1, true, kAxisRightX, 0.5f, 0.0, 0.25 * dt * 1.5, 0.0},
        {"full left", 1, true, kAxisRightX, -1.0f, 0.0, -1.0 * dt * 1.5, 0.0},
        {"inside the dead zone", 1, true, kAxisRightX, 0.05f, 0.0, 0.0, 0.0},
        {"play looks whatever the steering mode", 1, false, kAxisRightY, 1.0f, dt, 0.0, 0.0},
        {"station, sticks looking", 2, true, kAxisRightY, 1.0f, dt, 0.0, 0.0},
        {"station, sticks steering", 2, false, kAxisRightY, 1.0f, 0.0, 0.0, 1.0},
    };
    Plug(kPadSlot);
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Game::_inputMode = c.mode;
        Controller::vehicleGamepadLookMode = c.sticksLook;
        PadAxis(kAxisRightX) = PadAxis(kAxisRightY) = 0.0f;
        PadAxis(c.axis) = c.reading;
        Pass(dt);
        EXPECT_DOUBLE_EQ(Controller::state.AvatarPitch, c.pitch);
        EXPECT_DOUBLE_EQ(Controller::state.AvatarYaw, c.yaw);
        EXPECT_EQ(Controller::GetVehiclePitchUp(), c.vehiclePitchUp);
    }
    // A button bound to the look turns it one unit per second.
    Game::_inputMode = 1;
    settings->input_binding_avatar_yaw_left = Binding{.gamepad_button = kButtonBack};
    PadAxis(kAxisRightY) = 0.0f;
    PadButton(kButtonBack) = 1;
    Pass(dt);
    EXPECT_DOUBLE_EQ(Controller::state.AvatarYaw, -dt);
}

// ---- Gamepad sprint and the vehicle look toggle ---------------------------------------------------------------------

TEST_F(ControllerTest, AStickClickSprintsUntilTheStickIsLetGoTheOtherFlipsTheVehicleLookInStationModeOnly) {
    struct Step {
        char const* name;
        uint8_t mode;
        float leftStickY;
        bool leftClick, rightClick, shift;
        bool sprint, vehicleLook;
    };
    Step const steps[] = {
        {"standing", 1, 0.0f, false, false, false, false, true},
        {"walking", 1, -1.0f, false, false, false, false, true},
        {"click while walking", 1, -1.0f, true, false, false, true, true},
        {"click let go, still walking", 1, -1.0f, false, false, false, true, true},
        {"walking slowly", 1, -0.5f, false, false, false, true, true},
        {"stick let go", 1, 0.0f, false, false, false, false, true},
        {"walking again", 1, -1.0f, false, false, false, false, true},
        {"the keyboard's sprint still counts", 1, -1.0f, false, false, true, true, true},
        {"vehicle look click in play", 1, 0.0f, false, true, false, false, true},
        {"let go", 1, 0.0f, false, false, false, false, true},
        {"vehicle look click in station", 2, 0.0f, false, true, false, false, false},
        {"held over a second pass, it flips once", 2, 0.0f, false, true, false, false, false},
        {"let go again", 2, 0.0f, false, false, false, false, false},
        {"clicked again", 2, 0.0f, false, true, false, false, true},
    };
    Plug(kPadSlot);
    for (auto const& step : steps) {
        SCOPED_TRACE(step.name);
        Game::_inputMode = step.mode;
        PadAxis(kAxisLeftY) = step.leftStickY;
        PadButton(kButtonLeftThumb) = step.leftClick;
        PadButton(kButtonRightThumb) = step.rightClick;
        window.SetKey(kKeyLeftShift, step.shift);
        Pass();
        EXPECT_EQ(Controller::GetAvatarSprint(), step.sprint);
        EXPECT_EQ(Controller::vehicleGamepadLookMode, step.vehicleLook);
    }
}

TEST_F(ControllerTest, AJoystickStillCountsWhereTheGamepadPartWaits) {
    Plug(kPadSlot);
    Plug(kJoystickSlot);
    // While the sticks look around, the gamepad does not steer, but a joystick still does.
    Game::_inputMode = 2;
    ASSERT_TRUE(Controller::vehicleGamepadLookMode);
    Stick().axes[1] = 0.5f; // JOYSTICK_AXIS_2, bound to the vehicle's pitch up
    Pass();
    EXPECT_NEAR(Controller::GetVehiclePitchUp(), 0.5, 1e-6);
    // The gamepad's sprint latches apart from the pass, but a joystick's sprint button counts as it is.
    Game::_inputMode = 1;
    settings->input_binding_avatar_sprint.joystick_button = 2;
    Stick().buttons[2] = 1;
    Pass();
    EXPECT_TRUE(Controller::GetAvatarSprint());
}

// ---- Wiring ---------------------------------------------------------------------------------------------------------

TEST_F(ControllerTest, GameInputUpdatePollsTheControllerWhichReadsNothingWithoutAWindowOrSettings) {
    window.SetKey(kKeyEscape, 1);
    Game::InputUpdate(0.01);
    EXPECT_TRUE(Controller::GetEscape_Pressed());
    for (auto unplug : {std::function<void()>([] { Game::window = nullptr; }),
                        std::function<void()>([] { Game::settings = nullptr; })}) {
        Game::window = &window;
        Game::settings = settings;
        Pass();
        ASSERT_TRUE(Controller::GetEscape());
        unplug();
        Pass();
        EXPECT_TRUE(Actions(true).empty());
        EXPECT_TRUE(Controller::GetEscape_Released());
    }
}

// ---- Binding names ------------------------------------------------------------------------------------------------

TEST(ControllerBindingStrTest, ShowsTheFirstSetPart) {
    struct Case {
        Binding binding;
        std::string expected;
    };
    // Each part ahead of the next one; the names themselves are KeyNames' but for the mouse's and the "" of a key.
    Case const cases[] = {
        {{.key = kKeyW, .mouse_button = kMouseLeft}, "W"},
        {{.key = 31}, ""},
        {{.mouse_button = kMouseLeft, .gamepad_button = 0}, "MOUSE_LEFT"},
        {{.mouse_button = 7}, "MOUSE_8"},
        {{.mouse_button = 8}, "[NONE]"},
        {{.gamepad_button = 0, .gamepad_axis = kAxisRightTrigger}, "GAMEPAD_AXIS_RIGHT_TRIGGER"},
        {{.gamepad_button = 0, .joystick_axis = 0}, "GAMEPAD_BUTTON_A"},
        {{.joystick_button = 3, .joystick_axis = 1}, "JOYSTICK_AXIS_2"},
        {{.joystick_button = 0}, "JOYSTICK_BUTTON_1"},
        {{.gamepad_id = "0300abcd", .gamepad_index = 1}, "[NONE]"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.binding.ToText());
        EXPECT_EQ(Controller::BindingStr(c.binding), c.expected);
    }
}
