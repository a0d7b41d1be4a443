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

    // Where the sections and comments go; how values are written is the config file's own concern.
    for (auto const* line : {
             "[game]\n# Show help tooltips in menus and panels\nshow_help_tooltips = true\n",
             "\n[graphics]\n",
             "\nupscaling_sharpness = 0.675\n",
             "\n[audio]\n# Volume of all sound, from 0 to 1\nmaster_volume = 0.5\n",
             "\ninput_binding_vehicle_roll_left = key=KEY_Q gamepad_button=GAMEPAD_BUTTON_DPAD_LEFT "
             "joystick_axis=JOYSTICK_AXIS_1 joystick_axis_sign=-1\n",
         })
        EXPECT_THAT(text, HasSubstr(line));
    // The hidden switches and the unsaved binding stay out of the file.
    for (auto const* hidden : {"debug_window", "dev_tools", "special_mode"})
        EXPECT_THAT(text, Not(HasSubstr(hidden)));

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

TEST_F(GameSettingsTest, ReadsAHandEditedFileAndWritesBackNeitherTheHiddenSwitchesNorTheToolSpecialMode) {
    EXPECT_EQ(Read("[game]\n"
                   "show_help_tooltips = no\n"
                   "dev_tools = on\n"
                   "[graphics]\n"
                   "debug_window = true\n"
                   "fov = 90\n"
                   "upscaling_algo = FSR2\n"
                   "graphics_preset = 3\n"
                   "[audio]\n"
                   "master_volume = 1\n"
                   "[input]\n"
                   "input_binding_avatar_jump = key=KEY_J gamepad_button=GAMEPAD_BUTTON_B\n"
                   "input_binding_avatar_tool_special_mode = key=KEY_Y\n"
                   "input_binding_vehicle_main_thrust =\n"),
              "");
    EXPECT_FALSE(settings.show_help_tooltips);
    EXPECT_TRUE(settings.dev_tools);
    EXPECT_FALSE(settings.debug_window) << "the hidden switches are read from [game] only";
    EXPECT_EQ(settings.fov, 90.0f);
    EXPECT_EQ(settings.upscaling_algo, "FSR2");
    EXPECT_EQ(settings.graphics_preset, 3);
    EXPECT_EQ(settings.master_volume, 1.0f);
    EXPECT_EQ(settings.input_binding_avatar_jump, (GameSettings::InputBinding{.key = 74, .gamepad_button = 1}));
    EXPECT_EQ(settings.input_binding_vehicle_main_thrust, GameSettings::InputBinding{});
    EXPECT_EQ(settings.input_binding_avatar_tool_special_mode, (GameSettings::InputBinding{.key = KeyX}))
        << "the special mode is always X";
    EXPECT_EQ(settings.look_sensitivity, 2.0f) << "a key the file leaves out keeps its default";

    settings.dev_tools = false;
    settings.input_binding_avatar_tool_special_mode.key = 89;
    settings.fov = 95.0f;
    settings.WriteConfig();
    std::string const text = ReadFile(path);
    EXPECT_THAT(text, HasSubstr("[game]\nshow_help_tooltips = no\ndev_tools = on\n")) << "the user's line stays";
    EXPECT_THAT(text, HasSubstr("\nfov = 95\n"));
    EXPECT_THAT(text, HasSubstr("\ninput_binding_avatar_tool_special_mode = key=KEY_Y\n"));

    GameSettings reread(path, std::nullopt);
    reread.ReadConfig();
    EXPECT_TRUE(reread.dev_tools);
    EXPECT_EQ(reread.fov, 95.0f);
    EXPECT_EQ(reread.input_binding_avatar_tool_special_mode.key, KeyX);
}

TEST_F(GameSettingsTest, ValuesOutsideTheirRangesAreClampedAndReportedWithTheirLine) {
    std::string const text = "[graphics]\n"
                             "render_scale = 100000\n"
                             "fov = -500\n"
                             "framerate_limit_main_rendering = 500\n"
                             "[audio]\n"
                             "master_volume = nan\n"
                             "[input]\n"
                             "look_sensitivity = 0.01\n";
    EXPECT_EQ(Read(text), "");
    EXPECT_EQ(settings.render_scale, 100000.0f) << "reading takes values as they are";
    std::string const errors = StderrOf([&] { settings.ClampToRanges(); });
    EXPECT_THAT(errors, HasSubstr(path + ":2: \"render_scale\" = 100000 is outside 0.01..2; using 2\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":3: \"fov\" = -500 is outside 25..125; using 25\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":4: \"framerate_limit_main_rendering\" = 500 is outside 0..90; using 90\n"));
    EXPECT_THAT(errors, HasSubstr(path + ":6: \"master_volume\" = nan is outside 0..1; using 0\n"));
    EXPECT_EQ(CountOccurrences(errors, "\n"), 4u) << "a bound read into a float is within its range: " << errors;
    EXPECT_EQ(std::vector<float>({settings.render_scale, settings.fov, settings.master_volume}),
              std::vector<float>({2.0f, 25.0f, 0.0f}));
    EXPECT_EQ(settings.framerate_limit_main_rendering, 90);
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
