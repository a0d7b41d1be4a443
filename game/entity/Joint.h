#pragma once

#include <glm/vec3.hpp>

namespace game::entity {

/// The current pose of one joint of an entity: start at the config's middle values, moved by modules, clamped to
/// the config's limits by the joint solver.
struct Joint {
    glm::vec3 linear{0.0f};
    /// Degrees.
    glm::vec3 angular{0.0f};
};

}
