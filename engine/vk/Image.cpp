#include "engine/vk/Image.h"

#include "engine/vk/Device.h"

namespace quorl::vk {

Image::Image(Device* device, VmaMemoryUsage memoryUsage, VkImageCreateInfo const& info,
    VmaAllocationCreateInfo const& allocationInfo)
    : device(device)
    , info(info) {
    this->info.pNext = nullptr;
    this->info.queueFamilyIndexCount = 0;
    this->info.pQueueFamilyIndices = nullptr;
    Device::Check(vkCreateImage(device->handle, &info, nullptr, &image), "vkCreateImage");
    VkMemoryRequirements requirements;
    vkGetImageMemoryRequirements(device->handle, image, &requirements);
    VmaAllocationCreateInfo usageInfo = allocationInfo;
    usageInfo.usage = memoryUsage;
    try {
        allocation = device->Allocator().Allocate(requirements, usageInfo, info.tiling == VK_IMAGE_TILING_LINEAR);
        Device::Check(vkBindImageMemory(device->handle, image, allocation->memory, allocation->offset),
            "vkBindImageMemory");
    } catch (...) {
        device->Allocator().Free(allocation);
        vkDestroyImage(device->handle, image, nullptr);
        throw;
    }
}

Image::~Image() {
    vkDestroyImage(device->handle, image, nullptr);
    device->Allocator().Free(allocation);
}

void Image::Transition(VkCommandBuffer commandBuffer, VkImageLayout from, VkImageLayout to) const {
    Transition(commandBuffer, image, Aspects(info.format), from, to);
}

void Image::Transition(VkCommandBuffer commandBuffer, VkImage image, VkImageAspectFlags aspects, VkImageLayout from,
    VkImageLayout to) {
    VkImageMemoryBarrier const barrier{
        .sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER,
        .pNext = nullptr,
        .srcAccessMask = VK_ACCESS_MEMORY_WRITE_BIT,
        .dstAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT,
        .oldLayout = from,
        .newLayout = to,
        .srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .image = image,
        .subresourceRange = {aspects, 0, VK_REMAINING_MIP_LEVELS, 0, VK_REMAINING_ARRAY_LAYERS},
    };
    vkCmdPipelineBarrier(commandBuffer, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0,
        nullptr, 0, nullptr, 1, &barrier);
}

VkImageAspectFlags Image::Aspects(VkFormat format) {
    switch (format) {
    case VK_FORMAT_D16_UNORM:
    case VK_FORMAT_X8_D24_UNORM_PACK32:
    case VK_FORMAT_D32_SFLOAT:
        return VK_IMAGE_ASPECT_DEPTH_BIT;
    case VK_FORMAT_S8_UINT:
        return VK_IMAGE_ASPECT_STENCIL_BIT;
    case VK_FORMAT_D16_UNORM_S8_UINT:
    case VK_FORMAT_D24_UNORM_S8_UINT:
    case VK_FORMAT_D32_SFLOAT_S8_UINT:
        return VK_IMAGE_ASPECT_DEPTH_BIT | VK_IMAGE_ASPECT_STENCIL_BIT;
    default:
        return VK_IMAGE_ASPECT_COLOR_BIT;
    }
}

}
