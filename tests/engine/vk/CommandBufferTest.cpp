#include "engine/vk/CommandBuffer.h"

#include "tests/support/VulkanDevice.h"

#include <gtest/gtest.h>

#include <stdexcept>

using quorl::vk::Buffer;
using quorl::vk::CommandBuffer;
using quorl::vk::Device;

namespace {

using CommandBufferTest = VulkanDeviceTest;

// That Run has finished the commands when it returns is what every read-back of the device tests stands on.
TEST_F(CommandBufferTest, PassesOnWhatTheRecordingThrowsAndRunsCleanlyAfterwards) {
    EXPECT_THROW(CommandBuffer::Run(device.get(), device->graphicsQueue,
                     [](VkCommandBuffer) { throw std::runtime_error("recording failed"); }, "throwing"),
        std::runtime_error);
    // The buffers went back to the pool, the thrown one too: running again is clean.
    CommandBuffer::Run(device.get(), device->graphicsQueue, [](VkCommandBuffer) {}, "after the throw");
}

TEST(CommandBufferValidationTest, AMisuseOfTheApiIsCounted) {
    Device device(ValidatedDevice());
    Buffer target(&device, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, VK_BUFFER_USAGE_TRANSFER_DST_BIT, 64);
    // Fill offsets must be multiples of 4; the layer reports the call and keeps it from the driver.
    CommandBuffer::Run(&device, device.graphicsQueue,
        [&](VkCommandBuffer commandBuffer) { vkCmdFillBuffer(commandBuffer, target.buffer, 2, 32, 0); }, "misuse");
    EXPECT_GT(device.ValidationMessageCount(), 0u);
}

}
