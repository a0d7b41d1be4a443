#pragma once

#include "game/UniqueId.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

namespace game::physics {

/// A line the physics debug view draws, in the space of `entity` (world space when it is null or gone).
struct DebugLine {
    game::entity::Id entity;
    glm::vec3 start{0.0f};
    glm::vec3 end{0.0f};
    glm::vec4 color{1.0f};
};

}
