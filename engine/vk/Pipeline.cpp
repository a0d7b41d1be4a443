#include "engine/vk/Pipeline.h"

#include "engine/vk/Device.h"
#include "engine/vk/PipelineLayout.h"

namespace quorl::vk {

Pipeline::Pipeline(Device* device, PipelineLayout* layout, VkPipelineBindPoint bindPoint)
    : device(device)
    , layout(layout)
    , bindPoint(bindPoint) {}

Pipeline::~Pipeline() {
    vkDestroyPipeline(device->handle, pipeline, nullptr);
}

void Pipeline::Bind(VkCommandBuffer commandBuffer, std::vector<VkDescriptorSet> const& sets) {
    vkCmdBindPipeline(commandBuffer, bindPoint, pipeline);
    if (!sets.empty()) {
        vkCmdBindDescriptorSets(commandBuffer, bindPoint, layout->layout, 0, static_cast<uint32_t>(sets.size()),
            sets.data(), 0, nullptr);
    }
}

}
