#include "game/entity/ConvexMeshCollider.h"

#include <glm/geometric.hpp>

namespace game::entity {

namespace {
// Two triangles for each face, outward by the right-hand rule.
constexpr std::array<std::array<uint16_t, 3>, 12> kBoxTriangles{{
    {0, 2, 1}, {1, 2, 3},  // -z
    {4, 5, 6}, {5, 7, 6},  // +z
    {0, 1, 4}, {1, 5, 4},  // -y
    {2, 6, 3}, {3, 6, 7},  // +y
    {0, 4, 2}, {2, 4, 6},  // -x
    {1, 3, 5}, {3, 7, 5},  // +x
}};
}

ConvexMeshCollider ConvexMeshCollider::Box(glm::vec3 const& min, glm::vec3 const& max) {
    ConvexMeshCollider box;
    box.box_min = min;
    box.box_max = max;
    for (int corner = 0; corner < 8; ++corner)
        box.vertices[corner] = {corner & 1 ? max.x : min.x, corner & 2 ? max.y : min.y, corner & 4 ? max.z : min.z};
    box.vertices_count = 8;
    box.normals[0] = {1, 0, 0};
    box.normals[1] = {0, 1, 0};
    box.normals[2] = {0, 0, 1};
    box.normals_count = 3;
    box.triangles = kBoxTriangles;
    box.triangles_count = 12;
    box.radius = glm::length(glm::dvec3(max - min)) * 0.5;
    return box;
}

}
