#pragma once

// The player's body on the server: an entity of MERIDON_example's "avatar" type that the physics moves like any
// other, which this module turns, keeps upright and pushes each tick as the player's input asks.

#include "content/player/PlayerInput.h"

#include "game/entity/ServerSideEntity.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>

namespace player {

/// Metres per second over the ground.
inline constexpr double kWalkSpeed = 4.0;
inline constexpr double kSprintSpeed = 8.0;
inline constexpr double kCrouchSpeed = 1.5;
/// Metres per second upwards at the jump.
inline constexpr double kJumpSpeed = 5.0;
/// Metres per second squared of thrust: more than the planet's pull, so the jetpack climbs.
inline constexpr double kJetpackThrust = 15.0;
/// In the air the body turns towards the wished velocity this fraction of the difference per second.
inline constexpr double kAirControl = 1.5;
/// Metres above the solid ground within which the feet stand on it.
inline constexpr double kGroundContact = 0.08;
/// Metres from the soles to the eyes.
inline constexpr double kEyeHeight = 1.65;
inline constexpr double kCrouchEyeHeight = 1.05;

/// Where a new avatar stands, and where a respawn brings it back: the spawn point of the demo planet, feet on the
/// ground, facing east.
glm::dvec3 SpawnPosition();

/// Upright on the planet at `position` (whose up points away from its centre), turned `heading` radians from east.
glm::dquat Upright(glm::dvec3 const& position, double heading);

/// One tick of `input` on `avatar`, before the physics moves it: turned to the heading and upright, its velocity over
/// the ground the one wished for (in the air it only drifts towards it), a jump from the ground, the jetpack's push.
void Steer(game::entity::ServerSideEntity& avatar, Input const& input, double dt);

/// Back at the spawn point, still.
void Respawn(game::entity::ServerSideEntity& avatar);

/// Metres from the avatar within which it reaches a door, and how squarely it must face it (the cosine of the
/// largest angle between its heading and the door).
inline constexpr double kReach = 3.0;
inline constexpr double kReachCosine = 0.5;

/// Opens the nearest door of MERIDON_example that the avatar faces within reach, or shuts it if it is open; false
/// when there is none.
bool UseDoorInFront(game::entity::ServerSideEntity const& avatar);

}
