#include "game/entity/ClientSideEntity.h"

#include "game/entity/EntityConfig.h"
#include "tests/support/EntityWorld.h"

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <set>

using game::entity::ClientSideEntity;
using game::entity::Id;

class ClientSideEntityTest : public testing::Test {
protected:
    static std::shared_ptr<ClientSideEntity> Make(std::string const& type) {
        return ClientSideEntity::Create(Id::Generate("ENTT"), EntityWorld::Module(), type);
    }

    /// A counter that glides: only dynamic entities interpolate.
    static std::shared_ptr<ClientSideEntity> Glider() {
        auto entity = Make("counter");
        entity->dynamic = true;
        entity->has_target = true;
        return entity;
    }

    EntityWorld world{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

namespace {

glm::dquat AboutY(double degrees) {
    return glm::angleAxis(glm::radians(degrees), glm::dvec3(0.0, 1.0, 0.0));
}

/// The angle between two rotations, whatever the signs of their quaternions.
double DegreesBetween(glm::dquat const& a, glm::dquat const& b) {
    return glm::degrees(2.0 * std::acos(std::min(1.0, std::abs(glm::dot(a, b)))));
}

}

TEST_F(ClientSideEntityTest, FollowingStatesSentAt20HzGlidesWithoutOvershootAndSettlesOnTheLast) {
    auto entity = Glider();
    constexpr double kFrame = 1.0 / 60.0;
    // The server's body runs along x at 6 m/s and turns at 90 degrees/s for a second, then stops; it reports every
    // third frame, so each report jumps the target by 0.3 m and 4.5 degrees.
    double largestStep = 0.0;
    glm::dquat previousOrientation = entity->orientation;
    for (int frame = 0; frame < 240; ++frame) {
        double const serverTime = std::min(frame * kFrame, 1.0);
        if (frame % 3 == 0) {
            entity->target_position = {6.0 * serverTime, 0.0, 0.0};
            entity->target_orientation = AboutY(90.0 * serverTime);
        }
        double const before = entity->position.x;
        entity->Update(kFrame);
        ASSERT_GE(entity->position.x, before) << "frame " << frame << ": moved backwards";
        ASSERT_LE(entity->position.x, entity->target_position.x + 1e-12) << "frame " << frame << ": overshot";
        ASSERT_LE(DegreesBetween(entity->orientation, AboutY(0.0)), 90.0 + 1e-9) << "frame " << frame;
        largestStep = std::max(largestStep, entity->position.x - before);
        ASSERT_LE(DegreesBetween(entity->orientation, previousOrientation), 4.5) << "frame " << frame;
        previousOrientation = entity->orientation;
    }
    EXPECT_LT(largestStep, 0.3) << "each report's jump is spread over frames";
    EXPECT_NEAR(entity->position.x, 6.0, 1e-9);
    EXPECT_NEAR(DegreesBetween(entity->orientation, AboutY(90.0)), 0.0, 1e-5);
    EXPECT_NEAR(glm::length(entity->orientation), 1.0, 1e-9);
}

TEST_F(ClientSideEntityTest, OppositeQuaternionsTurnTheShortWayRound) {
    auto entity = Glider();
    entity->interpolation_rate = 30.0f;  // t = 0.5 per 1/60 s
    // 170 and 190 degrees about y: 20 degrees apart through 180, with quaternions on opposite sides of the sphere.
    entity->orientation = AboutY(170.0);
    entity->target_orientation = AboutY(-170.0);
    ASSERT_LT(glm::dot(entity->orientation, entity->target_orientation), 0.0);
    entity->Update(1.0 / 60.0);
    glm::dvec3 const turned = entity->orientation * glm::dvec3(1.0, 0.0, 0.0);
    EXPECT_NEAR(turned.x, -1.0, 1e-12) << "half way is 180 degrees, not 0";
    EXPECT_NEAR(turned.z, 0.0, 1e-12);

    // The same rotation written with the other sign is no move at all.
    entity->orientation = AboutY(30.0);
    entity->target_orientation = -AboutY(30.0);
    entity->Update(1.0 / 60.0);
    EXPECT_NEAR(DegreesBetween(entity->orientation, AboutY(30.0)), 0.0, 1e-6);
}

TEST_F(ClientSideEntityTest, TargetIsTakenAtOnceOrHeldByTheFlagsAndTheRate) {
    struct Case {
        char const* name;
        std::function<void(ClientSideEntity&)> set;
        bool landsOnTarget;
    };
    Case const cases[] = {
        {"rate zero holds the entity", [](ClientSideEntity& e) { e.interpolation_rate = 0.0f; }, false},
        {"no target holds the entity", [](ClientSideEntity& e) { e.has_target = false; }, false},
        {"rate times dt of 1 or more lands", [](ClientSideEntity& e) { e.interpolation_rate = 120.0f; }, true},
        {"interpolation off jumps", [](ClientSideEntity& e) { e.interpolate = false; }, true},
        {"a body that is not dynamic jumps", [](ClientSideEntity& e) { e.dynamic = false; }, true},
    };
    glm::dvec3 const start(1.0, 2.0, 3.0), goal(-4.0, 5.0, 60.0);
    for (auto const& c : cases) {
        auto entity = Glider();
        entity->position = start;
        entity->target_position = goal;
        entity->target_orientation = AboutY(75.0);
        c.set(*entity);
        entity->Update(1.0 / 60.0);
        EXPECT_EQ(entity->position, c.landsOnTarget ? goal : start) << c.name;
        EXPECT_EQ(entity->orientation, c.landsOnTarget ? AboutY(75.0) : glm::dquat(1.0, 0.0, 0.0, 0.0)) << c.name;
    }
}

TEST_F(ClientSideEntityTest, ShadowsOnlyRegisteredTypesWithAFactory) {
    EXPECT_THROW(ClientSideEntity(Id::Generate("ENTT"), quorl::modular::ModuleID("NOBODY_here"), "door"),
                 std::out_of_range);
    EXPECT_THROW(Make("no_such_type"), std::out_of_range);
    auto const module = EntityWorld::Module().String();

    EXPECT_EQ(ClientSideEntity::GetEntityConfig("NOBODY_here", "door"), nullptr);
    EXPECT_EQ(ClientSideEntity::GetEntityConfig(module.c_str(), "ghost"), nullptr);
    auto config = ClientSideEntity::GetEntityConfig(module.c_str(), "door");
    ASSERT_NE(config, nullptr);
    EXPECT_TRUE(config->loaded);
    EXPECT_EQ(ClientSideEntity::FindModuleID("door"), EntityWorld::Module());
    EXPECT_EQ(ClientSideEntity::FindModuleID("ghost"), quorl::modular::ModuleID());

    auto door = Make("door");
    EXPECT_EQ(door->config, config) << "one config per type, shared with the server";
    EXPECT_THROW(ClientSideEntity::Create(door->id, EntityWorld::Module(), "door"), std::runtime_error);
    EXPECT_EQ(ClientSideEntity::Get(door->id), door);
}

TEST_F(ClientSideEntityTest, ForEachVisitsEveryLivingEntityWhichMayLookOthersUp) {
    std::set<std::string> made{Make("counter")->id.String(), Make("door")->id.String()};
    std::set<std::string> seen;
    ClientSideEntity::ForEach([&](auto const& entity) {
        seen.insert(entity->id.String());
        EXPECT_EQ(ClientSideEntity::Get(entity->id), entity) << "a walk is a reader among readers";
    });
    EXPECT_EQ(seen, made);
}

TEST_F(ClientSideEntityTest, DoorWithItsNodesMarkedPosesItsLeafAndPanelOnce) {
    auto door = Make("door");
    ASSERT_TRUE(door->node_transforms.contains("leaf_panel")) << "renderable nodes are posed from the start";
    glm::dmat4 const panelAtRest = door->node_transforms.at("leaf_panel");

    door->joints.at("hinge").angular = {0.0f, 0.0f, 135.0f};
    door->nodes_dirty = true;
    door->Update(1.0 / 60.0);
    EXPECT_NE(door->node_transforms.at("leaf_panel"), panelAtRest);
    EXPECT_EQ(door->colliders.at("leaf").transform, door->node_transforms.at("leaf")) << "colliders follow their nodes";

    ClientSideEntity::PhysicsUpdate(1.0 / 60.0);
    EXPECT_FALSE(door->nodes_dirty) << "a one-shot request is done once the frame has posed the nodes";
}

TEST_F(ClientSideEntityTest, TransformInEnvironmentClimbsTheParentsUntilOneIsMissing) {
    auto ship = Make("counter");
    ship->position = {100.0, 0.0, 0.0};
    ship->orientation = AboutY(90.0);
    auto seat = Make("counter");
    seat->parent = ship->id;
    seat->position = {0.0, 1.0, 2.0};

    glm::dvec3 const inEnvironment(seat->GetAbsoluteTransformInEnvironment() * glm::dvec4(0.0, 0.0, 0.0, 1.0));
    EXPECT_NEAR(glm::distance(inEnvironment, glm::dvec3(102.0, 1.0, 0.0)), 0.0, 1e-12);

    bool changed = false;
    seat->GetAbsoluteTransformInEnvironmentCached(changed);
    EXPECT_TRUE(changed);
    seat->GetAbsoluteTransformInEnvironmentCached(changed);
    EXPECT_FALSE(changed);
    ship->position.x = 50.0;
    EXPECT_EQ(seat->GetAbsoluteTransformInEnvironmentCached(changed)[3].x, 52.0);
    EXPECT_TRUE(changed);

    seat->parent = Id::Generate("ENTT");
    EXPECT_EQ(seat->GetAbsoluteTransformInEnvironment(), seat->GetTransform());
}
