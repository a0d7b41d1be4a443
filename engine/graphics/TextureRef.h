#pragma once

#include "engine/graphics/Texture.h"

#include <memory>

namespace quorl::graphics {

/// Textures are shared: the texture table and whoever made one keep it alive together.
using TextureRef = std::shared_ptr<Texture>;

}
