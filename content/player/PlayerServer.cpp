// MERIDON_player, server side: MERIDON_player.SERVER_Mod.so. Each connected player has an avatar in the world, an
// entity of MERIDON_example's "avatar" type that is saved with the world like any other; every tick the player's
// latest input steers it (Avatar.h) before the physics moves it.
//
// A single-player world has one avatar, which the local player takes back at every start. Telling several players'
// avatars apart in the save is the network's concern, which assigns players their numbers.

#include "content/player/Avatar.h"
#include "content/player/PlayerInput.h"
#include "content/planet/Planet.h"

#include "game/entity/ServerSideEntityInterface.h"
#include "modules/ServerModuleApi.h"

#include <iostream>
#include <map>
#include <utility>

using game::entity::ServerSideEntity;

namespace {

quorl::modular::ModuleID const kExample("MERIDON_example");
constexpr char kAvatarType[] = "avatar";

struct Player {
    game::entity::Id avatar;
    player::Input input;
    /// False until the first input arrives: its respawn count is where counting starts, not a request.
    bool heard = false;
    bool respawnAsked = false;
    bool useAsked = false;
};

/// By player number. Touched by the server loop, and by connections, which come before it runs or after it ends.
std::map<uint32_t, Player> players;

std::shared_ptr<ServerSideEntity> SavedAvatar() {
    std::shared_ptr<ServerSideEntity> found;
    ServerSideEntity::ForEach([&](std::shared_ptr<ServerSideEntity> const& entity) {
        if (!found && entity->module == kExample && entity->type == kAvatarType)
            found = entity;
    });
    return found;
}

std::shared_ptr<ServerSideEntity> NewAvatar() {
    auto avatar = ServerSideEntity::Create(kExample, kAvatarType, game::entity::Id{});
    avatar->position = player::SpawnPosition();
    avatar->orientation = player::Upright(avatar->position, 0.0);
    avatar->environment = planet::kEnvironmentId;
    avatar->dynamic = true;
    if (!ServerSideEntity::Interface::StartMade(avatar))
        return nullptr;  // MERIDON_example is not loaded; its constructor has said so
    return avatar;
}

}

extern "C" void Server_PlayerConnected(uint32_t number) {
    auto avatar = SavedAvatar();
    if (!avatar)
        avatar = NewAvatar();
    if (avatar)
        players[number] = Player{.avatar = avatar->id, .input = {}};
}

// The avatar stays in the world, to be taken back at the next connection.
extern "C" void Server_PlayerDisconnected(uint32_t number) {
    players.erase(number);
}

// Bytes of other formats belong to other modules. A malformed input is dropped: the last good one stays in force.
extern "C" void Server_Receive(uint32_t number, unsigned char const* data, unsigned long size) {
    auto found = players.find(number);
    if (found == players.end())
        return;
    try {
        auto input = player::Decode(data, size);
        if (!input)
            return;
        Player& player = found->second;
        player.respawnAsked |= player.heard && input->respawns != player.input.respawns;
        player.useAsked |= player.heard && input->interactions != player.input.interactions;
        player.input = *input;
        player.heard = true;
    } catch (std::invalid_argument const& error) {
        std::cerr << "MERIDON_player: player " << number << ": " << error.what() << std::endl;
    }
}

// Before the entities update and the physics moves them.
extern "C" void Server_BeforeUpdate(double deltaSeconds) {
    for (auto& [number, player] : players) {
        auto avatar = ServerSideEntity::Get(player.avatar);
        if (!avatar)
            continue;
        if (std::exchange(player.respawnAsked, false))
            player::Respawn(*avatar);
        player::Steer(*avatar, player.input, deltaSeconds);
        if (std::exchange(player.useAsked, false))
            player::UseDoorInFront(*avatar);
    }
}
