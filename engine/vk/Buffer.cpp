#include "engine/vk/Buffer.h"

#include "engine/vk/Device.h"

#include <stdexcept>

namespace quorl::vk {

Buffer::Buffer(Device* device, VmaMemoryUsage memoryUsage, unsigned int usage, unsigned long size,
    unsigned int allocationFlags)
    : device(device)
    , size(size) {
    bool const addresses = device->enabledFeatures.vulkan12.bufferDeviceAddress;
    if (addresses) {
        usage |= VK_BUFFER_USAGE_SHADER_DEVICE_ADDRESS_BIT;
    }
    // Geometry is made as build input of acceleration structures wherever it lives; a device without them (a CPU
    // device, a GPU without ray tracing) would reject the bit, and draws the same data by other means.
    if (!device->enabledFeatures.accelerationStructure.accelerationStructure) {
        usage &= ~VK_BUFFER_USAGE_ACCELERATION_STRUCTURE_BUILD_INPUT_READ_ONLY_BIT_KHR;
    }
    VkBufferCreateInfo const info{
        .sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO,
        .pNext = nullptr,
        .flags = 0,
        .size = size,
        .usage = usage,
        .sharingMode = VK_SHARING_MODE_EXCLUSIVE,
        .queueFamilyIndexCount = 0,
        .pQueueFamilyIndices = nullptr,
    };
    Device::Check(vkCreateBuffer(device->handle, &info, nullptr, &buffer), "vkCreateBuffer");
    VkMemoryRequirements requirements;
    vkGetBufferMemoryRequirements(device->handle, buffer, &requirements);
    try {
        allocation = device->Allocator().Allocate(requirements, {.flags = allocationFlags, .usage = memoryUsage});
        Device::Check(vkBindBufferMemory(device->handle, buffer, allocation->memory, allocation->offset),
            "vkBindBufferMemory");
    } catch (...) {
        device->Allocator().Free(allocation);
        vkDestroyBuffer(device->handle, buffer, nullptr);
        throw;
    }
    if (addresses) {
        VkBufferDeviceAddressInfo const addressInfo{
            .sType = VK_STRUCTURE_TYPE_BUFFER_DEVICE_ADDRESS_INFO,
            .pNext = nullptr,
            .buffer = buffer,
        };
        address = vkGetBufferDeviceAddress(device->handle, &addressInfo);
    }
}

Buffer::~Buffer() {
    vkDestroyBuffer(device->handle, buffer, nullptr);
    device->Allocator().Free(allocation);
}

void* Buffer::Map() {
    if (!allocation->mapped) {
        throw std::runtime_error("Buffer is not host-visible");
    }
    return allocation->mapped;
}

// Host-visible memory stays mapped for the life of its block, so there is nothing to undo.
void Buffer::Unmap() {}

void Buffer::Flush() {
    if (!allocation->mapped
        || (device->Allocator().MemoryTypeFlags(allocation->memoryType) & VK_MEMORY_PROPERTY_HOST_COHERENT_BIT)) {
        return;
    }
    // The allocator starts and ends allocations in non-coherent memory on nonCoherentAtomSize boundaries, so the
    // allocation's own range is a valid flush range.
    VkMappedMemoryRange const range{
        .sType = VK_STRUCTURE_TYPE_MAPPED_MEMORY_RANGE,
        .pNext = nullptr,
        .memory = allocation->memory,
        .offset = allocation->offset,
        .size = allocation->size,
    };
    Device::Check(vkFlushMappedMemoryRanges(device->handle, 1, &range), "vkFlushMappedMemoryRanges");
}

}
