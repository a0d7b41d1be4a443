// What a server tick costs while a pile of cubes collapses and settles: the pile of PileScene.h as entities in an
// environment of flat ground, stepped by whole Game::ServerUpdate ticks (the physics step and the entity passes
// around it), each one timed. One JSON line, as PileRun.h describes, with "engine": "meridon".
//
// Usage: bench_physics_pile [--n N] [--ticks T]   (1000 cubes, 600 ticks of 1/60 s when not given)

#include "PileRun.h"
#include "PileScene.h"

#include "game/Game.h"
#include "game/entity/ServerSideEntity.h"

#include <bit>
#include <cstdint>
#include <exception>
#include <iostream>
#include <mutex>
#include <string>

using game::entity::ServerSideEntity;

namespace {

constexpr game::entity::EnvironmentId kFlatGround = 1;

/// Flat ground at y = 0 under constant gravity, in a vacuum.
game::physics::EnvironmentInfo FlatGround(glm::dvec3 const& position, game::EnvironmentInfoFlags, double) {
    game::physics::EnvironmentInfo info;
    info.gravity = {0.0, pile::kGravity, 0.0};
    info.altitude = position.y;
    info.surface.point = {position.x, 0.0, position.z};
    info.surface.normal = {0.0, 1.0, 0.0};
    info.surface.depth = -position.y;
    return info;
}

/// The same id for the same cube in every run, as the order of hash tables follows the ids: "ENTT", a zero owner,
/// then the cube's number plus one as the high half, in memory order.
game::entity::Id CubeId(size_t index) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    uint64_t high = index + 1;
    std::string text = "ENTT00000000";
    for (int byte = 0; byte < 8; ++byte) {
        auto value = static_cast<unsigned>(high >> (8 * byte)) & 0xFFu;
        text += kDigits[value >> 4];
        text += kDigits[value & 0xF];
    }
    return game::entity::Id(text);
}

void AddCube(size_t index, pile::Pose const& pose) {
    auto entity = ServerSideEntity::Create(quorl::modular::ModuleID(), "cube", CubeId(index));
    auto half = glm::vec3(0.5f * static_cast<float>(pile::kCubeSize));
    auto collider = game::entity::ConvexMeshCollider::Box(-half, half);
    collider.friction = pile::kFriction;
    collider.entity = entity->id;
    collider.name = "shape";
    entity->colliders["shape"] = collider;
    entity->UpdateBoundingBox(true);
    entity->position = pose.position;
    entity->orientation = pose.orientation;
    entity->mass = pile::kCubeMass;
    entity->dynamic = true;
    entity->physics_enabled = true;
    entity->environment = kFlatGround;
}

size_t CountAsleep() {
    size_t asleep = 0;
    ServerSideEntity::ForEach([&asleep](std::shared_ptr<ServerSideEntity> const& entity) {
        if (entity->rest_time >= 1.0)
            ++asleep;
    });
    return asleep;
}

/// FNV-1a over the bits of every cube's pose, velocities and rest, in cube order.
uint64_t StateDigest(size_t n) {
    uint64_t digest = 0xcbf29ce484222325ull;
    for (size_t i = 0; i < n; ++i) {
        auto cube = ServerSideEntity::Get(CubeId(i));
        for (double value : {cube->position.x, cube->position.y, cube->position.z, cube->orientation.w,
                             cube->orientation.x, cube->orientation.y, cube->orientation.z, cube->linear_velocity.x,
                             cube->linear_velocity.y, cube->linear_velocity.z, cube->angular_velocity.x,
                             cube->angular_velocity.y, cube->angular_velocity.z, cube->rest_time}) {
            digest ^= std::bit_cast<uint64_t>(value);
            digest *= 0x100000001b3ull;
        }
    }
    return digest;
}

/// The cubes have no save files, so none is to be removed as they go.
void RemoveCubes() {
    std::unique_lock lock(ServerSideEntity::_sharedObjectsMutex);
    for (auto& [id, entity] : ServerSideEntity::_sharedObjects)
        entity->delete_save_on_destroy = false;
    ServerSideEntity::_sharedObjects.clear();
}

int Run(pile::Options const& options) {
    Game::timeActive = false;
    Game::_environmentFunctions[kFlatGround] = FlatGround;
    auto poses = pile::Poses(options.n);
    for (size_t i = 0; i < poses.size(); ++i)
        AddCube(i, poses[i]);

    auto milliseconds = pile::TimeTicks(options.ticks, [] { Game::ServerUpdate(pile::kTick, 1); });
    pile::PrintResult("meridon", options, milliseconds, CountAsleep(), StateDigest(poses.size()));

    RemoveCubes();
    Game::_environmentFunctions.erase(kFlatGround);
    return 0;
}

}

int main(int argc, char** argv) {
    return pile::Main(argc, argv, Run);
}
