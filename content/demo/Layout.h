#pragma once

// What the demo seeds into a new world, and where: near the top of the planet (content/planet/Planet.h), where up is
// +y, within sight of the spawn point at (0, 0). A camera there looking east (+x) sees the crate pile, the door and
// the lamps within 20 m, the shore at x = 100 and the buoy out at sea; the glider starts behind it, 40 m up, and flies
// east over it.

namespace demo {

/// One entity of the demo: a type of MERIDON_example, where it starts and how.
struct Placement {
    char const* type;
    /// Its origin `altitude` metres above sea level over the point (x, z) (planet::AtAltitude), upright there.
    double x, z, altitude;
    /// Degrees about the local up, from its own +x facing east.
    double heading = 0.0;
    /// Upside down: a lamp made to hang from a ceiling, set on the ground, shines upwards.
    bool overturned = false;
    /// A moving body; the rest stand fixed where they are put.
    bool dynamic = true;
    /// Metres per second along its own +x at the start.
    double speed = 0.0;
};

/// Each type's origin is at its base, so an altitude a little above 0 sets a thing down on the land. Three crates
/// stand in a row, two fall on them across the gaps and one more on top, each a little apart and turned, so that
/// they topple. The door and the lamps stand fixed where they are put, the door turned to face the spawn point.
inline constexpr Placement kPlacements[] = {
    {.type = "crate", .x = 12.0, .z = -1.05, .altitude = 0.01},
    {.type = "crate", .x = 12.0, .z = 0.0, .altitude = 0.01, .heading = 4.0},
    {.type = "crate", .x = 12.05, .z = 1.05, .altitude = 0.01, .heading = -3.0},
    {.type = "crate", .x = 12.1, .z = -0.5, .altitude = 1.05, .heading = 10.0},
    {.type = "crate", .x = 11.9, .z = 0.6, .altitude = 1.1, .heading = -15.0},
    {.type = "crate", .x = 12.3, .z = 0.2, .altitude = 2.2, .heading = 30.0},
    {.type = "door", .x = 8.0, .z = -5.0, .altitude = 0.0, .heading = 90.0, .dynamic = false},
    {.type = "light_box", .x = 9.0, .z = 3.0, .altitude = 0.0, .overturned = true, .dynamic = false},
    {.type = "light_box", .x = 15.0, .z = -3.0, .altitude = 0.0, .overturned = true, .dynamic = false},
    {.type = "light_box", .x = 16.0, .z = 3.0, .altitude = 0.0, .overturned = true, .dynamic = false},
    {.type = "buoy", .x = 130.0, .z = 0.0, .altitude = -0.3},
    {.type = "glider", .x = -30.0, .z = 0.0, .altitude = 40.0, .speed = 28.0},
};

}
