#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

#include <vector>

namespace quorl::vk {

class Device;

/// The descriptor set layouts (set 0 first) and push constant ranges that a pipeline's shaders use.
class QUORL_EXPORT PipelineLayout {
public:
    /// Throws std::runtime_error when the layout cannot be made.
    PipelineLayout(Device* device, std::vector<VkDescriptorSetLayout> const& setLayouts,
        std::vector<VkPushConstantRange> const& pushConstantRanges);
    ~PipelineLayout();
    PipelineLayout(PipelineLayout const&) = delete;
    PipelineLayout& operator=(PipelineLayout const&) = delete;

    Device* device;
    VkPipelineLayout layout = VK_NULL_HANDLE;
};

}
