#include "engine/Base16.h"

#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <stdexcept>

using quorl::Base16;

TEST(Base16Test, DecodesUpperCaseHexHighNibbleFirst) {
    EXPECT_EQ(Base16::Decode("00FF7A10"), (std::vector<unsigned char>{0x00, 0xFF, 0x7A, 0x10}));
    EXPECT_TRUE(Base16::Decode("").empty());
}

TEST(Base16Test, RejectsCharactersOutsideTheAlphabetAndOddLengths) {
    for (char const* text : {"0a", "G0", "0 ", "-1", "zz"})
        EXPECT_EQ(ErrorOf<std::invalid_argument>([&] { Base16::Decode(text); }), "not a hex digit") << text;
    EXPECT_EQ(ErrorOf<std::invalid_argument>([] { Base16::Decode("ABC"); }), "invalid size");
}
