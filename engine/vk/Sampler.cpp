#include "engine/vk/Sampler.h"

#include "engine/vk/Device.h"

namespace quorl::vk {

Sampler::Sampler(Device* device, VkSamplerCreateInfo const& info)
    : device(device) {
    Device::Check(vkCreateSampler(device->handle, &info, nullptr, &sampler), "vkCreateSampler");
}

Sampler::~Sampler() {
    vkDestroySampler(device->handle, sampler, nullptr);
}

}
