#include "engine/filesystem/AtomicFileBatch.h"
#include "tests/support/Capture.h"
#include "tests/support/EntityState.h"
#include "tests/support/EntityWorld.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

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

    /// Where the interface magic starts in the file of a counter with an empty note: before the end mark, the
    /// 16-byte block (updates, note length) and the block's length.
    static size_t InterfaceMagicOffset(size_t fileSize) { return fileSize - 4 - 16 - 8 - 4; }

    EntityWorld world{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(EntitySaveStateTest, EverySavedFieldAndTheInterfaceBlockComeBack) {
    auto saved = MakeSaved("crate");
    saved->position = {1.5, -2.25, 1e9};
    saved->orientation = glm::normalize(glm::dquat(0.9, 0.1, -0.3, 0.2));
    saved->environment = 0x1122334455667788u;
    saved->parent_environment = 42;
    Id parent = Id::Generate("ENTT");
    saved->parent = parent;
    saved->dynamic = true;
    saved->linear_velocity = {0.1, 0.2, 0.3};
    saved->angular_velocity = {-1, 0, 1e-300};
    saved->rest_time = 0.5;
    CounterState{17, "seventeen"}.Into(*saved);
    Id id = saved->id;
    auto const expected = saved->SaveState();
    saved.reset();

    ServerSideEntity::UnloadAllEntities();
    EXPECT_EQ(ReadFile("../Meridon-data/server/worlds/" + Game::_current_world + "/entities/" + id.String() +
                       ".entitystate"),
              std::string(expected.begin(), expected.end()));
    ServerSideEntity::LoadAllEntities();

    auto loaded = ServerSideEntity::Get(id);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->module, EntityWorld::Module());
    EXPECT_EQ(loaded->type, "crate");
    EXPECT_EQ(loaded->position, glm::dvec3(1.5, -2.25, 1e9));
    EXPECT_EQ(loaded->orientation, glm::normalize(glm::dquat(0.9, 0.1, -0.3, 0.2)));
    EXPECT_EQ(loaded->environment, 0x1122334455667788u);
    EXPECT_EQ(loaded->parent_environment, 42u);
    EXPECT_EQ(loaded->parent, parent);
    EXPECT_TRUE(loaded->dynamic);
    EXPECT_EQ(loaded->linear_velocity, glm::dvec3(0.1, 0.2, 0.3));
    EXPECT_EQ(loaded->angular_velocity, glm::dvec3(-1, 0, 1e-300));
    EXPECT_EQ(loaded->rest_time, 0.0) << "awake when saved";
    ASSERT_NE(loaded->interface, nullptr);
    EXPECT_TRUE(loaded->interface->started);
    EXPECT_EQ(loaded->interface->entity.lock(), loaded);
    EXPECT_EQ(loaded->interface->id, id);
    EXPECT_EQ(loaded->interface->config, loaded->config);
    EXPECT_EQ(CounterState::Of(*loaded).updates, 17u);
    EXPECT_EQ(CounterState::Of(*loaded).note, "seventeen");
    EXPECT_EQ(ServerSideEntity::_module_entities[EntityWorld::Module().String()].size(), 1u);
}

TEST_F(EntitySaveStateTest, OnlyTaggedNonComponentsAreSavedAndSleepComesBackAsTwoSeconds) {
    auto tagged = MakeSaved();
    auto untagged = ServerSideEntity::Create(EntityWorld::Module(), "counter", Id{});
    auto component = MakeSaved();
    component->is_component = true;
    auto atRest = MakeSaved();
    atRest->dynamic = true;
    atRest->rest_time = 1.0;
    tagged->dynamic = false;
    std::vector<std::string> files{untagged->GetStateSaveFile(), component->GetStateSaveFile()};
    Id restId = atRest->id, staticId = tagged->id;
    tagged.reset();
    untagged.reset();
    component.reset();
    atRest.reset();

    ServerSideEntity::UnloadAllEntities();
    EXPECT_FALSE(std::filesystem::exists(files[0]));
    EXPECT_FALSE(std::filesystem::exists(files[1]));
    ServerSideEntity::LoadAllEntities();
    EXPECT_EQ(ServerSideEntity::Get(restId)->rest_time, 2.0);
    EXPECT_EQ(ServerSideEntity::Get(staticId)->rest_time, 2.0) << "a static body is asleep";
    EXPECT_EQ(ServerSideEntity::_sharedObjects.size(), 2u);
}

TEST_F(EntitySaveStateTest, EmptyInterfaceBlockRoundTrips) {
    auto [id, path] = SaveAndForget();
    std::string const bytes = ReadFile(path);
    // Cut the block down to nothing: the interface then reads an empty stream and keeps its defaults.
    WriteFile(path, bytes.substr(0, InterfaceMagicOffset(bytes.size()) + 4) + std::string(8, '\0') + "\nEOF");
    ASSERT_EQ(LoadError(id), "no exception");
    EXPECT_EQ(CounterState::Of(*ServerSideEntity::Get(id)).updates, 0u);
}

TEST_F(EntitySaveStateTest, EachDamageGivesItsOwnMessageAndAnyBadFileFailsWithoutLeavingAnEntity) {
    auto [id, path] = SaveAndForget();
    std::string const good = ReadFile(path), name = id.String();
    auto loadError = [&](std::string const& bytes) {
        WriteFile(path, bytes);
        return LoadError(id);
    };
    auto damaged = [&](size_t offset, char value) {
        std::string bytes = good;
        bytes[offset] = value;
        return loadError(bytes);
    };
    EXPECT_EQ(damaged(0, 'X'), "Invalid save state magic string for entity " + name);
    EXPECT_EQ(damaged(9, 'X'), "Invalid save state magic string for entity " + name) << "second magic, same words";
    EXPECT_EQ(damaged(16, 2), "Invalid save state version for entity " + name);
    EXPECT_EQ(damaged(InterfaceMagicOffset(good.size()), 'X'),
              "Invalid save state interface magic string for entity " + name);

    std::mt19937 random(7);
    std::vector<std::string> files{""};
    for (size_t cut : {size_t(5), size_t(20), size_t(40), good.size() - 10})
        files.push_back(good.substr(0, cut));
    for (int i = 0; i < 20; ++i) {
        std::string noise(random() % 300, '\0');
        for (auto& byte : noise)
            byte = static_cast<char>(random());
        files.push_back(noise);
    }
    for (auto const& bytes : files) {
        EXPECT_NE(loadError(bytes), "no exception") << bytes.size() << " bytes loaded";
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
