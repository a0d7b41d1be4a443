#pragma once

#include "game/Export.h"

namespace quorl::vk {
class Device;
}

namespace game::graphics {

/// The device of Game::renderer, where every GPU-facing record of the world is made. Throws std::logic_error in a
/// process without a renderer: a dedicated server has no client entities and so nothing to make.
MERIDON_EXPORT quorl::vk::Device* RenderDevice();

}
