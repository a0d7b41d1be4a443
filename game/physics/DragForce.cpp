#include "game/physics/DragForce.h"

#include <glm/common.hpp>

namespace game::physics {

namespace {
/// 6 pi, of Stokes' law.
constexpr double kStokes = 18.84955592153876;
}

glm::dvec3 GetDragForce(double density, glm::dvec3 const& size, glm::dvec3 const& velocity, double drag_coefficient,
                        double viscosity) {
    double k = -0.5 * density * drag_coefficient;
    glm::dvec3 const& v = velocity;
    glm::dvec3 s = glm::sign(v);
    return {k * size.x * size.y * s.x * v.x * v.x - kStokes * viscosity * v.x * size.x,
            k * size.y * size.z * s.y * v.y * v.y - kStokes * viscosity * v.y * size.y,
            k * size.x * size.z * s.z * v.z * v.z - kStokes * viscosity * v.z * size.z};
}

}
