#include "game/Options.h"

#include "game/Game.h"

#include <gtest/gtest.h>

#include <any>
#include <string>

using game::Options;

namespace {

class OptionsTest : public testing::Test {
protected:
    ~OptionsTest() override { Game::Quit(); }
};

TEST_F(OptionsTest, DoubleIsReadFromADoubleOrAWidenedFloatAndNothingElse) {
    Options::Set("as_double", 250.5);
    Options::Set("as_float", 0.1f);
    Options::Set("as_int", 7);
    Options::Set("as_text", std::string("7"));
    EXPECT_EQ(Options::Get<double>("as_double", 1000.0), 250.5);
    EXPECT_EQ(Options::Get<double>("as_float", 1000.0), static_cast<double>(0.1f));
    EXPECT_THROW(Options::Get<double>("as_int", 1000.0), std::bad_any_cast);
    EXPECT_THROW(Options::Get<double>("as_text", 1000.0), std::bad_any_cast);
    // The lock was released by the throw.
    Options::Set("as_int", 8.0);
    EXPECT_EQ(Options::Get<double>("as_int", 1000.0), 8.0);
}

TEST_F(OptionsTest, SetReplacesAValueOfAnyTypeUntilQuitEndsTheLoopsAndClearsEveryOption) {
    Options::Set("mode", 3);
    Options::Set("mode", std::string("fast"));
    Options::Set("world_origin_reset_distance_threshold", 50.0);
    EXPECT_EQ(Options::Get<std::string>("mode", ""), "fast");
    EXPECT_EQ(Options::Get<int>("count", 4), 4);

    Game::isActive = true;
    Game::Quit();
    EXPECT_FALSE(Game::isActive);
    EXPECT_EQ(Options::Get<double>("world_origin_reset_distance_threshold", 1000.0), 1000.0);
    EXPECT_EQ(Options::Get<std::string>("mode", "none"), "none");
}

}
