#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

namespace quorl::vk {

class Device;
class Image;

/// A view of the whole image: colour aspect, or depth for depth formats.
class QUORL_EXPORT ImageView {
public:
    explicit ImageView(Image* image);
    ~ImageView();
    ImageView(ImageView const&) = delete;
    ImageView& operator=(ImageView const&) = delete;

    Device* device;
    VkImageView view = VK_NULL_HANDLE;
};

}
