#include "game/physics/Rigidbody.h"

#include "game/entity/ServerSideEntity.h"

#include <glm/gtc/quaternion.hpp>

namespace game::physics {

Rigidbody::Rigidbody(std::shared_ptr<game::entity::ServerSideEntity> const& source)
    : entity(source),
      orientation(source->orientation),
      id(source->id),
      bounds_min(source->bounds_min - source->center_of_mass),
      bounds_max(source->bounds_max - source->center_of_mass),
      center_of_mass(source->center_of_mass) {
    position = source->position + orientation * center_of_mass;
    colliders.reserve(source->colliders.size());
    for (auto const& [name, collider] : source->colliders) {
        if (!collider.enabled)
            continue;
        auto& copy = colliders.emplace_back(collider);
        copy.transform[3] -= glm::dvec4(center_of_mass, 0.0);
        glm::dvec3 extents = glm::abs(glm::dvec3(collider.box_max - collider.box_min));
        volume += extents.x * extents.y * extents.z * collider.volume_factor;
    }
    ComputeBounds();
}

glm::dmat4 Rigidbody::GetTransform() const {
    // The rotation with the position as its last column: what translating it gives, without a product of matrices.
    glm::dmat4 transform = glm::mat4_cast(orientation);
    transform[3] = glm::dvec4(position, 1.0);
    return transform;
}

void Rigidbody::ComputeBounds() {
    bounds_center = (bounds_min + bounds_max) * 0.5;
    radius = glm::length(bounds_max - bounds_min) * 0.5;
    center = GetPositionAtCenterOfBounds();
}

glm::dvec3 Rigidbody::GetPositionAtCenterOfBounds() const {
    return position + orientation * bounds_center;
}

}
