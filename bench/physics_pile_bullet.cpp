// The yardstick for bench_physics_pile: the same pile of PileScene.h in Bullet's btDiscreteDynamicsWorld, one step
// of 1/60 s per tick, each one timed. One JSON line, as PileRun.h describes, with "engine": "bullet".
//
// Usage: bench_physics_pile_bullet [--n N] [--ticks T]   (1000 cubes, 600 ticks when not given)

#include "PileRun.h"
#include "PileScene.h"

#include <btBulletDynamicsCommon.h>

#include <exception>
#include <iostream>
#include <memory>
#include <vector>

namespace {

/// Bullet's objects, torn down in the reverse order of their making.
struct World {
    World() : dispatcher(&configuration), world(&dispatcher, &broadphase, &solver, &configuration) {
        world.setGravity(btVector3(0.0, pile::kGravity, 0.0));
    }
    ~World() {
        for (auto& body : bodies)
            world.removeRigidBody(body.get());
    }

    btRigidBody* Add(btCollisionShape* shape, double mass, btTransform const& pose) {
        btVector3 inertia(0.0, 0.0, 0.0);
        if (mass > 0.0)
            shape->calculateLocalInertia(static_cast<btScalar>(mass), inertia);
        btRigidBody::btRigidBodyConstructionInfo info(static_cast<btScalar>(mass), nullptr, shape, inertia);
        info.m_startWorldTransform = pose;
        info.m_friction = static_cast<btScalar>(pile::kFriction);
        auto& body = bodies.emplace_back(std::make_unique<btRigidBody>(info));
        world.addRigidBody(body.get());
        return body.get();
    }

    btDefaultCollisionConfiguration configuration;
    btCollisionDispatcher dispatcher;
    btDbvtBroadphase broadphase;
    btSequentialImpulseConstraintSolver solver;
    btDiscreteDynamicsWorld world;
    std::vector<std::unique_ptr<btRigidBody>> bodies;
};

btTransform ToBullet(pile::Pose const& pose) {
    auto const& q = pose.orientation;
    return btTransform(btQuaternion(btScalar(q.x), btScalar(q.y), btScalar(q.z), btScalar(q.w)),
                       btVector3(btScalar(pose.position.x), btScalar(pose.position.y), btScalar(pose.position.z)));
}

int Run(pile::Options const& options) {
    // The ground is a slab whose top is the plane y = 0, reaching well beyond where the toppled columns can roll.
    // The shapes outlive the world that holds bodies of them.
    constexpr double kSlabHalfHeight = 1.0;
    double groundHalfWidth = 0.5 * pile::kPitch * static_cast<double>(pile::GridSide(options.n)) + 100.0;
    btBoxShape ground{btVector3(btScalar(groundHalfWidth), btScalar(kSlabHalfHeight), btScalar(groundHalfWidth))};
    auto half = btScalar(0.5 * pile::kCubeSize);
    btBoxShape cube{btVector3(half, half, half)};

    World scene;
    scene.Add(&ground, 0.0, btTransform(btQuaternion::getIdentity(), btVector3(0.0, btScalar(-kSlabHalfHeight), 0.0)));
    std::vector<btRigidBody*> cubes;
    for (auto const& pose : pile::Poses(options.n))
        cubes.push_back(scene.Add(&cube, pile::kCubeMass, ToBullet(pose)));

    auto tick = btScalar(pile::kTick);
    auto milliseconds = pile::TimeTicks(options.ticks, [&] { scene.world.stepSimulation(tick, 1, tick); });

    size_t asleep = 0;
    for (auto const* body : cubes)
        if (!body->isActive())
            ++asleep;
    pile::PrintResult("bullet", options, milliseconds, asleep);
    return 0;
}

}

int main(int argc, char** argv) {
    return pile::Main(argc, argv, Run);
}
