#pragma once

#include "engine/graphics/Texture.h"
#include "engine/vk/Buffer.h"
#include "engine/vk/CommandBuffer.h"
#include "engine/vk/Device.h"

#include <gtest/gtest.h>
#include <stb_image_write.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

/// A validated lavapipe device for the texture tests: any validation message fails the test.
class TextureDeviceTest : public testing::Test {
protected:
    void SetUp() override {
        quorl::vk::Device::CreateInfo info;
        info.validation = true;
        device = std::make_unique<quorl::vk::Device>(info);
    }
    void TearDown() override { EXPECT_EQ(device->ValidationMessageCount(), 0u); }

    /// Records `record` and waits for it.
    void Run(std::function<void(VkCommandBuffer)>&& record) {
        quorl::vk::CommandBuffer::Run(device.get(), device->graphicsQueue, std::move(record), "TextureDeviceTest");
    }

    /// The texture's RGBA8 pixels as the GPU holds them; leaves it in its layout.
    std::vector<unsigned char> ReadBack(quorl::graphics::Texture const& texture) {
        size_t const size = static_cast<size_t>(texture.width) * texture.height * 4;
        quorl::vk::Buffer buffer(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST, VK_BUFFER_USAGE_TRANSFER_DST_BIT,
            size, VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT);
        Run([&](VkCommandBuffer commandBuffer) {
            texture.image->Transition(commandBuffer, texture.layout, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL);
            VkBufferImageCopy region{};
            region.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
            region.imageExtent = {texture.width, texture.height, 1};
            vkCmdCopyImageToBuffer(commandBuffer, texture.image->image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL,
                buffer.buffer, 1, &region);
            texture.image->Transition(commandBuffer, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, texture.layout);
        });
        std::vector<unsigned char> pixels(size);
        std::memcpy(pixels.data(), buffer.Map(), size);
        buffer.Unmap();
        return pixels;
    }

    std::unique_ptr<quorl::vk::Device> device;
};

/// RGBA8 pixels encoded as PNG in memory.
inline std::vector<unsigned char> EncodePng(int width, int height, std::vector<unsigned char> const& rgba) {
    std::vector<unsigned char> png;
    stbi_write_png_to_func(
        [](void* context, void* data, int size) {
            auto* bytes = static_cast<unsigned char*>(data);
            static_cast<std::vector<unsigned char>*>(context)->insert(
                static_cast<std::vector<unsigned char>*>(context)->end(), bytes, bytes + size);
        },
        &png, width, height, 4, rgba.data(), width * 4);
    return png;
}
