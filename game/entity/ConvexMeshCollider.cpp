#include "game/entity/ConvexMeshCollider.h"

#include <glm/common.hpp>
#include <glm/mat4x4.hpp>
#include <glm/matrix.hpp>

namespace game::entity {

glm::dvec3 ConvexMeshCollider::GetPositionClamped(glm::dvec3 const& position, double margin) const {
    glm::dvec3 local(glm::inverse(transform) * glm::dvec4(position, 1.0));
    local = glm::clamp(local, glm::dvec3(box_min) - margin, glm::dvec3(box_max) + margin);
    return glm::dvec3(transform * glm::dvec4(local, 1.0));
}

bool ConvexMeshCollider::IsEmpty() const {
    return radius <= 0.0001 || !(box_max.x > box_min.x) ||
           (vertices_count == 0 && (!sub_colliders || sub_colliders->empty()));
}

}
