// Faults against a real world folder: the real launcher runs a world of TEST_entities entities, something goes wrong
// on purpose (bad files, a full disk, kills, a second server), and the folder's files are then compared byte for byte
// with what they must be.

#include "tests/support/WorldFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <regex>
#include <thread>

namespace fs = std::filesystem;

namespace {

using world_folder::Entities;
using world_folder::Files;
using world_folder::Snapshot;

std::string WorldFolder(std::string const& world) {
    return world_folder::Path(world);
}


/// Sets environment variables for the processes this test starts, and takes them back at the end.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::initializer_list<std::pair<char const*, std::string>> variables) {
        for (auto const& [name, value] : variables) {
            _names.push_back(name);
            setenv(name, value.c_str(), 1);
        }
    }
    ~ScopedEnvironment() {
        for (auto const* name : _names)
            unsetenv(name);
    }

private:
    std::vector<char const*> _names;
};

/// A dedicated server on `world` with the TEST_entities module on both of its sides.
ProcessResult Server(std::string const& world, std::vector<std::string> options,
                     std::optional<std::chrono::milliseconds> stopAfter = std::nullopt, int stopSignal = SIGTERM) {
    std::vector<std::string> arguments{MERIDON_LAUNCHER, "--server",      "--world", world,
                                       "--modules",      "TEST_entities", "--mods",  "TEST_entities"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunProcess(arguments, fs::current_path().string(), stopAfter, stopSignal);
}

Files MakeWorld(std::string const& world, std::string const& entities) {
    Files made = world_folder::Make(MERIDON_LAUNCHER, world, entities);
    EXPECT_FALSE(made.empty()) << "the world " << world << " could not be made";
    return made;
}

/// The world as a server reopens it: exit 0 when it holds `count` whole counters of one generation. Returns that
/// generation, or -1.
long ReopenedGeneration(std::string const& world, int count) {
    auto result = RunProcess({ENTITY_WORLD_TOOL, "reopen", world, std::to_string(count)}, fs::current_path().string());
    EXPECT_EQ(result.exitCode, 0) << result.out << result.err;
    std::smatch match;
    if (!std::regex_search(result.out, match, std::regex(R"(in 1 generation\(s\) from (\d+))")))
        return -1;
    return std::stol(match[1]);
}

/// `bytes` with the bits of `mask` flipped in the byte at `at`.
std::string Flipped(std::string const& bytes, size_t at, int mask) {
    return bytes.substr(0, at) + static_cast<char>(bytes.at(at) ^ mask) + bytes.substr(at + 1);
}

bool Contains(std::string const& text, std::string const& part) {
    return text.find(part) != std::string::npos;
}

}

TEST(WorldFaultTest, BadFilesGoToQuarantineAndTheRestOfTheWorldLoadsUntouched) {
    std::string const world = "faults-load";
    Files healthy = MakeWorld(world, "kept:9");
    ASSERT_EQ(healthy.size(), 9u);

    struct Damage {
        char const* what;
        std::function<std::string(std::string)> apply;
        char const* message;
    };
    std::vector<Damage> const damages{
        {"bit flipped in the magic", [](std::string b) { return Flipped(b, 3, 0x01); },
         "Invalid save state magic string for entity "},
        {"bit flipped in the version", [](std::string b) { return Flipped(b, 16, 0x04); },
         "Invalid save state version for entity "},
        {"bit flipped in the interface mark",
         [](std::string b) { return Flipped(b, b.find("\n\n\n\n", 36), 0x20); },
         "Invalid save state interface magic string for entity "},
        {"truncated", [](std::string b) { return b.substr(0, 60); }, "past the end of stream"},
        {"empty", [](std::string) { return std::string(); }, "at offset 0 of 0"},
    };
    auto victim = healthy.begin();
    std::map<std::string, std::string> damaged;  // name, bytes
    for (auto const& damage : damages) {
        damaged[victim->first] = damage.apply(victim->second);
        WriteFile(Entities(world) + "/" + victim->first, damaged[victim->first]);
        victim = healthy.erase(victim);
    }
    std::string const stray = healthy.begin()->second;
    WriteFile(Entities(world) + "/notanid.entitystate", stray);

    auto result = Server(world, {"--ticks", "2", "--server-hz", "0"});
    EXPECT_EQ(result.exitCode, 0) << result.err;

    Files after = Snapshot(Entities(world));
    Files quarantine = Snapshot(WorldFolder(world) + "/quarantine");
    for (size_t i = 0; i < damages.size(); ++i) {
        auto name = std::next(damaged.begin(), static_cast<long>(i))->first;
        SCOPED_TRACE(name);
        EXPECT_FALSE(after.contains(name));
        auto moved = std::find_if(quarantine.begin(), quarantine.end(),
                                  [&](auto const& file) { return file.first.ends_with("_" + name); });
        ASSERT_NE(moved, quarantine.end()) << "not in quarantine";
        EXPECT_EQ(moved->second, damaged[name]) << "moved, but changed";
        EXPECT_TRUE(Contains(result.err, "cannot load \"" + Entities(world) + "/" + name + "\": ")) << result.err;
    }
    for (auto const& damage : damages)
        EXPECT_TRUE(Contains(result.err, damage.message)) << damage.what << ": " << result.err;
    EXPECT_EQ(after.at("notanid.entitystate"), stray);
    EXPECT_TRUE(Contains(result.err, "/notanid.entitystate\" is not named after an entity id; left as it is"));
    after.erase("notanid.entitystate");
    EXPECT_EQ(after, healthy) << "a healthy file was changed or lost";
    fs::remove_all(WorldFolder(world));
}

TEST(WorldFaultTest, FullDiskNeverCostsAFileAndTheSaveLandsOnceThereIsSpace) {
    std::string const world = "faults-disk";
    std::string const budget = fs::absolute("disk-free").string();
    ScopedEnvironment full({{"LD_PRELOAD", MERIDON_DISK_FULL},
                            {"MERIDON_TEST_DISK_FREE", budget},
                            {"ASAN_OPTIONS", std::string(std::getenv("ASAN_OPTIONS") ? std::getenv("ASAN_OPTIONS") : "") +
                                                 ":verify_asan_link_order=0"}});
    unsetenv("MERIDON_TEST_DISK_FREE");  // the world is made with room
    Files before = MakeWorld(world, "saved_counter:12");
    setenv("MERIDON_TEST_DISK_FREE", budget.c_str(), 1);
    ASSERT_EQ(before.size(), 12u);

    // Full from the start: the world does not open, before any play.
    WriteFile(budget, "0");
    auto refused = Server(world, {"--ticks", "5"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(Contains(refused.err, "cannot write in the world folder")) << refused.err;
    EXPECT_TRUE(Contains(refused.err, "No space left on device")) << refused.err;
    EXPECT_FALSE(Contains(refused.out, "Starting game")) << refused.out;
    EXPECT_EQ(Snapshot(Entities(world)), before);

    // Full after the first few bytes, for the whole run: every save fails, the exit status says so, no file changes.
    WriteFile(budget, "100");
    auto failed = Server(world, {"--autosave", "0.005", "--seconds", "1.5"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_TRUE(Contains(failed.err, "the save failed")) << failed.err;
    EXPECT_TRUE(Contains(failed.err, "No space left on device")) << failed.err;
    EXPECT_EQ(Snapshot(Entities(world)), before) << "a file was changed, torn or lost";

    // Space freed once a save has hit the full disk: the next save lands, whole.
    WriteFile(budget, "100");
    std::thread freeSpace([&] {
        for (int wait = 0; wait < 300 && ReadFile(budget) != "0\n"; ++wait)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        WriteFile(budget, "1000000000");
    });
    auto retried = Server(world, {"--autosave", "0.005", "--seconds", "4"});
    freeSpace.join();
    EXPECT_EQ(retried.exitCode, 0) << retried.err;
    EXPECT_TRUE(Contains(retried.err, "No space left on device")) << "the disk was never full: " << retried.err;
    unsetenv("LD_PRELOAD");
    Files after = Snapshot(Entities(world));
    ASSERT_EQ(after.size(), before.size());
    for (auto const& [name, bytes] : after)
        EXPECT_NE(bytes, before.at(name)) << name << " was not saved";
    EXPECT_GT(ReopenedGeneration(world, 12), 0);
    fs::remove_all(WorldFolder(world));
    fs::remove(budget);
}

TEST(WorldFaultTest, KilledAtRandomMomentsTheWorldIsAlwaysTheLastCompletedSave) {
    std::string const world = "faults-kill";
    MakeWorld(world, "saved_counter:20");
    char const* asked = std::getenv("MERIDON_TEST_KILLS");
    int const kills = asked ? std::atoi(asked) : 4;
    std::mt19937 random(20261123);
    long generation = 0;
    for (int kill = 0; kill < kills; ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        auto killed = Server(world, {"--autosave", "0.002", "--server-hz", "200"},
                             std::chrono::milliseconds(300 + random() % 1500), SIGKILL);
        ASSERT_EQ(killed.signal, SIGKILL) << "the server ended by itself: " << killed.err;
        long reopened = ReopenedGeneration(world, 20);
        ASSERT_GE(reopened, generation) << "an older save came back";
        generation = reopened;
    }
    EXPECT_GT(generation, 0) << "no autosave completed in " << kills << " runs";
    fs::remove_all(WorldFolder(world));
}

TEST(WorldFaultTest, SecondServerOnALockedWorldIsRefused) {
    std::string const world = "faults-lock";
    MakeWorld(world, "kept:3");
    std::thread first([&] {
        auto result = Server(world, {"--seconds", "3"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
    });
    std::this_thread::sleep_for(std::chrono::seconds(1));
    auto second = Server(world, {"--ticks", "1"});
    first.join();
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(std::regex_search(second.err, std::regex("world 'faults-lock' is open in another process: .*"
                                                         "world.lock\" is locked by process [0-9]+")))
        << second.err;
    fs::remove_all(WorldFolder(world));
}
