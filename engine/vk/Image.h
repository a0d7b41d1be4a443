#pragma once

#include "engine/Export.h"
#include "engine/vk/VmaTypes.h"

#include <vulkan/vulkan_core.h>

namespace quorl::vk {

class Device;

/// A VkImage with its memory; keeps its create info for views, barriers and copies.
class QUORL_EXPORT Image {
public:
    /// The memory usage argument wins over allocationInfo.usage. Throws std::runtime_error on failure.
    Image(Device* device, VmaMemoryUsage memoryUsage, VkImageCreateInfo const& info,
        VmaAllocationCreateInfo const& allocationInfo = {});
    ~Image();
    Image(Image const&) = delete;
    Image& operator=(Image const&) = delete;

    /// Records a full-image layout transition with a conservative barrier (all commands before, all after).
    void Transition(VkCommandBuffer commandBuffer, VkImageLayout from, VkImageLayout to) const;
    /// The same barrier for an image we did not make, such as a swapchain's.
    static void Transition(VkCommandBuffer commandBuffer, VkImage image, VkImageAspectFlags aspects,
        VkImageLayout from, VkImageLayout to);

    /// Every aspect that images of `format` have: colour, or depth and/or stencil.
    static VkImageAspectFlags Aspects(VkFormat format);

    Device* device;
    VkImage image = VK_NULL_HANDLE;
    VmaAllocation allocation = nullptr;
    /// As created, less pNext and the queue family list, which belong to the caller.
    VkImageCreateInfo info;
};

}
