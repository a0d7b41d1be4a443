#include "game/GameSettings.h"

#include "tests/support/Capture.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

using game::GameSettings;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr int KeyX = 88;

class GameSettingsTest : public testing::Test {
protected:
    /// Reads `content` as the settings file into `settings`; returns what was printed on stderr meanwhile.
    std::string Read(std::string const& content) {
        WriteFile(path, content);
        return StderrOf([&] { settings.ReadConfig(); });
    }

    TempDirectory directory;
    std::string path = directory.File("settings.ini");
    GameSettings settings{path, std::nullopt};
};

TEST_F(GameSettingsTest, FirstRunWritesEveryDefaultUnderAComment) {
    std::shared_ptr<GameSettings> first;
    EXPECT_EQ(StderrOf([&] { first = GameSettings::Instance(path, std::nullopt); }), "");
    std::string const text = ReadFile(path);

    for (auto const* line : {
             "[game]\n# Show help tooltips in menus and panels\nshow_help_tooltips = true\n",
             "\n[graphics]\n",
             "\nframerate_limit_main_rendering = 0\n",
             "\nupscaling_algo = AUTO\n",
             "\nupscaling_sharpness = 0.675\n",
             "\nmaster_volume = 0.5\n",
             "\ninput_binding_avatar_jump = key=KEY_SPACE gamepad_button=GAMEPAD_BUTTON_A\n",
             "\ninput_binding_avatar_tool_primary = mouse_button=MOUSE_BUTTON_LEFT "
             "gamepad_axis=GAMEPAD_AXIS_RIGHT_TRIGGER\n",
             "\ninput_binding_avatar_translate_forward = key=KEY_W gamepad_axis=GAMEPAD_AXIS_LEFT_Y "
             "gamepad_axis_sign=-1\n",
             "\ninput_binding_avatar_pitch_up = gamepad_axis=GAMEPAD_AXIS_RIGHT_Y\n",
             "\ninput_binding_vehicle_roll_left = key=KEY_Q gamepad_button=GAMEPAD_BUTTON_DPAD_LEFT "
             "joystick_axis=JOYSTICK_AXIS_1 joystick_axis_sign=-1\n",
             "\ninput_binding_vehicle_pitch_up = key=KEY_DOWN gamepad_axis=GAMEPAD_AXIS_RIGHT_Y "
             "joystick_axis=JOYSTICK_AXIS_2\n",
             "\ninput_binding_vehicle_main_thrust = key=KEY_T gamepad_axis=GAMEPAD_AXIS_RIGHT_TRIGGER "
             "joystick_axis=JOYSTICK_AXIS_3\n",
             "\ninput_joystick_axis_deadzone = 0.1\n",
         })
        EXPECT_THAT(text, HasSubstr(line));
    // The hidden switches and the unsaved binding stay out of the file.
    EXPECT_THAT(text, Not(HasSubstr("debug_window")));
    EXPECT_THAT(text, Not(HasSubstr("dev_tools")));
    EXPECT_THAT(text, Not(HasSubstr("special_mode")));

    // Every setting line has its comment right above it.
    std::istringstream lines(text);
    std::string line, previous;
    int settingLines = 0;
    while (std::getline(lines, line)) {
        if (line.find(" = ") != std::string::npos) {
            ++settingLines;
            EXPECT_EQ(previous.rfind("# ", 0), 0u) << "no comment above: " << line;
        }
        previous = line;
    }
    EXPECT_EQ(settingLines, 1 + 18 + 1 + 1 + 60 + 2);

    // And the file reads back as the defaults, without a complaint.
    settings.fov = 10.0f;
    settings.upscaling_algo = "FSR";
    settings.input_binding_vehicle_yaw_left = {};
    settings.input_gamepad_axis_deadzone = 0.5f;
    EXPECT_EQ(StderrOf([&] { settings.ReadConfig(); }), "");
    EXPECT_EQ(settings.fov, 70.0f);
    EXPECT_EQ(settings.upscaling_algo, "AUTO");
    EXPECT_EQ(settings.input_binding_vehicle_yaw_left, first->input_binding_vehicle_yaw_left);
    EXPECT_EQ(settings.input_binding_vehicle_yaw_left.joystick_axis, 3);
    EXPECT_EQ(settings.input_gamepad_axis_deadzone, 0.1f);
}

TEST_F(GameSettingsTest, ReadsAHandEditedFile) {
    auto errors = Read("[game]\n"
                       "show_help_tooltips = no\n"
                       "debug_window = true\n"
                       "dev_tools = on\n"
                       "[graphics]\n"
                       "fov = 90\n"
                       "render_scale = 0\n"
                       "upscaling_algo = FSR2\n"
                       "graphics_preset = 3\n"
                       "[audio]\n"
                       "master_volume = 1\n"
                       "[input]\n"
                       "input_binding_avatar_jump = key=KEY_J gamepad_button=GAMEPAD_BUTTON_B\n"
                       "input_binding_zoom = mouse_button=MOUSE_BUTTON_MIDDLE\n"
                       "input_binding_sit = key=82 joystick_button=3 joystick_id=03000000\n"
                       "input_binding_vehicle_main_thrust =\n");
    EXPECT_EQ(errors, "");
    EXPECT_FALSE(settings.show_help_tooltips);
    EXPECT_TRUE(settings.debug_window);
    EXPECT_TRUE(settings.dev_tools);
    EXPECT_EQ(settings.fov, 90.0f);
    // No range check here: the renderer clamps.
    EXPECT_EQ(settings.render_scale, 0.0f);
    EXPECT_EQ(settings.upscaling_algo, "FSR2");
    EXPECT_EQ(settings.graphics_preset, 3);
    EXPECT_EQ(settings.master_volume, 1.0f);
    EXPECT_EQ(settings.input_binding_avatar_jump, (GameSettings::InputBinding{.key = 74, .gamepad_button = 1}));
    EXPECT_EQ(settings.input_binding_zoom, (GameSettings::InputBinding{.mouse_button = 2}));
    EXPECT_EQ(settings.input_binding_sit,
              (GameSettings::InputBinding{.key = 82, .joystick_id = "03000000", .joystick_button = 3}));
    EXPECT_EQ(settings.input_binding_vehicle_main_thrust, GameSettings::InputBinding{});
    // Keys the file leaves out keep their defaults.
    EXPECT_EQ(settings.look_sensitivity, 2.0f);
    EXPECT_EQ(settings.input_binding_input_chat.key, 257);
}

TEST_F(GameSettingsTest, HiddenSwitchesAreReadOnlyFromTheGameSection) {
    Read("[graphics]\ndebug_window = true\n[input]\ndev_tools = true\n");
    EXPECT_FALSE(settings.debug_window);
    EXPECT_FALSE(settings.dev_tools);
}

TEST_F(GameSettingsTest, HiddenSwitchesAndTheToolSpecialModeAreNeverWrittenAndTheUsersLinesOfThemStay) {
    EXPECT_EQ(Read("[game]\n"
                   "debug_window = yes\n"
                   "[graphics]\n"
                   "fov = 80\n"
                   "[input]\n"
                   "input_binding_avatar_tool_special_mode = key=KEY_Y\n"),
              "");
    EXPECT_EQ(settings.input_binding_avatar_tool_special_mode, (GameSettings::InputBinding{.key = KeyX}))
        << "the special mode is always X";
    settings.debug_window = false;
    settings.input_binding_avatar_tool_special_mode.key = 89;
    settings.fov = 95.0f;
    settings.WriteConfig();
    std::string const text = ReadFile(path);
    EXPECT_THAT(text, HasSubstr("[game]\ndebug_window = yes\n"));
    EXPECT_THAT(text, Not(HasSubstr("dev_tools")));
    EXPECT_THAT(text, HasSubstr("\nfov = 95\n"));
    EXPECT_THAT(text, HasSubstr("\ninput_binding_avatar_tool_special_mode = key=KEY_Y\n"));

    GameSettings reread(path, std::nullopt);
    reread.ReadConfig();
    EXPECT_TRUE(reread.debug_window);
    EXPECT_EQ(reread.fov, 95.0f);
    EXPECT_EQ(reread.input_binding_avatar_tool_special_mode.key, KeyX);
}

TEST_F(GameSettingsTest, ValuesOutsideTheirRangesAreClampedAndReportedWithTheirLine) {
    std::string const text = "[graphics]\n"
                             "render_scale = 100000\n"
                             "fov = -500\n"
                             "gamma = 0\n"
                             "brightness = 1.5\n"
                             "framerate_limit_main_rendering = 500\n"
                             "[audio]\n"
                             "master_volume = nan\n"
                             "[input]\n"
                             "look_sensitivity = 0.01\n"
                             "input_gamepad_axis_deadzone = 1.5\n";
    EXPECT_EQ(Read(text), "");
    EXPECT_EQ(settings.render_scale, 100000.0f) << "reading takes values as they are";
    std::string const errors = StderrOf([&] { settings.ClampToRanges(); });
    EXPECT_THAT(errors, HasSubstr(path + ":2: \"render_scale\" = 100000 is outside 0.01..2; using 2\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":3: \"fov\" = -500 is outside 25..125; using 25\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":4: \"gamma\" = 0 is outside 1..4; using 1\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":6: \"framerate_limit_main_rendering\" = 500 is outside 0..90; using 90\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":8: \"master_volume\" = nan is outside 0..1; using 0\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":11: \"input_gamepad_axis_deadzone\" = 1.5 is outside 0..1; using 1\n"));
    // Values within their ranges, a bound read into a float included, are not touched.
    EXPECT_THAT(errors, Not(HasSubstr("brightness")));
    EXPECT_THAT(errors, Not(HasSubstr("look_sensitivity")));
    EXPECT_EQ(std::vector<float>({settings.render_scale, settings.fov, settings.gamma, settings.master_volume,
                                  settings.input_gamepad_axis_deadzone}),
              std::vector<float>({2.0f, 25.0f, 1.0f, 0.0f, 1.0f}));
    EXPECT_EQ(settings.framerate_limit_main_rendering, 90);
    EXPECT_EQ(settings.brightness, 1.5f);
    EXPECT_EQ(ReadFile(path), text) << "clamping writes nothing";
}

TEST_F(GameSettingsTest, SettingsThatCannotBeSavedStayAtTheirDefaults) {
    testing::internal::CaptureStderr();
    auto unsaved = GameSettings::Instance(directory.File("missing/settings.ini"), std::nullopt);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("settings stay at their defaults"));
    EXPECT_EQ(unsaved->fov, 70.0f);
    EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
}

TEST_F(GameSettingsTest, InstanceIsSharedPerPathAndReadOnce) {
    WriteFile(path, "[graphics]\nfov = 80\n");
    auto first = GameSettings::Instance(path, std::nullopt);
    WriteFile(path, "[graphics]\nfov = 50\n");
    auto second = GameSettings::Instance(path, std::nullopt);
    EXPECT_EQ(first, second);
    EXPECT_EQ(second->fov, 80.0f);

    auto other = GameSettings::Instance(directory.File("other.ini"), std::nullopt);
    EXPECT_NE(other, first);

    // Once every holder lets go, the next caller gets a fresh read.
    first.reset();
    second.reset();
    auto third = GameSettings::Instance(path, std::nullopt);
    EXPECT_EQ(third->fov, 50.0f);
}

}
