#pragma once

#include "game/physics/Collision.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>

namespace game {

/// What a question to an environment function asks for. Only the combinations below are used by the physics.
enum EnvironmentInfoFlags : uint32_t {
    ENVIRONMENT_NOTHING = 0,
    /// Bit 1: the base answer (gravity, altitude, density).
    ENVIRONMENT_BASE = 1,
    /// Bit 2: the contact with the ground at the point.
    ENVIRONMENT_SURFACE = 2,
    /// Bit 3: the medium, fluid or air, at the point.
    ENVIRONMENT_MEDIUM = 4,
    /// Whole-body question: gravity, altitude and the medium (5).
    ENVIRONMENT_BODY = ENVIRONMENT_BASE | ENVIRONMENT_MEDIUM,
    /// Ground contact in a medium (7).
    ENVIRONMENT_CONTACT = ENVIRONMENT_BASE | ENVIRONMENT_SURFACE | ENVIRONMENT_MEDIUM,
    /// Ground contact for a collider that ignores fluid (3).
    ENVIRONMENT_CONTACT_DRY = ENVIRONMENT_BASE | ENVIRONMENT_SURFACE,
};

}

namespace game::physics {

/// An environment's answer about one place: gravity, the ground and the medium there.
struct EnvironmentInfo {
    /// The frame of the place asked about.
    glm::dmat4 transform{1.0};
    glm::dvec3 gravity{0.0};
    /// Height above the surface.
    double altitude = 0.0;
    /// Contact with the ground: a depth above zero means the point lies inside solid matter.
    Collision surface;
    double density = 0.0;
    double viscosity = 0.0;
    /// Density of liquid at the point, where the medium is water or the like: the client's plasma trail does not
    /// glow in it. Physics passes it on unread.
    double liquidDensity = 0.0;
    /// Passed on to modules unread.
    std::unordered_map<std::string, double> composition;
};

/// An environment: world position in the environment's frame, what is asked, and the scale of the question
/// (0 for a point). Registered by modules in Game::_environmentFunctions.
using EnvironmentFunction =
    std::function<EnvironmentInfo(glm::dvec3 const& position, game::EnvironmentInfoFlags flags, double size)>;

}
