// The demo planet, content side: MERIDON_planet.MERIDON_Mod.so. While loaded, it answers for the environment
// planet::kEnvironmentId: gravity, ground and medium of the world described in Planet.h.

#include "Planet.h"

#include "game/Game.h"
#include "modules/ModuleApi.h"

#include <algorithm>
#include <cmath>

using game::physics::EnvironmentInfo;

extern "C" uint32_t const _MERIDON_Mod_VERSION = MERIDON_MOD_VERSION;

namespace {

struct Medium {
    double density;
    double viscosity;
    /// The water's share of the density.
    double liquidDensity;
};

double AirDensity(double height) {
    return planet::kAirDensity * std::exp(-height / planet::kScaleHeight);
}

/// The medium over the layer from `height` above sea level up to `height + thickness`, averaged; at the point
/// itself for a thickness of zero.
Medium MediumOver(double height, double thickness, bool ocean) {
    if (!(thickness > 0.0)) {
        if (ocean && height < 0.0)
            return {planet::kWaterDensity, planet::kWaterViscosity, planet::kWaterDensity};
        return {AirDensity(height), planet::kAirViscosity, 0.0};
    }
    double water = ocean ? std::clamp(-height, 0.0, thickness) : 0.0;
    double air = thickness - water;
    // The air's mass over its part of the layer, from the exponential's integral.
    double airMass = planet::kAirDensity * planet::kScaleHeight *
                     (std::exp(-(height + water) / planet::kScaleHeight) -
                      std::exp(-(height + thickness) / planet::kScaleHeight));
    return {(planet::kWaterDensity * water + airMass) / thickness,
            (planet::kWaterViscosity * water + planet::kAirViscosity * air) / thickness,
            planet::kWaterDensity * water / thickness};
}

/// Columns: east, up, north, and the point itself. East is +x at the top of the planet.
glm::dmat4 LocalFrame(glm::dvec3 const& position, glm::dvec3 const& up) {
    glm::dvec3 east = glm::cross(up, glm::dvec3(0.0, 0.0, 1.0));
    if (glm::dot(east, east) < 1e-12)
        east = glm::cross(up, glm::dvec3(1.0, 0.0, 0.0));
    east = glm::normalize(east);
    glm::dvec3 north = glm::cross(east, up);
    return {glm::dvec4(east, 0.0), glm::dvec4(up, 0.0), glm::dvec4(north, 0.0), glm::dvec4(position, 1.0)};
}

EnvironmentInfo Ask(glm::dvec3 const& position, game::EnvironmentInfoFlags flags, double size) {
    EnvironmentInfo info;
    double r = glm::length(position);
    // The centre has no up and no finite gravity: the planet's matter is assumed away there.
    if (!(r > 0.0))
        return info;
    glm::dvec3 up = position / r;
    bool ocean = position.x >= planet::kOceanStartX;
    double ground = planet::kRadius - (ocean ? planet::kOceanDepth : 0.0);

    info.transform = LocalFrame(position, up);
    info.gravity = -up * planet::GravityAt(position);
    info.altitude = r - ground;
    Medium medium = MediumOver(r - planet::kRadius, 2.0 * size, ocean);
    info.density = medium.density;
    info.viscosity = medium.viscosity;
    info.liquidDensity = medium.liquidDensity;
    if (flags & game::ENVIRONMENT_SURFACE) {
        info.surface.point = up * ground;
        info.surface.normal = up;
        info.surface.depth = ground - r;
    }
    return info;
}

}

extern "C" void Load() {
    Game::_environmentFunctions[planet::kEnvironmentId] = Ask;
}

// The function is code of this library: it must be gone before the library closes.
extern "C" void Unload() {
    Game::_environmentFunctions.erase(planet::kEnvironmentId);
}
