#pragma once

#include "engine/Export.h"
#include "engine/vk/Queue.h"

#include <vulkan/vulkan_core.h>

#include <functional>

namespace quorl::vk {

class Device;

class QUORL_EXPORT CommandBuffer {
public:
    /// Records `record` into a one-shot command buffer named `name`, submits it to `queue` and waits up to `timeout`
    /// nanoseconds for it. Throws std::runtime_error naming `name` when submission fails or the wait times out.
    static void Run(Device* device, Queue const& queue, std::function<void(VkCommandBuffer)>&& record,
        char const* name, unsigned long timeout = 10'000'000'000ul);
};

}
