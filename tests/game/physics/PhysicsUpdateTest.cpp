#include "tests/support/PhysicsWorld.h"

#include <glm/gtc/quaternion.hpp>

#include <random>

using game::entity::Id;
using game::entity::ServerSideEntity;

namespace {
// Boxes whose edges are exactly parallel do not collide through the box test, so scenario boxes get a slight tilt.
glm::dquat SlightTilt(double angle = 0.02) {
    return glm::angleAxis(angle, glm::normalize(glm::dvec3(1.0, 0.0, 0.7)));
}
}

using PhysicsUpdateTest = PhysicsWorld;

TEST_F(PhysicsUpdateTest, FooteredBoxDroppedOnAStaticBoxSettlesSleepsAndStays) {
    // Rest needs three contacts in a step, one per pair of colliders: the dropped body stands on four feet. The
    // static box is no larger than it, so it does not become the body's parent when it lands.
    auto base = Box({0.0, 5.0, 0.0}, {0.9, 0.5, 0.9}, 1000.0, false);
    auto const foot = [](int i) {
        glm::vec3 const offset((i & 1) ? 0.5f : -0.5f, 0.0f, (i & 2) ? 0.5f : -0.5f);
        glm::vec3 const half(0.45f, 0.5f, 0.45f);
        return game::entity::ConvexMeshCollider::Box(offset - half, offset + half);
    };
    auto table = Make({0.0, 7.0, 0.0}, foot(0), 40.0, true, {});
    for (int i = 1; i < 4; ++i)
        table->colliders["foot" + std::to_string(i)] = foot(i);
    table->UpdateBoundingBox(true);
    table->orientation = SlightTilt();

    for (int ticks = 0; table->rest_time < 1.0 && ticks < 600; ++ticks)
        Run(1);
    ASSERT_GE(table->rest_time, 1.0) << "still moving after 10 s at height " << table->position.y;
    EXPECT_TRUE(table->parent.IsNull());
    EXPECT_NEAR(table->position.y, 6.0, 0.05);
    glm::dvec3 settled = table->position;
    Run(120);
    EXPECT_EQ(table->position, settled) << "an obstacle stays put";
}

TEST_F(PhysicsUpdateTest, SlidingBoxStopsByFrictionAndAFrictionlessOneKeepsItsTangentialSpeed) {
    auto rough = Box({0.0, 0.5, 0.0}, glm::dvec3(0.5), 10.0, true, 0.5);
    auto smooth = Box({0.0, 0.5, 5.0}, glm::dvec3(0.5), 10.0, true, 0.0);
    rough->linear_velocity = smooth->linear_velocity = {4.0, 0.0, 0.0};
    Run(120);
    EXPECT_EQ(smooth->linear_velocity.x, 4.0);
    EXPECT_NEAR(smooth->position.x, 8.0, 0.01);
    Run(120);
    EXPECT_LT(std::abs(rough->linear_velocity.x), 0.1);
    EXPECT_GT(rough->position.x, 0.0);
}

TEST_F(PhysicsUpdateTest, HeadOnCollisionConservesMomentumAndResolvesOverlap) {
    auto light = Box({-3.0, 50.0, 0.0}, glm::dvec3(0.5), 1.0);
    auto heavy = Box({3.0, 50.0, 0.0}, glm::dvec3(0.5), 2.0);
    light->orientation = SlightTilt();
    heavy->orientation = SlightTilt(-0.03);
    light->linear_velocity = {6.0, 0.0, 0.0};
    heavy->linear_velocity = {-6.0, 0.0, 0.0};
    double before = 1.0 * light->linear_velocity.x + 2.0 * heavy->linear_velocity.x;

    Run(60);
    double after = 1.0 * light->linear_velocity.x + 2.0 * heavy->linear_velocity.x;
    EXPECT_NEAR(after, before, 1e-6);
    EXPECT_LT(light->linear_velocity.x, 0.0) << "the heavier box pushed it back";
    EXPECT_GT(heavy->position.x - light->position.x, 0.99) << "no overlap left";
}

TEST_F(PhysicsUpdateTest, SphereRestsOnABox) {
    auto post = Box({0.0, 1.0, 0.0}, glm::dvec3(0.5), 100.0, false);
    auto ball = Sphere({0.1, 3.0, 0.0}, 0.5, 5.0);
    Run(240);
    EXPECT_TRUE(ball->parent.IsNull()) << "a post no larger than the ball does not carry it";
    EXPECT_NEAR(ball->position.y, 2.0, 0.02) << "on the post's top at 1.5";
    EXPECT_LT(glm::length(ball->linear_velocity), 0.2);
}

TEST_F(PhysicsUpdateTest, BodyLandingOnALargerMovingPlatformJoinsItRidesItAndLeavesOnTerrain) {
    auto platform = Box({0.0, 2.0, 0.0}, {3.0, 0.25, 3.0}, 500.0, false);
    auto crate = Box({0.0, 3.0, 0.0}, glm::dvec3(0.5), 10.0);
    crate->orientation = SlightTilt();
    glm::dvec3 drive(1.0, 0.0, 0.0);

    for (int ticks = 0; crate->parent.IsNull() && ticks < 300; ++ticks) {
        platform->position += drive * kTick;
        platform->linear_velocity = drive;
        Run(1);
    }
    ASSERT_EQ(crate->parent, platform->id) << "never landed";
    EXPECT_NEAR(crate->position.y, 0.75, 0.05) << "in the platform's frame, on its top";

    glm::dvec3 onPlatform = crate->position;
    for (int i = 0; i < 60; ++i) {
        platform->position += drive * kTick;
        Run(1);
    }
    EXPECT_EQ(crate->parent, platform->id);
    EXPECT_LT(glm::distance(crate->position, onPlatform), 0.01) << "rides along, still in the platform's frame";

    // The platform sinks into the ground: the crate meets the terrain and leaves it, back in the world's frame.
    for (int i = 0; i < 240 && !crate->parent.IsNull(); ++i) {
        platform->position.y -= 2.0 * kTick;
        Run(1);
    }
    EXPECT_TRUE(crate->parent.IsNull());
    EXPECT_LT(crate->position.y, 1.5);
}

TEST_F(PhysicsUpdateTest, ATickMendsALostParentAndADegenerateOrientation) {
    auto orphan = Box({0.0, 10.0, 0.0}, glm::dvec3(0.5), 10.0);
    orphan->parent = Id::Generate("ENTT");
    auto degenerate = Box({5.0, 10.0, 0.0}, glm::dvec3(0.5), 1.0);
    degenerate->orientation = glm::dquat(0.0, 0.0, 0.0, 0.0);
    Run(1);
    EXPECT_EQ(orphan->position.y, 10.0) << "not stepped in a parent's frame";
    EXPECT_TRUE(orphan->parent.IsNull()) << "a lost parent lets go";
    EXPECT_EQ(degenerate->orientation, glm::dquat(1.0, 0.0, 0.0, 0.0));
    Run(10);
    EXPECT_LT(orphan->position.y, 10.0);
}

TEST_F(PhysicsUpdateTest, MasslessEntitiesAndZeroSubstepsDoNotMove) {
    auto massless = Box({0.0, 10.0, 0.0}, glm::dvec3(0.5), 0.0);
    auto still = Box({5.0, 10.0, 0.0}, glm::dvec3(0.5), 1.0);
    Run(10, /*substeps=*/0);
    EXPECT_EQ(still->position.y, 10.0);
    Run(10);
    EXPECT_EQ(massless->position.y, 10.0);
    EXPECT_LT(still->position.y, 10.0);
}

TEST_F(PhysicsUpdateTest, ForceImpulseBecomesAccelerationOverTheTick) {
    Game::_environmentFunctions[2] = FlatGround{.gravity = glm::dvec3(0.0)};
    auto body = Box({0.0, 10.0, 0.0}, glm::dvec3(0.5), 2.0);
    body->environment = 2;
    body->force_impulse = {10.0, 0.0, 0.0};
    Game::ServerUpdate(0.1, 1);
    EXPECT_NEAR(body->linear_velocity.x, 50.0 * 0.1, 1e-12);
    EXPECT_EQ(body->force_impulse, glm::dvec3(0.0)) << "spent";
}

TEST_F(PhysicsUpdateTest, UnregisteredEnvironmentIsAnError) {
    auto body = Box({0.0, 10.0, 0.0}, glm::dvec3(0.5), 1.0);
    body->environment = 77;
    EXPECT_THROW(ServerSideEntity::PhysicsUpdate(kTick, 1), std::out_of_range);
}

namespace {
/// A small jittered pile with fixed ids, run for a while: the bits of every field the tick writes, in id order.
std::vector<uint64_t> RunPile() {
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> jitter(-0.2, 0.2), tilt(-0.3, 0.3), yaw(0.0, 6.283185307179586);
    std::vector<std::shared_ptr<ServerSideEntity>> cubes;
    for (int i = 0; i < 24; ++i) {
        int n = i + 1;  // a zero high half would be a null id, and get a random one
        Id id("ENTT00000000" + std::string(14, '0') + (n < 10 ? "0" : "") + std::to_string(n));
        auto cube = PhysicsWorld::Box({(i % 3) * 1.5 + jitter(random), 2.0 + (i / 3) * 1.5,
                                       ((i / 3) % 2) * 1.5 + jitter(random)},
                                      glm::dvec3(0.5), 100.0, true, 0.5, id);
        cube->orientation = glm::angleAxis(yaw(random), glm::dvec3(0, 1, 0)) *
                            glm::angleAxis(tilt(random), glm::dvec3(1, 0, 0)) *
                            glm::angleAxis(tilt(random), glm::dvec3(0, 0, 1));
        cubes.push_back(cube);
    }
    PhysicsWorld::Run(180);
    std::vector<uint64_t> state;
    for (auto const& cube : cubes)
        for (double value : {cube->position.x, cube->position.y, cube->position.z, cube->orientation.w,
                             cube->orientation.x, cube->orientation.y, cube->orientation.z, cube->linear_velocity.x,
                             cube->linear_velocity.y, cube->linear_velocity.z, cube->angular_velocity.x,
                             cube->angular_velocity.y, cube->angular_velocity.z, cube->rest_time})
            state.push_back(std::bit_cast<uint64_t>(value));
    return state;
}
}

TEST_F(PhysicsUpdateTest, SamePileRunsBitForBitTheSame) {
    auto const first = RunPile();
    TearDown();
    SetUp();
    EXPECT_EQ(RunPile(), first);
}

TEST_F(PhysicsUpdateTest, DebugViewHandsTheRendererColliderAndContactRecords) {
    auto post = Box({0.0, 1.0, 0.0}, glm::dvec3(0.5), 100.0, false);
    auto falling = Box({0.0, 1.99, 0.0}, glm::dvec3(0.5), 5.0);  // already touching
    falling->orientation = SlightTilt();
    Game::debugServerSidePhysics = true;
    Game::physicsDebugCollidersUpdated = false;
    Run(1);
    Game::debugServerSidePhysics = false;

    ASSERT_TRUE(Game::physicsDebugCollidersUpdated.exchange(false));
    std::lock_guard lock(Game::physicsDebugMutex);
    EXPECT_EQ(Game::physicsDebugColliders_staging.size(), 2u);
    EXPECT_FALSE(Game::physicsDebugLines_staging.empty()) << "the contact left a line";
    for (auto const& line : Game::physicsDebugLines_staging)
        EXPECT_TRUE(line.entity.IsNull()) << "lines are in the group's frame";
}
