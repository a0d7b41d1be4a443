// The demo world, server side: MERIDON_demo.SERVER_Mod.so. A new world gets the things of Layout.h, made from the
// entity types of MERIDON_example on the planet of MERIDON_planet, so both must be among the content modules. From
// then on they are the world's like anything a player makes: saved with it, back from the saves at the next start,
// and never seeded again over what the player has done with them.

#include "content/demo/Layout.h"
#include "content/planet/Planet.h"

#include "game/entity/ServerSideEntityInterface.h"
#include "modules/ServerModuleApi.h"

#include <glm/gtc/quaternion.hpp>

#include <iostream>
#include <numbers>

using game::entity::ServerSideEntity;

namespace {

quorl::modular::ModuleID const kExample("MERIDON_example");

/// Whether the demo has seeded this world before: it has once anything of the example's types is on the planet.
/// Other modules' entities don't count, nor those that the example module itself makes elsewhere in a new world.
bool Seeded() {
    bool seeded = false;
    ServerSideEntity::ForEach([&](std::shared_ptr<ServerSideEntity> const& entity) {
        seeded |= entity->module == kExample && entity->environment == planet::kEnvironmentId;
    });
    return seeded;
}

glm::dquat Upright(glm::dvec3 const& position, demo::Placement const& placement) {
    glm::dquat turn = glm::angleAxis(placement.heading * std::numbers::pi / 180.0, glm::dvec3(0.0, 1.0, 0.0));
    if (placement.overturned)
        turn = turn * glm::angleAxis(std::numbers::pi, glm::dvec3(1.0, 0.0, 0.0));
    return glm::dquat(glm::dvec3(0.0, 1.0, 0.0), glm::normalize(position)) * turn;
}

/// Makes the entity and starts it as the game starts the entities it loads.
void Seed(demo::Placement const& placement) {
    auto entity = ServerSideEntity::Create(kExample, placement.type, game::entity::Id{});
    entity->position = planet::AtAltitude(placement.x, placement.z, placement.altitude);
    entity->orientation = Upright(entity->position, placement);
    entity->environment = planet::kEnvironmentId;
    entity->dynamic = placement.dynamic;
    entity->linear_velocity = entity->orientation * glm::dvec3(placement.speed, 0.0, 0.0);
    // False when MERIDON_example is not loaded; the constructor has said so.
    ServerSideEntity::Interface::StartMade(entity);
}

}

extern "C" void Server_Load(char const* world) {
    if (Seeded())
        return;
    for (auto const& placement : demo::kPlacements)
        Seed(placement);
    std::cout << "MERIDON_demo: seeded world '" << world << "'" << std::endl;
}
