#include "engine/FPSCounter.h"

#include <gtest/gtest.h>

#include <thread>

using quorl::FPSCounter;

TEST(FPSCounterTest, StartsAtFullLoadAndNoRateAndPublishesRateAndLoadAfterAPeriod) {
    FPSCounter counter(0.05);
    EXPECT_EQ(counter.Load(), 1.0);
    EXPECT_EQ(counter.TicksPerSecond(), 0.0);
    EXPECT_EQ(counter.FrameTime(), 0.0);
    EXPECT_EQ(counter.Tick(), 0.0);
    auto start = std::chrono::steady_clock::now();
    // Busy for about a quarter of each pass: the load lands well below 1 and above 0 whatever the machine's speed.
    while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(80)) {
        {
            auto busy = counter.Busy();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
        counter.Tick();
    }
    EXPECT_GT(counter.TicksPerSecond(), 0.0);
    EXPECT_GT(counter.Load(), 0.0);
    EXPECT_LT(counter.Load(), 0.9);
    EXPECT_GT(counter.FrameTime(), 0.0);
}
