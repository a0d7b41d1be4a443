// A module's hook that throws, in each place of the game's life, ends the real launcher in order: status 1, the
// module and hook named, the world's saves untouched.

#include "tests/support/WorldFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace {

struct HookFailure {
    char const* hook;
    std::vector<std::string> options;
    /// Game::Start ran, so Game_Stop must run too; only a client loads the GAME_Mod that says so.
    bool stops;
    /// The module was loaded, so it must be unloaded.
    bool unloads;
};

void PrintTo(HookFailure const& failure, std::ostream* out) {
    *out << failure.hook;
}

class HookFailureTest : public testing::TestWithParam<HookFailure> {};

TEST_P(HookFailureTest, StopsTheGameInOrderNamingModuleAndHook) {
    HookFailure const& failure = GetParam();
    std::string const world = std::string("hook-failure-") + failure.hook;
    // Entities that are saved and never change: whatever the run saves, their files stay byte for byte.
    auto const saved = world_folder::Make(MERIDON_LAUNCHER, world, "kept:3");
    ASSERT_EQ(saved.size(), 3u);

    std::vector<std::string> arguments{MERIDON_LAUNCHER, "--world", world, "--mods", "TEST_entities", "--modules",
                                       "TEST_fault"};
    arguments.insert(arguments.end(), failure.options.begin(), failure.options.end());
    setenv("MERIDON_TEST_THROW_IN", failure.hook, 1);
    auto result = RunProcess(arguments, std::filesystem::current_path().string(), std::chrono::seconds(20), SIGKILL);
    unsetenv("MERIDON_TEST_THROW_IN");

    EXPECT_EQ(result.signal, 0) << "killed after 20 s: " << result.err;
    EXPECT_EQ(result.exitCode, 1) << result.err;
    std::string const named = std::string("module TEST_fault, hook ") + failure.hook + ": TEST_fault failed on purpose";
    EXPECT_NE(result.err.find(named), std::string::npos) << result.err;
    EXPECT_EQ(result.out.find("TEST_fault: Game_Stop") != std::string::npos, failure.stops) << result.out;
    EXPECT_EQ(result.out.find("TEST_fault: ModuleUnload") != std::string::npos, failure.unloads) << result.out;
    EXPECT_EQ(world_folder::Snapshot(world_folder::Entities(world)), saved) << "the world's saves changed";
    std::filesystem::remove_all(world_folder::Path(world));
}

std::vector<std::string> const kClientLoop{"--seconds", "10"};
std::vector<std::string> const kClientTicks{"--ticks", "3"};
std::vector<std::string> const kServerTicks{"--server", "--ticks", "3", "--server-hz", "0"};

INSTANTIATE_TEST_SUITE_P(EveryPlace, HookFailureTest,
    testing::Values(
        HookFailure{"ModuleLoad", kClientTicks, false, false},
        HookFailure{"ModuleSort", kClientTicks, false, true},
        HookFailure{"Server_Load", kServerTicks, false, true},
        HookFailure{"Game_Ready", kClientTicks, true, true},
        HookFailure{"Game_Update", kClientLoop, true, true},
        HookFailure{"Server_GameUpdate", kServerTicks, false, true},
        HookFailure{"Renderer_FrameRenderCommands", kClientLoop, true, true},
        HookFailure{"ModuleUnload", kClientTicks, true, true}),
    [](testing::TestParamInfo<HookFailure> const& info) { return std::string(info.param.hook); });

}
