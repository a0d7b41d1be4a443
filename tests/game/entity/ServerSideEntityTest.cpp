#include "game/entity/EntityConfig.h"
#include "tests/support/Capture.h"
#include "tests/support/EntityState.h"
#include "tests/support/EntityWorld.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

using game::entity::Id;
using game::entity::ServerSideEntity;

class ServerSideEntityTest : public testing::Test {
protected:
    static std::shared_ptr<ServerSideEntity> Make(std::string const& type, Id id = {}) {
        return ServerSideEntity::Create(EntityWorld::Module(), type, id);
    }

    EntityWorld world{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(ServerSideEntityTest, SecondEntityWithATakenIdIsRefusedAndTheFirstKeepsItsFile) {
    auto first = Make("counter");
    first->save_tag = 1;
    first->Serialize();
    EXPECT_EQ(ErrorOf([&] { Make("counter", first->id); }),
              "UNIQUE_OBJECT ServerSideEntity with id " + first->id.String() + " already exists");
    EXPECT_EQ(ServerSideEntity::Get(first->id), first);
    EXPECT_TRUE(std::filesystem::exists(first->GetStateSaveFile()));
}

TEST_F(ServerSideEntityTest, NewEntityOfAnUnregisteredTypeIsReportedOncePerModuleAndTypeAndASavedOneIsNot) {
    // A saved entity whose type is gone, as when its module is absent: kept on disk without a word.
    auto kept = Make("kept");
    kept->save_tag = 1;
    Id const keptId = kept->id;
    kept.reset();
    ServerSideEntity::UnloadAllEntities();
    auto& types = ServerSideEntity::_registered_interfaces[EntityWorld::Module().String()];
    auto keptType = types.extract("kept");

    std::vector<std::shared_ptr<ServerSideEntity>> made;
    std::string const said = StderrOf([&] {
        EXPECT_EQ(ServerSideEntity::Interface::Create(keptId), nullptr);
        made.push_back(Make("misspelt_crate"));
        made.push_back(Make("misspelt_crate"));
        made.push_back(ServerSideEntity::Create(quorl::modular::ModuleID("NOBODY_here"), "misspelt_crate", Id{}));
    });
    types.insert(std::move(keptType));

    auto const unregistered = [](std::string const& module) {
        return "Entity type \"misspelt_crate\" of module \"" + module + "\" is not registered";
    };
    EXPECT_EQ(CountOccurrences(said, unregistered("TEST_entities")), 1u) << said;
    EXPECT_EQ(CountOccurrences(said, unregistered("NOBODY_here")), 1u) << said;
    EXPECT_EQ(CountOccurrences(said, "kept"), 0u) << said;
    EXPECT_TRUE(std::filesystem::exists(EntityWorld::EntitiesFolder() + "/" + keptId.String() + ".entitystate"));
    EXPECT_EQ(ServerSideEntity::Get(keptId), nullptr) << "loaded without its type";
    for (auto const& entity : made) {
        EXPECT_EQ(entity->interface, nullptr) << "an entity without behaviour";
        EXPECT_EQ(entity->config, nullptr);
        EXPECT_EQ(entity->mass, 0.0);
    }
}

TEST_F(ServerSideEntityTest, KnownTypeTakesItsNodesFromTheConfigReadOnce) {
    auto crate = Make("crate");
    ASSERT_NE(crate->interface, nullptr);
    ASSERT_NE(crate->config, nullptr);
    EXPECT_TRUE(crate->config->loaded);
    EXPECT_GT(crate->mass, 0.0);
    ASSERT_FALSE(crate->colliders.empty());
    for (auto const& [name, collider] : crate->colliders) {
        EXPECT_EQ(collider.entity, crate->id);
        EXPECT_EQ(collider.name, name);
        EXPECT_EQ(collider.vertices_count, 8u);
    }
    EXPECT_GT(crate->bounds_radius, 0.0);
    EXPECT_EQ(crate->center_of_mass, crate->bounds_center);
    EXPECT_EQ(Make("crate")->config, crate->config) << "one config per type";
}

// That ForEach visits every entity is the ticks' below, which walk the whole table.
TEST_F(ServerSideEntityTest, NewEntitiesGetEntityIdsOrTheirOwnAndFindModuleIdKnowsTypesAndItems) {
    EXPECT_EQ(Make("counter")->id.String().substr(0, 4), "ENTT");
    EXPECT_EQ(ServerSideEntity::Get(Id::Generate("ENTT")), nullptr);
    Id const chosen = Id::Generate("ENTT");
    EXPECT_EQ(Make("counter", chosen)->id, chosen);

    EXPECT_EQ(ServerSideEntity::FindModuleID("door"), EntityWorld::Module());
    EXPECT_EQ(ServerSideEntity::FindModuleID("crowbar"), EntityWorld::Module());
    EXPECT_EQ(ServerSideEntity::FindModuleID("nothing"), quorl::modular::ModuleID());
}

TEST_F(ServerSideEntityTest, ComponentsMergeIntoTheirFirstNonComponentAncestor) {
    auto body = Make("counter");
    auto bracket = Make("counter");
    auto lamp = Make("counter");
    bracket->parent = body->id;
    bracket->is_component = true;
    bracket->position = {1, 0, 0};
    lamp->parent = bracket->id;
    lamp->is_component = true;
    lamp->position = {0, 2, 0};

    EXPECT_EQ(lamp->GetFirstNonComponentParent(), body);
    EXPECT_EQ(bracket->GetFirstNonComponentParent(), body);
    EXPECT_EQ(body->GetFirstNonComponentParent(), nullptr);
    glm::dvec4 origin = lamp->GetTransformInPhysicsParent() * glm::dvec4(0, 0, 0, 1);
    EXPECT_EQ(glm::dvec3(origin), glm::dvec3(1, 2, 0));
    EXPECT_EQ(body->GetTransformInPhysicsParent(), glm::dmat4(1.0));

    lamp->parent = Id::Generate("ENTT");  // a parent that is gone
    EXPECT_EQ(lamp->GetFirstNonComponentParent(), nullptr);
    EXPECT_EQ(lamp->GetTransformInPhysicsParent(), glm::dmat4(1.0));
}

TEST_F(ServerSideEntityTest, RightsFollowOwnerEveryoneAndNamedUsers) {
    auto box = Make("counter");
    auto& rights = *box->interface;
    EXPECT_TRUE(rights.HasRight("open", "anyone")) << "nobody owns it";

    rights.owner = "ada";
    EXPECT_TRUE(rights.HasRight("open", "ada"));
    EXPECT_FALSE(rights.HasRight("open", "bob"));
    rights.rights["open"]["bob"] = true;
    EXPECT_TRUE(rights.HasRight("open", "bob"));
    rights.rights["open"]["@everyone"] = true;
    EXPECT_TRUE(rights.HasRight("open", "carol"));
    rights.rights["open"]["@everyone"] = false;
    EXPECT_FALSE(rights.HasRight("open", "carol"));
    EXPECT_TRUE(rights.HasRight("open", "bob")) << "falls through to the user's own entry";

    auto handle = Make("counter");
    handle->parent = box->id;
    handle->is_component = true;
    handle->interface->entity = handle;
    EXPECT_FALSE(handle->interface->HasRight("open", "carol")) << "a component asks what holds it";
    EXPECT_TRUE(handle->interface->HasRight("open", "ada"));
}

// Where the solver puts the leaf is JointSolverTest's; here that the entity asks for it only when marked.
TEST_F(ServerSideEntityTest, DoorLeafSwingsWithTheHingeOnlyOnceItsNodesAreMarked) {
    auto door = Make("door");
    glm::dmat4 const closed = door->colliders.at("leaf").transform;
    door->joints.at("hinge").angular = {0.0f, 0.0f, 60.0f};
    door->Update(0.01);
    EXPECT_EQ(door->colliders.at("leaf").transform, closed) << "moved without being marked";

    door->nodes_dirty = true;
    door->Update(0.01);
    EXPECT_NE(door->colliders.at("leaf").transform, closed);
    EXPECT_EQ(door->colliders.at("leaf").transform, door->node_transforms.at("leaf"));
}

TEST_F(ServerSideEntityTest, DestroyedEntityTakesItsFileWhenNoWorldIsOpen) {
    auto lost = Make("counter");
    lost->Serialize();
    std::string const lostFile = lost->GetStateSaveFile();
    {
        std::unique_lock lock(ServerSideEntity::_sharedObjectsMutex);
        ServerSideEntity::_sharedObjects.erase(lost->id);
    }
    lost.reset();
    EXPECT_FALSE(std::filesystem::exists(lostFile));
}

TEST_F(ServerSideEntityTest, TickUpdatesOnlyStartedInterfaces) {
    auto counter = Make("counter");
    Game::ServerUpdate(0.01, 1);
    EXPECT_EQ(CounterState::Of(*counter).updates, 0u) << "not started";
    counter->interface->started = true;
    Game::ServerUpdate(0.01, 1);
    Game::ServerUpdate(0.01, 1);
    EXPECT_EQ(CounterState::Of(*counter).updates, 2u);
}

TEST_F(ServerSideEntityTest, TickCarriesMotionAndEnvironmentDownTheTree) {
    auto ship = Make("counter");
    auto deck = Make("counter");
    auto crate = Make("counter");
    ship->dynamic = true;
    ship->rest_time = 0.5;
    ship->environment = 7;
    ship->parent_environment = 3;
    deck->parent = ship->id;
    crate->parent = deck->id;
    crate->settled = true;

    Game::ServerUpdate(0.01, 1);
    EXPECT_TRUE(deck->carried);
    EXPECT_TRUE(crate->carried) << "through a parent that is carried itself";
    EXPECT_FALSE(crate->settled);
    EXPECT_EQ(crate->environment, 7u);
    EXPECT_EQ(crate->parent_environment, 3u);

    ship->rest_time = 2.0;  // asleep: no longer carries
    Game::ServerUpdate(0.01, 1);
    EXPECT_FALSE(deck->carried);
    EXPECT_FALSE(crate->carried) << "the tick's second pass sees the deck's new state";
    crate->settled = true;
    Game::ServerUpdate(0.01, 1);
    EXPECT_TRUE(crate->settled);
}
