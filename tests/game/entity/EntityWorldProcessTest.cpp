#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <random>

namespace {

ProcessResult Tool(std::vector<std::string> arguments, std::optional<std::chrono::milliseconds> killAfter = {}) {
    arguments.insert(arguments.begin(), ENTITY_WORLD_TOOL);
    return RunProcess(arguments, std::filesystem::current_path().string(), killAfter, SIGKILL);
}

void RemoveWorld(std::string const& world) {
    std::filesystem::remove_all("../Meridon-data/server/worlds/" + world);
}

}

TEST(EntityWorldProcessTest, SavedWorldComesBackBitForBitInANewProcess) {
    RemoveWorld("process-round-trip");
    auto saved = Tool({"save", "process-round-trip"});
    ASSERT_EQ(saved.exitCode, 0) << saved.out << saved.err;
    auto loaded = Tool({"load", "process-round-trip"});
    ASSERT_EQ(loaded.exitCode, 0) << loaded.out << loaded.err;

    EXPECT_EQ(std::count(saved.out.begin(), saved.out.end(), '\n'), 3);
    EXPECT_EQ(loaded.out, saved.out);
    RemoveWorld("process-round-trip");
}

TEST(EntityWorldProcessTest, KilledWhileSavingLeavesEveryFileOldOrNewNeverTorn) {
    constexpr int kCounters = 40;
    RemoveWorld("process-crash");
    ASSERT_EQ(Tool({"counters", "process-crash", std::to_string(kCounters)}).exitCode, 0);
    std::mt19937 random(20261121);
    for (int run = 0; run < 12; ++run) {
        auto killed = Tool({"churn", "process-crash"}, std::chrono::milliseconds(30 + random() % 250));
        ASSERT_EQ(killed.signal, SIGKILL) << "the churn ended by itself: " << killed.out << killed.err;
        auto verified = Tool({"verify", "process-crash", std::to_string(kCounters)});
        ASSERT_EQ(verified.exitCode, 0) << "after kill " << run << ": " << verified.out << verified.err;
    }
    RemoveWorld("process-crash");
}
