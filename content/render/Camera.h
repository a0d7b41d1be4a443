#pragma once

// The projection of the camera: what the module draws with and what tests project points with.

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/mat4x4.hpp>
#include <glm/trigonometric.hpp>

namespace render {

/// Metres: the nearest and farthest distances drawn. The far plane reaches well past a planet's horizon from a few
/// hundred metres up.
constexpr float kNear = 0.1f;
constexpr float kFar = 20000.0f;

/// A perspective of vertical field `fovDegrees`, depth 0 at the near plane and 1 at the far one, y down the screen as
/// Vulkan's framebuffer has it.
inline glm::mat4 Projection(float fovDegrees, float aspect) {
    glm::mat4 projection = glm::perspectiveRH_ZO(glm::radians(fovDegrees), aspect, kNear, kFar);
    projection[1][1] = -projection[1][1];
    return projection;
}

}
