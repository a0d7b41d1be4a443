#include "engine/vk/ImageView.h"

#include "engine/vk/Device.h"
#include "engine/vk/Image.h"

namespace quorl::vk {

namespace {

VkImageViewType ViewType(VkImageCreateInfo const& info) {
    switch (info.imageType) {
    case VK_IMAGE_TYPE_1D:
        return info.arrayLayers > 1 ? VK_IMAGE_VIEW_TYPE_1D_ARRAY : VK_IMAGE_VIEW_TYPE_1D;
    case VK_IMAGE_TYPE_3D:
        return VK_IMAGE_VIEW_TYPE_3D;
    default:
        return info.arrayLayers > 1 ? VK_IMAGE_VIEW_TYPE_2D_ARRAY : VK_IMAGE_VIEW_TYPE_2D;
    }
}

}

ImageView::ImageView(Image* image)
    : device(image->device) {
    // Shaders sample the depth of a depth-stencil image; a view may not show both aspects to them.
    VkImageAspectFlags aspects = Image::Aspects(image->info.format);
    if (aspects & VK_IMAGE_ASPECT_DEPTH_BIT) {
        aspects = VK_IMAGE_ASPECT_DEPTH_BIT;
    }
    VkImageViewCreateInfo const info{
        .sType = VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO,
        .pNext = nullptr,
        .flags = 0,
        .image = image->image,
        .viewType = ViewType(image->info),
        .format = image->info.format,
        .components = {},
        .subresourceRange = {aspects, 0, VK_REMAINING_MIP_LEVELS, 0, VK_REMAINING_ARRAY_LAYERS},
    };
    Device::Check(vkCreateImageView(device->handle, &info, nullptr, &view), "vkCreateImageView");
}

ImageView::~ImageView() {
    vkDestroyImageView(device->handle, view, nullptr);
}

}
