// Drives a world of TEST_entities entities from a process of its own, for the tests that need a second process.
// Run from the tests' game tree:
//   entity_world_tool save WORLD     make a few entities, print them, save them
//   entity_world_tool load WORLD     load the world and print its entities the same way
//   entity_world_tool reopen WORLD N open the world as a server does (its lock, an interrupted save finished) and
//                                    load it; exit 0 when it holds N whole counters, all of one generation: one save

#include "tests/support/EntityState.h"
#include "tests/support/EntityWorld.h"

#include "game/entity/SavedWorld.h"

#include <algorithm>
#include <iostream>
#include <set>
#include <sstream>

using game::entity::Id;
using game::entity::ServerSideEntity;

namespace {

/// Every saved field, doubles in hexadecimal so that two dumps are equal only when the bits are.
std::string Dump() {
    std::vector<std::string> lines;
    ServerSideEntity::ForEach([&](auto const& entity) {
        std::ostringstream line;
        line << std::hexfloat << entity->id.String() << ' ' << entity->module.String() << ' ' << entity->type << " env "
             << entity->environment << ' ' << entity->parent_environment << " parent " << entity->parent.String()
             << " pos " << entity->position.x << ' ' << entity->position.y << ' ' << entity->position.z << " rot "
             << entity->orientation.w << ' ' << entity->orientation.x << ' ' << entity->orientation.y << ' '
             << entity->orientation.z << " dynamic " << entity->dynamic << " v " << entity->linear_velocity.x << ' '
             << entity->linear_velocity.y << ' ' << entity->linear_velocity.z << " w " << entity->angular_velocity.x
             << ' ' << entity->angular_velocity.y << ' ' << entity->angular_velocity.z << " radius "
             << entity->bounds_radius << " asleep " << (!entity->dynamic || entity->rest_time >= 1.0);
        if (entity->interface) {
            auto state = CounterState::Of(*entity);
            line << " state " << state.updates << ' ' << state.note;
        }
        lines.push_back(line.str());
    });
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (auto const& line : lines)
        text += line + '\n';
    return text;
}

std::shared_ptr<ServerSideEntity> Make(std::string const& type) {
    auto entity = ServerSideEntity::Create(EntityWorld::Module(), type, Id{});
    entity->save_tag = 1;
    return entity;
}

int Save() {
    auto crate = Make("crate");
    crate->position = {1.0 / 3.0, -7.5, 6.02214076e23};
    crate->orientation = glm::normalize(glm::dquat(0.7, 0.1, 0.2, -0.3));
    crate->dynamic = true;
    crate->rest_time = 1.5;
    crate->linear_velocity = {0.1, -0.2, 1e-308};
    crate->angular_velocity = {3.0, 0.0, -0.5};
    crate->environment = 0x1122334455667788u;
    crate->parent_environment = 12345678901234567ull;
    CounterState{7, "crate's own block"}.Into(*crate);

    auto door = Make("door");
    door->parent = crate->id;
    door->dynamic = true;
    door->rest_time = 0.25;
    CounterState{0, ""}.Into(*door);

    auto counter = Make("counter");
    CounterState{123456789012345ull, std::string("binary\0bytes", 12)}.Into(*counter);

    std::cout << Dump();
    ServerSideEntity::UnloadAllEntities();
    return 0;
}

int Load() {
    ServerSideEntity::LoadAllEntities();
    std::cout << Dump();
    return 0;
}

int Reopen(int count) {
    game::entity::SavedWorld world;
    world.Load();
    std::set<uint64_t> generations;
    int whole = 0;
    ServerSideEntity::ForEach([&](auto const& entity) {
        auto state = CounterState::Of(*entity);
        whole += state.note == CounterState::Pattern(state.updates);
        generations.insert(state.updates);
    });
    std::cout << whole << " of " << count << " counters whole, in " << generations.size() << " generation(s)";
    if (!generations.empty())
        std::cout << " from " << *generations.begin() << " to " << *generations.rbegin();
    std::cout << '\n';
    return whole == count && generations.size() == 1 && ServerSideEntity::_sharedObjects.size() == size_t(count) ? 0
                                                                                                                 : 1;
}

}

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: entity_world_tool save|load|reopen WORLD [COUNT]\n";
        return 2;
    }
    std::string mode = argv[1];
    int count = argc > 3 ? std::atoi(argv[3]) : 0;
    try {
        EntityWorld world(argv[2], /*keepFiles=*/true);
        if (mode == "save")
            return Save();
        if (mode == "load")
            return Load();
        if (mode == "reopen")
            return Reopen(count);
    } catch (std::exception const& error) {
        std::cout << "error: " << error.what() << std::endl;
        return 1;
    }
    std::cerr << "unknown mode '" << mode << "'\n";
    return 2;
}
