#pragma once

#include <glm/vec3.hpp>

namespace game::physics {

/// One surface that air or fluid pushes on, found for one tick's motion.
struct AeroSurface {
    /// From the body's position, in the group's axes.
    glm::dvec3 offset{0.0};
    /// In body axes.
    glm::dvec3 normal{0.0};
    double area = 0.0;
    /// Share of the lift-like force along the normal: 1 face-on, 0 edge-on.
    double normal_coefficient = 0.0;
    double drag_coefficient = 0.0;
};

}
