#include "engine/vk/Swapchain.h"

#include "engine/vk/Device.h"

#include <algorithm>
#include <stdexcept>

namespace quorl::vk {

namespace {

VkSurfaceFormatKHR ChooseFormat(VkPhysicalDevice gpu, VkSurfaceKHR surface) {
    uint32_t count = 0;
    Device::Check(vkGetPhysicalDeviceSurfaceFormatsKHR(gpu, surface, &count, nullptr),
        "vkGetPhysicalDeviceSurfaceFormatsKHR");
    std::vector<VkSurfaceFormatKHR> formats(count);
    Device::Check(vkGetPhysicalDeviceSurfaceFormatsKHR(gpu, surface, &count, formats.data()),
        "vkGetPhysicalDeviceSurfaceFormatsKHR");
    if (formats.empty())
        throw std::runtime_error("the surface offers no image format");
    auto const wanted = std::find_if(formats.begin(), formats.end(), [](VkSurfaceFormatKHR const& format) {
        return format.format == VK_FORMAT_B8G8R8A8_UNORM && format.colorSpace == VK_COLOR_SPACE_SRGB_NONLINEAR_KHR;
    });
    return wanted != formats.end() ? *wanted : formats.front();
}

/// FIFO waits for the display and is always there; without vsync the first of MAILBOX, IMMEDIATE that exists.
VkPresentModeKHR ChoosePresentMode(VkPhysicalDevice gpu, VkSurfaceKHR surface, bool vsync) {
    if (vsync)
        return VK_PRESENT_MODE_FIFO_KHR;
    uint32_t count = 0;
    Device::Check(vkGetPhysicalDeviceSurfacePresentModesKHR(gpu, surface, &count, nullptr),
        "vkGetPhysicalDeviceSurfacePresentModesKHR");
    std::vector<VkPresentModeKHR> modes(count);
    Device::Check(vkGetPhysicalDeviceSurfacePresentModesKHR(gpu, surface, &count, modes.data()),
        "vkGetPhysicalDeviceSurfacePresentModesKHR");
    for (VkPresentModeKHR mode : {VK_PRESENT_MODE_MAILBOX_KHR, VK_PRESENT_MODE_IMMEDIATE_KHR})
        if (std::find(modes.begin(), modes.end(), mode) != modes.end())
            return mode;
    return VK_PRESENT_MODE_FIFO_KHR;
}

/// Opaque where the compositor allows it: frames are drawn with alpha 1 but nothing guarantees it.
VkCompositeAlphaFlagBitsKHR ChooseCompositeAlpha(VkCompositeAlphaFlagsKHR supported) {
    for (VkCompositeAlphaFlagBitsKHR mode : {VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR, VK_COMPOSITE_ALPHA_INHERIT_BIT_KHR,
             VK_COMPOSITE_ALPHA_PRE_MULTIPLIED_BIT_KHR, VK_COMPOSITE_ALPHA_POST_MULTIPLIED_BIT_KHR})
        if (supported & mode)
            return mode;
    return VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
}

VkSurfaceCapabilitiesKHR Capabilities(Device* device, VkSurfaceKHR surface) {
    VkSurfaceCapabilitiesKHR capabilities{};
    Device::Check(vkGetPhysicalDeviceSurfaceCapabilitiesKHR(device->physicalDevice.handle, surface, &capabilities),
        "vkGetPhysicalDeviceSurfaceCapabilitiesKHR");
    return capabilities;
}

}

Swapchain::Swapchain(Device* device, VkSurfaceKHR surface, uint32_t width, uint32_t height, bool vsync,
    VkSwapchainKHR old)
    : device(device) {
    VkPhysicalDevice const gpu = device->physicalDevice.handle;
    VkBool32 presentable = VK_FALSE;
    Device::Check(vkGetPhysicalDeviceSurfaceSupportKHR(gpu, device->graphicsQueue.familyIndex, surface, &presentable),
        "vkGetPhysicalDeviceSurfaceSupportKHR");
    if (!presentable)
        throw std::runtime_error("the graphics queue cannot present to the window's surface");

    VkSurfaceCapabilitiesKHR const capabilities = Capabilities(device, surface);
    VkSurfaceFormatKHR const surfaceFormat = ChooseFormat(gpu, surface);
    format = surfaceFormat.format;

    // 0xFFFFFFFF: the surface takes the size of the swapchain, so the window's size is ours to give.
    if (capabilities.currentExtent.width != UINT32_MAX) {
        extent = capabilities.currentExtent;
    } else {
        extent.width = std::clamp(width, capabilities.minImageExtent.width, capabilities.maxImageExtent.width);
        extent.height = std::clamp(height, capabilities.minImageExtent.height, capabilities.maxImageExtent.height);
    }

    VkImageUsageFlags const required =
        VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;
    if ((capabilities.supportedUsageFlags & required) != required)
        throw std::runtime_error("the surface's images cannot be colour attachments and copy sources and targets");
    VkImageUsageFlags const usage = required | (capabilities.supportedUsageFlags & VK_IMAGE_USAGE_STORAGE_BIT);

    // One image more than the minimum, so that acquiring never waits on the presentation engine holding them all.
    uint32_t imageCount = capabilities.minImageCount + 1;
    if (capabilities.maxImageCount > 0)
        imageCount = std::min(imageCount, capabilities.maxImageCount);

    VkSwapchainCreateInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR;
    info.surface = surface;
    info.minImageCount = imageCount;
    info.imageFormat = surfaceFormat.format;
    info.imageColorSpace = surfaceFormat.colorSpace;
    info.imageExtent = extent;
    info.imageArrayLayers = 1;
    info.imageUsage = usage;
    info.imageSharingMode = VK_SHARING_MODE_EXCLUSIVE;
    info.preTransform = capabilities.currentTransform;
    info.compositeAlpha = ChooseCompositeAlpha(capabilities.supportedCompositeAlpha);
    info.presentMode = ChoosePresentMode(gpu, surface, vsync);
    info.clipped = VK_TRUE;
    info.oldSwapchain = old;
    Device::Check(vkCreateSwapchainKHR(device->handle, &info, nullptr, &swapchain), "vkCreateSwapchainKHR");

    uint32_t count = 0;
    Device::Check(vkGetSwapchainImagesKHR(device->handle, swapchain, &count, nullptr), "vkGetSwapchainImagesKHR");
    images.resize(count);
    Device::Check(vkGetSwapchainImagesKHR(device->handle, swapchain, &count, images.data()), "vkGetSwapchainImagesKHR");

    for (VkImage image : images) {
        VkImageViewCreateInfo viewInfo{};
        viewInfo.sType = VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO;
        viewInfo.image = image;
        viewInfo.viewType = VK_IMAGE_VIEW_TYPE_2D;
        viewInfo.format = format;
        viewInfo.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
        VkImageView view = VK_NULL_HANDLE;
        VkResult const result = vkCreateImageView(device->handle, &viewInfo, nullptr, &view);
        if (result != VK_SUCCESS) {
            Release();
            Device::Check(result, "vkCreateImageView");
        }
        views.push_back(view);
    }
}

Swapchain::~Swapchain() {
    Release();
}

void Swapchain::Release() {
    for (VkImageView view : views)
        vkDestroyImageView(device->handle, view, nullptr);
    views.clear();
    if (swapchain != VK_NULL_HANDLE)
        vkDestroySwapchainKHR(device->handle, swapchain, nullptr);
    swapchain = VK_NULL_HANDLE;
}

bool Swapchain::IsCurrentExtentValid(Device* device, VkSurfaceKHR surface) {
    VkSurfaceCapabilitiesKHR const capabilities = Capabilities(device, surface);
    return capabilities.currentExtent.width != 0 && capabilities.currentExtent.height != 0;
}

}
