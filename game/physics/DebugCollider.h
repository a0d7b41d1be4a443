#pragma once

#include "game/entity/ConvexMeshCollider.h"

namespace game::physics {

/// A collider the physics debug view draws, with its transform in world space.
struct DebugCollider {
    game::entity::Id entity;
    game::entity::ConvexMeshCollider collider;
    /// The collider's body is asleep.
    bool asleep = false;
};

}
