// What a module's hook throws leaves the call with the module and the hook named, whatever was thrown; ModuleLoad
// and ModuleUnload, which cannot throw on, fail the load and report instead.

#include "tests/support/ModuleRegistries.h"

#include <cstdlib>
#include <memory>

namespace {

/// Sets what TEST_fault throws from, for one test.
class ThrowIn {
public:
    explicit ThrowIn(char const* hook) { setenv("MERIDON_TEST_THROW_IN", hook, 1); }
    ~ThrowIn() { unsetenv("MERIDON_TEST_THROW_IN"); }
};

struct Thrown {
    char const* asked;
    char const* message;
};

void PrintTo(Thrown const& thrown, std::ostream* out) {
    *out << thrown.asked;
}

class HookErrorTest : public ModuleRegistriesTest, public testing::WithParamInterface<Thrown> {};

TEST_P(HookErrorTest, NamesModuleAndHook) {
    ASSERT_NE(GAME_Mod::LoadModule("TEST_fault", true), nullptr);
    GAME_Mod::SortModules("update", [](GAME_Mod::Ptr, GAME_Mod::Ptr) { return false; });
    ThrowIn throwIn(GetParam().asked);
    try {
        GAME_Mod::CallSortedHooks("update", &GAME_Mod::Game_Update, 0.5);
        FAIL() << "the hook's throw was lost";
    } catch (modules::HookError const& error) {
        EXPECT_EQ(error.module, "TEST_fault");
        EXPECT_EQ(error.hook, "Game_Update");
        EXPECT_EQ(error.what(), std::string("module TEST_fault, hook Game_Update: ") + GetParam().message);
    }
}

INSTANTIATE_TEST_SUITE_P(AnyThrow, HookErrorTest,
    testing::Values(Thrown{"Game_Update", "TEST_fault failed on purpose"},
                    Thrown{"Game_Update:int", "unknown exception"}));

class LifecycleHookTest : public ModuleRegistriesTest {};

TEST_F(LifecycleHookTest, ThrowsAreCountedAndReportedNotThrown) {
    auto report = std::make_shared<std::string>();  // the callback outlives the test
    SERVER_Mod::ModulesSetLoadErrorCallback([report](char const* text) { *report = text; });
    size_t const errors = SERVER_Mod::LifecycleHookErrors();
    {
        ThrowIn throwIn("ModuleLoad");
        EXPECT_EQ(SERVER_Mod::LoadModule("TEST_fault", true), nullptr);
    }
    EXPECT_NE(report->find("failed to load with error: module TEST_fault, hook ModuleLoad: TEST_fault failed on "
                           "purpose"), std::string::npos) << *report;
    EXPECT_EQ(SERVER_Mod::Count(), 0u);
    EXPECT_EQ(SERVER_Mod::LifecycleHookErrors(), errors + 1);

    ASSERT_NE(SERVER_Mod::LoadModule("TEST_fault", true), nullptr) << "a failed load is not remembered";
    ThrowIn throwIn("ModuleUnload");
    testing::internal::CaptureStderr();
    SERVER_Mod::UnloadModules();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("module TEST_fault, hook ModuleUnload: TEST_fault failed on "
                                                          "purpose"), std::string::npos);
    EXPECT_EQ(SERVER_Mod::LifecycleHookErrors(), errors + 2);
}

}
