#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

namespace quorl::vk {

class Device;

class QUORL_EXPORT Sampler {
public:
    Sampler(Device* device, VkSamplerCreateInfo const& info);
    ~Sampler();
    Sampler(Sampler const&) = delete;
    Sampler& operator=(Sampler const&) = delete;

    operator VkSampler() const { return sampler; }

    Device* device;
    VkSampler sampler = VK_NULL_HANDLE;
};

}
