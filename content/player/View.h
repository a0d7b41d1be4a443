#pragma once

// Where the player's eye is and where it looks, on the client: from the avatar's feet in first person, or flying
// freely in drone mode. Pure functions of the planet's geometry, shared by the module and its tests.

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

namespace player {

/// Radians the view turns per unit of the controller's look axes (a full screen width of mouse is half a unit).
inline constexpr double kTurnPerLookUnit = 6.283185307179586;
/// The view stops short of straight up and down, where the heading would be lost.
inline constexpr double kMaxPitch = 1.55;
/// Metres per second of the drone, and with sprint held.
inline constexpr double kDroneSpeed = 10.0;
inline constexpr double kDroneSprintSpeed = 40.0;

/// Unit vector of the view: `heading` radians from east about the planet's up at `eye`, raised `pitch` radians.
glm::dvec3 LookDirection(glm::dvec3 const& eye, double heading, double pitch);

/// The camera's placement in the world (its inverse is the view), looking along LookDirection with the planet's up
/// at `eye` up the screen.
glm::dmat4 CameraMatrix(glm::dvec3 const& eye, double heading, double pitch);

/// The drone's next position after `dt` seconds: `forward` along the view, `right` across it, `up` along the
/// planet's up, each -1..1.
glm::dvec3 Fly(glm::dvec3 const& eye, double heading, double pitch, glm::dvec3 const& wish, bool sprint, double dt);

}
