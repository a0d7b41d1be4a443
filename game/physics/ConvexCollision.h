#pragma once

#include "game/Export.h"
#include "game/entity/ConvexMeshCollider.h"
#include "game/physics/Collision.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <utility>

// The narrow phase: whether two small convex shapes, given in world space, overlap, and by how much. Shapes are
// at most boxes with a few corners cut, so every pair of vertices is taken as an edge, diagonals included.

namespace game::physics {

/// A collider put somewhere without being copied: its shape, and the transform that takes it into the space of the
/// test in place of its own.
struct PlacedCollider {
    game::entity::ConvexMeshCollider const& collider;
    glm::dmat4 transform;
};

/// (min, max) of the dot products of the collider's world-space vertices with `axis`; with no vertices, the empty
/// interval (largest double, lowest double).
MERIDON_EXPORT std::pair<double, double> ProjectOntoAxis(game::entity::ConvexMeshCollider const& collider,
                                                         glm::dvec3 const& axis);

/// A cheap filter that may say yes for boxes a full test would separate, never no for boxes that overlap.
/// `test_spheres` compares the boxes' bounding spheres; `test_boxes` compares box a with the bounds of box b
/// taken into a's frame.
MERIDON_EXPORT bool PotentialBoxBoxIntersection(glm::dmat4 const& a, glm::dmat4 const& b, glm::dvec3 const& a_min,
                                                glm::dvec3 const& a_max, glm::dvec3 const& b_min,
                                                glm::dvec3 const& b_max, bool test_spheres, bool test_boxes);

/// The filter on two world-space colliders: their `radius` spheres about their box centres, then their boxes.
MERIDON_EXPORT bool PotentialBoxBoxIntersection(game::entity::ConvexMeshCollider const& a,
                                                game::entity::ConvexMeshCollider const& b);

/// Separating-axis test of two world-space colliders. The normal points from b towards a, so that a is pushed
/// along it; all zeros means no contact. Only `a` may be a sphere: callers with a sphere second swap the arguments
/// and negate the normal. Edges that are exactly parallel make a pair that never touches through this test.
MERIDON_EXPORT Collision ConvexCollision(game::entity::ConvexMeshCollider const& a,
                                         game::entity::ConvexMeshCollider const& b);
/// The same test of colliders placed by transforms of their own: what the physics step tests many times per step,
/// where copies of whole colliders would cost more than some of the tests.
MERIDON_EXPORT Collision ConvexCollision(PlacedCollider const& a, PlacedCollider const& b);

}
