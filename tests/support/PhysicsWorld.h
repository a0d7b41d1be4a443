#pragma once

#include "game/Game.h"
#include "game/entity/ServerSideEntity.h"

#include <gtest/gtest.h>

/// A uniform medium over flat ground at y = 0. With `onRequest` the medium is answered only to questions that ask
/// for it, so that buoyancy, which asks for nothing, finds none and leaves the surfaces' forces alone.
struct FlatGround {
    glm::dvec3 gravity{0.0, -9.81, 0.0};
    double density = 0.0;
    double viscosity = 0.0;
    bool onRequest = false;

    game::physics::EnvironmentInfo operator()(glm::dvec3 const& position, game::EnvironmentInfoFlags flags,
                                              double) const {
        game::physics::EnvironmentInfo info;
        info.gravity = gravity;
        info.altitude = position.y;
        if (!onRequest || (flags & game::ENVIRONMENT_MEDIUM)) {
            info.density = density;
            info.viscosity = viscosity;
        }
        if (flags & game::ENVIRONMENT_SURFACE)
            info.surface = {{position.x, 0.0, position.z}, {0.0, 1.0, 0.0}, -position.y};
        return info;
    }
};

/// A world for physics scenarios: entities made by hand, without a module, on the flat ground with no air, stepped
/// by whole server ticks.
class PhysicsWorld : public testing::Test {
protected:
    static constexpr game::entity::EnvironmentId kFlatGround = 1;
    static constexpr double kTick = 1.0 / 60.0;

    void SetUp() override {
        Game::timeActive = false;
        Game::_environmentFunctions[kFlatGround] = FlatGround{};
    }

    void TearDown() override {
        std::unique_lock lock(game::entity::ServerSideEntity::_sharedObjectsMutex);
        for (auto& [id, entity] : game::entity::ServerSideEntity::_sharedObjects)
            entity->delete_save_on_destroy = false;
        // A fresh table rather than a cleared one: the walk order of a hash table depends on its bucket count, and
        // the next world must see its entities in the same order as this one did.
        decltype(game::entity::ServerSideEntity::_sharedObjects)().swap(game::entity::ServerSideEntity::_sharedObjects);
        Game::_environmentFunctions.clear();
    }

public:
    /// A box of these half extents, centred on `position`, in the flat ground's environment.
    static std::shared_ptr<game::entity::ServerSideEntity> Box(glm::dvec3 position, glm::dvec3 halfExtents,
                                                                double mass, bool dynamic = true,
                                                                double friction = 0.5,
                                                                game::entity::Id id = {}) {
        auto collider = game::entity::ConvexMeshCollider::Box(-glm::vec3(halfExtents), glm::vec3(halfExtents));
        collider.friction = friction;
        return Make(position, collider, mass, dynamic, id);
    }

    static std::shared_ptr<game::entity::ServerSideEntity> Sphere(glm::dvec3 position, double radius, double mass,
                                                                   bool dynamic = true) {
        auto collider = game::entity::ConvexMeshCollider::Box(glm::vec3(-radius), glm::vec3(radius));
        collider.is_sphere = true;
        collider.radius = radius;
        return Make(position, collider, mass, dynamic, {});
    }

    static std::shared_ptr<game::entity::ServerSideEntity> Make(glm::dvec3 position,
                                                                 game::entity::ConvexMeshCollider collider,
                                                                 double mass, bool dynamic, game::entity::Id id) {
        auto entity = game::entity::ServerSideEntity::Create(quorl::modular::ModuleID(), "body", id);
        collider.entity = entity->id;
        collider.name = "shape";
        entity->colliders["shape"] = collider;
        entity->UpdateBoundingBox(true);
        entity->position = position;
        entity->mass = mass;
        entity->dynamic = dynamic;
        entity->physics_enabled = true;
        entity->environment = kFlatGround;
        return entity;
    }

    /// Runs whole server ticks, as the server loop does.
    static void Run(int ticks, int substeps = 1) {
        for (int i = 0; i < ticks; ++i)
            Game::ServerUpdate(kTick, substeps);
    }
};
