#include "game/entity/BaseEntity.h"

#include "game/entity/EntityConfig.h"

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <limits>

namespace game::entity {

namespace {

/// The collider's box and radius from the vertices it really has.
void FitBoxToVertices(ConvexMeshCollider& collider) {
    if (collider.vertices_count == 0)
        return;
    glm::vec3 low = collider.vertices[0], high = collider.vertices[0];
    for (uint32_t i = 1; i < collider.vertices_count; ++i) {
        low = glm::min(low, collider.vertices[i]);
        high = glm::max(high, collider.vertices[i]);
    }
    collider.box_min = low;
    collider.box_max = high;
    collider.radius = glm::length(glm::dvec3(high - low)) * 0.5;
}

ConvexMeshCollider ColliderFromConfig(EntityConfig::Collider const& source, glm::dmat4 const& transform) {
    ConvexMeshCollider collider;
    collider.transform = transform;
    collider.box_min = source.box_min;
    collider.box_max = source.box_max;
    collider.radius = std::max(glm::length(glm::dvec3(source.box_min)), glm::length(glm::dvec3(source.box_max)));
    collider.volume_factor = 0.25;
    if (source.vertices_count > 0) {
        collider.vertices_count = std::min<uint32_t>(source.vertices_count, ConvexMeshCollider::kMaxVertices);
        collider.normals_count = std::min<uint32_t>(source.normals_count, ConvexMeshCollider::kMaxNormals);
        collider.triangles_count = std::min<uint32_t>(source.triangles_count, ConvexMeshCollider::kMaxTriangles);
        collider.vertices = source.vertices;
        collider.normals = source.faces_normal;
        collider.triangles = source.triangles;
    } else {
        auto box = ConvexMeshCollider::Box(source.box_min, source.box_max);
        collider.vertices_count = box.vertices_count;
        collider.normals_count = box.normals_count;
        collider.triangles_count = box.triangles_count;
        collider.vertices = box.vertices;
        collider.normals = box.normals;
        collider.triangles = box.triangles;
    }
    FitBoxToVertices(collider);
    return collider;
}

}

void BaseEntity::InitNodes() {
    if (!config)
        return;
    mass = config->mass;
    for (auto const& [name, joint] : config->joints) {
        node_transforms[name] = config->GetAbsoluteTransform(name);
        joints[name] = Joint{joint.linear_start, joint.angular_start};
    }
    for (auto const& [name, source] : config->colliders) {
        auto transform = config->GetAbsoluteTransform(name);
        node_transforms[name] = transform;
        colliders[name] = ColliderFromConfig(source, transform);
    }
    for (auto const& [name, adapter] : config->adapters)
        node_transforms[name] = config->GetAbsoluteTransform(name);
    for (auto const& [name, target] : config->targets)
        node_transforms[name] = config->GetAbsoluteTransform(name);
    UpdateBoundingBox(true);
}

void BaseEntity::Update(double) {
    if (!nodes_animated && !nodes_dirty)
        return;
    for (auto& [name, collider] : colliders) {
        auto found = node_transforms.find(name);
        if (found != node_transforms.end())
            collider.transform = found->second;
    }
    UpdateBoundingBox(true);
}

void BaseEntity::UpdateBoundingBox(bool set_center_of_mass) {
    if (colliders.empty())
        return;
    constexpr double kFar = std::numeric_limits<float>::max();
    glm::dvec3 low(kFar), high(-kFar);
    // Only the two stored corners are carried over, not all eight: rotated boxes come out smaller than their hull.
    for (auto const& [name, collider] : colliders)
        for (glm::vec3 const& corner : {collider.box_min, collider.box_max}) {
            glm::dvec3 point(collider.transform * glm::dvec4(glm::dvec3(corner), 1.0));
            low = glm::min(low, point);
            high = glm::max(high, point);
        }
    bounds_min = low;
    bounds_max = high;
    size = glm::abs(high - low);
    bounds_center = (low + high) * 0.5;
    bounds_radius = glm::length(high - low) * 0.5;
    if (set_center_of_mass)
        center_of_mass = bounds_center;
}

glm::dmat4 BaseEntity::GetTransform() const {
    return glm::translate(glm::dmat4(1.0), position) * glm::mat4_cast(orientation);
}

}
