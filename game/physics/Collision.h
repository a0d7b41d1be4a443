#pragma once

#include <glm/vec3.hpp>

namespace game::physics {

/// One contact between two shapes: the normal points from the second shape towards the first, which is pushed
/// along it. A depth above zero is a contact; all zeros is none.
struct Collision {
    glm::dvec3 point{0.0};
    glm::dvec3 normal{0.0};
    double depth = 0.0;
};

}
