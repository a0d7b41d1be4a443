#include "CommandLine.h"

#include <cstring>
#include <filesystem>
#include <iostream>

namespace {

constexpr char kUsage[] = R"(Usage: meridon [options]
Runs the game from the current folder, which holds modules/ and game/.

  --config PATH      launcher settings to read (default: launcher.ini, where missing means the defaults)
  --server           dedicated server: no window, only SERVER_Mod modules
  --world NAME       world to run; saves go to ../Meridon-data/server/worlds/NAME
  --modules a,b      GAME_Init, GAME_Mod and SERVER_Mod modules to load
  --mods a,b         content modules (MERIDON_Mod) to load
  --module-path D:E  more folders holding modules as <name>/<name>.<CLASS>.so, looked in after modules/
  --ticks N          quit after N server ticks
  --seconds S        quit after S seconds
  --server-hz HZ     server ticks per second (0: as fast as possible); also --render-hz, --game-hz, --input-hz
  --server-substeps N  physics substeps per server tick
  --autosave MINUTES minutes between autosaves of the world (0: none; default 5)
  --screenshot PATH  save the last frame as a PNG when the run ends
  --validation       turn on the Vulkan validation layers and report what they find
  --verbose          report the modules and entity types loaded, the entities loaded and saved, and the status
                     line even off a terminal
  --version          show the launcher's version
  --help             show this text

Every option that takes a value, but --config, --ticks, --seconds and --screenshot, may also stand in the
[launcher] section of launcher.ini, named without its dashes and with '_' for '-' (server_hz = 30,
autosave_minutes = 5); the command line wins.
)";

}

std::optional<int> ApplyCommandLine(int argc, char** argv, LauncherConfig& config, std::string& configPath) {
    // The config file is read before the other options apply, so look for it first.
    bool configNamed = false;
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], "--config") == 0) {
            configPath = argv[i + 1];
            configNamed = true;
        }
    // The default file may be missing (the defaults then hold); a file asked for by name must be there.
    std::error_code error;
    if (configNamed && !std::filesystem::is_regular_file(configPath, error)) {
        std::cerr << "meridon: --config: cannot read '" << configPath << "': "
                  << (std::filesystem::exists(configPath, error) ? "not a file" : "no such file") << "\n";
        return 2;
    }
    if (auto problems = config.ReadFile(configPath); !problems.empty()) {
        for (auto const& problem : problems)
            std::cerr << "meridon: " << problem << "\n";
        return 2;
    }

    for (int i = 1; i < argc; ++i) {
        std::string option = argv[i];
        if (option == "--help" || option == "-h") {
            std::cout << kUsage;
            return 0;
        } else if (option == "--version") {
            std::cout << "meridon " << MERIDON_VERSION << "\n";
            return 0;
        } else if (option == "--server") {
            config.server = true;
        } else if (option == "--verbose") {
            config.verbose = true;
        } else if (option == "--validation") {
            config.validation = true;
        } else if (option == "--config" || LauncherConfig::TakesValue(option)) {
            if (i + 1 >= argc) {
                std::cerr << "meridon: " << option << " needs a value\n";
                return 2;
            }
            char const* text = argv[++i];
            if (option == "--config")
                continue;
            if (auto refused = config.SetOption(option, text); !refused.empty()) {
                std::cerr << "meridon: " << option << ": '" << text << "' is not a valid value: " << refused << "\n";
                return 2;
            }
        } else {
            std::cerr << "meridon: unknown option '" << option << "'\n" << kUsage;
            return 2;
        }
    }
    return std::nullopt;
}
