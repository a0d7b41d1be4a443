#pragma once

#include "tests/support/Process.h"
#include "tests/support/TempDirectory.h"

#include <filesystem>
#include <map>
#include <string>

/// A world folder of the tests' game tree, seen from its root as the launcher sees it.
namespace world_folder {

/// Every regular file of a folder by name, with its bytes; empty for a missing folder.
using Files = std::map<std::string, std::string>;

inline std::string Path(std::string const& world) {
    return "../Meridon-data/server/worlds/" + world;
}

inline std::string Entities(std::string const& world) {
    return Path(world) + "/entities";
}

inline Files Snapshot(std::string const& folder) {
    Files files;
    std::error_code missing;
    for (auto const& entry : std::filesystem::directory_iterator(folder, missing))
        if (entry.is_regular_file())
            files[entry.path().filename().string()] = ReadFile(entry.path().string());
    return files;
}

/// A new world holding `entities` ("TYPE:COUNT" of the TEST_entities types), saved by a short run of the launcher
/// at `launcher`. Returns its entity files; empty if the run failed.
inline Files Make(std::string const& launcher, std::string const& world, std::string const& entities) {
    std::filesystem::remove_all(Path(world));
    setenv("MERIDON_TEST_ENTITIES", entities.c_str(), 1);
    auto made = RunProcess({launcher, "--server", "--world", world, "--modules", "TEST_entities", "--mods",
                            "TEST_entities", "--ticks", "2", "--server-hz", "0"},
                           std::filesystem::current_path().string());
    unsetenv("MERIDON_TEST_ENTITIES");
    return made.exitCode == 0 ? Snapshot(Entities(world)) : Files{};
}

}
