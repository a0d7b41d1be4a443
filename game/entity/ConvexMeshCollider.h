#pragma once

#include "game/Export.h"
#include "game/UniqueId.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace game::physics { struct ContactEvent; }

namespace game::entity {

/// A small convex shape: at most a box with some corners cut (8 vertices, 12 face normals, 12 triangles), or a
/// sphere. Entities keep them in entity space; the physics step works on world-space copies.
struct MERIDON_EXPORT ConvexMeshCollider {
    static constexpr size_t kMaxVertices = 8;
    static constexpr size_t kMaxNormals = 12;
    static constexpr size_t kMaxTriangles = 12;

    /// A disabled collider is not copied into a body.
    bool enabled = true;
    /// Collider space to entity space (world space in a copy made for a test).
    glm::dmat4 transform{1.0};
    glm::vec3 box_min{0.0f};
    glm::vec3 box_max{0.0f};
    /// Half the diagonal of the box.
    double radius = 0.0;
    /// How much of its box the collider fills; when low, its sub-colliders are used instead.
    double coverage = 1.0;
    double volume_factor = 1.0;
    uint32_t vertices_count = 0;
    uint32_t normals_count = 0;
    uint32_t triangles_count = 0;
    std::array<glm::vec3, kMaxVertices> vertices{};
    /// Outward face normals, the axes of the separation test.
    std::array<glm::vec3, kMaxNormals> normals{};
    std::array<std::array<uint16_t, 3>, kMaxTriangles> triangles{};
    /// Always allocated, possibly empty.
    std::shared_ptr<std::vector<ConvexMeshCollider>> sub_colliders = std::make_shared<std::vector<ConvexMeshCollider>>();
    /// Stamped by the owning entity.
    Id entity;
    std::string name;
    bool ignore_fluid = false;
    bool is_sphere = false;
    double friction = 0.2;
    /// Called for each contact; may edit it, and whether it returns true decides whether the contact counts.
    std::function<bool(game::physics::ContactEvent&)> on_contact;

    /// A box of these corners: 8 vertices numbered by bits (bit 0 takes x from the maximum, bit 1 y, bit 2 z), the
    /// three axes as normals, 12 triangles, radius half the diagonal.
    static ConvexMeshCollider Box(glm::vec3 const& min, glm::vec3 const& max);

    /// `position` (entity or world space, as `transform` is) moved into the box grown by `margin` on every side.
    glm::dvec3 GetPositionClamped(glm::dvec3 const& position, double margin) const;
    /// Counts as no shape at all: wherever sub-colliders are walked, an empty one and its tree are skipped.
    bool IsEmpty() const;
};

}
