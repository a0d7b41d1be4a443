#include "engine/vk/CommandBuffer.h"

#include "tests/support/VulkanDevice.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

using quorl::vk::Buffer;
using quorl::vk::CommandBuffer;
using quorl::vk::Device;

namespace {

/// 64 bytes that transfers write and the host reads.
Buffer Target(Device* device) {
    return Buffer(device, VMA_MEMORY_USAGE_AUTO_PREFER_HOST, VK_BUFFER_USAGE_TRANSFER_DST_BIT, 64,
        VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT);
}

using CommandBufferTest = VulkanDeviceTest;

TEST_F(CommandBufferTest, RunsTheRecordedCommandsBeforeReturningAndPassesOnWhatTheRecordingThrows) {
    Buffer target = Target(device.get());
    CommandBuffer::Run(device.get(), device->graphicsQueue,
        [&](VkCommandBuffer commandBuffer) { vkCmdFillBuffer(commandBuffer, target.buffer, 16, 32, 0xC0FFEEu); },
        "fill test");
    auto const* words = static_cast<uint32_t const*>(target.Map());
    EXPECT_EQ(words[4], 0xC0FFEEu);
    EXPECT_EQ(words[11], 0xC0FFEEu);
    target.Unmap();

    EXPECT_THROW(CommandBuffer::Run(device.get(), device->graphicsQueue,
                     [](VkCommandBuffer) { throw std::runtime_error("recording failed"); }, "throwing"),
        std::runtime_error);
    // The buffers went back to the pool, the thrown one too: running again is clean.
    CommandBuffer::Run(device.get(), device->graphicsQueue, [](VkCommandBuffer) {}, "after the throw");
}

TEST(CommandBufferValidationTest, AMisuseOfTheApiIsCounted) {
    Device device(ValidatedDevice());
    Buffer target = Target(&device);
    // Fill offsets must be multiples of 4; the layer reports the call and keeps it from the driver.
    CommandBuffer::Run(&device, device.graphicsQueue,
        [&](VkCommandBuffer commandBuffer) { vkCmdFillBuffer(commandBuffer, target.buffer, 2, 32, 0); }, "misuse");
    EXPECT_GT(device.ValidationMessageCount(), 0u);
}

}
