#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <mutex>

namespace quorl::vk {

/// A device queue with the lock that every submission to it takes: Vulkan forbids two threads submitting to one queue
/// at once, and uploads, screenshots and frames all submit.
struct Queue {
    VkQueue handle = VK_NULL_HANDLE;
    uint32_t familyIndex = 0;
    std::mutex* mutex = nullptr;
};

}
