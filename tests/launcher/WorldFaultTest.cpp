// Faults against a real world folder: the real launcher runs a world of TEST_entities entities, something goes wrong
// on purpose (bad files, a full disk, kills, a second server), and the folder's files are then compared byte for byte
// with what they must be.

#include "tests/support/WorldFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <regex>
#include <thread>

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::Not;
using world_folder::Entities;
using world_folder::Files;
using world_folder::Snapshot;

namespace {

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

}

TEST(WorldFaultTest, BadFilesGoToQuarantineAndTheRestOfTheWorldLoadsUntouched) {
    std::string const world = "faults-load";
    Files healthy = MakeWorld(world, "kept:9");
    ASSERT_EQ(healthy.size(), 9u);

    // The only test that names these marks' damage; cut files are the entity save tests' own.
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
    };
    Files damaged;  // one victim per damage, in the same order
    for (auto const& damage : damages) {
        auto const victim = healthy.extract(healthy.begin());
        damaged[victim.key()] = damage.apply(victim.mapped());
        WriteFile(Entities(world) + "/" + victim.key(), damaged[victim.key()]);
    }
    std::string const stray = healthy.begin()->second;
    WriteFile(Entities(world) + "/notanid.entitystate", stray);

    auto result = Server(world, {"--ticks", "2", "--server-hz", "0"});
    EXPECT_EQ(result.exitCode, 0) << result.err;

    Files after = Snapshot(Entities(world));
    Files const quarantine = Snapshot(world_folder::Path(world) + "/quarantine");
    auto victim = damaged.begin();
    for (auto const& damage : damages) {
        auto const& [name, bytes] = *victim++;
        SCOPED_TRACE(damage.what);
        EXPECT_FALSE(after.contains(name));
        auto moved = std::find_if(quarantine.begin(), quarantine.end(),
                                  [&](auto const& file) { return file.first.ends_with("_" + name); });
        ASSERT_NE(moved, quarantine.end()) << "not in quarantine";
        EXPECT_EQ(moved->second, bytes) << "moved, but changed";
        EXPECT_THAT(result.err, HasSubstr("cannot load \"" + Entities(world) + "/" + name + "\": "));
        EXPECT_THAT(result.err, HasSubstr(damage.message));
    }
    EXPECT_EQ(after.at("notanid.entitystate"), stray);
    EXPECT_THAT(result.err, HasSubstr("/notanid.entitystate\" is not named after an entity id; left as it is"));
    after.erase("notanid.entitystate");
    EXPECT_EQ(after, healthy) << "a healthy file was changed or lost";
    fs::remove_all(world_folder::Path(world));
}

TEST(WorldFaultTest, FullDiskNeverCostsAFileAndTheSaveLandsOnceThereIsSpace) {
    std::string const world = "faults-disk";
    std::string const budget = fs::absolute("disk-free").string();
    Files before = MakeWorld(world, "saved_counter:12");
    ASSERT_EQ(before.size(), 12u);
    // From here every server writes through the full disk, a preloaded library that sanitized builds must let in.
    char const* sanitizer = std::getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS", (std::string(sanitizer ? sanitizer : "") + ":verify_asan_link_order=0").c_str(), 1);
    setenv("LD_PRELOAD", MERIDON_DISK_FULL, 1);
    setenv("MERIDON_TEST_DISK_FREE", budget.c_str(), 1);

    // Full from the start: the world does not open, before any play.
    WriteFile(budget, "0");
    auto refused = Server(world, {"--ticks", "5"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr("cannot write in the world folder"));
    EXPECT_THAT(refused.err, HasSubstr("No space left on device"));
    EXPECT_THAT(refused.out, Not(HasSubstr("Starting game")));
    EXPECT_EQ(Snapshot(Entities(world)), before);

    // Full after the first few bytes, for the whole run: every save fails, the exit status says so, no file changes.
    WriteFile(budget, "100");
    auto failed = Server(world, {"--autosave", "0.005", "--seconds", "1.5"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_THAT(failed.err, HasSubstr("the save failed"));
    EXPECT_THAT(failed.err, HasSubstr("No space left on device"));
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
    EXPECT_THAT(retried.err, HasSubstr("No space left on device")) << "the disk was never full";
    unsetenv("LD_PRELOAD");
    unsetenv("MERIDON_TEST_DISK_FREE");
    Files after = Snapshot(Entities(world));
    ASSERT_EQ(after.size(), before.size());
    for (auto const& [name, bytes] : after)
        EXPECT_NE(bytes, before.at(name)) << name << " was not saved";
    EXPECT_GT(ReopenedGeneration(world, 12), 0);
    fs::remove_all(world_folder::Path(world));
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
    fs::remove_all(world_folder::Path(world));
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
    fs::remove_all(world_folder::Path(world));
}
