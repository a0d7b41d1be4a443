#pragma once

#include "game/entity/EnvironmentId.h"
#include "game/physics/EnvironmentInfo.h"

#include <unordered_map>

namespace game::physics {

/// What a server physics tick takes from outside the entities, read once as the tick starts: below that point the
/// physics reads no global state, so a tick sees one environment table and one debug switch throughout.
struct TickInputs {
    /// Every environment an entity may name, by id; must outlive the tick.
    std::unordered_map<game::entity::EnvironmentId, EnvironmentFunction> const& environments;
    /// Gather the debug view: contact and force lines, and the colliders of every body.
    bool debug = false;
};

}
