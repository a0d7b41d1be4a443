#pragma once

#include "engine/modular/ModuleID.h"
#include "game/Export.h"
#include "game/UniqueId.h"
#include "game/entity/ConvexMeshCollider.h"
#include "game/entity/Joint.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace game::entity {

class EntityConfig;

/// What server and client entities share: the type, the node tree taken from the type's config, the pose and
/// motion, the colliders and the box around them. Positions and orientations are in the frame of the parent or of
/// the environment; node transforms and colliders are in entity space.
class MERIDON_EXPORT BaseEntity {
public:
    virtual ~BaseEntity() = default;

    /// Takes mass, joints, colliders, adapters and targets from the config and sizes the box.
    virtual void InitNodes();
    /// Re-poses the colliders from node_transforms and resizes the box, when nodes_dirty or nodes_animated is set.
    virtual void Update(double dt);

    /// Grows the box over both stored corners of every collider's box, in entity space; an entity without
    /// colliders keeps a zero box. With `set_center_of_mass`, the centre of mass moves to the box centre.
    void UpdateBoundingBox(bool set_center_of_mass);
    /// Entity space to the frame of the parent or environment.
    glm::dmat4 GetTransform() const;

    quorl::modular::ModuleID module;
    std::string type;
    std::shared_ptr<EntityConfig> config;
    double mass = 0.0;
    glm::dvec3 position{0.0};
    glm::dquat orientation{1.0, 0.0, 0.0, 0.0};
    glm::dvec3 bounds_min{0.0};
    glm::dvec3 bounds_max{0.0};
    glm::dvec3 size{0.0};
    glm::dvec3 center_of_mass{0.0};
    glm::dvec3 bounds_center{0.0};
    double bounds_radius = 0.0;
    glm::dvec3 linear_velocity{0.0};
    /// World axes, radians per second.
    glm::dvec3 angular_velocity{0.0};
    /// Smoothed proper acceleration in entity axes, written by the physics step.
    glm::dvec3 local_acceleration{0.0};
    /// The physics parent; null for a free entity.
    Id parent;
    /// Current transform of each node in entity space.
    std::unordered_map<std::string, glm::dmat4> node_transforms;
    std::unordered_map<std::string, Joint> joints;
    std::unordered_map<std::string, ConvexMeshCollider> colliders;
    /// Entities this one does not collide with; filled by modules.
    std::unordered_set<Id> ignored;
    /// One-shot request to re-pose colliders and box; cleared by the physics step.
    bool nodes_dirty = false;
    /// The same request, standing.
    bool nodes_animated = false;
    bool dynamic = false;
    /// Fastened to its parent: no body of its own, its colliders merge into the first non-component ancestor's.
    bool is_component = false;
};

}
