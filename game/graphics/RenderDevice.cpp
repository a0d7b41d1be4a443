#include "game/graphics/RenderDevice.h"

#include "game/Game.h"
#include "game/graphics/GameRenderer.h"

#include <stdexcept>

namespace game::graphics {

quorl::vk::Device* RenderDevice() {
    if (!Game::renderer) {
        throw std::logic_error("GPU records need a renderer, and this process has none (Game::renderer is null)");
    }
    return Game::renderer->device.get();
}

}
