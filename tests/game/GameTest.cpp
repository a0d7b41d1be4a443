#include "game/entity/ClientSideEntity.h"
#include "tests/support/Capture.h"
#include "tests/support/GameFixture.h"

#include <thread>

using Entries = std::vector<std::string>;

TEST_F(GameTest, PassesCallTheirHooksInOrder) {
    GAME_Mod::LoadModule("TEST_alpha", true);   // sorts second
    GAME_Mod::LoadModule("TEST_beta", true);    // sorts first
    SERVER_Mod::LoadModule("TEST_alpha", true);
    SortAllLists();
    Game::_mods = {"TEST_gamma"};

    Game::Start();
    Game::Ready();
    Game::Update(0.0);
    Game::ServerUpdate(0.01, 1);
    Game::Stop();

    Entries passes;
    for (auto const& entry : journal::Entries())
        if (!entry.ends_with(":ModuleLoad") && !entry.ends_with(":Game_Start") && !entry.ends_with(":Game_Ready") &&
            !entry.ends_with(":Game_Stop"))
            passes.push_back(entry);
    EXPECT_EQ(passes, (Entries{
                          "TEST_gamma.MERIDON_Mod:Load",
                          "TEST_beta.GAME_Mod:Game_Update",
                          "TEST_alpha.GAME_Mod:Game_Update",
                          "TEST_alpha.SERVER_Mod:Server_BeforeUpdate",
                          "TEST_alpha.SERVER_Mod:Server_GameUpdate",
                          "TEST_gamma.MERIDON_Mod:Unload",
                          "TEST_gamma.MERIDON_Mod:ModuleUnload",
                      }));

    // Start: every Game_Start before the content modules load; Ready, then Stop after content is gone.
    auto all = journal::Entries();
    auto position = [&](std::string const& entry) { return std::find(all.begin(), all.end(), entry) - all.begin(); };
    EXPECT_EQ(journal::EntriesOf("Game_Start").size(), 2u);
    EXPECT_LT(position("TEST_alpha.GAME_Mod:Game_Start"), position("TEST_gamma.MERIDON_Mod:ModuleLoad"));
    EXPECT_LT(position("TEST_gamma.MERIDON_Mod:Load"), position("TEST_alpha.GAME_Mod:Game_Ready"));
    EXPECT_LT(position("TEST_gamma.MERIDON_Mod:ModuleUnload"), position("TEST_alpha.GAME_Mod:Game_Stop"));
    EXPECT_EQ(journal::EntriesOf("Game_Stop").size(), 2u);
    EXPECT_EQ(MERIDON_Mod::Count(), 0u);
}

TEST_F(GameTest, StartAnnouncesItselfAndLoadsContentModulesInOrderSkippingMissingOnesSilently) {
    Game::_mods = {"TEST_beta", "TEST_missing", "TEST_alpha"};
    testing::internal::CaptureStdout();
    EXPECT_EQ(StderrOf([] { Game::Start(); }), "");
    Game::Ready();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Shader compilation may take several minutes before starting the game the first time or after an "
              "update...\nStarting game...\n");
    EXPECT_EQ(MERIDON_Mod::Count(), 2u);
    EXPECT_EQ(journal::EntriesOf("ModuleLoad"),
              (Entries{"TEST_beta.MERIDON_Mod:ModuleLoad", "TEST_alpha.MERIDON_Mod:ModuleLoad"}));
    Game::Stop();
}

TEST_F(GameTest, UnsortedModulesGetNoGameUpdateButTheClientAndInputPasses) {
    GAME_Mod::LoadModule("TEST_alpha", true);
    Game::Update(0.0);
    Game::ClientUpdate();
    Game::InputUpdate(0.01);
    Game::InputUpdate_Play(0.01);
    Game::InputUpdate_Station(0.01);
    EXPECT_EQ(journal::Entries(),
              (Entries{"TEST_alpha.GAME_Mod:ModuleLoad", "TEST_alpha.GAME_Mod:Game_ClientUpdate",
                       "TEST_alpha.GAME_Mod:Input_Update", "TEST_alpha.GAME_Mod:Input_Update_Play",
                       "TEST_alpha.GAME_Mod:Input_Update_Station"}));
}

namespace {

/// Journals its frame calls, so that they show among the modules' hooks.
class JournalingEntity : public game::entity::ClientSideEntity::Interface {
public:
    void Update(double) override { journal::Record("entity:Update"); }
    void AfterUpdate(double) override { journal::Record("entity:AfterUpdate"); }
};

}

TEST_F(GameTest, UpdateRunsClientEntitiesAroundTheModulesWithTheFrameTimeSmoothedFromHalfTheFirstFrame) {
    using game::entity::ClientSideEntity;
    GAME_Mod::LoadModule("TEST_alpha", true);
    SortAllLists();
    quorl::modular::ModuleID const module("TEST_local");
    ClientSideEntity::_registered_interfaces[module.String()]["journaling"] = {
        module, "journaling", nullptr, [] { return std::make_shared<JournalingEntity>(); }};
    auto idle = ClientSideEntity::Create(game::entity::Id::Generate("ENTT"), module, "journaling");
    auto started = ClientSideEntity::Create(game::entity::Id::Generate("ENTT"), module, "journaling");
    started->interface->started = true;
    Game::mainRenderingFramerate.Tick();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    Game::mainRenderingFramerate.Tick();
    double const frame = Game::mainRenderingFramerate.FrameTime();

    Game::Update(123.0);  // the argument plays no part
    EXPECT_EQ(journal::Entries(), (Entries{"TEST_alpha.GAME_Mod:ModuleLoad", "entity:Update",
                                           "TEST_alpha.GAME_Mod:Game_Update", "entity:AfterUpdate"}));
    EXPECT_DOUBLE_EQ(journal::LastNote("TEST_alpha:Game_Update"), 0.5 * frame);
    Game::Update(0.0);
    EXPECT_DOUBLE_EQ(journal::LastNote("TEST_alpha:Game_Update"), 0.75 * frame);

    Game::Stop();
    EXPECT_TRUE(ClientSideEntity::_sharedObjects.empty());
    EXPECT_TRUE(ClientSideEntity::_registered_interfaces.empty());
}

TEST_F(GameTest, SynchronizedWorkFromManyThreadsRunsOnceInOrderAtTheNextUpdate) {
    constexpr int kThreads = 4, kEach = 250;
    std::vector<std::vector<int>> ran(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t, &ran] {
            for (int i = 0; i < kEach; ++i)
                Game::Synchronize([t, i, &ran] { ran[t].push_back(i); });
        });
    // The game loop drains while the others are still queueing: nothing may be lost or run twice.
    while (std::any_of(threads.begin(), threads.end(), [](auto& thread) { return thread.joinable(); })) {
        Game::Update(0.0);
        for (auto& thread : threads)
            if (thread.joinable()) {
                thread.join();
                break;
            }
    }
    Game::Update(0.0);

    for (int t = 0; t < kThreads; ++t) {
        ASSERT_EQ(ran[t].size(), size_t(kEach)) << "thread " << t;
        EXPECT_TRUE(std::is_sorted(ran[t].begin(), ran[t].end())) << "thread " << t;
    }
    EXPECT_TRUE(Game::_syncQueue.empty());
}

TEST_F(GameTest, EmptySynchronizedFunctionThrowsWithTheQueueUnlocked) {
    Game::Synchronize(nullptr);
    EXPECT_THROW(Game::Update(0.0), std::bad_function_call);
    std::unique_lock lock(Game::_syncMutex, std::try_to_lock);
    EXPECT_TRUE(lock.owns_lock());
}

TEST_F(GameTest, PhysicsDebugPublishFillsEmptiedBackBuffersAndHandsThemToStaging) {
    auto publish = [](size_t lines, size_t colliders) {
        Game::PublishPhysicsDebug([=](auto& backLines, auto& backColliders) {
            // With no render thread swapping, each publish fills the buffers staged two publishes before.
            EXPECT_TRUE(backLines.empty());
            EXPECT_TRUE(backColliders.empty());
            backLines.resize(lines);
            backColliders.resize(colliders);
        });
    };
    Game::physicsDebugCollidersUpdated = false;
    publish(3, 1);
    publish(5, 3);
    publish(2, 4);

    ASSERT_TRUE(Game::physicsDebugCollidersUpdated.exchange(false));
    std::lock_guard lock(Game::physicsDebugMutex);
    EXPECT_EQ(Game::physicsDebugLines_staging.size(), 2u);
    EXPECT_EQ(Game::physicsDebugColliders_staging.size(), 4u);
}

TEST_F(GameTest, ServerTickSetsTimestampFromTheClockPlusOffsetUnlessTimeIsStopped) {
    Game::timeOffset = 1000.0;
    double before = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    Game::ServerUpdate(0.01, 1);
    double after = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_GE(Game::timestamp, before + 1000.0 - 0.001);
    EXPECT_LE(Game::timestamp, after + 1000.0);

    Game::timeActive = false;
    Game::timestamp = 42.5;
    Game::ServerUpdate(0.01, 1);
    EXPECT_EQ(Game::timestamp, 42.5);
}
