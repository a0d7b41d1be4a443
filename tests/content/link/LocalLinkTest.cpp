#include "content/planet/Planet.h"
#include "engine/FPSCounter.h"
#include "tests/support/Capture.h"
#include "tests/support/EntityTransformNear.h"
#include "tests/support/EntityWorld.h"
#include "tests/support/GameFixture.h"

#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <deque>
#include <map>
#include <optional>

using game::entity::ClientSideEntity;
using game::entity::Id;
using game::entity::ServerSideEntity;

namespace {
quorl::FPSCounter::Clock::time_point clockNow;
}

/// A game that hosts its own server, as `meridon` runs single player: both libraries of MERIDON_link, the demo
/// planet and the test entity types (registered on both sides), the server ticking at 30 Hz and the game loop
/// passing twice between ticks, as the launcher's rates have it.
class LocalLinkTest : public GameTest {
protected:
    static constexpr double kTick = 1.0 / 30.0;
    static constexpr int kPassesPerTick = 2;

    void SetUp() override {
        GameTest::SetUp();
        Game::timeActive = false;
        realClock = quorl::FPSCounter::now;
        quorl::FPSCounter::now = [] { return clockNow; };
        world.emplace("link_test");
        planet = MERIDON_Mod::LoadModule("MERIDON_planet", true);
        ASSERT_TRUE(planet && planet->Load && planet->Unload);
        planet->Load();
        std::string const folder = MERIDON_LINK_MODULE_DIR;
        ASSERT_TRUE(SERVER_Mod::LoadModuleLib("MERIDON_link", "SERVER_Mod", true, folder + "/MERIDON_link.SERVER_Mod"));
        ASSERT_TRUE(GAME_Mod::LoadModuleLib("MERIDON_link", "GAME_Mod", true, folder + "/MERIDON_link.GAME_Mod"));
    }

    void TearDown() override {
        GAME_Mod::CallHooks(&GAME_Mod::Game_Stop);
        if (planet)
            planet->Unload();
        planet.reset();
        world.reset();  // the entities go before the module whose code they run
        quorl::FPSCounter::now = realClock;
        GameTest::TearDown();
    }

    /// A started entity of a test type, upright on the planet `altitude` above sea level over (x, z).
    static std::shared_ptr<ServerSideEntity> Place(std::string const& type, double x, double z, double altitude,
                                                   bool dynamic = true) {
        auto entity = ServerSideEntity::Create(EntityWorld::Module(), type, Id{});
        entity->interface->entity = entity;
        entity->interface->id = entity->id;
        entity->interface->Start();
        entity->interface->started = true;
        entity->position = planet::AtAltitude(x, z, altitude);
        entity->orientation = glm::dquat(glm::dvec3(0.0, 1.0, 0.0), glm::normalize(entity->position));
        entity->environment = planet::kEnvironmentId;
        entity->physics_enabled = true;
        entity->dynamic = dynamic;
        return entity;
    }

    /// One server tick, then the game loop's passes until the next, each after a render frame of its share.
    static void Step() {
        Game::ServerUpdate(kTick, 4);
        for (int pass = 0; pass < kPassesPerTick; ++pass) {
            clockNow += std::chrono::duration_cast<quorl::FPSCounter::Clock::duration>(
                std::chrono::duration<double>(kTick / kPassesPerTick));
            Game::mainRenderingFramerate.Tick();
            Game::Update(0.0);
            Game::ClientUpdate();
        }
    }

    static double Angle(glm::dquat const& a, glm::dquat const& b) {
        return 2.0 * std::acos(std::min(1.0, std::abs(glm::dot(a, b))));
    }

    std::optional<EntityWorld> world;
    MERIDON_Mod::Ptr planet;
    decltype(quorl::FPSCounter::now) realClock = nullptr;
};

TEST_F(LocalLinkTest, ClientEntitiesFollowTheServersWithinInterpolationDistanceAndVanishWithThem) {
    auto falling = Place("crate", 0.0, 0.0, 20.0);
    auto resting = Place("crate", 3.0, 0.0, 0.0);
    auto tossed = Place("crate", -4.0, 5.0, 2.0);
    tossed->linear_velocity = {4.0, 3.0, 0.0};
    tossed->angular_velocity = {0.0, 0.0, 2.0};
    auto doomed = Place("crate", 8.0, 0.0, 40.0);
    auto door = Place("door", -10.0, 0.0, 0.0, false);
    // A type this client lacks: reported once, and the packets it travels in still bring everything else.
    StderrOf([] { ServerSideEntity::Create(quorl::modular::ModuleID("NOBODY_here"), "ghost", Id{}); });
    Game::Ready();

    // Interpolation distance. Each tick the glide (rate 30 per second, two passes of a 60 Hz loop) leaves a quarter
    // of what was left plus the tick's move: never more than a third of the recent per-tick move, fading fourfold
    // per tick once the body stops. So the client stays within the largest move the server entity made in one of
    // its last four ticks, plus 1 mm for the float-free remainder of a body that has come to rest.
    struct Track {
        std::deque<glm::dvec3> positions;
        std::deque<glm::dquat> orientations;
    };
    std::map<std::string, Track> tracks;
    std::string ghostOutput;
    for (int tick = 1; tick <= 300; ++tick) {
        if (tick == 100) {
            door->joints.at("hinge").angular.z = 60.0f;
            door->nodes_dirty = true;
        }
        if (tick == 150) {
            std::unique_lock lock(ServerSideEntity::_sharedObjectsMutex);
            ServerSideEntity::_sharedObjects.erase(doomed->id);
        }
        ghostOutput += StderrOf(Step);
        if (tick == 150) {
            EXPECT_EQ(ClientSideEntity::Get(doomed->id), nullptr) << "gone with the tick that lost it";
        }

        size_t shown = 0;
        ServerSideEntity::ForEach([&](std::shared_ptr<ServerSideEntity> const& server) {
            if (!server->interface)
                return;
            ++shown;
            auto client = ClientSideEntity::Get(server->id);
            ASSERT_TRUE(client) << server->type << " at tick " << tick;
            auto& track = tracks[server->id.String()];
            track.positions.push_back(server->position);
            track.orientations.push_back(server->orientation);
            if (track.positions.size() > 5) {
                track.positions.pop_front();
                track.orientations.pop_front();
            }
            double moved = 0.0, turned = 0.0;
            for (size_t i = 1; i < track.positions.size(); ++i) {
                moved = std::max(moved, glm::distance(track.positions[i], track.positions[i - 1]));
                turned = std::max(turned, Angle(track.orientations[i], track.orientations[i - 1]));
            }
            EXPECT_LE(glm::distance(client->position, server->position), moved + 1e-3)
                << server->type << " " << server->id.String() << " at tick " << tick;
            EXPECT_LE(Angle(client->orientation, server->orientation), turned + 1e-3)
                << server->type << " " << server->id.String() << " at tick " << tick;
        });
        EXPECT_EQ(ClientSideEntity::_sharedObjects.size(), shown) << "at tick " << tick;
    }

    // Ten seconds on: all have come to rest, where the server has them, and the door hangs on its turned hinge.
    for (auto const& crate : {falling, resting, tossed}) {
        EXPECT_GE(crate->rest_time, 1.0) << "asleep";
        EXPECT_LT(glm::distance(ClientSideEntity::Get(crate->id)->position, crate->position), 1e-3);
    }
    EXPECT_GT(glm::distance(tossed->position, planet::AtAltitude(-4.0, 5.0, 2.0)), 3.0) << "it flew";
    auto shownDoor = ClientSideEntity::Get(door->id);
    EXPECT_EQ(shownDoor->joints.at("hinge").angular, door->joints.at("hinge").angular);
    ExpectNear(shownDoor->node_transforms.at("leaf"), door->node_transforms.at("leaf"), "door leaf");
    EXPECT_EQ(ClientSideEntity::Get(doomed->id), nullptr);
    EXPECT_EQ(ghostOutput, "MERIDON_link: cannot show entities of type 'ghost' of module 'NOBODY_here': no module "
                           "registers it on the client side\n");
}
