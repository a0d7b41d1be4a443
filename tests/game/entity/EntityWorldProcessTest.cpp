#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

TEST(EntityWorldProcessTest, SavedWorldComesBackBitForBitInANewProcess) {
    std::string const world = "../Meridon-data/server/worlds/process-round-trip";
    std::string const here = std::filesystem::current_path().string();
    std::filesystem::remove_all(world);
    auto saved = RunProcess({ENTITY_WORLD_TOOL, "save", "process-round-trip"}, here);
    ASSERT_EQ(saved.exitCode, 0) << saved.out << saved.err;
    auto loaded = RunProcess({ENTITY_WORLD_TOOL, "load", "process-round-trip"}, here);
    ASSERT_EQ(loaded.exitCode, 0) << loaded.out << loaded.err;

    EXPECT_EQ(std::count(saved.out.begin(), saved.out.end(), '\n'), 3);
    EXPECT_EQ(loaded.out, saved.out);
    std::filesystem::remove_all(world);
}
