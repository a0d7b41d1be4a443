#include "game/GameSettings.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <unordered_map>
#include <vector>

namespace game {

namespace {

using quorl::filesystem::ConfigFile;

/// One key of the file, the field it fills and the comment line a new file shows above it.
struct Setting {
    Setting(char const* key, bool& field, char const* help)
        : key(key), field(&field), type(ConfigFile::CONF_BOOL), help(help) {}
    Setting(char const* key, int& field, char const* help)
        : key(key), field(&field), type(ConfigFile::CONF_INT), help(help) {}
    Setting(char const* key, float& field, char const* help)
        : key(key), field(&field), type(ConfigFile::CONF_FLOAT), help(help) {}
    Setting(char const* key, std::string& field, char const* help)
        : key(key), field(&field), type(ConfigFile::CONF_STRING), help(help) {}
    Setting(char const* key, ConfigFile::InputBinding& field, char const* help)
        : key(key), field(&field), type(ConfigFile::CONF_INPUT_BINDING), help(help) {}

    /// The values a numeric setting may take: the settings panel's slider range where it has one.
    Setting Within(double low, double high) && {
        range = {low, high};
        return std::move(*this);
    }

    char const* key;
    void* field;
    ConfigFile::CONFTYPE type;
    char const* help;
    std::optional<std::pair<double, double>> range;
};

/// The keys of one ReadFromINI call. `written`: the program writes them too; the hidden switches it never does.
struct SettingGroup {
    char const* section;
    bool written;
    std::vector<Setting> settings;
};

// Fields are named after their keys, so one name gives both.
#define SETTING(field, help) Setting(#field, s.field, help)

/// Every key of the file, in the order of the reads; the one place that ties a key to its field and its comment.
std::vector<SettingGroup> SettingGroups(GameSettings& s) {
    return {
        {"game", false, {
            SETTING(debug_window, "Shows the debug window"),
            SETTING(dev_tools, "Enables the developer tools"),
        }},
        {"game", true, {
            SETTING(show_help_tooltips, "Show help tooltips in menus and panels"),
        }},
        {"graphics", true, {
            SETTING(graphics_preset, "Graphics preset chosen in the settings panel, -1 for none").Within(-1, 7),
            SETTING(framerate_limit_main_rendering, "Frame rate limit, 0 for none").Within(0, 90),
            SETTING(vsync, "Wait for the display's vertical sync"),
            SETTING(fov, "Vertical field of view in degrees").Within(25, 125),
            SETTING(taa, "Temporal anti-aliasing"),
            SETTING(render_scale, "Rendering resolution as a fraction of the window's").Within(0.01, 2),
            SETTING(upscaling_algo, "Upscaling algorithm by name, AUTO to let the game choose"),
            SETTING(upscaling_quality_setting, "Quality level of the upscaler").Within(0, 6),
            SETTING(upscaling_sharpness, "Sharpening after upscaling, from 0 to 1").Within(0, 1),
            SETTING(tone_mapping, "Map high dynamic range colors to the display"),
            SETTING(dithering, "Dither the image against color banding"),
            SETTING(brightness, "Brightness multiplier, 1 for neutral").Within(0, 4),
            SETTING(contrast, "Contrast multiplier, 1 for neutral").Within(0, 4),
            SETTING(gamma, "Display gamma").Within(1, 4),
            SETTING(min_exposure, "Lowest automatic exposure").Within(0, 100),
            SETTING(max_exposure, "Highest automatic exposure").Within(0, 100),
            SETTING(terrain_clutter, "Draw small objects such as rocks and grass on terrain"),
            SETTING(terrain_detail, "Terrain detail multiplier, 1 for normal").Within(0.1, 10),
        }},
        {"audio", true, {
            SETTING(master_volume, "Volume of all sound, from 0 to 1").Within(0, 1),
        }},
        {"input", true, {
            SETTING(look_sensitivity, "Mouse look speed").Within(0.01, 100),
            SETTING(input_binding_input_chat, "Open the chat input"),
            SETTING(input_binding_sit, "Sit down or stand up"),
            SETTING(input_binding_third_person, "Switch between first and third person view"),
            SETTING(input_binding_zoom, "Zoom the view"),
            SETTING(input_binding_avatar_jump, "Jump"),
            SETTING(input_binding_avatar_look_toggle, "Free the mouse cursor or look around"),
            SETTING(input_binding_get_info, "Show information about what you aim at"),
            SETTING(input_binding_avatar_interact, "Interact with what you aim at"),
            SETTING(input_binding_avatar_light, "Switch the avatar's light"),
            SETTING(input_binding_avatar_sprint, "Sprint while held"),
            SETTING(input_binding_avatar_crouch, "Crouch while held"),
            SETTING(input_binding_avatar_jetpack, "Switch the jetpack"),
            SETTING(input_binding_avatar_inventory_toggle, "Open or close the inventory"),
            SETTING(input_binding_avatar_inventory_select_prev, "Select the previous inventory slot"),
            SETTING(input_binding_avatar_inventory_select_next, "Select the next inventory slot"),
            SETTING(input_binding_avatar_inventory_select_1, "Select inventory slot 1"),
            SETTING(input_binding_avatar_inventory_select_2, "Select inventory slot 2"),
            SETTING(input_binding_avatar_inventory_select_3, "Select inventory slot 3"),
            SETTING(input_binding_avatar_inventory_select_4, "Select inventory slot 4"),
            SETTING(input_binding_avatar_inventory_select_5, "Select inventory slot 5"),
            SETTING(input_binding_avatar_inventory_select_6, "Select inventory slot 6"),
            SETTING(input_binding_avatar_inventory_select_7, "Select inventory slot 7"),
            SETTING(input_binding_avatar_inventory_select_8, "Select inventory slot 8"),
            SETTING(input_binding_avatar_inventory_select_9, "Select inventory slot 9"),
            SETTING(input_binding_avatar_inventory_deselect, "Put the selected item away"),
            SETTING(input_binding_avatar_tool_primary, "Use the tool in hand"),
            SETTING(input_binding_avatar_tool_secondary, "Secondary use of the tool in hand"),
            SETTING(input_binding_avatar_tool_configure, "Configure the tool in hand"),
            SETTING(input_binding_avatar_translate_forward, "Walk forward"),
            SETTING(input_binding_avatar_translate_backward, "Walk backward"),
            SETTING(input_binding_avatar_translate_left, "Walk left"),
            SETTING(input_binding_avatar_translate_right, "Walk right"),
            SETTING(input_binding_avatar_pitch_up, "Look up"),
            SETTING(input_binding_avatar_pitch_down, "Look down"),
            SETTING(input_binding_avatar_yaw_left, "Look left"),
            SETTING(input_binding_avatar_yaw_right, "Look right"),
            SETTING(input_binding_vehicle_gamepad_look_toggle, "Switch the right stick between looking and steering"),
            SETTING(input_binding_vehicle_aux_0, "Vehicle auxiliary input 0"),
            SETTING(input_binding_vehicle_aux_1, "Vehicle auxiliary input 1"),
            SETTING(input_binding_vehicle_aux_2, "Vehicle auxiliary input 2"),
            SETTING(input_binding_vehicle_aux_3, "Vehicle auxiliary input 3"),
            SETTING(input_binding_vehicle_aux_4, "Vehicle auxiliary input 4"),
            SETTING(input_binding_vehicle_aux_5, "Vehicle auxiliary input 5"),
            SETTING(input_binding_vehicle_aux_6, "Vehicle auxiliary input 6"),
            SETTING(input_binding_vehicle_aux_7, "Vehicle auxiliary input 7"),
            SETTING(input_binding_vehicle_aux_8, "Vehicle auxiliary input 8"),
            SETTING(input_binding_vehicle_aux_9, "Vehicle auxiliary input 9"),
            SETTING(input_binding_vehicle_translate_up, "Move the vehicle up"),
            SETTING(input_binding_vehicle_translate_down, "Move the vehicle down"),
            SETTING(input_binding_vehicle_roll_left, "Roll the vehicle left"),
            SETTING(input_binding_vehicle_roll_right, "Roll the vehicle right"),
            SETTING(input_binding_vehicle_translate_forward, "Move the vehicle forward"),
            SETTING(input_binding_vehicle_translate_backward, "Move the vehicle backward"),
            SETTING(input_binding_vehicle_translate_left, "Move the vehicle left"),
            SETTING(input_binding_vehicle_translate_right, "Move the vehicle right"),
            SETTING(input_binding_vehicle_pitch_up, "Pitch the vehicle's nose up"),
            SETTING(input_binding_vehicle_pitch_down, "Pitch the vehicle's nose down"),
            SETTING(input_binding_vehicle_yaw_left, "Turn the vehicle left"),
            SETTING(input_binding_vehicle_yaw_right, "Turn the vehicle right"),
            SETTING(input_binding_vehicle_main_thrust, "Main engine thrust"),
            SETTING(input_gamepad_axis_deadzone, "Gamepad stick movement ignored around the center, from 0 to 1")
                .Within(0, 1),
            SETTING(input_joystick_axis_deadzone, "Joystick axis movement ignored around the center, from 0 to 1")
                .Within(0, 1),
        }},
    };
}

#undef SETTING

std::vector<ConfigFile::Conf> Confs(GameSettings& file, SettingGroup const& group) {
    std::vector<ConfigFile::Conf> confs;
    confs.reserve(group.settings.size());
    for (auto const& setting : group.settings) {
        confs.emplace_back(&file, setting.key, setting.field, setting.type);
    }
    return confs;
}

constexpr char const* FileHeader =
    "# Meridon settings. Lines starting with # are comments and are kept when the game saves.\n"
    "# Bindings: key=KEY_W mouse_button=MOUSE_BUTTON_LEFT gamepad_button=GAMEPAD_BUTTON_A\n"
    "# gamepad_axis=GAMEPAD_AXIS_LEFT_Y gamepad_axis_sign=-1 joystick_axis=JOYSTICK_AXIS_1 ...\n";

/// A new file's layout: every written key under its comment, with an empty value that the writes then fill in.
/// Laying it out first is what puts each comment right above its key.
std::string FileTemplate(std::vector<SettingGroup> const& groups) {
    std::string text = FileHeader;
    char const* section = nullptr;
    for (auto const& group : groups) {
        if (!group.written) {
            continue;
        }
        if (section == nullptr || std::string_view(section) != group.section) {
            section = group.section;
            text += "\n[" + std::string(section) + "]\n";
        }
        for (auto const& setting : group.settings) {
            text += "# " + std::string(setting.help) + "\n" + setting.key + " =\n";
        }
    }
    return text;
}

}

std::shared_ptr<GameSettings> GameSettings::Instance(quorl::filesystem::FilePath path,
                                                     std::optional<int> autoReload) {
    static std::mutex mutex;
    static std::unordered_map<std::string, std::weak_ptr<GameSettings>> instances;
    std::lock_guard lock(mutex);
    if (auto live = instances[path.Path()].lock()) {
        return live;
    }
    auto settings = std::make_shared<GameSettings>(path.Path(), autoReload);
    instances[path.Path()] = settings;
    settings->ReadConfig();
    std::error_code error;
    if (!std::filesystem::exists(path.Path(), error) && !error) {
        // A first run leaves a file that shows the user every setting there is.
        try {
            settings->WriteConfig();
        } catch (std::exception const& failure) {
            std::cerr << "settings stay at their defaults: " << failure.what() << std::endl;
        }
    }
    return settings;
}

GameSettings::GameSettings(std::string const& path, std::optional<int> autoReload) : ConfigFile(path, autoReload) {}

GameSettings::~GameSettings() {
    // The reload thread calls ReadConfig, which must not run on a half-destroyed object.
    StopAutoReloadThread();
}

void GameSettings::ReadConfig() {
    for (auto const& group : SettingGroups(*this)) {
        ReadFromINI(group.section, Confs(*this, group), group.written);
    }
}

void GameSettings::ClampToRanges() {
    std::lock_guard lock(Mutex());
    for (auto const& group : SettingGroups(*this)) {
        for (auto const& setting : group.settings) {
            if (!setting.range)
                continue;
            auto [low, high] = *setting.range;
            double value = setting.type == CONF_INT ? *static_cast<int*>(setting.field)
                                                    : *static_cast<float*>(setting.field);
            if (value >= low && value <= high)
                continue;
            double bound = value > high ? high : low;  // NaN takes the low end
            std::cerr << KeyLocation(group.section, setting.key) << ": \"" << setting.key << "\" = " << value
                      << " is outside " << low << ".." << high << "; using " << bound << std::endl;
            if (setting.type == CONF_INT)
                *static_cast<int*>(setting.field) = static_cast<int>(bound);
            else
                *static_cast<float*>(setting.field) = static_cast<float>(bound);
        }
    }
}

void GameSettings::WriteConfig() {
    std::lock_guard lock(Mutex());
    auto groups = SettingGroups(*this);
    std::error_code error;
    bool const created = !std::filesystem::exists(Path(), error) && !error;
    if (created) {
        std::ofstream file(Path(), std::ios::binary);
        file << FileTemplate(groups);
        if (!file.flush()) {
            throw std::runtime_error("cannot create settings file \"" + Path() + "\"");
        }
    }
    try {
        for (auto const& group : groups) {
            if (group.written) {
                WriteToINI(group.section, Confs(*this, group));
            }
        }
    } catch (...) {
        // A half-filled layout would read as a file of bad values; without it the defaults stay.
        if (created) {
            std::filesystem::remove(Path(), error);
        }
        throw;
    }
}

}
