#pragma once

#include "game/Export.h"

#include <glm/vec3.hpp>

namespace game::physics {

/// Drag on a box of extents `size` moving at `velocity` through a medium, axis by axis: a quadratic pressure term
/// on a face area plus Stokes' viscous term (6 pi viscosity v size). The face areas pair the sizes as x: size.x
/// size.y, y: size.y size.z, z: size.x size.z, which is not the face across each axis; modules' results depend on
/// that pairing, so it stays. For modules only: the physics step uses its own surfaces.
MERIDON_EXPORT glm::dvec3 GetDragForce(double density, glm::dvec3 const& size, glm::dvec3 const& velocity,
                                       double drag_coefficient, double viscosity);

}
