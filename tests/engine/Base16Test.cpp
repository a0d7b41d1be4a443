#include "engine/Base16.h"

#include <gtest/gtest.h>

#include <stdexcept>

using quorl::Base16;

TEST(Base16Test, DecodesUpperCaseHexHighNibbleFirst) {
    EXPECT_EQ(Base16::Decode("00FF7A10"), (std::vector<unsigned char>{0x00, 0xFF, 0x7A, 0x10}));
    EXPECT_TRUE(Base16::Decode("").empty());
}

TEST(Base16Test, RejectsCharactersOutsideTheAlphabet) {
    for (char const* text : {"0a", "G0", "0 ", "-1", "zz"}) {
        try {
            Base16::Decode(text);
            FAIL() << text;
        } catch (std::invalid_argument const& error) {
            EXPECT_STREQ(error.what(), "not a hex digit") << text;
        }
    }
}

TEST(Base16Test, RejectsOddLength) {
    try {
        Base16::Decode("ABC");
        FAIL();
    } catch (std::invalid_argument const& error) {
        EXPECT_STREQ(error.what(), "invalid size");
    }
}
