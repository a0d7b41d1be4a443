#include "game/DebugInfo.h"

#include <gtest/gtest.h>

#include <mutex>

using game::DebugInfo;

namespace {

// Two arrays with the same text: distinct objects, so distinct addresses.
constexpr char ChunksLoaded[] = "Chunks: %lu";
constexpr char ChunksMeshed[] = "Chunks: %lu";

TEST(DebugInfo, RowsAreKeyedByTheFormatsAddress) {
    std::lock_guard lock(DebugInfo::infosMutex);
    DebugInfo::infos[ChunksLoaded] = 10;
    DebugInfo::infos[ChunksMeshed] = 20;
    DebugInfo::infos[ChunksLoaded] += 1;

    EXPECT_EQ(DebugInfo::infos.count(ChunksLoaded), 1u);
    EXPECT_EQ(DebugInfo::infos.at(ChunksLoaded), 11u);
    EXPECT_EQ(DebugInfo::infos.at(ChunksMeshed), 20u);
    DebugInfo::infos.erase(ChunksLoaded);
    DebugInfo::infos.erase(ChunksMeshed);
}

}
