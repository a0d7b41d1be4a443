// What a module's hook throws leaves the call with the module and the hook named, even a throw of something that is
// no std::exception. (The launcher's hook failure tests cover std exceptions from every place of the game's life.)

#include "tests/support/ModuleRegistries.h"

#include <cstdlib>

TEST_F(ModuleRegistriesTest, AThrowOfAnythingLeavesAsAHookErrorNamingModuleAndHook) {
    ASSERT_NE(GAME_Mod::LoadModule("TEST_fault", true), nullptr);
    GAME_Mod::SortModules("update", [](GAME_Mod::Ptr, GAME_Mod::Ptr) { return false; });
    setenv("MERIDON_TEST_THROW_IN", "Game_Update:int", 1);
    try {
        GAME_Mod::CallSortedHooks("update", &GAME_Mod::Game_Update, 0.5);
        ADD_FAILURE() << "the hook's throw was lost";
    } catch (modules::HookError const& error) {
        EXPECT_EQ(error.module, "TEST_fault");
        EXPECT_EQ(error.hook, "Game_Update");
        EXPECT_STREQ(error.what(), "module TEST_fault, hook Game_Update: unknown exception");
    }
    unsetenv("MERIDON_TEST_THROW_IN");
}
