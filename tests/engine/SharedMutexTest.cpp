#include "engine/SharedMutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <shared_mutex>
#include <thread>
#include <vector>

using quorl::SharedMutex;

TEST(SharedMutexTest, ReadersShareWritersExcludeUnderContention) {
    SharedMutex mutex;
    std::atomic<int> readersInside = 0;
    std::atomic<int> writersInside = 0;
    std::atomic<bool> violation = false;
    long counter = 0;  // written only under the exclusive side
    constexpr int kWriters = 3, kReaders = 5, kRounds = 2000;

    std::vector<std::thread> threads;
    for (int w = 0; w < kWriters; ++w)
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                std::unique_lock lock(mutex);
                if (++writersInside != 1 || readersInside != 0)
                    violation = true;
                ++counter;
                --writersInside;
            }
        });
    for (int r = 0; r < kReaders; ++r)
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                std::shared_lock lock(mutex);
                ++readersInside;
                if (writersInside != 0)
                    violation = true;
                volatile long seen = counter;
                (void)seen;
                --readersInside;
            }
        });
    for (auto& thread : threads)
        thread.join();

    EXPECT_FALSE(violation);
    EXPECT_EQ(counter, kWriters * kRounds);
}

TEST(SharedMutexTest, ReadersNestAndAWriterWaitsForEveryOneToLeave) {
    SharedMutex mutex;
    std::atomic<bool> written = false;
    // One thread may hold the read side twice while no writer is active.
    std::shared_lock first(mutex);
    std::shared_lock second(mutex);
    std::thread writer([&] {
        std::unique_lock lock(mutex);
        written = true;
    });
    first.unlock();
    // The writer may not get in while one reader remains. Give it a chance to misbehave.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(written);
    second.unlock();
    writer.join();
    EXPECT_TRUE(written);
}
