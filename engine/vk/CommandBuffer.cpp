#include "engine/vk/CommandBuffer.h"

#include "engine/vk/Device.h"

#include <stdexcept>
#include <string>

namespace quorl::vk {

void CommandBuffer::Run(Device* device, Queue const& queue, std::function<void(VkCommandBuffer)>&& record,
    char const* name, unsigned long timeout) {
    VkCommandBufferAllocateInfo allocate{};
    allocate.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocate.commandPool = device->commandPool;
    allocate.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocate.commandBufferCount = 1;
    VkCommandBuffer commandBuffer = VK_NULL_HANDLE;
    {
        std::lock_guard lock(device->commandPoolMutex);
        Device::Check(vkAllocateCommandBuffers(device->handle, &allocate, &commandBuffer), "vkAllocateCommandBuffers");
    }
    VkFence fence = VK_NULL_HANDLE;
    auto release = [&] {
        if (fence != VK_NULL_HANDLE) {
            vkDestroyFence(device->handle, fence, nullptr);
        }
        std::lock_guard lock(device->commandPoolMutex);
        vkFreeCommandBuffers(device->handle, device->commandPool, 1, &commandBuffer);
    };
    try {
        device->SetDebugName(VK_OBJECT_TYPE_COMMAND_BUFFER, reinterpret_cast<uint64_t>(commandBuffer), name);

        VkCommandBufferBeginInfo begin{};
        begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
        begin.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
        Device::Check(vkBeginCommandBuffer(commandBuffer, &begin), "vkBeginCommandBuffer");
        record(commandBuffer);
        Device::Check(vkEndCommandBuffer(commandBuffer), "vkEndCommandBuffer");

        VkFenceCreateInfo fenceInfo{};
        fenceInfo.sType = VK_STRUCTURE_TYPE_FENCE_CREATE_INFO;
        Device::Check(vkCreateFence(device->handle, &fenceInfo, nullptr, &fence), "vkCreateFence");

        VkSubmitInfo submit{};
        submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
        submit.commandBufferCount = 1;
        submit.pCommandBuffers = &commandBuffer;
        VkResult submitted;
        {
            std::lock_guard lock(*queue.mutex);
            submitted = vkQueueSubmit(queue.handle, 1, &submit, fence);
        }
        if (submitted != VK_SUCCESS) {
            throw std::runtime_error(std::string(name) + ": submit failed: " + Device::ResultName(submitted));
        }
    } catch (...) {
        release();
        throw;
    }

    VkResult waited = vkWaitForFences(device->handle, 1, &fence, VK_TRUE, timeout);
    if (waited == VK_TIMEOUT) {
        // The device may still be running the commands: the buffer and the fence are left to it rather than freed
        // under its feet.
        throw std::runtime_error(std::string(name) + ": timed out");
    }
    release();
    Device::Check(waited, "vkWaitForFences");
}

}
