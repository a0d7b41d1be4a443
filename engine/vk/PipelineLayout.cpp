#include "engine/vk/PipelineLayout.h"

#include "engine/vk/Device.h"

namespace quorl::vk {

PipelineLayout::PipelineLayout(Device* device, std::vector<VkDescriptorSetLayout> const& setLayouts,
    std::vector<VkPushConstantRange> const& pushConstantRanges)
    : device(device) {
    VkPipelineLayoutCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    info.setLayoutCount = static_cast<uint32_t>(setLayouts.size());
    info.pSetLayouts = setLayouts.data();
    info.pushConstantRangeCount = static_cast<uint32_t>(pushConstantRanges.size());
    info.pPushConstantRanges = pushConstantRanges.data();
    Device::Check(vkCreatePipelineLayout(device->handle, &info, nullptr, &layout), "vkCreatePipelineLayout");
}

PipelineLayout::~PipelineLayout() {
    vkDestroyPipelineLayout(device->handle, layout, nullptr);
}

}
