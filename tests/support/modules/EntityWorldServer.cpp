// TEST_entities, server side: gives an empty world the entities that MERIDON_TEST_ENTITIES names, as "TYPE:COUNT"
// (say "saved_counter:20"), started as the game starts the entities it loads, so that the launcher's save tests
// have a world to save.

#include "modules/ModuleApi.h"

#include "game/entity/ServerSideEntityInterface.h"

#include <cstdlib>
#include <string>

using game::entity::ServerSideEntity;

extern "C" void Server_Load(char const*) {
    char const* wanted = std::getenv("MERIDON_TEST_ENTITIES");
    bool empty = true;
    ServerSideEntity::ForEach([&](auto const&) { empty = false; });
    if (!wanted || !empty)
        return;
    std::string text = wanted;
    auto colon = text.find(':');
    std::string type = text.substr(0, colon);
    for (int i = colon == std::string::npos ? 1 : std::atoi(text.c_str() + colon + 1); i > 0; --i) {
        auto entity = ServerSideEntity::Create(quorl::modular::ModuleID("TEST_entities"), type, game::entity::Id{});
        entity->interface->entity = entity;
        entity->interface->id = entity->id;
        entity->interface->Start();
        entity->interface->started = true;
    }
}
