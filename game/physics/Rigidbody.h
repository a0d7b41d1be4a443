#pragma once

#include "game/Export.h"
#include "game/entity/ConvexMeshCollider.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <memory>
#include <vector>

namespace game::entity { class ServerSideEntity; }

namespace game::physics {

/// A working copy of an entity for one physics tick, in the frame of its group (its parent's, or its environment's
/// when it has none). This one does not move during the tick: an obstacle. Built fresh every tick; it never
/// touches its entity while the tick steps.
class MERIDON_EXPORT Rigidbody {
public:
    /// Copies pose, bounds and enabled colliders, all taken relative to the centre of mass.
    explicit Rigidbody(std::shared_ptr<game::entity::ServerSideEntity> const& source);

    /// Group frame from body space: the centre of mass and the orientation.
    glm::dmat4 GetTransform() const;
    /// Recomputes bounds_center, radius and center from the bounds.
    void ComputeBounds();
    glm::dvec3 GetPositionAtCenterOfBounds() const;

    std::weak_ptr<game::entity::ServerSideEntity> entity;
    /// The centre of mass, in the group's frame.
    glm::dvec3 position{0.0};
    glm::dquat orientation{1.0, 0.0, 0.0, 0.0};
    game::entity::Id id;
    /// The bounds' centre in the group's frame.
    glm::dvec3 center{0.0};
    /// Half the bounds' diagonal.
    double radius = 0.0;
    /// Transforms relative to the centre of mass.
    std::vector<game::entity::ConvexMeshCollider> colliders;
    /// Relative to the centre of mass.
    glm::dvec3 bounds_min{0.0};
    glm::dvec3 bounds_max{0.0};
    /// The centre of mass's offset from the entity's origin, in entity axes.
    glm::dvec3 center_of_mass{0.0};
    /// The bounds' centre relative to the centre of mass.
    glm::dvec3 bounds_center{0.0};
    /// Acceleration of the group's frame at this body, from a moving parent.
    glm::dvec3 frame_acceleration{0.0};
    /// Summed box volumes of the colliders, each times its volume factor.
    double volume = 0.0;
};

}
