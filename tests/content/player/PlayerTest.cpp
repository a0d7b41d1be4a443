// MERIDON_player: its input bytes as documented, its view, and its server side steering an avatar on the demo planet
// with MERIDON_example and MERIDON_planet loaded from the game tree, ticked at the launcher's rates.

#include "content/demo/Door.h"
#include "content/planet/Planet.h"
#include "content/player/Avatar.h"
#include "content/player/PlayerInput.h"
#include "content/player/View.h"

#include "game/Game.h"
#include "game/entity/SavedWorld.h"
#include "game/entity/ServerSideEntityInterface.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <numbers>
#include <optional>

using game::entity::ServerSideEntity;
using player::Input;

namespace {

TEST(PlayerInputTest, DocumentedSampleReadsAndEveryFieldRoundTrips) {
    std::vector<unsigned char> const sample = {0x4D, 0x50, 0x49, 0x4E, 0x01, 0x00, 0x00, 0x00, 0x80, 0x3F, 0x00,
                                               0x00, 0x00, 0x00, 0xDB, 0x0F, 0x49, 0x3F, 0x02, 0x00, 0x00};
    Input const sprinting{.forward = 1.0f, .heading = float(std::numbers::pi / 4), .sprint = true};
    EXPECT_EQ(player::Encode(sprinting), sample);
    Input const everything{.forward = -0.5f, .right = 0.25f, .heading = -3.0f, .jump = true, .sprint = true,
                           .crouch = true, .jetpack = true, .respawns = 255, .interactions = 7};
    auto const bytes = player::Encode(everything);
    EXPECT_EQ(player::Decode(bytes.data(), bytes.size()), everything);
    // Another module's packet is not refused, only left alone.
    unsigned char const link[] = {'M', 'L', 'N', 'K', 1, 0, 0, 0, 0, 0};
    EXPECT_EQ(player::Decode(link, sizeof link), std::nullopt);
}

TEST(PlayerInputTest, MalformedPacketsAreRefusedSayingWhy) {
    struct Case {
        char const* what;
        size_t offset;
        std::vector<unsigned char> bytes;  // written over an encoded input at `offset`
        char const* error;
        bool cut = false;                  // the packet ends at `offset`
    };
    float const nan = std::numeric_limits<float>::quiet_NaN();
    auto floatBytes = [](float value) {
        std::vector<unsigned char> out(4);
        std::memcpy(out.data(), &value, 4);
        return out;
    };
    Case const cases[] = {
        {"cut short", 19, {}, "20 bytes, not 21", true},
        {"another version", 4, {2, 0}, "version 2, and this game reads 1"},
        {"unknown flag", 18, {0x30}, "unknown flag bits 48"},
        {"forward too large", 6, floatBytes(1.5f), "forward 1.5"},
        {"right not a number", 10, floatBytes(nan), "right"},
        {"heading beyond a turn", 14, floatBytes(7.0f), "heading 7.0"},
    };
    for (auto const& c : cases) {
        auto bytes = player::Encode(Input{});
        if (c.cut)
            bytes.resize(c.offset + 1);
        std::copy(c.bytes.begin(), c.bytes.end(), bytes.begin() + c.offset);
        try {
            player::Decode(bytes.data(), bytes.size());
            ADD_FAILURE() << c.what << ": accepted";
        } catch (std::invalid_argument const& error) {
            EXPECT_NE(std::string(error.what()).find(c.error), std::string::npos) << c.what << ": " << error.what();
        }
    }
}

TEST(PlayerViewTest, TheEyeLooksAlongItsHeadingWithThePlanetsUpUpTheScreen) {
    glm::dvec3 const eye = planet::AtAltitude(0.0, 0.0, 1.65);
    glm::dvec3 const up = glm::normalize(eye);
    struct Case {
        double heading, pitch;
        glm::dvec3 look;  // near the top of the planet, where east is +x and north -z
    };
    for (auto const& c : {Case{0.0, 0.0, {1, 0, 0}}, Case{std::numbers::pi / 2, 0.0, {0, 0, -1}},
                          Case{0.0, std::numbers::pi / 4, {std::sqrt(0.5), std::sqrt(0.5), 0}}}) {
        glm::dmat4 const camera = player::CameraMatrix(eye, c.heading, c.pitch);
        // The camera looks down its own -z, with its +y up the screen.
        EXPECT_NEAR(glm::distance(-glm::dvec3(camera[2]), c.look), 0.0, 1e-6) << c.heading << " " << c.pitch;
        EXPECT_GT(glm::dot(glm::dvec3(camera[1]), up), 0.7);
        EXPECT_NEAR(glm::distance(glm::dvec3(camera[3]), eye), 0.0, 1e-9);
    }
    // A second of drone flight forward and up, at each speed.
    EXPECT_NEAR(glm::distance(player::Fly(eye, 0.0, 0.0, {1, 0, 0}, false, 1.0), eye + glm::dvec3(10, 0, 0)), 0, 1e-6);
    glm::dvec3 const climbed = player::Fly(eye, 0.0, 0.0, {0, 1, 0}, true, 0.5);
    EXPECT_NEAR(glm::dot(climbed - eye, up), 0.5 * player::kDroneSprintSpeed, 1e-6);
}

std::string LibraryPath(std::string const& name, std::string const& className) {
    return MERIDON_GAME_MODULES "/" + name + "/" + name + "." + className;
}

class AvatarTest : public testing::Test {
protected:
    static constexpr double kTick = 1.0 / 30.0;
    static constexpr int kSubsteps = 4;

    void SetUp() override {
        Game::_current_world = "player-test";
        std::filesystem::remove_all(game::entity::SavedWorld::Folder());
        for (char const* name : {"MERIDON_example", "MERIDON_planet"}) {
            auto module = MERIDON_Mod::LoadModuleLib(name, "MERIDON_Mod", true, LibraryPath(name, "MERIDON_Mod"));
            ASSERT_TRUE(module && module->Load) << name;
            module->Load();
            content.push_back(module);
        }
        server = SERVER_Mod::LoadModuleLib("MERIDON_player", "SERVER_Mod", true,
                                           LibraryPath("MERIDON_player", "SERVER_Mod"));
        ASSERT_TRUE(server && server->Server_PlayerConnected && server->Server_Receive);
        server->Server_PlayerConnected(0);
        avatar = Avatar();
        ASSERT_TRUE(avatar);
    }

    void TearDown() override {
        avatar.reset();
        ServerSideEntity::DropAllEntities();
        for (auto& module : content)
            module->Unload();
        content.clear();
        server.reset();
        MERIDON_Mod::UnloadModules();
        SERVER_Mod::UnloadModules();
        std::filesystem::remove_all(game::entity::SavedWorld::Folder());
    }

    static std::shared_ptr<ServerSideEntity> Avatar() {
        std::shared_ptr<ServerSideEntity> found;
        ServerSideEntity::ForEach([&](auto const& entity) { if (entity->type == "avatar") found = entity; });
        return found;
    }

    /// Sends `input` as the client does every pass, and runs the server for `seconds`.
    void Hold(Input const& input, double seconds) {
        auto const bytes = player::Encode(input);
        for (int tick = 0; tick < std::lround(seconds / kTick); ++tick) {
            server->Server_Receive(0, bytes.data(), bytes.size());
            Game::ServerUpdate(kTick, kSubsteps);
        }
    }

    static double Altitude(ServerSideEntity const& entity) { return glm::length(entity.position) - planet::kRadius; }
    /// Metres east of the spawn point along the ground.
    static double East(ServerSideEntity const& entity) { return entity.position.x; }

    std::vector<MERIDON_Mod::Ptr> content;
    SERVER_Mod::Ptr server;
    std::shared_ptr<ServerSideEntity> avatar;
};

// One walk through the avatar's moves, each from where the last one left it.
TEST_F(AvatarTest, WalksJumpsFliesAndRespawnsStandingUpright) {
    Hold(Input{}, 1.0);
    EXPECT_NEAR(Altitude(*avatar), 0.0, 0.05) << "not standing on the ground";
    EXPECT_NEAR(East(*avatar), 0.0, 0.05);

    Hold(Input{.forward = 1.0f}, 2.0);
    EXPECT_NEAR(East(*avatar), 2.0 * player::kWalkSpeed, 1.0) << "not walking east at walking pace";
    Hold(Input{.forward = 1.0f, .sprint = true}, 1.0);
    EXPECT_NEAR(East(*avatar), 2.0 * player::kWalkSpeed + player::kSprintSpeed, 1.5);
    glm::dvec3 const up = glm::normalize(avatar->position);
    EXPECT_GT(glm::dot(avatar->orientation * glm::dvec3(0, 1, 0), up), 0.999) << "toppled";

    // Facing north (heading a quarter turn), a jump rises about v^2 / 2g before the avatar lands again.
    double highest = 0.0;
    for (int tick = 0; tick < 45; ++tick) {
        Hold(Input{.heading = float(std::numbers::pi / 2), .jump = tick < 3}, kTick);
        highest = std::max(highest, Altitude(*avatar));
    }
    EXPECT_NEAR(highest, player::kJumpSpeed * player::kJumpSpeed / (2 * planet::kSurfaceGravity), 0.3);
    EXPECT_NEAR(Altitude(*avatar), 0.0, 0.05) << "did not land";
    EXPECT_NEAR(glm::dot(avatar->orientation * glm::dvec3(1, 0, 0), glm::dvec3(0, 0, -1)), 1.0, 1e-3);

    Hold(Input{.jetpack = true}, 2.0);
    EXPECT_GT(Altitude(*avatar), 3.0) << "the jetpack does not climb";

    Hold(Input{.respawns = 1}, kTick);
    EXPECT_NEAR(glm::distance(avatar->position, player::SpawnPosition()), 0.0, 0.05);
    // The same count again asks nothing: the avatar walks off.
    Hold(Input{.forward = 1.0f, .respawns = 1}, 1.0);
    EXPECT_GT(East(*avatar), 0.5 * player::kWalkSpeed) << "respawned again";
}

TEST_F(AvatarTest, InteractOpensTheDoorItFacesAndShutsItAgain) {
    auto door = ServerSideEntity::Create(quorl::modular::ModuleID("MERIDON_example"), "door", game::entity::Id{});
    door->position = planet::AtAltitude(2.0, 0.0, 0.0);
    door->orientation = player::Upright(door->position, 0.0);
    door->environment = planet::kEnvironmentId;
    ASSERT_TRUE(ServerSideEntity::Interface::StartMade(door));
    auto angle = [&] { return door->joints.at("hinge").angular.z; };
    Hold(Input{.interactions = 0}, kTick);
    Hold(Input{.interactions = 1}, kTick);
    EXPECT_FLOAT_EQ(angle(), 90.0f);
    Hold(Input{.interactions = 2}, kTick);
    EXPECT_FLOAT_EQ(angle(), 0.0f);
    // Turned away, the avatar reaches nothing.
    Hold(Input{.heading = float(std::numbers::pi), .interactions = 3}, kTick);
    EXPECT_FLOAT_EQ(angle(), 0.0f);
}

TEST_F(AvatarTest, APlayerWhoComesBackTakesTheSameAvatarWhereTheyLeftIt) {
    Hold(Input{.forward = 1.0f}, 1.0);
    glm::dvec3 const left = avatar->position;
    server->Server_PlayerDisconnected(0);
    server->Server_PlayerConnected(0);
    auto const again = Avatar();
    EXPECT_EQ(again, avatar);
    int avatars = 0;
    ServerSideEntity::ForEach([&](auto const& entity) { avatars += entity->type == "avatar"; });
    EXPECT_EQ(avatars, 1);
    EXPECT_EQ(again->position, left);
}

}
