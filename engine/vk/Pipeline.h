#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

#include <vector>

namespace quorl::vk {

class Device;
class PipelineLayout;

/// A VkPipeline with the layout it was built for. Subclasses build `pipeline`; this destroys it.
class QUORL_EXPORT Pipeline {
public:
    /// layout: not owned; it must outlive the pipeline.
    Pipeline(Device* device, PipelineLayout* layout, VkPipelineBindPoint bindPoint);
    virtual ~Pipeline();
    Pipeline(Pipeline const&) = delete;
    Pipeline& operator=(Pipeline const&) = delete;

    /// Binds the pipeline, then `sets` as sets 0, 1, ... when there are any.
    void Bind(VkCommandBuffer commandBuffer, std::vector<VkDescriptorSet> const& sets);

    Device* device;
    PipelineLayout* layout;
    VkPipeline pipeline = VK_NULL_HANDLE;
    VkPipelineBindPoint bindPoint;
};

}
