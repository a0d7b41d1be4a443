#include "content/planet/Planet.h"
#include "modules/MERIDON_Mod.h"
#include "tests/support/PhysicsWorld.h"

#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <limits>
#include <numbers>

using game::entity::ServerSideEntity;

/// Whole server ticks on the demo planet, loaded as the real content module from the tests' game tree.
class PhysicsScenarioTest : public PhysicsWorld {
protected:
    void SetUp() override {
        PhysicsWorld::SetUp();
        planet = MERIDON_Mod::LoadModule("MERIDON_planet", true);
        ASSERT_TRUE(planet && planet->Load && planet->Unload);
        planet->Load();
    }
    void TearDown() override {
        // The environment function is the module's code: it goes before the library closes.
        if (planet)
            planet->Unload();
        planet.reset();
        MERIDON_Mod::UnloadModules();
        PhysicsWorld::TearDown();
    }

    /// Puts a body centred on its origin `altitude` above sea level over (x, z), upright there and turned by `turn`.
    static void Place(ServerSideEntity& entity, double x, double z, double altitude,
                      glm::dquat turn = glm::dquat(1.0, 0.0, 0.0, 0.0)) {
        entity.position = planet::AtAltitude(x, z, altitude);
        entity.orientation = glm::dquat(glm::dvec3(0.0, 1.0, 0.0), glm::normalize(entity.position)) * turn;
        entity.environment = planet::kEnvironmentId;
    }
    static double Altitude(ServerSideEntity const& entity) {
        return glm::length(entity.position) - planet::kRadius;
    }
    static double Speed(ServerSideEntity const& entity) { return glm::length(entity.linear_velocity); }

    static constexpr int kSubsteps = 4;
    static constexpr int kSecond = 60;

    MERIDON_Mod::Ptr planet;
};

TEST_F(PhysicsScenarioTest, BoxFloatsAtItsBalanceDepthAndStopsBobbing) {
    // A 1 m cube of 500 kg, let go with its bottom on the sea, over the basin whose floor is 20 m down.
    auto box = Box({}, glm::dvec3(0.5), 500.0);
    Place(*box, 150.0, 0.0, 0.5);
    Run(20 * kSecond, kSubsteps);

    // Under water as deep as its weight asks for, the air bearing the rest of its height; each step's damping
    // takes a little of that step's lift, which sinks it a few millimetres deeper still.
    double underWater = (500.0 - planet::kAirDensity) / (planet::kWaterDensity - planet::kAirDensity);
    EXPECT_NEAR(Altitude(*box), 0.5 - underWater, 0.01);
    double low = std::numeric_limits<double>::max(), high = -low, fastest = 0.0;
    for (int i = 0; i < 2 * kSecond; ++i) {
        Run(1, kSubsteps);
        low = std::min(low, Altitude(*box));
        high = std::max(high, Altitude(*box));
        fastest = std::max(fastest, Speed(*box));
    }
    EXPECT_LT(high - low, 0.002);
    EXPECT_LT(fastest, 0.005);
}

TEST_F(PhysicsScenarioTest, PlateFallingFaceOnReachesATerminalSpeedAndEdgeOnFallsFaster) {
    glm::dvec3 plate(1.0, 0.01, 1.0);
    auto faceOn = Box({}, plate, 2.0);
    Place(*faceOn, 0.0, 0.0, 1200.0);
    auto edgeOn = Box({}, plate, 2.0);
    Place(*edgeOn, -50.0, 0.0, 1200.0, glm::angleAxis(std::numbers::pi / 2.0, glm::dvec3(1.0, 0.0, 0.0)));

    Run(8 * kSecond, kSubsteps);
    EXPECT_GT(Speed(*edgeOn), Speed(*faceOn) + 15.0);
    double edgeBefore = Speed(*edgeOn);
    Run(kSecond, kSubsteps);
    EXPECT_GT(Speed(*edgeOn) - edgeBefore, 0.9 * planet::GravityAt(edgeOn->position)) << "edge-on: nearly free fall";

    // The edge-on plate lands meanwhile; the face-on one is still high up.
    Run(20 * kSecond, kSubsteps);
    double faceBefore = Speed(*faceOn);
    Run(kSecond, kSubsteps);
    EXPECT_GT(Altitude(*faceOn), 100.0);
    EXPECT_LT(std::abs(Speed(*faceOn) - faceBefore), 1.5) << "face-on: no longer gaining speed";
}
