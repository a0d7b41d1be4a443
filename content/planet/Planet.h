#pragma once

// The demo planet of MERIDON_planet: what its environment answers, for the module itself and for the tests and
// benchmarks that load it.
//
// Shape. A sphere centred at the origin of its environment, so that "nearest the origin" means "lowest", as the
// physics' buoyancy assumes. Sea level is kRadius from the centre. The plane x = kOceanStartX splits it: where x
// is below, land whose ground lies at sea level; from it on, an ocean whose floor lies kOceanDepth below sea level.
// Near the top, at (0, kRadius, 0), up is +y and the shore runs along x = kOceanStartX; the ground falls away from
// the level there by d^2 / (2 kRadius): under a centimetre within 10 m, 0.8 m at 100 m.
//
// Answers. Gravity points to the centre, kSurfaceGravity at sea level, falling with the square of the distance.
// `altitude` is the height above the solid ground: over the ocean, above its floor, since the physics looks for
// ground contact when the altitude is low and the water is a medium, not ground. The medium is water in the ocean
// below sea level and air everywhere else, air thinning exponentially with the height above sea level.
// A question with a size above zero gets the medium averaged over the layer from the point up to twice that size
// above it: buoyancy asks from a body's lowest corners with the body's half height, so the answer weighs how much of
// the body lies under water. `transform` is a local frame at the point: y up, x towards +x near the top.
// Of the flags only ENVIRONMENT_SURFACE (bit 2) is honoured: then `surface` holds the point's projection onto the
// ground, the ground's outward normal and the depth below the ground (positive inside it). Gravity, altitude and
// medium are answered whatever the flags, and without fluid (flags 3) the ground is still the sea floor.

#include "game/entity/EnvironmentId.h"

#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <cmath>

namespace planet {

/// The key of the planet's function in Game::_environmentFunctions while MERIDON_planet is loaded: entities with
/// this `environment` live on the planet. "PLANET" in ASCII.
inline constexpr game::entity::EnvironmentId kEnvironmentId = 0x504c414e4554;

/// Metres from the centre to sea level.
inline constexpr double kRadius = 6000.0;
/// Metres per second squared at sea level.
inline constexpr double kSurfaceGravity = 9.81;
/// kg/m^3 at sea level.
inline constexpr double kAirDensity = 1.225;
/// Metres over which the air's density falls by a factor e.
inline constexpr double kScaleHeight = 8500.0;
/// Pa s.
inline constexpr double kAirViscosity = 1.8e-5;
inline constexpr double kWaterDensity = 1000.0;
inline constexpr double kWaterViscosity = 1e-3;
/// The ocean covers x >= kOceanStartX.
inline constexpr double kOceanStartX = 100.0;
/// The ocean floor's depth below sea level.
inline constexpr double kOceanDepth = 20.0;

/// The point `altitude` metres above sea level over (x, z) on the upper half of the planet.
inline glm::dvec3 AtAltitude(double x, double z, double altitude) {
    double r = kRadius + altitude;
    return {x, std::sqrt(r * r - x * x - z * z), z};
}

/// Gravity's pull at `position`, towards the centre.
inline double GravityAt(glm::dvec3 const& position) {
    double ratio = kRadius / glm::length(position);
    return kSurfaceGravity * ratio * ratio;
}

}
