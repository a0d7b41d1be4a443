// TEST_outside, server side: a world without a marker gets one, and says which, so that the install test can look
// for its save file.

#include "modules/ServerModuleApi.h"

#include "game/entity/ServerSideEntityInterface.h"

#include <iostream>

using game::entity::ServerSideEntity;

extern "C" void Server_Load(char const*) {
    quorl::modular::ModuleID const module("TEST_outside");
    bool found = false;
    ServerSideEntity::ForEach([&](auto const& entity) {
        found |= entity->module == module && entity->type == "marker";
    });
    if (found)
        return;
    auto marker = ServerSideEntity::Create(module, "marker", game::entity::Id{});
    if (!marker->interface)
        return;
    marker->interface->entity = marker;
    marker->interface->id = marker->id;
    marker->interface->Start();
    marker->interface->started = true;
    std::cout << "TEST_outside: marker " << marker->id.String() << std::endl;
}
