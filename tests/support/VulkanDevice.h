#pragma once

#include "engine/vk/Buffer.h"
#include "engine/vk/CommandBuffer.h"
#include "engine/vk/Device.h"
#include "engine/vk/Image.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <vector>

/// What the tests create their devices with: the validation layer on, and `features` asked for.
inline quorl::vk::Device::CreateInfo ValidatedDevice(quorl::vk::PhysicalDevice::Features const& features = {}) {
    quorl::vk::Device::CreateInfo info;
    info.validation = true;
    info.features = features;
    return info;
}

/// A 2D image of one sample, mip level and layer, optimally tiled, starting UNDEFINED.
inline VkImageCreateInfo ImageInfo2D(VkFormat format, VkImageUsageFlags usage, uint32_t width, uint32_t height) {
    return {.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO, .pNext = nullptr, .flags = 0, .imageType = VK_IMAGE_TYPE_2D,
        .format = format, .extent = {width, height, 1}, .mipLevels = 1, .arrayLayers = 1,
        .samples = VK_SAMPLE_COUNT_1_BIT, .tiling = VK_IMAGE_TILING_OPTIMAL, .usage = usage,
        .sharingMode = VK_SHARING_MODE_EXCLUSIVE, .queueFamilyIndexCount = 0, .pQueueFamilyIndices = nullptr,
        .initialLayout = VK_IMAGE_LAYOUT_UNDEFINED};
}

/// The bytes of a colour image of 4 bytes a pixel, as the GPU holds them; the image is left in `layout`, the layout
/// it is in now (one that it may be moved out of: not UNDEFINED).
inline std::vector<unsigned char> ReadImage(
    quorl::vk::Device* device, VkImage image, VkImageLayout layout, uint32_t width, uint32_t height) {
    size_t const size = size_t{width} * height * 4;
    quorl::vk::Buffer buffer(device, VMA_MEMORY_USAGE_AUTO_PREFER_HOST, VK_BUFFER_USAGE_TRANSFER_DST_BIT, size,
        VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT);
    quorl::vk::CommandBuffer::Run(device, device->graphicsQueue, [&](VkCommandBuffer commandBuffer) {
        auto const transition = [&](VkImageLayout from, VkImageLayout to) {
            quorl::vk::Image::Transition(commandBuffer, image, VK_IMAGE_ASPECT_COLOR_BIT, from, to);
        };
        // Copies read their source in TRANSFER_SRC_OPTIMAL, the layout the validation layer expects of them.
        transition(layout, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL);
        VkBufferImageCopy region{};
        region.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
        region.imageExtent = {width, height, 1};
        vkCmdCopyImageToBuffer(commandBuffer, image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, buffer.buffer, 1, &region);
        transition(VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, layout);
        VkMemoryBarrier const toHost{
            VK_STRUCTURE_TYPE_MEMORY_BARRIER, nullptr, VK_ACCESS_TRANSFER_WRITE_BIT, VK_ACCESS_HOST_READ_BIT};
        vkCmdPipelineBarrier(commandBuffer, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_HOST_BIT, 0, 1, &toHost,
            0, nullptr, 0, nullptr);
    }, "test read-back");
    std::vector<unsigned char> pixels(size);
    std::memcpy(pixels.data(), buffer.Map(), size);
    buffer.Unmap();
    return pixels;
}

/// A validated device on the machine's GPU (lavapipe where there is none). Any validation message fails the test,
/// those of destroying the derived fixture's objects included: the check runs after they are gone.
class VulkanDeviceTest : public testing::Test {
protected:
    explicit VulkanDeviceTest(quorl::vk::PhysicalDevice::Features const& features = {})
        : device(std::make_unique<quorl::vk::Device>(ValidatedDevice(features))) {}
    ~VulkanDeviceTest() override { EXPECT_EQ(device->ValidationMessageCount(), 0u); }

    /// Records `record` into a one-shot command buffer and waits for it.
    void Run(std::function<void(VkCommandBuffer)>&& record) {
        quorl::vk::CommandBuffer::Run(device.get(), device->graphicsQueue, std::move(record), "test commands");
    }

    /// The pixels of a texture (anything with an `image`, its `layout`, `width` and `height`), as ReadImage.
    template <class Texture>
    std::vector<unsigned char> ReadBack(Texture const& texture) {
        return ReadImage(device.get(), texture.image->image, texture.layout, texture.width, texture.height);
    }

    std::unique_ptr<quorl::vk::Device> device;
};
