// What one narrow-phase test costs: the physics step runs it for every pair of colliders that the broad phase and
// the box filter let through, many times per tick in a pile of boxes.

#include "JsonLineReporter.h"

#include "game/physics/ConvexCollision.h"

#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>

namespace {

using game::entity::ConvexMeshCollider;

ConvexMeshCollider Box(glm::vec3 const& half, glm::dvec3 const& position, double angle, glm::dvec3 const& axis) {
    ConvexMeshCollider box = ConvexMeshCollider::Box(-half, half);
    glm::dquat const rotation = glm::angleAxis(angle, glm::normalize(axis));
    box.transform = glm::translate(glm::dmat4(1.0), position) * glm::mat4_cast(rotation);
    return box;
}

/// Two cubes stacked as in a pile, turned a little apart, the upper one's lowest corner 0.03 into the lower one: every
/// axis is tried.
void ConvexCollisionOfTouchingBoxes(benchmark::State& state) {
    ConvexMeshCollider a = Box(glm::vec3(0.5f), {0.1, 0.0, 0.05}, 0.02, {1, 2, 3});
    ConvexMeshCollider const b = Box(glm::vec3(0.5f), {0.0, 0.0, 0.0}, 0.01, {-2, 1, 1});
    double const top = game::physics::ProjectOntoAxis(b, {0, 1, 0}).second;
    a.transform[3].y = top - game::physics::ProjectOntoAxis(a, {0, 1, 0}).first - 0.03;
    for (auto _ : state)
        benchmark::DoNotOptimize(game::physics::ConvexCollision(a, b));
    state.counters["depth"] = game::physics::ConvexCollision(a, b).depth;
}

/// Two cubes whose bounding spheres meet but whose faces don't: the test stops at the first separating axis.
void ConvexCollisionOfSeparatedBoxes(benchmark::State& state) {
    ConvexMeshCollider const a = Box(glm::vec3(0.5f), {1.2, 0.3, 0.0}, 0.3, {1, 2, 3});
    ConvexMeshCollider const b = Box(glm::vec3(0.5f), {0.0, 0.0, 0.0}, 0.2, {-2, 1, 1});
    for (auto _ : state)
        benchmark::DoNotOptimize(game::physics::ConvexCollision(a, b));
    state.counters["depth"] = game::physics::ConvexCollision(a, b).depth;
}

/// A ball sinking 0.05 into a turned cube's side.
void ConvexCollisionOfSphereAndBox(benchmark::State& state) {
    ConvexMeshCollider sphere = Box(glm::vec3(0.5f), {0.0, 0.95, 0.0}, 0.0, {0, 1, 0});
    sphere.is_sphere = true;
    sphere.radius = 0.5;
    ConvexMeshCollider const box = Box(glm::vec3(0.5f), {0.0, 0.0, 0.0}, 0.1, {0, 0, 1});
    for (auto _ : state)
        benchmark::DoNotOptimize(game::physics::ConvexCollision(sphere, box));
    state.counters["depth"] = game::physics::ConvexCollision(sphere, box).depth;
}

/// The cheap filter that callers run before the full test.
void PotentialBoxBoxIntersectionOfNearBoxes(benchmark::State& state) {
    ConvexMeshCollider const a = Box(glm::vec3(0.5f), {1.2, 0.3, 0.0}, 0.3, {1, 2, 3});
    ConvexMeshCollider const b = Box(glm::vec3(0.5f), {0.0, 0.0, 0.0}, 0.2, {-2, 1, 1});
    for (auto _ : state)
        benchmark::DoNotOptimize(game::physics::PotentialBoxBoxIntersection(a, b));
}

}

BENCHMARK(ConvexCollisionOfTouchingBoxes);
BENCHMARK(ConvexCollisionOfSeparatedBoxes);
BENCHMARK(ConvexCollisionOfSphereAndBox);
BENCHMARK(PotentialBoxBoxIntersectionOfNearBoxes);

int main(int argc, char** argv) {
    RunBenchmarks(argc, argv);
    return 0;
}
