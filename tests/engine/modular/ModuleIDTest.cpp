#include "engine/modular/ModuleID.h"

#include <gtest/gtest.h>

using quorl::modular::ModuleID;

TEST(ModuleIDTest, EncodesFirstCharacterAsLeastSignificantDigitAndRoundTripsWithTheCaseOfEachPartFolded) {
    ModuleID id("ABC_def");
    // A=11, B=12, C=13 in the upper alphabet; d=14, e=15, f=16 in the lower one; base 37.
    EXPECT_EQ(id.vendor, 11u + 12u * 37u + 13u * 37u * 37u);
    EXPECT_EQ(id.module, 14u + 15u * 37u + 16u * 37u * 37u);
    for (char const* name : {"ABC_def", "MERIDON_example", "Z_a", "ABCDEFGHIJKL_abcdefghijkl",
             "ZZZZZZZZZZZZ_zzzzzzzzzzzz", "V2_mod9", "A B_c d"})
        EXPECT_EQ(ModuleID(name).String(), name) << name;
    EXPECT_EQ(ModuleID("abc_DEF"), ModuleID("ABC_def"));
}

TEST(ModuleIDTest, RejectedNamesAreEmptyWithTheWordsOfTheirBadPartsZero) {
    struct Case {
        char const* name;
        bool vendorKept, moduleKept;
    };
    // A name of the wrong shape zeroes both words; a part of the right shape but with a character outside the
    // alphabet, or a second underscore, zeroes its own word alone.
    for (auto const& [name, vendorKept, moduleKept] : {Case{"", false, false}, Case{"nounderscore", false, false},
             Case{"_def", false, false}, Case{"ABC_", false, false}, Case{"ABCDEFGHIJKLM_def", false, false},
             Case{"ABC_abcdefghijklm", false, false}, Case{"1ABC_def", false, false}, Case{"ABC_1def", false, false},
             Case{"AB-C_def", false, true}, Case{"A_b_c", true, false}}) {
        ModuleID const id(name);
        EXPECT_EQ(id.vendor != 0, vendorKept) << name;
        EXPECT_EQ(id.module != 0, moduleKept) << name;
        EXPECT_EQ(id.String(), "") << name;
    }
}
