// The example module, server side: MERIDON_example.SERVER_Mod.so. See ExampleGame.cpp for how modules are found.

#include "modules/ServerModuleApi.h"

#include "game/Game.h"
#include "game/entity/ServerSideEntityInterface.h"

#include <iostream>
#include <string>

namespace {
std::string world;
long ticks = 0;
double worldSeconds = 0.0;
}

// The launcher names the world before the first tick, once the saved entities are back. A new world gets a crate
// and a door, started here as the game starts the entities it loads; their Start marks them to be saved.
extern "C" void Server_Load(char const* worldName) {
    world = worldName;
    bool empty = true;
    game::entity::ServerSideEntity::ForEach([&](auto const&) { empty = false; });
    if (!empty)
        return;
    quorl::modular::ModuleID example("MERIDON_example");
    for (char const* type : {"crate", "door"}) {
        game::entity::ServerSideEntity::Interface::StartMade(
            game::entity::ServerSideEntity::Create(example, type, game::entity::Id{}));
    }
}

// First thing in every server tick, before any entity moves.
extern "C" void Server_BeforeUpdate(double deltaSeconds) {
    worldSeconds += deltaSeconds;
}

// Last thing in every server tick, after physics: the place to send state to players.
extern "C" void Server_GameUpdate(double) {
    ++ticks;
}

extern "C" void ModuleUnload() {
    if (ticks > 0)
        std::cout << "MERIDON_example: " << ticks << " server ticks, " << worldSeconds << " s of world '" << world
                  << "'" << std::endl;
}
