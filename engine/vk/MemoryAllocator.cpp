#include "engine/vk/MemoryAllocator.h"

#include "engine/vk/Device.h"

#include <algorithm>
#include <bit>
#include <map>
#include <optional>
#include <stdexcept>

namespace quorl::vk {

namespace {

VkDeviceSize AlignUp(VkDeviceSize value, VkDeviceSize alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

struct TypeWishes {
    VkMemoryPropertyFlags required;
    VkMemoryPropertyFlags preferred;
    VkMemoryPropertyFlags unwanted;
};

TypeWishes WishesFor(VmaAllocationCreateInfo const& info) {
    TypeWishes wishes{info.requiredFlags, info.preferredFlags, 0};
    bool const randomAccess = info.flags & VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT;
    bool const sequentialWrite = info.flags & VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT;
    switch (info.usage) {
    case VMA_MEMORY_USAGE_UNKNOWN:
        break;
    case VMA_MEMORY_USAGE_GPU_ONLY:
        wishes.preferred |= VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT;
        break;
    case VMA_MEMORY_USAGE_CPU_ONLY:
        wishes.required |= VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
        break;
    case VMA_MEMORY_USAGE_CPU_TO_GPU:
        wishes.required |= VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT;
        wishes.preferred |= VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT;
        break;
    case VMA_MEMORY_USAGE_GPU_TO_CPU:
        wishes.required |= VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT;
        wishes.preferred |= VK_MEMORY_PROPERTY_HOST_CACHED_BIT;
        break;
    case VMA_MEMORY_USAGE_CPU_COPY:
        wishes.unwanted |= VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT;
        break;
    case VMA_MEMORY_USAGE_GPU_LAZILY_ALLOCATED:
        wishes.required |= VK_MEMORY_PROPERTY_LAZILY_ALLOCATED_BIT;
        break;
    case VMA_MEMORY_USAGE_AUTO:
    case VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE:
    case VMA_MEMORY_USAGE_AUTO_PREFER_HOST:
        if (info.usage == VMA_MEMORY_USAGE_AUTO_PREFER_HOST) {
            wishes.required |= VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT;
            wishes.unwanted |= VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT;
        } else {
            wishes.preferred |= VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT;
            if (randomAccess || sequentialWrite) {
                wishes.required |= VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT;
            }
        }
        // Reads from the host want its caches; streamed writes go fastest through write-combined, uncached memory.
        if (randomAccess) {
            wishes.preferred |= VK_MEMORY_PROPERTY_HOST_CACHED_BIT;
        } else if (sequentialWrite) {
            wishes.preferred |= VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
            wishes.unwanted |= VK_MEMORY_PROPERTY_HOST_CACHED_BIT;
        }
        break;
    }
    // AMD's device-coherent memory is slow and meant for crash markers: only those who ask for it get it.
    wishes.unwanted |= (VK_MEMORY_PROPERTY_DEVICE_COHERENT_BIT_AMD | VK_MEMORY_PROPERTY_DEVICE_UNCACHED_BIT_AMD)
        & ~(wishes.required | wishes.preferred);
    return wishes;
}

}

// ---------------------------------------------------------------------------------------------------------------------
// Blocks: one VkDeviceMemory cut into allocations by a first-fit free list
// ---------------------------------------------------------------------------------------------------------------------

struct MemoryAllocator::Block {
    VkDeviceMemory memory = VK_NULL_HANDLE;
    VkDeviceSize size = 0;
    uint32_t memoryType = 0;
    /// Buffers and linear images, or optimal images; an empty block takes whichever comes next.
    bool linear = true;
    void* mapped = nullptr;
    uint32_t allocations = 0;
    /// Free ranges, offset to size; never two adjacent ones, as Give merges them.
    std::map<VkDeviceSize, VkDeviceSize> free;

    /// Cuts `bytes` from the first free range they fit in; returns the range's start and the aligned offset. The
    /// padding between them goes with the allocation: left behind as slivers, it would lengthen every later search.
    std::optional<std::pair<VkDeviceSize, VkDeviceSize>> Take(VkDeviceSize bytes, VkDeviceSize alignment) {
        for (auto it = free.begin(); it != free.end(); ++it) {
            auto const [start, length] = *it;
            VkDeviceSize const offset = AlignUp(start, alignment);
            if (offset + bytes > start + length) {
                continue;
            }
            free.erase(it);
            if (offset + bytes < start + length) {
                free.emplace(offset + bytes, start + length - offset - bytes);
            }
            ++allocations;
            return std::pair(start, offset);
        }
        return std::nullopt;
    }

    void Give(VkDeviceSize offset, VkDeviceSize bytes) {
        auto it = free.emplace(offset, bytes).first;
        if (auto next = std::next(it); next != free.end() && offset + bytes == next->first) {
            it->second += next->second;
            free.erase(next);
        }
        if (it != free.begin()) {
            if (auto previous = std::prev(it); previous->first + previous->second == offset) {
                previous->second += it->second;
                free.erase(it);
            }
        }
        --allocations;
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// Memory types
// ---------------------------------------------------------------------------------------------------------------------

uint32_t MemoryAllocator::FindMemoryType(
    VkPhysicalDeviceMemoryProperties const& properties, uint32_t typeBits, VmaAllocationCreateInfo const& info) {
    TypeWishes const wishes = WishesFor(info);
    std::optional<uint32_t> best;
    int bestCost = 0;
    for (uint32_t type = 0; type < properties.memoryTypeCount; ++type) {
        VkMemoryPropertyFlags const flags = properties.memoryTypes[type].propertyFlags;
        if (!(typeBits & (1u << type)) || (flags & wishes.required) != wishes.required) {
            continue;
        }
        int const cost = std::popcount(wishes.preferred & ~flags) + std::popcount(wishes.unwanted & flags);
        if (!best || cost < bestCost) {
            best = type;
            bestCost = cost;
        }
    }
    if (!best) {
        throw std::runtime_error("no memory type with properties " + std::to_string(wishes.required)
            + " among memory type bits " + std::to_string(typeBits));
    }
    return *best;
}

VkMemoryPropertyFlags MemoryAllocator::MemoryTypeFlags(uint32_t memoryType) const {
    return _properties.memoryTypes[memoryType].propertyFlags;
}

VkDeviceSize MemoryAllocator::BlockSize(uint32_t memoryType) const {
    VkDeviceSize const heap = _properties.memoryHeaps[_properties.memoryTypes[memoryType].heapIndex].size;
    return std::min(blockSize, heap / 8);
}

// ---------------------------------------------------------------------------------------------------------------------
// Device memory
// ---------------------------------------------------------------------------------------------------------------------

MemoryAllocator::MemoryAllocator(VkPhysicalDevice physicalDevice, VkDevice device, bool deviceAddresses)
    : _device(device)
    , _deviceAddresses(deviceAddresses) {
    vkGetPhysicalDeviceMemoryProperties(physicalDevice, &_properties);
    VkPhysicalDeviceProperties properties;
    vkGetPhysicalDeviceProperties(physicalDevice, &properties);
    _nonCoherentAtomSize = std::max<VkDeviceSize>(properties.limits.nonCoherentAtomSize, 1);
}

MemoryAllocator::~MemoryAllocator() {
    for (auto const& block : _blocks) {
        if (block) {
            vkFreeMemory(_device, block->memory, nullptr);
        }
    }
}

VkDeviceMemory MemoryAllocator::AllocateMemory(uint32_t memoryType, VkDeviceSize size, void** mapped) {
    // Any allocation may end up under a buffer with an address, and the flag costs nothing where none is taken.
    VkMemoryAllocateFlagsInfo const flagsInfo{
        .sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_FLAGS_INFO,
        .pNext = nullptr,
        .flags = VK_MEMORY_ALLOCATE_DEVICE_ADDRESS_BIT,
        .deviceMask = 0,
    };
    VkMemoryAllocateInfo const allocateInfo{
        .sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO,
        .pNext = _deviceAddresses ? &flagsInfo : nullptr,
        .allocationSize = size,
        .memoryTypeIndex = memoryType,
    };
    VkDeviceMemory memory = VK_NULL_HANDLE;
    Device::Check(vkAllocateMemory(_device, &allocateInfo, nullptr, &memory), "vkAllocateMemory");
    ++_deviceAllocations;
    *mapped = nullptr;
    if (MemoryTypeFlags(memoryType) & VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT) {
        if (VkResult const result = vkMapMemory(_device, memory, 0, VK_WHOLE_SIZE, 0, mapped); result != VK_SUCCESS) {
            vkFreeMemory(_device, memory, nullptr);
            Device::Check(result, "vkMapMemory");
        }
    }
    _deviceBytes += size;
    return memory;
}

VmaAllocation MemoryAllocator::AllocateDedicated(uint32_t memoryType, VkDeviceSize size) {
    auto allocation = std::make_unique<VmaAllocation_T>();
    allocation->memory = AllocateMemory(memoryType, size, &allocation->mapped);
    allocation->size = size;
    allocation->memoryType = memoryType;
    return allocation.release();
}

int32_t MemoryAllocator::NewBlock(uint32_t memoryType, bool linear) {
    auto block = std::make_unique<Block>();
    block->size = BlockSize(memoryType);
    block->memory = AllocateMemory(memoryType, block->size, &block->mapped);
    block->memoryType = memoryType;
    block->linear = linear;
    block->free.emplace(0, block->size);
    auto slot = std::find(_blocks.begin(), _blocks.end(), nullptr);
    if (slot == _blocks.end()) {
        slot = _blocks.insert(slot, nullptr);
    }
    *slot = std::move(block);
    return static_cast<int32_t>(slot - _blocks.begin());
}

void MemoryAllocator::ReleaseBlockIfSpare(int32_t index) {
    // The last block of a type stays, so that a level that frees and reloads everything does not pay for it again.
    Block const& block = *_blocks[index];
    bool const anotherOfType = std::any_of(_blocks.begin(), _blocks.end(), [&](auto const& other) {
        return other && other.get() != &block && other->memoryType == block.memoryType;
    });
    if (anotherOfType) {
        vkFreeMemory(_device, block.memory, nullptr);
        _deviceBytes -= block.size;
        _blocks[index].reset();
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Allocations
// ---------------------------------------------------------------------------------------------------------------------

VmaAllocation MemoryAllocator::Allocate(
    VkMemoryRequirements const& requirements, VmaAllocationCreateInfo const& info, bool linearResource) {
    std::lock_guard lock(_mutex);
    uint32_t const memoryType = FindMemoryType(_properties, requirements.memoryTypeBits, info);
    VkMemoryPropertyFlags const flags = MemoryTypeFlags(memoryType);
    VkDeviceSize size = requirements.size;
    VkDeviceSize alignment = std::max<VkDeviceSize>(requirements.alignment, 1);
    // Flushes work in whole atoms: an allocation that owns its atoms is flushed without touching its neighbours.
    if ((flags & VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT) && !(flags & VK_MEMORY_PROPERTY_HOST_COHERENT_BIT)) {
        alignment = std::max(alignment, _nonCoherentAtomSize);
        size = AlignUp(size, _nonCoherentAtomSize);
    }
    if ((info.flags & VMA_ALLOCATION_CREATE_DEDICATED_MEMORY_BIT) || size > BlockSize(memoryType) / 2) {
        return AllocateDedicated(memoryType, size);
    }

    // First fit over the blocks of the type that hold the same kind of resource, or nothing yet.
    std::optional<std::pair<VkDeviceSize, VkDeviceSize>> range;
    int32_t index = 0;
    for (; index < static_cast<int32_t>(_blocks.size()); ++index) {
        Block* block = _blocks[index].get();
        if (block && block->memoryType == memoryType && (block->linear == linearResource || block->allocations == 0)) {
            if ((range = block->Take(size, alignment))) {
                break;
            }
        }
    }
    if (!range) {
        index = NewBlock(memoryType, linearResource);
        range = _blocks[index]->Take(size, alignment);
    }
    auto const [start, offset] = *range;
    Block& block = *_blocks[index];
    block.linear = linearResource;

    auto allocation = std::make_unique<VmaAllocation_T>();
    allocation->memory = block.memory;
    allocation->offset = offset;
    allocation->size = size;
    allocation->padding = offset - start;
    allocation->mapped = block.mapped ? static_cast<char*>(block.mapped) + offset : nullptr;
    allocation->memoryType = memoryType;
    allocation->block = index;
    return allocation.release();
}

void MemoryAllocator::Free(VmaAllocation allocation) {
    if (!allocation) {
        return;
    }
    std::unique_ptr<VmaAllocation_T> const owned(allocation);
    std::lock_guard lock(_mutex);
    if (allocation->block < 0) {
        vkFreeMemory(_device, allocation->memory, nullptr);
        _deviceBytes -= allocation->size;
        return;
    }
    Block& block = *_blocks[allocation->block];
    block.Give(allocation->offset - allocation->padding, allocation->padding + allocation->size);
    if (block.allocations == 0) {
        ReleaseBlockIfSpare(allocation->block);
    }
}

uint64_t MemoryAllocator::DeviceAllocationCount() const {
    std::lock_guard lock(_mutex);
    return _deviceAllocations;
}

VkDeviceSize MemoryAllocator::DeviceBytes() const {
    std::lock_guard lock(_mutex);
    return _deviceBytes;
}

}
