#include "CommandLine.h"

#include <charconv>
#include <cstring>
#include <iostream>

namespace {

constexpr char kUsage[] = R"(Usage: meridon [options]
Runs the game from the current folder, which holds modules/ and game/.

  --config PATH      launcher settings to read (default: launcher.ini)
  --server           dedicated server: no window, only SERVER_Mod modules
  --world NAME       world to run; saves go to ../Meridon-data/server/worlds/NAME
  --modules a,b      GAME_Init, GAME_Mod and SERVER_Mod modules to load
  --mods a,b         content modules (MERIDON_Mod) to load
  --ticks N          quit after N server ticks
  --seconds S        quit after S seconds
  --server-hz HZ     server ticks per second (0: as fast as possible)
  --autosave MINUTES minutes between autosaves of the world (0: none; default 5)
  --screenshot PATH  save the last frame as a PNG when the run ends
  --validation       turn on the Vulkan validation layers and report what they find
  --verbose          report what was loaded, and the status line even off a terminal
  --help             show this text
)";

template <class Number>
bool ParseNumber(char const* text, Number& value) {
    auto end = text + std::strlen(text);
    auto [rest, error] = std::from_chars(text, end, value);
    return error == std::errc() && rest == end && value >= 0;
}

}

std::optional<int> ApplyCommandLine(int argc, char** argv, LauncherConfig& config, std::string& configPath) {
    // The config file is read before the other options apply, so look for it first.
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], "--config") == 0)
            configPath = argv[i + 1];
    config.ReadFile(configPath);

    for (int i = 1; i < argc; ++i) {
        std::string option = argv[i];
        auto value = [&]() -> char const* {
            if (i + 1 >= argc) {
                std::cerr << "meridon: " << option << " needs a value\n";
                return nullptr;
            }
            return argv[++i];
        };
        auto badValue = [&](char const* text) {
            std::cerr << "meridon: " << option << ": '" << text << "' is not a valid value\n";
            return 2;
        };

        if (option == "--help" || option == "-h") {
            std::cout << kUsage;
            return 0;
        } else if (option == "--server") {
            config.server = true;
        } else if (option == "--verbose") {
            config.verbose = true;
        } else if (option == "--validation") {
            config.validation = true;
        } else if (option == "--config" || option == "--world" || option == "--modules" || option == "--mods"
                   || option == "--screenshot") {
            char const* text = value();
            if (!text)
                return 2;
            if (option == "--world")
                config.world = text;
            else if (option == "--modules")
                config.modules = SplitNames(text);
            else if (option == "--mods")
                config.mods = SplitNames(text);
            else if (option == "--screenshot")
                config.screenshot = text;
        } else if (option == "--ticks") {
            char const* text = value();
            if (!text)
                return 2;
            if (!ParseNumber(text, config.ticks))
                return badValue(text);
        } else if (option == "--seconds" || option == "--server-hz" || option == "--autosave") {
            char const* text = value();
            if (!text)
                return 2;
            double number = 0.0;
            if (!ParseNumber(text, number))
                return badValue(text);
            (option == "--seconds" ? config.seconds : option == "--server-hz" ? config.serverHz : config.autosaveMinutes) = number;
        } else {
            std::cerr << "meridon: unknown option '" << option << "'\n" << kUsage;
            return 2;
        }
    }
    if (config.world.empty() || config.world.find('/') != std::string::npos) {
        std::cerr << "meridon: world name '" << config.world << "' must be a plain folder name\n";
        return 2;
    }
    return std::nullopt;
}
