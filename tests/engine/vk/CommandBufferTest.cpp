#include "engine/vk/CommandBuffer.h"

#include "engine/vk/Device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

using quorl::vk::CommandBuffer;
using quorl::vk::Device;
using testing::HasSubstr;

namespace {

Device::CreateInfo Validated() {
    Device::CreateInfo info;
    info.validation = true;
    return info;
}

/// A small host-visible, coherent buffer to read results back, made with the bare API.
class HostBuffer {
public:
    HostBuffer(Device& device, VkDeviceSize size) : _device(device.handle) {
        VkBufferCreateInfo info{};
        info.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO;
        info.size = size;
        info.usage = VK_BUFFER_USAGE_TRANSFER_DST_BIT;
        Device::Check(vkCreateBuffer(_device, &info, nullptr, &buffer), "vkCreateBuffer");
        VkMemoryRequirements requirements;
        vkGetBufferMemoryRequirements(_device, buffer, &requirements);

        VkMemoryPropertyFlags const wanted = VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
        auto const& memory = device.physicalDevice.memoryProperties;
        VkMemoryAllocateInfo allocate{};
        allocate.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
        allocate.allocationSize = requirements.size;
        allocate.memoryTypeIndex = UINT32_MAX;
        for (uint32_t i = 0; i < memory.memoryTypeCount && allocate.memoryTypeIndex == UINT32_MAX; ++i) {
            if ((requirements.memoryTypeBits & (1u << i)) && (memory.memoryTypes[i].propertyFlags & wanted) == wanted) {
                allocate.memoryTypeIndex = i;
            }
        }
        Device::Check(vkAllocateMemory(_device, &allocate, nullptr, &_memory), "vkAllocateMemory");
        Device::Check(vkBindBufferMemory(_device, buffer, _memory, 0), "vkBindBufferMemory");
        Device::Check(vkMapMemory(_device, _memory, 0, VK_WHOLE_SIZE, 0, &_mapped), "vkMapMemory");
    }
    ~HostBuffer() {
        vkDestroyBuffer(_device, buffer, nullptr);
        vkFreeMemory(_device, _memory, nullptr);
    }

    uint32_t Word(unsigned index) const { return static_cast<uint32_t const*>(_mapped)[index]; }

    VkBuffer buffer = VK_NULL_HANDLE;

private:
    VkDevice _device;
    VkDeviceMemory _memory = VK_NULL_HANDLE;
    void* _mapped = nullptr;
};

TEST(CommandBufferTest, RunsTheRecordedCommandsBeforeReturning) {
    Device device(Validated());
    HostBuffer target(device, 64);
    CommandBuffer::Run(&device, device.graphicsQueue,
        [&](VkCommandBuffer commandBuffer) { vkCmdFillBuffer(commandBuffer, target.buffer, 16, 32, 0xC0FFEEu); },
        "fill test");

    EXPECT_EQ(target.Word(4), 0xC0FFEEu);
    EXPECT_EQ(target.Word(11), 0xC0FFEEu);
    EXPECT_EQ(device.ValidationMessageCount(), 0u);

    // The buffer went back to the pool: running again needs no more than the pool's own reuse.
    CommandBuffer::Run(&device, device.graphicsQueue, [](VkCommandBuffer) {}, "empty");
    EXPECT_EQ(device.ValidationMessageCount(), 0u);
}

TEST(CommandBufferTest, PassesOnWhatTheRecordingThrows) {
    Device device(Validated());
    EXPECT_THROW(CommandBuffer::Run(&device, device.graphicsQueue,
                     [](VkCommandBuffer) { throw std::runtime_error("recording failed"); }, "throwing"),
        std::runtime_error);
    CommandBuffer::Run(&device, device.graphicsQueue, [](VkCommandBuffer) {}, "after the throw");
    EXPECT_EQ(device.ValidationMessageCount(), 0u);
}

TEST(CommandBufferTest, AMisuseOfTheApiIsCounted) {
    Device device(Validated());
    HostBuffer target(device, 64);
    // Fill offsets must be multiples of 4; the layer reports the call and keeps it from the driver.
    CommandBuffer::Run(&device, device.graphicsQueue,
        [&](VkCommandBuffer commandBuffer) { vkCmdFillBuffer(commandBuffer, target.buffer, 2, 32, 0); }, "misuse");
    EXPECT_GT(device.ValidationMessageCount(), 0u);
}

}
