// The demo world as the launcher runs it: MERIDON_example and MERIDON_planet as content modules and MERIDON_demo as a
// server module, opened from the game tree, in a world folder of the test's own, ticked at the launcher's rates.

#include "content/demo/Door.h"
#include "content/demo/Layout.h"
#include "content/planet/Planet.h"
#include "game/Game.h"
#include "game/entity/EntityConfig.h"
#include "game/entity/SavedWorld.h"
#include "game/entity/ServerSideEntityInterface.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>

using game::entity::SavedWorld;
using game::entity::ServerSideEntity;
using Entities = std::vector<std::shared_ptr<ServerSideEntity>>;

namespace {

std::string LibraryPath(std::string const& name, std::string const& className) {
    return MERIDON_GAME_MODULES "/" + name + "/" + name + "." + className;
}

class DemoWorldTest : public testing::Test {
protected:
    static constexpr double kTick = 1.0 / 30.0;
    static constexpr int kSubsteps = 4;

    void SetUp() override {
        Game::timeActive = false;
        Game::_current_world = "demo-world-test";
        std::filesystem::remove_all(SavedWorld::Folder());
        for (char const* name : {"MERIDON_example", "MERIDON_planet"}) {
            auto module = MERIDON_Mod::LoadModuleLib(name, "MERIDON_Mod", true, LibraryPath(name, "MERIDON_Mod"));
            ASSERT_TRUE(module && module->Load && module->Unload) << name;
            module->Load();
            content.push_back(module);
        }
        demo = SERVER_Mod::LoadModuleLib("MERIDON_demo", "SERVER_Mod", true, LibraryPath("MERIDON_demo", "SERVER_Mod"));
        ASSERT_TRUE(demo && demo->Server_Load);
        Open();
    }

    void TearDown() override {
        // Entities go before the modules whose code their interfaces run.
        ServerSideEntity::DropAllEntities();
        world.reset();
        for (auto& module : content)
            module->Unload();
        content.clear();
        demo.reset();
        MERIDON_Mod::UnloadModules();
        SERVER_Mod::UnloadModules();
        std::filesystem::remove_all(SavedWorld::Folder());
    }

    /// Opens the world as the launcher does: saved entities back first, then Server_Load.
    void Open() {
        world.emplace();
        world->Load();
        demo->Server_Load(Game::_current_world.c_str());
    }

    static void Run(double seconds) {
        for (int tick = 0; tick < std::lround(seconds / kTick); ++tick)
            Game::ServerUpdate(kTick, kSubsteps);
    }

    static Entities All() {
        Entities all;
        ServerSideEntity::ForEach([&](auto const& entity) { all.push_back(entity); });
        return all;
    }
    static Entities OfType(std::string const& type) {
        Entities found;
        for (auto const& entity : All())
            if (entity->type == type)
                found.push_back(entity);
        return found;
    }
    static double Altitude(glm::dvec3 const& position) { return glm::length(position) - planet::kRadius; }
    /// Of the entity's origin, which each type has at its base.
    static double Altitude(ServerSideEntity const& entity) { return Altitude(entity.position); }

    std::vector<MERIDON_Mod::Ptr> content;
    SERVER_Mod::Ptr demo;
    std::optional<SavedWorld> world;
};

TEST_F(DemoWorldTest, NewWorldIsSeededOnceAndComesBackFromItsSaves) {
    ASSERT_EQ(All().size(), std::size(demo::kPlacements));
    Run(1.0);
    std::map<std::string, glm::dvec3> saved;
    for (auto const& entity : All())
        saved[entity->id.String()] = entity->position;

    world->Close(false);
    Open();
    auto const back = All();
    EXPECT_EQ(back.size(), saved.size()) << "seeded again over a saved world";
    for (auto const& entity : back) {
        ASSERT_TRUE(saved.contains(entity->id.String()));
        EXPECT_EQ(entity->position, saved[entity->id.String()]);
        EXPECT_TRUE(entity->physics_enabled && entity->interface && entity->interface->started) << entity->type;
    }
}

// One run of the whole world, each thing checked in turn. The figures go to standard output for the record.
TEST_F(DemoWorldTest, GliderLaunchedFromAHeightGlides) {
    auto const glider = OfType("glider").at(0);
    glm::dvec3 const launch = glider->position;
    double const launchAltitude = Altitude(*glider);
    double airborne = 0.0;
    while (Altitude(*glider) > 0.5 && airborne < 60.0) {
        Run(kTick);
        airborne += kTick;
    }
    double const across =
        planet::kRadius * std::acos(glm::dot(glm::normalize(launch), glm::normalize(glider->position)));
    double const glideRatio = across / (launchAltitude - Altitude(*glider));
    std::cout << "glider: " << across << " m across for " << launchAltitude - Altitude(*glider) << " m down in "
              << airborne << " s, glide ratio " << glideRatio << std::endl;
    EXPECT_GT(glideRatio, 1.0);
    // A stone thrown as fast would also cover more ground than height from there; it would not stay up as long.
    EXPECT_GT(airborne, 2.0 * std::sqrt(2.0 * launchAltitude / planet::kSurfaceGravity)) << "it falls like a stone";
}

TEST_F(DemoWorldTest, CratesComeToRestAndTheBuoyFloatsUpright) {
    Run(60.0);
    // Asleep is at rest as the physics sees it: the body is an obstacle, and its velocity is the last it had.
    std::map<std::string, glm::dvec3> settled;
    for (auto const& crate : OfType("crate")) {
        EXPECT_GE(crate->rest_time, 1.0) << "still moving";
        EXPECT_GT(Altitude(crate->position + crate->orientation * crate->center_of_mass), 0.45) << "in the ground";
        settled[crate->id.String()] = crate->position;
    }
    auto const buoy = OfType("buoy").at(0);
    double const afloat = Altitude(*buoy);
    Run(2.0);
    for (auto const& crate : OfType("crate"))
        EXPECT_EQ(crate->position, settled[crate->id.String()]);
    std::cout << "buoy: float's bottom " << -Altitude(*buoy) << " m under water" << std::endl;
    EXPECT_NEAR(Altitude(*buoy), afloat, 0.005) << "sinking or bobbing";
    EXPECT_NEAR(Altitude(*buoy), -0.4, 0.1) << "not floating at the float's draught";
    glm::dvec3 const up = glm::normalize(buoy->position);
    EXPECT_GT(glm::dot(buoy->orientation * glm::dvec3(0.0, 1.0, 0.0), up), 0.98) << "not upright";
}

TEST_F(DemoWorldTest, DoorTurnsOnItsHingeUpToItsStop) {
    auto const door = OfType("door").at(0);
    glm::dmat4 const shut = door->colliders.at("leaf").transform;
    demo::SwingDoor(*door, 120.0f);
    Run(kTick);
    EXPECT_FLOAT_EQ(door->joints.at("hinge").angular.z, 90.0f) << "past the hinge's stop";
    glm::dvec3 const along = glm::dvec3(door->colliders.at("leaf").transform[0]);
    EXPECT_NEAR(glm::dot(along, glm::dvec3(shut[0])), 0.0, 1e-6) << "the leaf has not turned a quarter";
}

TEST_F(DemoWorldTest, LampsShineUpwardsFromTheGround) {
    auto const lamps = OfType("light_box");
    ASSERT_FALSE(lamps.empty());
    for (auto const& lamp : lamps) {
        ASSERT_EQ(lamp->config->light_boxes.size(), 1u);
        glm::dvec3 const glow = lamp->position + lamp->orientation *
            glm::dvec3(lamp->config->GetAbsoluteTransform(lamp->config->light_boxes.begin()->first)[3]);
        EXPECT_GT(Altitude(glow), 1.0) << "its light falls into the ground";
    }
}

}
