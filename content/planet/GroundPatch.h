#pragma once

// The planet's ground around a place, as triangles: the land and sea floor, and the water over the ocean. Every
// vertex comes from the planet's environment function, the answers the physics collides with, so the ground that is
// drawn is the ground that is touched. Plain data, made on any thread; PlanetGround.cpp puts it on the GPU.

#include "game/physics/EnvironmentInfo.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <optional>
#include <vector>

namespace planet::ground {

/// Metres from a patch's centre to its edges, along its two tangent axes: the ground reaches the horizon of a
/// walker and of a low flight.
inline constexpr double kHalfWidth = 2000.0;
/// Cells from a patch's centre to an edge. Their width grows with the square of the distance from the centre: half
/// a metre under the camera, where the shore's step must look sharp, 60 m at the edge, where the curve of the
/// planet is all there is to see.
inline constexpr int kHalfCells = 64;
/// How far the ground under the camera may move from a patch's centre before a new patch is made: the cells within
/// it are at most 8 m wide.
inline constexpr double kRebuildDistance = 32.0;
/// How close a vertex found by bisection comes to the place where the environment's answer flips: on the face of
/// the shore's step, and where the water meets the shore.
inline constexpr double kBisectionTolerance = 0.001;
/// How far under sea level the water is looked for: the medium exactly at sea level is the air's.
inline constexpr double kWaterProbeDepth = 0.1;

/// Triangles counter-clockwise seen from above, one normal per vertex.
struct Surface {
    /// Relative to the patch's centre: single precision keeps millimetres within a few kilometres of it.
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<uint32_t> indices;
};

struct Patch {
    /// The ground under the camera when the patch was made, in the environment's world.
    glm::dvec3 centre{0.0};
    /// The land and the sea floor.
    Surface ground;
    /// Sea level over the ocean, cut at the shore.
    Surface water;
};

/// Where the ground lies under a position: its point and its outward normal.
struct GroundPoint {
    glm::dvec3 point;
    glm::dvec3 up;
};

/// The ground under `position`; nothing where the environment knows no up there (the planet's centre).
std::optional<GroundPoint> GroundUnder(game::physics::EnvironmentFunction const& environment,
    glm::dvec3 const& position);

/// The patch around the ground under `camera`; nothing where GroundUnder finds none.
std::optional<Patch> MakePatch(game::physics::EnvironmentFunction const& environment, glm::dvec3 const& camera);

}
