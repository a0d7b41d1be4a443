#pragma once

#include "engine/Export.h"
#include "engine/vk/VmaTypes.h"

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct VmaAllocation_T {
    VkDeviceMemory memory = VK_NULL_HANDLE;
    VkDeviceSize offset = 0;
    VkDeviceSize size = 0;
    /// Bytes before `offset` that alignment cost; the allocation holds them and gives them back with itself.
    VkDeviceSize padding = 0;
    /// Host address of the allocation's first byte when its memory is host-visible (blocks stay mapped); else null.
    void* mapped = nullptr;
    uint32_t memoryType = 0;
    /// Index of the block it was cut from; -1 for a dedicated allocation.
    int32_t block = -1;
    std::string name;
};

namespace quorl::vk {

/// Sub-allocates device memory from large blocks, so that thousands of small buffers do not each cost one of the
/// device's few vkAllocateMemory calls. Picks memory types from VmaMemoryUsage and the host-access flags as VMA does:
/// prefer-device takes device-local memory (host-visible too when host access is asked), prefer-host takes
/// host-visible memory and cached memory for random access. Thread-safe.
class QUORL_EXPORT MemoryAllocator {
public:
    /// Largest block; smaller on heaps under eight times this size.
    static constexpr VkDeviceSize blockSize = 64ull << 20;

    /// deviceAddresses: the device has bufferDeviceAddress on, so memory must be allocated with
    /// VK_MEMORY_ALLOCATE_DEVICE_ADDRESS_BIT for buffers bound to it to have addresses.
    MemoryAllocator(VkPhysicalDevice physicalDevice, VkDevice device, bool deviceAddresses = false);
    ~MemoryAllocator();
    MemoryAllocator(MemoryAllocator const&) = delete;
    MemoryAllocator& operator=(MemoryAllocator const&) = delete;

    /// linearResource: false for optimal-tiling images, which never share a block with buffers, so that
    /// bufferImageGranularity cannot matter. Memory of its own with VMA_ALLOCATION_CREATE_DEDICATED_MEMORY_BIT or
    /// beyond half a block. Throws std::runtime_error when no memory type fits or the device is out
    /// of memory.
    VmaAllocation Allocate(VkMemoryRequirements const& requirements, VmaAllocationCreateInfo const& info,
        bool linearResource = true);
    /// Accepts null.
    void Free(VmaAllocation allocation);

    /// vkAllocateMemory calls made so far, blocks and dedicated allocations together.
    uint64_t DeviceAllocationCount() const;
    /// Bytes held from the device right now.
    VkDeviceSize DeviceBytes() const;
    /// Properties of memory type `memoryType`, such as an allocation's, to know whether it needs flushes.
    VkMemoryPropertyFlags MemoryTypeFlags(uint32_t memoryType) const;

    /// The memory type that VMA would pick among `typeBits` for `info`: every required property, then the fewest
    /// preferred properties missing and unwanted ones present, then the lowest index. Throws std::runtime_error when
    /// none has the required properties.
    static uint32_t FindMemoryType(
        VkPhysicalDeviceMemoryProperties const& properties, uint32_t typeBits, VmaAllocationCreateInfo const& info);

private:
    struct Block;

    VkDeviceSize BlockSize(uint32_t memoryType) const;
    VkDeviceMemory AllocateMemory(uint32_t memoryType, VkDeviceSize size, void** mapped);
    VmaAllocation AllocateDedicated(uint32_t memoryType, VkDeviceSize size);
    int32_t NewBlock(uint32_t memoryType, bool linear);
    void ReleaseBlockIfSpare(int32_t index);

    VkPhysicalDeviceMemoryProperties _properties{};
    VkDevice _device;
    bool _deviceAddresses;
    VkDeviceSize _nonCoherentAtomSize;
    mutable std::mutex _mutex;
    /// Indexed by VmaAllocation_T::block; freed blocks leave a null slot for the next block.
    std::vector<std::unique_ptr<Block>> _blocks;
    uint64_t _deviceAllocations = 0;
    VkDeviceSize _deviceBytes = 0;
};

}
