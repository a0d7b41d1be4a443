#include "tests/support/ModuleRegistries.h"

#include <filesystem>
#include <fstream>
#include <thread>

// ---- Behaviour shared by the four classes, each with its own registry ------------------------------------------------

template <class T>
class ModuleClassTypedTest : public ModuleRegistriesTest {};

using ModuleClasses = testing::Types<GAME_Init, GAME_Mod, SERVER_Mod, MERIDON_Mod>;
TYPED_TEST_SUITE(ModuleClassTypedTest, ModuleClasses);

TYPED_TEST(ModuleClassTypedTest, LoadingTwiceGivesTheSameModuleAndLoadsOnce) {
    std::vector<std::string> loaded;
    TypeParam::ModulesSetLoadCallback([&](typename TypeParam::Ptr module) { loaded.push_back(module->name); });
    auto first = TypeParam::LoadModule("TEST_alpha", true);
    auto second = TypeParam::LoadModule("TEST_alpha", true);
    TypeParam::LoadModule("TEST_missing", false);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(loaded, std::vector<std::string>{"TEST_alpha"}) << "the load callback sees each new module once";
    EXPECT_EQ(journal::EntriesOf("ModuleLoad"),
              std::vector<std::string>{std::string("TEST_alpha.") + TypeParam::CLASS + ":ModuleLoad"});
    EXPECT_EQ(TypeParam::Count(), 1u);
    EXPECT_EQ(TypeParam::GetModule("TEST_alpha"), first);
}

TYPED_TEST(ModuleClassTypedTest, OpenModuleKnowsItsIdentityAndFile) {
    auto module = TypeParam::LoadModule("TEST_alpha", true);
    ASSERT_NE(module, nullptr);
    std::string path = std::string("modules/TEST_alpha/TEST_alpha.") + TypeParam::CLASS + ".so";
    EXPECT_EQ(module->name, "TEST_alpha");
    EXPECT_EQ(module->path, path);
    EXPECT_EQ(module->id, quorl::modular::ModuleID("TEST_alpha"));
    EXPECT_EQ(module->error, nullptr);
    auto written = std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::filesystem::last_write_time(path).time_since_epoch());
    EXPECT_DOUBLE_EQ(module->file_time, static_cast<double>(written.count()) / 1000000.0);
}

TYPED_TEST(ModuleClassTypedTest, MissingLibraryIsNullAndReportedOnlyWhenAsked) {
    std::vector<std::string> reports;
    TypeParam::ModulesSetLoadErrorCallback([&](char const* text) { reports.emplace_back(text); });

    EXPECT_EQ(TypeParam::LoadModule("TEST_missing", false), nullptr);
    EXPECT_TRUE(reports.empty());

    EXPECT_EQ(TypeParam::LoadModule("TEST_missing", true), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    std::string path = std::string("modules/TEST_missing/TEST_missing.") + TypeParam::CLASS;
    EXPECT_TRUE(reports[0].starts_with("Module '" + path + "' failed to load with error: ")) << reports[0];
    EXPECT_NE(reports[0].find(path + ".so"), std::string::npos) << reports[0];
    EXPECT_EQ(TypeParam::Count(), 0u);
    EXPECT_EQ(TypeParam::GetModule("TEST_missing"), nullptr);
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
        MERIDON_MERIDON_MOD_HOOKS(EXPECT_FETCHED)
        EXPECT_NE(module->_MERIDON_Mod_VERSION, nullptr);
        EXPECT_EQ(*static_cast<uint32_t const*>(module->_MERIDON_Mod_VERSION), MERIDON_MOD_VERSION);
    }
#undef EXPECT_FETCHED
    EXPECT_NE(module->ModuleSort, nullptr);
    EXPECT_NE(module->ModuleSetCustomPtr, nullptr);
    EXPECT_NE(module->ModuleGetCustomPtr, nullptr);
    EXPECT_EQ(module->ModuleLoad, nullptr);  // absent symbols stay null
}

TYPED_TEST(ModuleClassTypedTest, UnloadCallsTheCallbackAndClosesWhenTheLastPointerGoes) {
    std::vector<std::string> unloaded;
    TypeParam::ModulesSetUnloadCallback([&](typename TypeParam::Ptr module) { unloaded.push_back(module->name); });
    auto module = TypeParam::LoadModule("TEST_alpha", true);
    ASSERT_NE(module, nullptr);

    TypeParam::UnloadModule("TEST_alpha");
    EXPECT_EQ(unloaded, std::vector<std::string>{"TEST_alpha"});
    EXPECT_EQ(TypeParam::GetModule("TEST_alpha"), nullptr);
    EXPECT_TRUE(journal::EntriesOf("ModuleUnload").empty()) << "still held by the test";

    module.reset();
    EXPECT_EQ(journal::EntriesOf("ModuleUnload").size(), 1u);
    TypeParam::UnloadModule("TEST_alpha");  // unknown now: nothing happens
    EXPECT_EQ(unloaded.size(), 1u);
}

TYPED_TEST(ModuleClassTypedTest, UnloadModulesClosesAllWithoutTheCallback) {
    int callbacks = 0;
    TypeParam::ModulesSetUnloadCallback([&](typename TypeParam::Ptr) { ++callbacks; });
    TypeParam::LoadModule("TEST_alpha", true);
    TypeParam::LoadModule("TEST_beta", true);
    TypeParam::UnloadModules();
    EXPECT_EQ(callbacks, 0);
    EXPECT_EQ(TypeParam::Count(), 0u);
    EXPECT_EQ(journal::EntriesOf("ModuleUnload").size(), 2u);
}

// ---- Registries, sorting and locking ---------------------------------------------------------------------------------

class ModuleClassTest : public ModuleRegistriesTest {
protected:
    static std::vector<std::string> SortedNames(char const* listName) {
        std::vector<std::string> names;
        GAME_Mod::ForEachSortedModule(listName, [&](GAME_Mod::Ptr& module) { names.push_back(module->name); });
        return names;
    }
    static void SortByModuleSort(char const* listName) {
        GAME_Mod::SortModules(listName, [listName](GAME_Mod::Ptr a, GAME_Mod::Ptr b) {
            return a->ModuleSort(listName) < b->ModuleSort(listName);
        });
    }
};

TEST_F(ModuleClassTest, EachClassKeepsItsOwnRegistry) {
    ASSERT_NE(GAME_Mod::LoadModule("TEST_alpha", true), nullptr);
    EXPECT_EQ(GAME_Mod::Count(), 1u);
    EXPECT_EQ(SERVER_Mod::Count(), 0u);
    EXPECT_EQ(SERVER_Mod::GetModule("TEST_alpha"), nullptr);
    ASSERT_NE(SERVER_Mod::LoadModule("TEST_alpha", true), nullptr);
    EXPECT_EQ(journal::EntriesOf("ModuleLoad").size(), 2u) << "one library per class";
}

TEST_F(ModuleClassTest, SortedListsFollowTheComparatorAndIgnoreLaterLoads) {
    GAME_Mod::LoadModule("TEST_alpha", true);
    GAME_Mod::LoadModule("TEST_gamma", true);
    EXPECT_TRUE(SortedNames("update").empty()) << "no list before it is sorted";

    SortByModuleSort("update");
    EXPECT_EQ(SortedNames("update"), (std::vector<std::string>{"TEST_alpha", "TEST_gamma"}));

    GAME_Mod::LoadModule("TEST_beta", true);
    EXPECT_EQ(SortedNames("update"), (std::vector<std::string>{"TEST_alpha", "TEST_gamma"}));
    SortByModuleSort("update");
    EXPECT_EQ(SortedNames("update"), (std::vector<std::string>{"TEST_beta", "TEST_alpha", "TEST_gamma"}));
    EXPECT_TRUE(SortedNames("render").empty()) << "lists are sorted one by one";
}

TEST_F(ModuleClassTest, UnloadedModuleLeavesEverySortedListUntilSortedAgain) {
    GAME_Mod::LoadModule("TEST_alpha", true);
    GAME_Mod::LoadModule("TEST_beta", true);
    SortByModuleSort("update");
    SortByModuleSort("ui");

    GAME_Mod::UnloadModule("TEST_alpha");
    EXPECT_EQ(SortedNames("update"), std::vector<std::string>{"TEST_beta"});
    EXPECT_EQ(SortedNames("ui"), std::vector<std::string>{"TEST_beta"});
    EXPECT_EQ(journal::EntriesOf("ModuleUnload").size(), 1u) << "closed once no list holds it";

    GAME_Mod::LoadModule("TEST_alpha", true);
    EXPECT_EQ(SortedNames("update"), std::vector<std::string>{"TEST_beta"});
    SortByModuleSort("update");
    EXPECT_EQ(SortedNames("update"), (std::vector<std::string>{"TEST_beta", "TEST_alpha"}));
}

TEST_F(ModuleClassTest, BrokenLibraryReportsTheLoaderError) {
    std::filesystem::create_directories("modules/TEST_broken");
    std::ofstream("modules/TEST_broken/TEST_broken.GAME_Mod.so") << "not a shared object";
    std::string report;
    GAME_Mod::ModulesSetLoadErrorCallback([&](char const* text) { report = text; });

    EXPECT_EQ(GAME_Mod::LoadModule("TEST_broken", true), nullptr);
    EXPECT_TRUE(report.starts_with("Module 'modules/TEST_broken/TEST_broken.GAME_Mod' failed to load with error: "))
        << report;
    EXPECT_GT(report.size(), std::string("Module '' failed to load with error: ").size() + 40) << "has the reason";
    std::filesystem::remove_all("modules/TEST_broken");
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
