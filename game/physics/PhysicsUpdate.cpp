// One physics tick: entities are copied into bodies grouped by environment and parent, the bodies are stepped,
// and the results are written back. Bodies live for this tick only; the entities are the state. Game is met only in
// PhysicsUpdate itself: its inputs are read there as the tick starts, and the debug view is handed over there as it
// ends.
//
// Index:
//   The tick's tables     bodies by environment, then by parent id
//   Sorting               entities into obstacles, free bodies and parented bodies
//   Steps                 components, frame accelerations, broad phase, stepping, write-back, debug view

#include "game/Game.h"
#include "game/entity/ServerSideEntity.h"
#include "game/physics/DebugCollider.h"
#include "game/physics/DebugLine.h"
#include "game/physics/DynamicRigidbody.h"
#include "game/physics/SweepAndPrune.h"
#include "game/physics/TickInputs.h"

#include <glm/gtc/matrix_transform.hpp>

#include <tuple>

namespace game::entity {

using game::physics::DebugCollider;
using game::physics::DebugLine;
using game::physics::DynamicRigidbody;
using game::physics::EnvironmentFunction;
using game::physics::Rigidbody;
using game::physics::SweepAndPrune;
using game::physics::TickInputs;

glm::dmat3 ServerSideEntity::GetInertiaTensorWorld() const {
    double m = mass;
    glm::dvec3 s2 = size * size;
    glm::dmat3 local(0.0);
    local[0][0] = m * (s2.y + s2.z) / 12.0;
    local[1][1] = m * (s2.x + s2.z) / 12.0;
    local[2][2] = m * (s2.x + s2.y) / 12.0;
    glm::dmat3 rotation = glm::mat3_cast(orientation);
    return rotation * local * glm::transpose(rotation);
}

namespace {

// ---- The tick's tables ---------------------------------------------------------------------------------------------

enum class RigidbodyEnvType : uint8_t { Obstacle = 0, Free = 1, Parented = 2 };

/// Environment, then the parent's id (null for bodies with no parent).
template <class Value>
using Table = std::unordered_map<EnvironmentId, std::unordered_map<Id, Value>>;

struct Tick {
    TickInputs const& inputs;
    double dt;
    Table<std::vector<std::shared_ptr<ServerSideEntity>>> components;  // second key: the root's id
    Table<std::tuple<RigidbodyEnvType, size_t, Id>> lookup;            // second key: the entity's own id
    Table<std::vector<Rigidbody>> obstacles;
    Table<std::vector<DynamicRigidbody>> free_bodies;
    Table<std::vector<DynamicRigidbody>> parented_bodies;
    /// The broad phase's storage, shared by the groups.
    SweepAndPrune sweep;

    /// The body of `id` in environment `environment`, whichever table holds it; null if none does.
    Rigidbody* Find(EnvironmentId environment, Id const& id) {
        auto inEnvironment = lookup.find(environment);
        if (inEnvironment == lookup.end())
            return nullptr;
        auto found = inEnvironment->second.find(id);
        if (found == inEnvironment->second.end())
            return nullptr;
        auto const& [type, index, parent] = found->second;
        switch (type) {
        case RigidbodyEnvType::Obstacle:
            return &obstacles[environment][parent][index];
        case RigidbodyEnvType::Free:
            return &free_bodies[environment][parent][index];
        case RigidbodyEnvType::Parented:
            return &parented_bodies[environment][parent][index];
        }
        return nullptr;
    }
};

// ---- Sorting -------------------------------------------------------------------------------------------------------

void Sort(Tick& tick, std::shared_ptr<ServerSideEntity> const& entity) {
    auto& e = *entity;
    e.nodes_dirty = false;
    if (!e.physics_enabled || !(e.mass > 0.0))
        return;
    if (e.environment != 0) {
        if (e.is_component) {
            if (auto root = e.GetFirstNonComponentParent())
                tick.components[e.environment][root->id].push_back(entity);
        } else if (e.dynamic && e.rest_time < 1.0) {
            auto& group = tick.free_bodies[e.environment][e.parent];
            tick.lookup[e.environment][e.id] = {RigidbodyEnvType::Free, group.size(), e.parent};
            group.emplace_back(entity, tick.dt).record_debug_lines = tick.inputs.debug;
        } else {
            auto& group = tick.obstacles[e.environment][e.parent];
            tick.lookup[e.environment][e.id] = {RigidbodyEnvType::Obstacle, group.size(), e.parent};
            group.emplace_back(entity);
            e.rest_time = std::clamp(e.rest_time + tick.dt, 0.0, 1.0);
        }
    } else if (e.parent_environment != 0 && e.dynamic && e.rest_time < 1.0 && !e.is_component) {
        auto& group = tick.parented_bodies[e.parent_environment][e.parent];
        tick.lookup[e.parent_environment][e.id] = {RigidbodyEnvType::Parented, group.size(), e.parent};
        group.emplace_back(entity, tick.dt).record_debug_lines = tick.inputs.debug;
    }
}

// ---- Steps ---------------------------------------------------------------------------------------------------------

/// Fastens each component's colliders to its root's body. Component masses and inertias are not added.
void MergeComponents(Tick& tick) {
    for (auto& [environment, roots] : tick.components)
        for (auto& [rootId, components] : roots) {
            Rigidbody* body = tick.Find(environment, rootId);
            if (!body)
                continue;
            for (auto const& component : components) {
                glm::dmat4 toBody = glm::translate(glm::dmat4(1.0), -body->center_of_mass) *
                                    component->GetTransformInPhysicsParent();
                for (auto const& [name, collider] : component->colliders) {
                    auto& copy = body->colliders.emplace_back(collider);
                    copy.transform = toBody * collider.transform;
                }
                for (glm::dvec3 const& corner : {component->bounds_min, component->bounds_max}) {
                    glm::dvec3 moved(toBody * glm::dvec4(corner, 1.0));
                    body->bounds_min = glm::min(body->bounds_min, moved);
                    body->bounds_max = glm::max(body->bounds_max, moved);
                }
                body->ComputeBounds();
            }
        }
}

/// The acceleration of a moving parent's frame at `entity`: its spin about the entity's place, plus what its
/// accelerometer reads.
glm::dvec3 FrameAcceleration(ServerSideEntity const& parent, ServerSideEntity const& entity) {
    return glm::cross(parent.angular_velocity, entity.position) + parent.local_acceleration;
}

void ObstacleAccelerations(Tick& tick) {
    for (auto& [environment, groups] : tick.obstacles)
        for (auto& [parentId, bodies] : groups) {
            auto parent = ServerSideEntity::Get(parentId);
            for (auto& body : bodies) {
                auto entity = body.entity.lock();
                glm::dvec3 felt(0.0);
                if (parent) {
                    body.frame_acceleration = FrameAcceleration(*parent, *entity);
                    felt = body.frame_acceleration;
                } else if (environment != 0) {
                    auto function = tick.inputs.environments.find(environment);
                    felt = function != tick.inputs.environments.end()
                               ? function->second(entity->position, game::ENVIRONMENT_NOTHING, 0.0).gravity
                               : game::physics::EnvironmentInfo{}.gravity;
                }
                entity->local_acceleration = glm::inverse(entity->orientation) * felt;
            }
        }
}

void BodyAccelerations(Table<std::vector<DynamicRigidbody>>& table) {
    for (auto& [environment, groups] : table)
        for (auto& [parentId, bodies] : groups)
            if (auto parent = ServerSideEntity::Get(parentId))
                for (auto& body : bodies)
                    body.frame_acceleration = FrameAcceleration(*parent, *body.entity.lock());
}

bool Ignores(DynamicRigidbody const& body, Id const& other) {
    return !body.ignored.empty() && body.ignored.contains(other);
}

/// Which bodies and obstacles of one group each body may touch this tick, by bounding spheres grown by the sweep.
/// Each pair of moving bodies is listed once, with the earlier body, in the order of the vectors.
void BroadPhase(Tick& tick, EnvironmentId environment, Id const& parentId, std::vector<DynamicRigidbody>& bodies) {
    std::vector<Rigidbody>* obstacles = nullptr;
    if (auto inEnvironment = tick.obstacles.find(environment); inEnvironment != tick.obstacles.end())
        if (auto group = inEnvironment->second.find(parentId); group != inEnvironment->second.end())
            obstacles = &group->second;
    Rigidbody* parentBody = parentId.IsNull() ? nullptr : tick.Find(environment, parentId);

    SweepAndPrune& sweep = tick.sweep;
    sweep.Clear();
    for (auto const& body : bodies)
        sweep.AddMover(body.center, body.broad_radius);
    if (obstacles)
        for (auto const& obstacle : *obstacles)
            sweep.AddObstacle(obstacle.center, obstacle.radius);
    sweep.Run();

    for (size_t i = 0; i < bodies.size(); ++i) {
        DynamicRigidbody& a = bodies[i];
        a.near_dynamic.reserve(sweep.LaterMovers(i).size());
        a.near_static.reserve(sweep.Obstacles(i).size());
        for (uint32_t j : sweep.LaterMovers(i)) {
            DynamicRigidbody& b = bodies[j];
            if (!Ignores(a, b.id) && !Ignores(b, a.id))
                a.near_dynamic.push_back(&b);
        }
        for (uint32_t k : sweep.Obstacles(i)) {
            Rigidbody& obstacle = (*obstacles)[k];
            if (!Ignores(a, obstacle.id))
                a.near_static.push_back(&obstacle);
        }
        a.parent_body = parentBody;
        if (parentBody) {
            glm::dvec3 parentCenter = parentBody->center_of_mass + parentBody->bounds_center;
            if (a.ignored.contains(parentBody->id) ||
                glm::distance(a.center, parentCenter) > a.broad_radius + parentBody->radius)
                a.parent_body = nullptr;
        }
    }
}

void StepEnvironment(Tick& tick, EnvironmentId environment, std::unordered_map<Id, std::vector<DynamicRigidbody>>& groups,
                     int substeps) {
    // An environment that no module registered is an error of the world, not something to simulate around.
    EnvironmentFunction const& function = tick.inputs.environments.at(environment);
    double h = tick.dt / substeps;
    for (auto& [parentId, bodies] : groups) {
        if (function)
            for (auto& body : bodies)
                if (body.aerodynamic)
                    body.ComputeAerodynamicSurfaces(function);
        if (auto parent = ServerSideEntity::Get(parentId); parent && parent->parent.IsNull()) {
            glm::dmat4 parentTransform = parent->GetTransform();
            for (auto& body : bodies)
                if (body.aerodynamic)
                    body.InteractWithEnvironmentFromParent(parentTransform, function, tick.dt);
        }
        // Bodies in a parent's frame are moved by their parent's module, not here.
        if (!parentId.IsNull())
            continue;
        for (int step = 0; step < substeps; ++step) {
            if (function)
                for (auto& body : bodies)
                    if (body.aerodynamic)
                        body.InteractWithEnvironment(function, h);
            for (auto& body : bodies)
                body.CollisionDetection(h);
            for (auto& body : bodies)
                body.IntegrateMotion(h);
        }
    }
}

/// Every body's colliders and every moving body's lines, appended to `lines` and `colliders`.
void GatherDebugView(Tick const& tick, std::vector<DebugLine>& lines, std::vector<DebugCollider>& colliders) {
    auto gather = [&colliders](Rigidbody const& body, bool asleep) {
        glm::dmat4 transform = body.GetTransform();
        for (auto const& collider : body.colliders) {
            auto& record = colliders.emplace_back(DebugCollider{body.id, collider, asleep});
            record.collider.transform = transform * collider.transform;
        }
    };
    for (auto const& [environment, groups] : tick.obstacles)
        for (auto const& [parentId, bodies] : groups)
            for (auto const& body : bodies)
                gather(body, true);
    for (auto const* table : {&tick.free_bodies, &tick.parented_bodies})
        for (auto const& [environment, groups] : *table)
            for (auto const& [parentId, bodies] : groups)
                for (auto const& body : bodies) {
                    gather(body, false);
                    // Contact lines are in the group's frame, as the colliders are; they carry no entity.
                    lines.insert(lines.end(), body.debug_lines.begin(), body.debug_lines.end());
                }
}

}

void ServerSideEntity::PhysicsUpdate(double dt, int substeps) {
    TickInputs const inputs{Game::_environmentFunctions, Game::debugServerSidePhysics};
    Tick tick{inputs, dt, {}, {}, {}, {}, {}, {}};
    ForEach([&](std::shared_ptr<ServerSideEntity> const& entity) { Sort(tick, entity); });

    MergeComponents(tick);
    ObstacleAccelerations(tick);
    BodyAccelerations(tick.free_bodies);
    BodyAccelerations(tick.parented_bodies);

    for (auto& [environment, groups] : tick.free_bodies)
        for (auto& [parentId, bodies] : groups)
            BroadPhase(tick, environment, parentId, bodies);

    // Bodies riding in a parent's environment: one step of the whole tick, meeting no environment.
    for (auto& [environment, groups] : tick.parented_bodies)
        for (auto& [parentId, bodies] : groups) {
            BroadPhase(tick, environment, parentId, bodies);
            for (auto& body : bodies)
                body.CollisionDetection(dt);
            for (auto& body : bodies)
                body.IntegrateMotion(dt);
        }

    for (auto& [environment, groups] : tick.free_bodies)
        StepEnvironment(tick, environment, groups, substeps);

    for (auto* table : {&tick.free_bodies, &tick.parented_bodies})
        for (auto& [environment, groups] : *table)
            for (auto& [parentId, bodies] : groups)
                for (auto& body : bodies)
                    body.ApplyToEntity(dt);

    if (inputs.debug)
        Game::PublishPhysicsDebug([&tick](std::vector<DebugLine>& lines, std::vector<DebugCollider>& colliders) {
            GatherDebugView(tick, lines, colliders);
        });
}

}
