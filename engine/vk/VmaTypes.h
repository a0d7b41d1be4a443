#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>

// Vulkan Memory Allocator is not part of our platform, but the game and its modules speak its vocabulary when they ask
// for memory. These are its names and numbers, served by quorl::vk::MemoryAllocator.

enum VmaMemoryUsage {
    VMA_MEMORY_USAGE_UNKNOWN = 0,
    VMA_MEMORY_USAGE_GPU_ONLY = 1,
    VMA_MEMORY_USAGE_CPU_ONLY = 2,
    VMA_MEMORY_USAGE_CPU_TO_GPU = 3,
    VMA_MEMORY_USAGE_GPU_TO_CPU = 4,
    VMA_MEMORY_USAGE_CPU_COPY = 5,
    VMA_MEMORY_USAGE_GPU_LAZILY_ALLOCATED = 6,
    VMA_MEMORY_USAGE_AUTO = 7,
    VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE = 8,
    VMA_MEMORY_USAGE_AUTO_PREFER_HOST = 9,
};

enum VmaAllocationCreateFlagBits {
    VMA_ALLOCATION_CREATE_DEDICATED_MEMORY_BIT = 0x00000001,
    VMA_ALLOCATION_CREATE_MAPPED_BIT = 0x00000004,
    VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT = 0x00000400,
    VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT = 0x00000800,
};
using VmaAllocationCreateFlags = VkFlags;

struct VmaAllocationCreateInfo {
    VmaAllocationCreateFlags flags = 0;
    VmaMemoryUsage usage = VMA_MEMORY_USAGE_UNKNOWN;
    /// Properties the memory must have, on top of what the usage implies.
    VkMemoryPropertyFlags requiredFlags = 0;
    VkMemoryPropertyFlags preferredFlags = 0;
};

/// One sub-allocation (or dedicated allocation) handed out by quorl::vk::MemoryAllocator.
using VmaAllocation = struct VmaAllocation_T*;
