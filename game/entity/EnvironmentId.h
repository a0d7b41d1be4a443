#pragma once

#include <cstdint>

namespace game::entity {

/// Key of an environment query function in Game::_environmentFunctions; 0 means none.
using EnvironmentId = uint64_t;

}
