#include "engine/Base16.h"

#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <stdexcept>

using quorl::Base16;

// UniqueIdTest decodes the upper-case hex of ids byte for byte; what is left to check here are the edges.
TEST(Base16Test, DecodesNothingFromNothingAndRejectsCharactersOutsideTheAlphabetAndOddLengths) {
    EXPECT_TRUE(Base16::Decode("").empty());
    for (char const* text : {"0a", "G0", "0 ", "-1", "zz"})
        EXPECT_EQ(ErrorOf<std::invalid_argument>([&] { Base16::Decode(text); }), "not a hex digit") << text;
    EXPECT_EQ(ErrorOf<std::invalid_argument>([] { Base16::Decode("ABC"); }), "invalid size");
}
