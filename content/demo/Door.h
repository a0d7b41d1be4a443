#pragma once

#include "game/entity/ServerSideEntity.h"

namespace demo {

/// Swings a door of MERIDON_example to `degrees` about its hinge, on the server thread; the leaf and its collider
/// follow at the next tick. 0 is shut, and the type's hinge stops at a quarter turn either way. A player's request to
/// open a door comes down to this call. Throws std::out_of_range for an entity without the door's hinge.
inline void SwingDoor(game::entity::ServerSideEntity& door, float degrees) {
    // The hinge turns about the file's Z axis, which is the game's up.
    door.joints.at("hinge").angular.z = degrees;
    door.nodes_dirty = true;
}

}
