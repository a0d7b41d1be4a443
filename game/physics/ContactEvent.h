#pragma once

#include "game/physics/Collision.h"

namespace game::entity { struct ConvexMeshCollider; }

namespace game::physics {

class DynamicRigidbody;

/// What a collider's on_contact function is told about one of its contacts, on the server thread during the
/// physics step. The function may change `collision` (a depth of zero cancels the response); its result says
/// whether the contact counts towards the body's rest.
struct ContactEvent {
    DynamicRigidbody& body;
    /// The collider whose function is called, in world space.
    game::entity::ConvexMeshCollider const& collider;
    /// The collider met, in world space; null for the terrain.
    game::entity::ConvexMeshCollider const* other;
    Collision& collision;
    /// The step's length in seconds.
    double h;
};

}
