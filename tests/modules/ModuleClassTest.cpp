#include "tests/support/ModuleRegistries.h"

#include <cstdlib>
#include <filesystem>
#include <thread>

// ---- Behaviour shared by the four classes, each with its own registry -----------------------------------------------

template <class T>
class ModuleClassTypedTest : public ModuleRegistriesTest {};

using ModuleClasses = testing::Types<GAME_Init, GAME_Mod, SERVER_Mod, MERIDON_Mod>;
TYPED_TEST_SUITE(ModuleClassTypedTest, ModuleClasses);

TYPED_TEST(ModuleClassTypedTest, LoadingOpensALibraryOnceIntoItsOwnRegistryAndReportsAMissingOneOnlyWhenAsked) {
    std::vector<std::string> loaded, reports;
    TypeParam::ModulesSetLoadCallback([&](typename TypeParam::Ptr module) { loaded.push_back(module->name); });
    TypeParam::ModulesSetLoadErrorCallback([&](char const* text) { reports.emplace_back(text); });
    auto first = TypeParam::LoadModule("TEST_alpha", true);
    auto second = TypeParam::LoadModule("TEST_alpha", true);
    EXPECT_EQ(TypeParam::LoadModule("TEST_missing", false), nullptr);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(loaded, std::vector<std::string>{"TEST_alpha"}) << "the load callback sees each new module once";
    EXPECT_EQ(journal::EntriesOf("ModuleLoad"),
              std::vector<std::string>{std::string("TEST_alpha.") + TypeParam::CLASS + ":ModuleLoad"});
    EXPECT_EQ(TypeParam::GetModule("TEST_alpha"), first);
    EXPECT_EQ(GAME_Init::Count() + GAME_Mod::Count() + SERVER_Mod::Count() + MERIDON_Mod::Count(), 1u)
        << "the other classes' registries stay empty, and a missing library is in none";

    std::string const path = std::string("modules/TEST_alpha/TEST_alpha.") + TypeParam::CLASS + ".so";
    EXPECT_EQ(first->path, path);
    EXPECT_EQ(first->id, quorl::modular::ModuleID("TEST_alpha"));
    EXPECT_EQ(first->error, nullptr);
    auto written = std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::filesystem::last_write_time(path).time_since_epoch());
    EXPECT_DOUBLE_EQ(first->file_time, static_cast<double>(written.count()) / 1000000.0);

    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(TypeParam::LoadModule("TEST_missing", true), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    std::string const missing = std::string("modules/TEST_missing/TEST_missing.") + TypeParam::CLASS;
    EXPECT_TRUE(reports[0].starts_with("Module '" + missing + "' failed to load with error: ")) << reports[0];
    EXPECT_NE(reports[0].find(missing + ".so"), std::string::npos) << "dlopen's reason: " << reports[0];
}

TYPED_TEST(ModuleClassTypedTest, EveryHookOfTheTableIsFetchedByItsSymbol) {
    auto module = TypeParam::LoadModule("TEST_every", true);
    ASSERT_NE(module, nullptr);
#define EXPECT_FETCHED(symbol, result, arguments, ...) EXPECT_NE(module->symbol, nullptr) << #symbol;
    if constexpr (std::is_same_v<TypeParam, GAME_Init>) {
        MERIDON_GAME_INIT_HOOKS(EXPECT_FETCHED)
    } else if constexpr (std::is_same_v<TypeParam, GAME_Mod>) {
        MERIDON_GAME_MOD_HOOKS(EXPECT_FETCHED)
    } else if constexpr (std::is_same_v<TypeParam, SERVER_Mod>) {
        MERIDON_SERVER_MOD_HOOKS(EXPECT_FETCHED)
    } else {
        // The version is fetched too: LauncherTest sees a content module of another version refused.
        MERIDON_MERIDON_MOD_HOOKS(EXPECT_FETCHED)
    }
#undef EXPECT_FETCHED
    EXPECT_NE(module->ModuleSort, nullptr);
    EXPECT_NE(module->ModuleSetCustomPtr, nullptr);
    EXPECT_NE(module->ModuleGetCustomPtr, nullptr);
    EXPECT_EQ(module->ModuleLoad, nullptr);  // absent symbols stay null
}

TYPED_TEST(ModuleClassTypedTest, UnloadingOneCallsTheCallbackAndClosesWhenTheLastPointerGoesUnloadingAllDoesNot) {
    std::vector<std::string> unloaded;
    TypeParam::ModulesSetUnloadCallback([&](typename TypeParam::Ptr module) { unloaded.push_back(module->name); });
    auto module = TypeParam::LoadModule("TEST_alpha", true);
    ASSERT_NE(module, nullptr);
    TypeParam::LoadModule("TEST_beta", true);
    TypeParam::LoadModule("TEST_gamma", true);

    TypeParam::UnloadModule("TEST_alpha");
    EXPECT_EQ(unloaded, std::vector<std::string>{"TEST_alpha"});
    EXPECT_EQ(TypeParam::GetModule("TEST_alpha"), nullptr);
    EXPECT_TRUE(journal::EntriesOf("ModuleUnload").empty()) << "still held by the test";
    module.reset();
    EXPECT_EQ(journal::EntriesOf("ModuleUnload").size(), 1u);

    TypeParam::UnloadModule("TEST_alpha");  // unknown now: nothing happens
    TypeParam::UnloadModules();
    EXPECT_EQ(unloaded.size(), 1u) << "UnloadModules calls no callback";
    EXPECT_EQ(TypeParam::Count(), 0u);
    EXPECT_EQ(journal::EntriesOf("ModuleUnload").size(), 3u);
}

// ---- Sorting, locking and calling hooks -----------------------------------------------------------------------------

using ModuleClassTest = ModuleRegistriesTest;

TEST_F(ModuleClassTest, SortedListsFollowTheComparatorAndChangeOnlyAtTheNextSortButForUnloads) {
    auto names = [](char const* listName) {
        std::vector<std::string> names;
        GAME_Mod::ForEachSortedModule(listName, [&](GAME_Mod::Ptr& module) { names.push_back(module->name); });
        return names;
    };
    auto sort = [](char const* listName) {
        GAME_Mod::SortModules(listName, [listName](GAME_Mod::Ptr a, GAME_Mod::Ptr b) {
            return a->ModuleSort(listName) < b->ModuleSort(listName);
        });
    };
    using Names = std::vector<std::string>;
    GAME_Mod::LoadModule("TEST_alpha", true);
    GAME_Mod::LoadModule("TEST_gamma", true);
    sort("update");
    EXPECT_EQ(names("update"), (Names{"TEST_alpha", "TEST_gamma"}));
    EXPECT_TRUE(names("ui").empty()) << "lists are sorted one by one";

    GAME_Mod::LoadModule("TEST_beta", true);
    EXPECT_EQ(names("update"), (Names{"TEST_alpha", "TEST_gamma"}));
    sort("update");
    sort("ui");
    EXPECT_EQ(names("update"), (Names{"TEST_beta", "TEST_alpha", "TEST_gamma"}));

    GAME_Mod::UnloadModule("TEST_alpha");
    EXPECT_EQ(names("update"), (Names{"TEST_beta", "TEST_gamma"}));
    EXPECT_EQ(names("ui"), (Names{"TEST_beta", "TEST_gamma"}));
    EXPECT_EQ(journal::EntriesOf("ModuleUnload").size(), 1u) << "closed once no list holds it";
}

TEST_F(ModuleClassTest, HeldLockKeepsReadersOut) {
    GAME_Mod::LoadModule("TEST_alpha", true);
    std::atomic<bool> counted = false;
    std::thread reader;
    {
        auto lock = GAME_Mod::GetLock();
        ASSERT_TRUE(lock.owns_lock());
        reader = std::thread([&] {
            GAME_Mod::Count();
            counted = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_FALSE(counted);
    }
    reader.join();
    EXPECT_TRUE(counted);
}

TEST_F(ModuleClassTest, CallHooksSkipsModulesWithoutTheHook) {
    GAME_Mod::LoadModule("TEST_alpha", true);
    auto every = GAME_Mod::LoadModule("TEST_every", true);
    every->Game_Start = nullptr;
    GAME_Mod::CallHooks(&GAME_Mod::Game_Start);
    EXPECT_EQ(journal::EntriesOf("Game_Start"), std::vector<std::string>{"TEST_alpha.GAME_Mod:Game_Start"});
}

// A throw of something that is no std::exception still names its module and hook; the launcher's hook failure
// tests cover std exceptions from every place of the game's life.
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
