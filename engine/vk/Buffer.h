#pragma once

#include "engine/Export.h"
#include "engine/vk/VmaTypes.h"

#include <vulkan/vulkan_core.h>

#include <cstdint>

namespace quorl::vk {

class Device;

/// A VkBuffer with its memory. When the device has buffer device addresses, every buffer gets one, so that shaders
/// can read it through a pointer in a push constant.
class QUORL_EXPORT Buffer {
public:
    /// usage: VkBufferUsageFlags; allocationFlags: VmaAllocationCreateFlags. Throws std::runtime_error on failure.
    Buffer(Device* device, VmaMemoryUsage memoryUsage, unsigned int usage, unsigned long size,
        unsigned int allocationFlags = 0);
    ~Buffer();
    Buffer(Buffer const&) = delete;
    Buffer& operator=(Buffer const&) = delete;

    /// Host address of the buffer; throws std::runtime_error when its memory is not host-visible.
    void* Map();
    void Unmap();
    /// Makes host writes visible to the device where the memory is not coherent.
    void Flush();
    /// 0 when the device has no buffer device addresses.
    operator VkDeviceAddress() const { return address; }

    Device* device;
    VkBuffer buffer = VK_NULL_HANDLE;
    VmaAllocation allocation = nullptr;
    VkDeviceSize size;
    VkDeviceAddress address = 0;
};

/// `count` records of T in memory the host keeps mapped for the buffer's whole life, so that the host writes records
/// in place and shaders read them by device address. Made with std::make_shared, which puts it in its shared
/// pointer's control block. The defaults are the game's instance records: device memory where the host can write it
/// (resizable BAR), else host memory, written front to back.
template<typename T, VmaMemoryUsage memoryUsage = VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
    VmaAllocationCreateFlags flags = VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT>
class MappedBuffer : public Buffer {
public:
    /// usage: VkBufferUsageFlags. count must be at least 1.
    MappedBuffer(Device* device, VkBufferUsageFlags usage, unsigned long count)
        : Buffer(device, memoryUsage, usage, count * sizeof(T), flags)
        , count(count)
        , data(static_cast<T*>(Map())) {}

    T& operator[](unsigned long index) { return data[index]; }
    T* begin() { return data; }
    T* end() { return data + count; }

    unsigned long const count;
    T* const data;
};

}
