#include "engine/modular/ModuleID.h"

#include <gtest/gtest.h>

using quorl::modular::ModuleID;

TEST(ModuleIDTest, EncodesFirstCharacterAsLeastSignificantDigit) {
    ModuleID id("ABC_def");
    // A=11, B=12, C=13 in the upper alphabet; d=14, e=15, f=16 in the lower one; base 37.
    EXPECT_EQ(id.vendor, 11u + 12u * 37u + 13u * 37u * 37u);
    EXPECT_EQ(id.module, 14u + 15u * 37u + 16u * 37u * 37u);
}

TEST(ModuleIDTest, RoundTripsThroughString) {
    for (char const* name : {"ABC_def", "MERIDON_example", "Z_a", "ABCDEFGHIJKL_abcdefghijkl", "V2_mod9", "A B_c d"})
        EXPECT_EQ(ModuleID(name).String(), name) << name;
}

TEST(ModuleIDTest, FoldsCaseOfEachPart) {
    EXPECT_EQ(ModuleID("abc_DEF"), ModuleID("ABC_def"));
    EXPECT_EQ(ModuleID("abc_DEF").String(), "ABC_def");
}

TEST(ModuleIDTest, RejectedNamesLeaveBothWordsZero) {
    for (char const* name : {"", "nounderscore", "_def", "ABC_", "ABCDEFGHIJKLM_def", "ABC_abcdefghijklm", "1ABC_def",
                             "ABC_1def", "AB-C_def"}) {
        ModuleID id(name);
        if (std::string(name) == "AB-C_def") {
            // Valid shape, but '-' is outside the alphabet: that part alone becomes 0.
            EXPECT_EQ(id.vendor, 0u) << name;
            EXPECT_NE(id.module, 0u) << name;
        } else {
            EXPECT_EQ(id, ModuleID()) << name;
        }
        EXPECT_EQ(id.String(), "") << name;
    }
}

TEST(ModuleIDTest, SecondUnderscoreZeroesTheModuleWord) {
    ModuleID id("A_b_c");
    EXPECT_NE(id.vendor, 0u);
    EXPECT_EQ(id.module, 0u);
    EXPECT_EQ(id.String(), "");
}

TEST(ModuleIDTest, TwelveCharactersFitAWord) {
    ModuleID id("ZZZZZZZZZZZZ_zzzzzzzzzzzz");
    EXPECT_NE(id.vendor, 0u);
    EXPECT_NE(id.module, 0u);
    EXPECT_EQ(id.String(), "ZZZZZZZZZZZZ_zzzzzzzzzzzz");
}
