#pragma once

#include <string>
#include <vector>

/// What the launcher runs: read from "launcher.ini" in the game folder, then overridden from the command line. Both
/// go through Set, so a value means the same and is checked the same way wherever it is written.
struct LauncherConfig {
    /// Names whose GAME_Init, GAME_Mod and SERVER_Mod libraries are loaded, whichever of them each folder holds.
    std::vector<std::string> modules;
    /// Content modules (MERIDON_Mod), handed to the game, which loads them at start.
    std::vector<std::string> mods;
    /// Folders that hold more modules, as <folder>/<name>/<name>.<CLASS>.so, searched in order after the game
    /// folder's modules/; a relative one is taken from the game folder. Default none.
    std::vector<std::string> modulePath;
    std::string world = "default";
    /// A dedicated server: no window, no client modules, no input loop.
    bool server = false;
    /// Loop rates in passes per second; 0 runs a loop as fast as it can.
    double renderHz = 60.0;
    double gameHz = 60.0;
    double inputHz = 120.0;
    double serverHz = 30.0;
    int serverSubsteps = 4;
    /// Minutes between autosaves of the world, fractions allowed; 0 turns autosave off.
    double autosaveMinutes = 5.0;
    /// Quit after this many server ticks (game passes when not hosting); 0 runs until asked to quit.
    long ticks = 0;
    /// Quit after this many seconds; 0 runs until asked to quit.
    double seconds = 0.0;
    /// Where to save the last frame when the run ends; empty for no screenshot.
    std::string screenshot;
    /// Vulkan validation layers on; debug builds always have them.
    bool validation = false;
    /// Print what was loaded, and the status line even when the output is no terminal.
    bool verbose = false;

    /// Sets the setting of `key` (its name in launcher.ini, e.g. "server_hz") from `text`. Returns why the text is
    /// refused, "" when it was taken.
    std::string Set(std::string const& key, std::string const& text);
    /// The same for a command-line option that takes a value ("--server-hz").
    std::string SetOption(std::string const& option, std::string const& text);
    /// Whether `option` is a command-line option that takes a value.
    static bool TakesValue(std::string const& option);
    /// Reads the [launcher] section of `path`. Returns the problems, each as "path:line: what": a line that is no
    /// header or `key = value`, a section or key the launcher does not know, a value Set refuses; or, for a file
    /// that is there but cannot be read, "path" and the reason. A missing file has none.
    std::vector<std::string> ReadFile(std::string const& path);
};

/// Splits "a, b,c" into {"a", "b", "c"} at each `separator`, dropping empty names.
std::vector<std::string> SplitNames(std::string const& text, char separator = ',');
