#include "engine/cpu/Profiler.h"

#include <gtest/gtest.h>

#include <thread>

using quorl::cpu::Profiler;

TEST(ProfilerTest, ScopedTimerRecordsIntoItsNamedProfile) {
    {
        Profiler timer("ProfilerTest.scope");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    Profiler::Record("ProfilerTest.scope", 1000.0);

    std::lock_guard lock(Profiler::profilesMutex);
    auto const& profile = Profiler::profiles.at("ProfilerTest.scope");
    EXPECT_EQ(profile.count, 2u);
    EXPECT_EQ(profile.lastMs, 1000.0);
    EXPECT_EQ(profile.maxMs, 1000.0);
    EXPECT_GE(profile.totalMs, 1002.0);
    EXPECT_DOUBLE_EQ(profile.AverageMs(), profile.totalMs / 2);
}

TEST(ProfilerTest, ResetKeepsNamesAndForgetsMeasurements) {
    Profiler::Record("ProfilerTest.reset", 3.0);
    Profiler::ResetAll();
    std::lock_guard lock(Profiler::profilesMutex);
    ASSERT_EQ(Profiler::profiles.count("ProfilerTest.reset"), 1u);
    EXPECT_EQ(Profiler::profiles.at("ProfilerTest.reset").count, 0u);
    EXPECT_EQ(Profiler::profiles.at("ProfilerTest.reset").AverageMs(), 0.0);
}
