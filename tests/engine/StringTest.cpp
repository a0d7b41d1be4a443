#include "engine/String.h"

#include <gtest/gtest.h>

TEST(StringTest, TrimsGivenCharactersFromBothEndsOnly) {
    struct Case {
        std::string text;
        char const* characters;
        std::string trimmed;
    };
    for (auto [text, characters, trimmed] : {Case{" \t a b \n", " \t\n", "a b"}, Case{"xxhixyx", "xy", "hi"},
             Case{"  \t ", " \t", ""}, Case{"", " ", ""}}) {
        quorl::String::Trim(text, characters);
        EXPECT_EQ(text, trimmed) << characters;
    }
}
