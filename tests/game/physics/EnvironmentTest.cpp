#include "game/physics/ContactEvent.h"
#include "game/physics/DragForce.h"
#include "game/physics/DynamicRigidbody.h"
#include "tests/support/PhysicsWorld.h"

#include <glm/gtc/matrix_transform.hpp>

#include <numbers>

using game::entity::ConvexMeshCollider;
using game::physics::DynamicRigidbody;
using game::physics::EnvironmentFunction;
using game::physics::GetDragForce;

namespace {
constexpr double kStep = 1.0 / 240.0;
}

using EnvironmentTest = PhysicsWorld;

TEST_F(EnvironmentTest, WithoutGravityNothingIsMet) {
    EnvironmentFunction function = FlatGround{.gravity = glm::dvec3(0.0), .density = 1000.0, .viscosity = 1e-3};
    auto sunk = Box({0.0, -0.2, 0.0}, glm::dvec3(0.5), 10.0);
    sunk->linear_velocity = {1.0, -1.0, 0.0};
    DynamicRigidbody body(sunk, kTick);
    body.ComputeAerodynamicSurfaces(function);
    ASSERT_FALSE(body.aero_surfaces.empty());

    body.InteractWithEnvironment(function, kStep);
    EXPECT_EQ(body.linear_velocity, glm::dvec3(1.0, -1.0, 0.0)) << "no drag, no buoyancy, no damping";
    EXPECT_EQ(body.angular_velocity, glm::dvec3(0.0));
    EXPECT_EQ(body.position, sunk->position) << "no terrain contact";
    EXPECT_FALSE(body.touched_environment);
}

TEST_F(EnvironmentTest, PlatePushesAlongItsNormalByHowSquarelyItMeetsTheFlow) {
    EnvironmentFunction function = FlatGround{.density = 1000.0, .onRequest = true};
    // 2 m by 2 m, 2 cm thick, lying flat; 2 kg.
    glm::dvec3 const plate(1.0, 0.01, 1.0);
    auto sliding = Box({0.0, 50.0, 0.0}, plate, 2.0);
    sliding->linear_velocity = {3.0, 0.0, 0.0};
    DynamicRigidbody edgeOn(sliding, kTick);
    edgeOn.ComputeAerodynamicSurfaces(function);
    ASSERT_EQ(edgeOn.aero_surfaces.size(), 1u);
    EXPECT_EQ(edgeOn.aero_surfaces[0].normal_coefficient, 0.0);
    EXPECT_EQ(edgeOn.aero_surfaces[0].drag_coefficient, 0.0);
    edgeOn.InteractWithEnvironment(function, kStep);
    EXPECT_EQ(edgeOn.linear_velocity, glm::dvec3(3.0, 0.0, 0.0)) << "a plate moving in its plane meets no force";

    // Falling flat at 10 m/s through water: the raw force, 200 kN on 2 kg, is capped at 0.2 s per unit of mass.
    auto falling = Box({0.0, 50.0, 0.0}, plate, 2.0);
    falling->linear_velocity = {0.0, -10.0, 0.0};
    DynamicRigidbody faceOn(falling, kTick);
    faceOn.ComputeAerodynamicSurfaces(function);
    ASSERT_EQ(faceOn.aero_surfaces.size(), 1u);
    auto const& surface = faceOn.aero_surfaces[0];
    EXPECT_EQ(surface.normal_coefficient, 1.0);
    EXPECT_EQ(surface.normal, glm::dvec3(0.0, -1.0, 0.0)) << "the side facing the flow";
    EXPECT_DOUBLE_EQ(surface.area, 4.0);
    faceOn.InteractWithEnvironment(function, kStep);
    EXPECT_NEAR(faceOn.linear_velocity.y, -10.0 + 0.2 * 10.0 * kStep, 1e-12);
    EXPECT_EQ(faceOn.angular_velocity, glm::dvec3(0.0)) << "pushed through its centre line";
}

TEST_F(EnvironmentTest, CollidersTooSmallForTheBodyDoNotFloat) {
    EnvironmentFunction function = FlatGround{.density = 1000.0};
    // A 1 m hull with a fin below and above a 25th of the body's volume.
    auto lift = [&](float fin) {
        auto boat = Box({0.0, 50.0, 0.0}, glm::dvec3(0.5), 1000.0);
        auto collider = ConvexMeshCollider::Box(glm::vec3(-fin / 2), glm::vec3(fin / 2));
        collider.transform = glm::translate(glm::dmat4(1.0), glm::dvec3(0.0, -0.5, 0.0));
        boat->colliders["fin"] = collider;
        DynamicRigidbody body(boat, kTick);
        body.InteractWithEnvironment(function, kStep);
        return body.linear_velocity.y;
    };
    double hull = 1000.0 * 9.81 * kStep / 1000.0;
    EXPECT_NEAR(lift(0.1f), hull, 1e-12) << "0.001 m^3 against a threshold of 0.04";
    EXPECT_NEAR(lift(0.5f), hull * 1.125, 1e-9) << "0.125 m^3 floats";
}

TEST_F(EnvironmentTest, OnlyAMediumMoreViscousThanAirDamps) {
    auto sideways = [&](double viscosity) {
        EnvironmentFunction function = FlatGround{.density = 1000.0, .viscosity = viscosity};
        auto box = Box({0.0, 50.0, 0.0}, glm::dvec3(0.5), 500.0);
        box->linear_velocity = {1.0, 0.0, 0.0};
        DynamicRigidbody body(box, kTick);
        body.InteractWithEnvironment(function, kStep);
        return body.linear_velocity.x;
    };
    EXPECT_EQ(sideways(2e-5), 1.0);
    EXPECT_NEAR(sideways(2.1e-5), 1.0 - 0.5 * 1000.0 * 5.0 * 2.1e-5 * kStep, 1e-12);
}

TEST_F(EnvironmentTest, TerrainContactLiftsTheBodyUnlessTheColliderCancelsIt) {
    EnvironmentFunction function = FlatGround{};
    int calls = 0;
    auto sunk = Box({0.0, 0.45, 0.0}, glm::dvec3(0.5), 10.0);
    sunk->colliders["shape"].on_contact = [&](game::physics::ContactEvent& contact) {
        ++calls;
        EXPECT_EQ(contact.other, nullptr);
        EXPECT_EQ(contact.h, kStep);
        return true;
    };
    DynamicRigidbody lifted(sunk, kTick);
    lifted.InteractWithEnvironment(function, kStep);
    EXPECT_GE(calls, 1);
    EXPECT_NEAR(lifted.position.y, 0.5, 1e-9) << "out by the depth";
    EXPECT_TRUE(lifted.touched_environment);

    sunk->colliders["shape"].on_contact = [](game::physics::ContactEvent& contact) {
        contact.collision.depth = 0.0;
        return true;
    };
    DynamicRigidbody kept(sunk, kTick);
    glm::dvec3 before = kept.position;
    kept.InteractWithEnvironment(function, kStep);
    EXPECT_EQ(kept.position, before) << "a cancelled contact gets no response";
    EXPECT_EQ(kept.linear_velocity, glm::dvec3(0.0));
}

TEST(DragForceTest, PairsSizesPerAxisAsModulesExpect) {
    glm::dvec3 size(2.0, 3.0, 5.0);
    EXPECT_EQ(GetDragForce(1.2, size, glm::dvec3(0.0), 1.0, 1e-3), glm::dvec3(0.0));
    // K = -0.5 * 2 * 1 = -1: x uses size.x size.y, y size.y size.z, z size.x size.z; the sign opposes the motion.
    EXPECT_EQ(GetDragForce(2.0, size, {1.0, -1.0, 2.0}, 1.0, 0.0), glm::dvec3(-6.0, 15.0, -40.0));
    EXPECT_DOUBLE_EQ(GetDragForce(0.0, size, {0.0, 0.0, 1.0}, 1.0, 1.0).z, -6.0 * std::numbers::pi * 5.0);
}
