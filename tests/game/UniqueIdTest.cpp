#include "game/UniqueId.h"

#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <thread>

using game::UniqueId;

TEST(UniqueIdTest, GeneratedIdsCarryPrefixOwnerTimeAndChance) {
    UniqueId::_this_owner = 1;
    auto before = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now().time_since_epoch()).count();
    UniqueId id = UniqueId::Generate("ENTT");
    UniqueId::_this_owner = 0;

    std::string text = id.String();
    ASSERT_EQ(text.size(), 28u);
    EXPECT_EQ(text.substr(0, 4), "ENTT");
    EXPECT_EQ(text.substr(4, 8), "01000000") << "bytes in memory order";
    uint64_t time = id.high & ((uint64_t(1) << 50) - 1);
    uint64_t random = id.high >> 50;
    EXPECT_GE(time, static_cast<uint64_t>(before) & ((uint64_t(1) << 50) - 1));
    EXPECT_GE(random, 1u) << "a zero high half would make a null id";
}

TEST(UniqueIdTest, StringFormRoundTripsWithEqualHashAndPutsTheBytesWhereItTookThem) {
    UniqueId const generated = UniqueId::Generate("NODE");
    UniqueId const parsed(generated.String());
    EXPECT_EQ(parsed, generated);
    EXPECT_EQ(std::hash<UniqueId>()(parsed), std::hash<UniqueId>()(generated));

    UniqueId id("ENTT0100000001020304050607F8");
    unsigned char const bytes[16] = {'E', 'N', 'T', 'T', 0x01, 0, 0, 0, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0xF8};
    EXPECT_EQ(std::memcmp(&id, bytes, 16), 0);
    EXPECT_EQ(id.String(), "ENTT0100000001020304050607F8");
}

TEST(UniqueIdTest, IdsMadeAtOnceOnManyThreadsNeverCollide) {
    std::vector<std::vector<UniqueId>> made(4);
    std::vector<std::thread> threads;
    for (auto& list : made)
        threads.emplace_back([&list] {
            for (int i = 0; i < 500; ++i)
                list.push_back(UniqueId::Generate("ENTT"));
        });
    for (auto& thread : threads)
        thread.join();
    std::set<std::pair<uint64_t, uint64_t>> distinct;
    for (auto& list : made)
        for (auto& id : list) {
            EXPECT_FALSE(id.IsNull());
            distinct.insert({id.low, id.high});
        }
    EXPECT_EQ(distinct.size(), 2000u);
}

TEST(UniqueIdTest, NullMeansEitherHalfIsZero) {
    EXPECT_TRUE(UniqueId().IsNull());
    EXPECT_EQ(UniqueId().String(), "");
    EXPECT_EQ(UniqueId(""), UniqueId());

    UniqueId prefixOnly = UniqueId::Generate("ENTT");
    prefixOnly.high = 0;
    EXPECT_TRUE(prefixOnly.IsNull());
    EXPECT_EQ(prefixOnly.String(), "") << "a set prefix does not make an id";

    UniqueId timeOnly = UniqueId::Generate("ENTT");
    timeOnly.low = 0;
    EXPECT_TRUE(timeOnly.IsNull());
}

TEST(UniqueIdTest, ParserRejectsWrongLengthsAndLowerCaseHex) {
    for (auto const& [text, error] : std::vector<std::pair<std::string, std::string>>{
             {std::string(27, 'A'), "UniqueId string length should be 28"},
             {std::string(29, 'A'), "UniqueId string length should be 28"},
             {"ENTT0100000000112233445566a7", "not a hex digit"},
             {"ENTTxx00000000112233445566A7", "not a hex digit"},
             {"ENTT0100000000112233445566A7", "no exception"}})
        EXPECT_EQ(ErrorOf<std::exception>([&] { (void)UniqueId(text); }), error) << text;
}
