#include "engine/String.h"

#include <gtest/gtest.h>

TEST(StringTest, TrimsGivenCharactersFromBothEndsOnly) {
    std::string text = " \t a b \n";
    quorl::String::Trim(text, " \t\n");
    EXPECT_EQ(text, "a b");

    std::string custom = "xxhixyx";
    quorl::String::Trim(custom, "xy");
    EXPECT_EQ(custom, "hi");
}

TEST(StringTest, TrimsToEmptyWhenNothingElseRemains) {
    std::string text = "  \t ";
    quorl::String::Trim(text, " \t");
    EXPECT_EQ(text, "");
    std::string empty;
    quorl::String::Trim(empty, " ");
    EXPECT_EQ(empty, "");
}
