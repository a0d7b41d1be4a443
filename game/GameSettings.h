#pragma once

#include "engine/filesystem/ConfigFile.h"
#include "engine/filesystem/FilePath.h"
#include "game/Export.h"
#include "game/input/ControllerActions.h"

#include <memory>
#include <optional>
#include <string>

namespace game {

/// Every user setting of the client, one INI file ("game", "graphics", "audio" and "input" sections). Each field is
/// named after its key in the file. The renderer, the input code and the panels read the fields directly; the
/// settings panel writes a field and calls WriteConfig. Codes are GLFW numbers, -1 for unset.
class MERIDON_EXPORT GameSettings : public quorl::filesystem::ConfigFile {
public:
    using InputBinding = quorl::filesystem::ConfigFile::InputBinding;

    /// The one live object for `path`, made and read on first use; it is read anew once every holder has let go.
    static std::shared_ptr<GameSettings> Instance(quorl::filesystem::FilePath path, std::optional<int> autoReload);

    /// Sets the defaults below; reads nothing (Instance calls ReadConfig).
    GameSettings(std::string const& path, std::optional<int> autoReload);
    ~GameSettings() override;

    /// A missing file leaves the defaults, and so does one that cannot be read (reported once on stderr with the
    /// reason); a missing key or a value that does not parse leaves its field. No range check: see ClampToRanges.
    void ReadConfig() override;
    /// Writes every setting but the hidden switches, creating the file with a comment above each key when needed.
    /// Writes nothing while the file could not be read (ReadFailed), so that the defaults never replace it.
    void WriteConfig() override;
    /// Brings every numeric setting into its range (the settings panel's slider range where there is one), reporting
    /// each value moved on standard error with the file and line it came from. ReadConfig takes values as they are;
    /// the launcher calls this once the settings are read. Writes nothing to the file.
    void ClampToRanges();

    // ---- game ---------------------------------------------------------------------------------------------------
    bool show_help_tooltips = true;
    /// Hidden switch, only ever added by hand to the file.
    bool debug_window = false;
    /// Hidden switch, only ever added by hand to the file.
    bool dev_tools = false;

    // ---- graphics -----------------------------------------------------------------------------------------------
    /// -1: no preset chosen yet.
    int graphics_preset = -1;
    /// Frames per second, 0 for no limit.
    int framerate_limit_main_rendering = 0;
    bool vsync = false;
    /// Degrees.
    float fov = 70.0f;
    bool taa = true;
    /// Not range-checked here; the renderer clamps it.
    float render_scale = 1.0f;
    /// A name of the renderer's upscaler list.
    std::string upscaling_algo = "AUTO";
    int upscaling_quality_setting = 1;
    float upscaling_sharpness = 0.675f;
    bool tone_mapping = true;
    bool dithering = true;
    float brightness = 1.0f;
    float contrast = 1.0f;
    float gamma = 2.2f;
    float min_exposure = 0.01f;
    float max_exposure = 0.5f;
    bool terrain_clutter = true;
    float terrain_detail = 1.0f;

    // ---- audio --------------------------------------------------------------------------------------------------
    float master_volume = 0.5f;

    // ---- input --------------------------------------------------------------------------------------------------
    float look_sensitivity = 2.0f;

    // Bindings: one field "input_binding_" + name per row of the binding table (ControllerActions.h), in its order,
    // with the row's default.
#define MERIDON_BINDING_FIELD(name, Action, reading, file, help, ...) InputBinding input_binding_##name{__VA_ARGS__};
    MERIDON_INPUT_BINDINGS(MERIDON_BINDING_FIELD)
#undef MERIDON_BINDING_FIELD

    float input_gamepad_axis_deadzone = 0.1f;
    float input_joystick_axis_deadzone = 0.1f;

private:
    // The names the binding table gives its default codes; default member initializers see the whole class.
    using Key = input::Key;
    using MouseButton = input::MouseButton;
    using GamepadButton = input::GamepadButton;
    using GamepadAxis = input::GamepadAxis;
    using JoystickAxis = input::JoystickAxis;
};

}
