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
// A row of the binding table is a setting unless the file never holds it.
#define BINDING_SETTING(name, Action, reading, file, help, ...) BINDING_SETTING_##file(name, help)
#define BINDING_SETTING_Saved(name, help) SETTING(input_binding_##name, help),
#define BINDING_SETTING_Unsaved(name, help)

/// Every key of the file, in the order of the reads; the one place that ties a key to its field and its comment, but
/// for the bindings, which come from the binding table.
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
            MERIDON_INPUT_BINDINGS(BINDING_SETTING)
            SETTING(input_gamepad_axis_deadzone, "Gamepad stick movement ignored around the center, from 0 to 1")
                .Within(0, 1),
            SETTING(input_joystick_axis_deadzone, "Joystick axis movement ignored around the center, from 0 to 1")
                .Within(0, 1),
        }},
    };
}

#undef BINDING_SETTING_Unsaved
#undef BINDING_SETTING_Saved
#undef BINDING_SETTING
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
            if (setting.type == CONF_FLOAT) {
                // Bounds as the field holds them: 0.01 read into a float lies just below the double 0.01.
                low = static_cast<float>(low);
                high = static_cast<float>(high);
            }
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
    if (ReadFailed()) {
        // Reported when the read failed; the defaults in use are not the user's to save over what is there.
        return;
    }
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
