#pragma once

#include "engine/Export.h"
#include "engine/graphics/Texture.h"

namespace quorl::graphics {

class VulkanRenderer;

/// A storage image that compute shaders write and others sample, kept in VK_IMAGE_LAYOUT_GENERAL for its whole life.
class QUORL_EXPORT ComputeTexture : public Texture {
public:
    /// flags: the owner's options for the compute work that fills the texture, kept as given.
    ComputeTexture(VulkanRenderer* engine, unsigned width, unsigned height, VkFormat format, unsigned flags);

    /// Re-reads what the texture is computed from; nothing to re-read yet.
    void Reload();

    unsigned flags;
};

}
