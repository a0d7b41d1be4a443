#pragma once

#include "engine/filesystem/ConfigFile.h"
#include "engine/filesystem/FilePath.h"
#include "game/Export.h"

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

    /// A missing file leaves the defaults; a missing key leaves its field.
    void ReadConfig() override;
    /// Writes every setting but the hidden switches, creating the file with a comment above each key when needed.
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

    // Bindings. Keys share codes on purpose: KEY_1 both selects inventory slot 1 and is vehicle aux 1.
    InputBinding input_binding_input_chat{.key = 257};                                           // KEY_ENTER
    InputBinding input_binding_sit{.key = 82, .gamepad_button = 1};                              // KEY_R, B
    InputBinding input_binding_third_person{.key = 75};                                          // KEY_K
    InputBinding input_binding_zoom{.key = 90};                                                  // KEY_Z
    InputBinding input_binding_avatar_jump{.key = 32, .gamepad_button = 0};                      // KEY_SPACE, A
    InputBinding input_binding_avatar_look_toggle{.key = 342};                                   // KEY_LEFT_ALT
    InputBinding input_binding_get_info{.key = 86, .gamepad_button = 2};                         // KEY_V, X
    InputBinding input_binding_avatar_interact{.key = 70, .gamepad_button = 3};                  // KEY_F, Y
    InputBinding input_binding_avatar_light{.key = 76, .gamepad_button = 5};                     // KEY_L, RIGHT_BUMPER
    InputBinding input_binding_avatar_sprint{.key = 340, .gamepad_button = 9};                   // KEY_LEFT_SHIFT, LEFT_THUMB
    InputBinding input_binding_avatar_crouch{.key = 341, .gamepad_button = 10};                  // KEY_LEFT_CONTROL, RIGHT_THUMB
    InputBinding input_binding_avatar_jetpack{.key = 74, .gamepad_button = 4};                   // KEY_J, LEFT_BUMPER
    InputBinding input_binding_avatar_inventory_toggle{.key = 258, .gamepad_button = 11};        // KEY_TAB, DPAD_UP
    InputBinding input_binding_avatar_inventory_select_prev{.key = 45, .gamepad_button = 14};    // KEY_MINUS, DPAD_LEFT
    InputBinding input_binding_avatar_inventory_select_next{.key = 61, .gamepad_button = 12};    // KEY_EQUAL, DPAD_RIGHT
    InputBinding input_binding_avatar_inventory_select_1{.key = 49};                             // KEY_1
    InputBinding input_binding_avatar_inventory_select_2{.key = 50};                             // KEY_2
    InputBinding input_binding_avatar_inventory_select_3{.key = 51};                             // KEY_3
    InputBinding input_binding_avatar_inventory_select_4{.key = 52};                             // KEY_4
    InputBinding input_binding_avatar_inventory_select_5{.key = 53};                             // KEY_5
    InputBinding input_binding_avatar_inventory_select_6{.key = 54};                             // KEY_6
    InputBinding input_binding_avatar_inventory_select_7{.key = 55};                             // KEY_7
    InputBinding input_binding_avatar_inventory_select_8{.key = 56};                             // KEY_8
    InputBinding input_binding_avatar_inventory_select_9{.key = 57};                             // KEY_9
    InputBinding input_binding_avatar_inventory_deselect{.key = 96, .gamepad_button = 13};       // KEY_GRAVE_ACCENT, DPAD_DOWN
    InputBinding input_binding_avatar_tool_primary{.mouse_button = 0, .gamepad_axis = 5};        // MOUSE_BUTTON_LEFT, RIGHT_TRIGGER +
    InputBinding input_binding_avatar_tool_secondary{.mouse_button = 1, .gamepad_axis = 4};      // MOUSE_BUTTON_RIGHT, LEFT_TRIGGER +
    InputBinding input_binding_avatar_tool_configure{.key = 67};                                 // KEY_C
    /// Not in the file: neither read nor written, so it is KEY_X at every start and a rebinding lasts one process.
    InputBinding input_binding_avatar_tool_special_mode{.key = 88};                              // KEY_X
    InputBinding input_binding_avatar_translate_forward{.key = 87, .gamepad_axis = 1, .gamepad_axis_sign = -1};  // KEY_W, LEFT_Y -
    InputBinding input_binding_avatar_translate_backward{.key = 83, .gamepad_axis = 1};          // KEY_S, LEFT_Y +
    InputBinding input_binding_avatar_translate_left{.key = 65, .gamepad_axis = 0, .gamepad_axis_sign = -1};     // KEY_A, LEFT_X -
    InputBinding input_binding_avatar_translate_right{.key = 68, .gamepad_axis = 0};             // KEY_D, LEFT_X +
    InputBinding input_binding_avatar_pitch_up{.gamepad_axis = 3};                               // RIGHT_Y +
    InputBinding input_binding_avatar_pitch_down{.gamepad_axis = 3, .gamepad_axis_sign = -1};    // RIGHT_Y -
    InputBinding input_binding_avatar_yaw_left{.gamepad_axis = 2, .gamepad_axis_sign = -1};      // RIGHT_X -
    InputBinding input_binding_avatar_yaw_right{.gamepad_axis = 2};                              // RIGHT_X +
    InputBinding input_binding_vehicle_gamepad_look_toggle{.gamepad_button = 10};                // RIGHT_THUMB
    InputBinding input_binding_vehicle_aux_0{.key = 48, .gamepad_button = 0};                    // KEY_0, A
    InputBinding input_binding_vehicle_aux_1{.key = 49, .gamepad_button = 2};                    // KEY_1, X
    InputBinding input_binding_vehicle_aux_2{.key = 50, .gamepad_button = 3};                    // KEY_2, Y
    InputBinding input_binding_vehicle_aux_3{.key = 51, .gamepad_button = 5};                    // KEY_3, RIGHT_BUMPER
    InputBinding input_binding_vehicle_aux_4{.key = 52, .gamepad_button = 4};                    // KEY_4, LEFT_BUMPER
    InputBinding input_binding_vehicle_aux_5{.key = 53, .gamepad_button = 9};                    // KEY_5, LEFT_THUMB
    InputBinding input_binding_vehicle_aux_6{.key = 54};                                         // KEY_6
    InputBinding input_binding_vehicle_aux_7{.key = 55};                                         // KEY_7
    InputBinding input_binding_vehicle_aux_8{.key = 56};                                         // KEY_8
    InputBinding input_binding_vehicle_aux_9{.key = 57};                                         // KEY_9
    InputBinding input_binding_vehicle_translate_up{.key = 32, .gamepad_button = 11};            // KEY_SPACE, DPAD_UP
    InputBinding input_binding_vehicle_translate_down{.key = 341, .gamepad_button = 13};         // KEY_LEFT_CONTROL, DPAD_DOWN
    InputBinding input_binding_vehicle_roll_left{
        .key = 81, .gamepad_button = 14, .joystick_axis = 0, .joystick_axis_sign = -1};          // KEY_Q, DPAD_LEFT, AXIS_1 -
    InputBinding input_binding_vehicle_roll_right{
        .key = 69, .gamepad_button = 12, .joystick_axis = 0};                                    // KEY_E, DPAD_RIGHT, AXIS_1 +
    InputBinding input_binding_vehicle_translate_forward{.key = 87, .gamepad_axis = 1, .gamepad_axis_sign = -1}; // KEY_W, LEFT_Y -
    InputBinding input_binding_vehicle_translate_backward{.key = 83, .gamepad_axis = 1};         // KEY_S, LEFT_Y +
    InputBinding input_binding_vehicle_translate_left{.key = 65, .gamepad_axis = 0, .gamepad_axis_sign = -1};    // KEY_A, LEFT_X -
    InputBinding input_binding_vehicle_translate_right{.key = 68, .gamepad_axis = 0};            // KEY_D, LEFT_X +
    // KEY_DOWN pitches a vehicle up, as a flight stick does.
    InputBinding input_binding_vehicle_pitch_up{
        .key = 264, .gamepad_axis = 3, .joystick_axis = 1};                                      // KEY_DOWN, RIGHT_Y +, AXIS_2 +
    InputBinding input_binding_vehicle_pitch_down{
        .key = 265, .gamepad_axis = 3, .gamepad_axis_sign = -1, .joystick_axis = 1,
        .joystick_axis_sign = -1};                                                               // KEY_UP, RIGHT_Y -, AXIS_2 -
    InputBinding input_binding_vehicle_yaw_left{
        .key = 263, .gamepad_axis = 2, .gamepad_axis_sign = -1, .joystick_axis = 3,
        .joystick_axis_sign = -1};                                                               // KEY_LEFT, RIGHT_X -, AXIS_4 -
    InputBinding input_binding_vehicle_yaw_right{
        .key = 262, .gamepad_axis = 2, .joystick_axis = 3};                                      // KEY_RIGHT, RIGHT_X +, AXIS_4 +
    InputBinding input_binding_vehicle_main_thrust{
        .key = 84, .gamepad_axis = 5, .joystick_axis = 2};                                       // KEY_T, RIGHT_TRIGGER +, AXIS_3 +

    float input_gamepad_axis_deadzone = 0.1f;
    float input_joystick_axis_deadzone = 0.1f;
};

}
