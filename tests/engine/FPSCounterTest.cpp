#include "engine/FPSCounter.h"

#include <gtest/gtest.h>

using quorl::FPSCounter;
using namespace std::chrono_literals;

namespace {
FPSCounter::Clock::time_point clockNow;
}

TEST(FPSCounterTest, StartsAtFullLoadAndNoRateAndPublishesRateAndLoadOncePerPeriod) {
    auto const realClock = FPSCounter::now;
    FPSCounter::now = [] { return clockNow; };
    FPSCounter counter(1.0);
    EXPECT_EQ(counter.Load(), 1.0);
    EXPECT_EQ(counter.TicksPerSecond(), 0.0);
    EXPECT_EQ(counter.FrameTime(), 0.0);
    EXPECT_EQ(counter.Tick(), 0.0);
    // 10 ms passes, busy for the first 2.5 ms of each.
    for (int pass = 1; pass <= 100; ++pass) {
        {
            auto busy = counter.Busy();
            clockNow += 2500us;
        }
        clockNow += 7500us;
        EXPECT_DOUBLE_EQ(counter.Tick(), 0.01);
        if (pass == 99) {
            EXPECT_EQ(counter.TicksPerSecond(), 0.0) << "nothing is published before a whole period";
        }
    }
    EXPECT_DOUBLE_EQ(counter.TicksPerSecond(), 100.0);
    EXPECT_DOUBLE_EQ(counter.Load(), 0.25);
    EXPECT_DOUBLE_EQ(counter.FrameTime(), 0.01);
    FPSCounter::now = realClock;
}
