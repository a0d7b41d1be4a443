#include "engine/filesystem/AtomicFileBatch.h"
#include "tests/support/Capture.h"
#include "tests/support/EntityState.h"
#include "tests/support/EntityWorld.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using game::entity::Id;
using game::entity::ServerSideEntity;
using testing::HasSubstr;

class EntitySaveStateTest : public testing::Test {
protected:
    static std::shared_ptr<ServerSideEntity> MakeSaved(std::string const& type = "counter") {
        auto entity = ServerSideEntity::Create(EntityWorld::Module(), type, Id{});
        entity->save_tag = 1;
        return entity;
    }

    /// The message of the error that loading `id` raises, or "no exception" when it loads.
    static std::string LoadError(Id id) {
        return ErrorOf<std::exception>([&] { ServerSideEntity::Interface::Create(id); });
    }

    /// Saves a counter with an empty note and unloads the world, leaving only its file: its id and path.
    static std::pair<Id, std::string> SaveAndForget() {
        auto entity = MakeSaved();
        std::pair<Id, std::string> saved{entity->id, entity->GetStateSaveFile()};
        entity.reset();
        ServerSideEntity::UnloadAllEntities();
        return saved;
    }

    EntityWorld world{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

// Every saved field coming back bit for bit, in a new process, is EntityWorldProcessTest's.
TEST_F(EntitySaveStateTest, OnlyTaggedNonComponentsAreSavedAndComeBackStartedWithSleepAsTwoSeconds) {
    auto tagged = MakeSaved();
    auto untagged = ServerSideEntity::Create(EntityWorld::Module(), "counter", Id{});
    auto component = MakeSaved();
    component->is_component = true;
    auto atRest = MakeSaved();
    atRest->dynamic = true;
    atRest->rest_time = 1.0;
    auto awake = MakeSaved("crate");
    awake->dynamic = true;
    awake->rest_time = 0.5;
    std::vector<std::string> files{untagged->GetStateSaveFile(), component->GetStateSaveFile()};
    Id restId = atRest->id, staticId = tagged->id, awakeId = awake->id;
    tagged.reset();
    untagged.reset();
    component.reset();
    atRest.reset();
    awake.reset();

    ServerSideEntity::UnloadAllEntities();
    EXPECT_FALSE(std::filesystem::exists(files[0]));
    EXPECT_FALSE(std::filesystem::exists(files[1]));
    ServerSideEntity::LoadAllEntities();
    EXPECT_EQ(ServerSideEntity::Get(restId)->rest_time, 2.0);
    EXPECT_EQ(ServerSideEntity::Get(staticId)->rest_time, 2.0) << "a static body is asleep";
    EXPECT_EQ(ServerSideEntity::_sharedObjects.size(), 3u);
    EXPECT_EQ(ServerSideEntity::_module_entities[EntityWorld::Module().String()].size(), 3u);

    auto loaded = ServerSideEntity::Get(awakeId);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->rest_time, 0.0) << "awake when saved";
    ASSERT_NE(loaded->interface, nullptr);
    EXPECT_TRUE(loaded->interface->started);
    EXPECT_EQ(loaded->interface->entity.lock(), loaded);
    EXPECT_EQ(loaded->interface->id, awakeId);
    EXPECT_EQ(loaded->interface->config, loaded->config);
}

TEST_F(EntitySaveStateTest, EmptyInterfaceBlockRoundTrips) {
    auto [id, path] = SaveAndForget();
    std::string const bytes = ReadFile(path);
    // Cut the block down to nothing: the interface then reads an empty stream and keeps its defaults. A counter
    // with an empty note ends in its block's length, the 16-byte block (updates, note length) and the end mark.
    WriteFile(path, bytes.substr(0, bytes.size() - 4 - 16 - 8) + std::string(8, '\0') + "\nEOF");
    ASSERT_EQ(LoadError(id), "no exception");
    EXPECT_EQ(CounterState::Of(*ServerSideEntity::Get(id)).updates, 0u);
}

// Damage to the first magic, the version or the interface mark is WorldFaultTest's; random bytes the fuzzer's.
TEST_F(EntitySaveStateTest, DamagedSecondMagicIsNamedAndNoBadFileLeavesAnEntity) {
    auto [id, path] = SaveAndForget();
    std::string const good = ReadFile(path), name = id.String();
    auto loadError = [&](std::string const& bytes) {
        WriteFile(path, bytes);
        return LoadError(id);
    };
    std::string secondMagic = good;
    secondMagic[9] = 'X';
    EXPECT_EQ(loadError(secondMagic), "Invalid save state magic string for entity " + name);
    for (size_t cut : {size_t(0), size_t(5), size_t(20), size_t(40), good.size() - 10}) {
        EXPECT_NE(loadError(good.substr(0, cut)), "no exception") << cut << " bytes loaded";
        EXPECT_TRUE(ServerSideEntity::_sharedObjects.empty()) << "a half-made entity stayed";
    }
    std::filesystem::remove(path);
    EXPECT_EQ(LoadError(id), "Save state file does not exist for entity " + name);
    EXPECT_TRUE(ServerSideEntity::_sharedObjects.empty());
}

TEST_F(EntitySaveStateTest, SavingIntoAMissingWorldNamesThePath) {
    auto entity = MakeSaved();
    std::filesystem::remove_all(EntityWorld::EntitiesFolder());
    EXPECT_THAT(ErrorOf([&] { entity->Serialize(); }), HasSubstr(entity->GetStateSaveFile()));
    std::filesystem::create_directories(EntityWorld::EntitiesFolder());
}

TEST_F(EntitySaveStateTest, LeftoverTemporaryFromACrashIsIgnoredAndReplaced) {
    auto entity = MakeSaved();
    CounterState{1, "old"}.Into(*entity);
    entity->Serialize();
    std::string path = entity->GetStateSaveFile();
    WriteFile(path + quorl::filesystem::AtomicFileBatch::kTemporarySuffix, "\1\2\3");

    CounterState{2, "new"}.Into(*entity);
    Id id = entity->id;
    entity.reset();
    ServerSideEntity::UnloadAllEntities();
    EXPECT_FALSE(std::filesystem::exists(path + quorl::filesystem::AtomicFileBatch::kTemporarySuffix));
    ServerSideEntity::LoadAllEntities();
    EXPECT_EQ(CounterState::Of(*ServerSideEntity::Get(id)).note, "new");
}
