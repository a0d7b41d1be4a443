#include "engine/vk/GraphicsPipeline.h"

#include "engine/vk/Device.h"
#include "engine/vk/PipelineLayout.h"
#include "engine/vk/Renderpass.h"

#include <utility>
#include <vector>

namespace quorl::vk {

GraphicsPipeline::GraphicsPipeline(Device* device, PipelineLayout* layout, ShaderRef shader,
    Renderpass const* renderpass, unsigned subpass, GraphicsPipelineConfig const& config)
    : Pipeline(device, layout, VK_PIPELINE_BIND_POINT_GRAPHICS)
    , shader(std::move(shader))
    , subpass(subpass)
    , config(config) {
    VkViewport viewport{0.0f, 0.0f, static_cast<float>(renderpass->width), static_cast<float>(renderpass->height),
        0.0f, 1.0f};
    VkRect2D scissor{{0, 0}, {renderpass->width, renderpass->height}};
    VkPipelineViewportStateCreateInfo viewportState{};
    viewportState.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewportState.viewportCount = 1;
    viewportState.pViewports = &viewport;
    viewportState.scissorCount = 1;
    viewportState.pScissors = &scissor;
    Build(renderpass, viewportState);
    this->shader->AddPipeline(this);
}

GraphicsPipeline::~GraphicsPipeline() {
    shader->RemovePipeline(this);
}

void GraphicsPipeline::RefreshViewport(Renderpass const* renderpass,
    VkPipelineViewportStateCreateInfo const& viewportState) {
    vkDestroyPipeline(device->handle, pipeline, nullptr);
    pipeline = VK_NULL_HANDLE;
    Build(renderpass, viewportState);
}

void GraphicsPipeline::Draw(VkCommandBuffer commandBuffer, unsigned vertexCount, unsigned instanceCount) {
    vkCmdDraw(commandBuffer, vertexCount, instanceCount, 0, 0);
}

void GraphicsPipeline::Build(Renderpass const* renderpass, VkPipelineViewportStateCreateInfo const& viewportState) {
    std::vector<VkPipelineShaderStageCreateInfo> stages = shader->Stages();

    VkPipelineVertexInputStateCreateInfo vertexInput{};
    vertexInput.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
    VkPipelineInputAssemblyStateCreateInfo inputAssembly{};
    inputAssembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
    inputAssembly.topology = config.topology;

    VkPipelineRasterizationStateCreateInfo rasterization{};
    rasterization.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
    rasterization.polygonMode = config.polygonMode;
    rasterization.cullMode = config.cullMode;
    rasterization.frontFace = VK_FRONT_FACE_COUNTER_CLOCKWISE;
    rasterization.lineWidth = config.lineWidth;

    VkPipelineMultisampleStateCreateInfo multisample{};
    multisample.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
    multisample.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;

    VkPipelineDepthStencilStateCreateInfo depthStencil{};
    depthStencil.sType = VK_STRUCTURE_TYPE_PIPELINE_DEPTH_STENCIL_STATE_CREATE_INFO;
    depthStencil.depthTestEnable = config.depthTest;
    depthStencil.depthWriteEnable = config.depthTest;
    depthStencil.depthCompareOp = VK_COMPARE_OP_LESS_OR_EQUAL;

    VkPipelineColorBlendAttachmentState blend{};
    blend.blendEnable = config.alphaBlending;
    blend.srcColorBlendFactor = VK_BLEND_FACTOR_SRC_ALPHA;
    blend.dstColorBlendFactor = config.additiveBlending ? VK_BLEND_FACTOR_ONE : VK_BLEND_FACTOR_ONE_MINUS_SRC_ALPHA;
    blend.colorBlendOp = VK_BLEND_OP_ADD;
    blend.srcAlphaBlendFactor = VK_BLEND_FACTOR_SRC_ALPHA;
    blend.dstAlphaBlendFactor = VK_BLEND_FACTOR_ONE_MINUS_SRC_ALPHA;
    blend.alphaBlendOp = VK_BLEND_OP_ADD;
    blend.colorWriteMask = VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT | VK_COLOR_COMPONENT_B_BIT |
                           VK_COLOR_COMPONENT_A_BIT;
    VkPipelineColorBlendStateCreateInfo colourBlend{};
    colourBlend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    // A depth-only pass (a shadow map) has no colour attachment to blend.
    colourBlend.attachmentCount = renderpass->format == VK_FORMAT_UNDEFINED ? 0 : 1;
    colourBlend.pAttachments = &blend;

    VkGraphicsPipelineCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
    info.stageCount = static_cast<uint32_t>(stages.size());
    info.pStages = stages.data();
    info.pVertexInputState = &vertexInput;
    info.pInputAssemblyState = &inputAssembly;
    info.pViewportState = &viewportState;
    info.pRasterizationState = &rasterization;
    info.pMultisampleState = &multisample;
    info.pDepthStencilState = &depthStencil;
    info.pColorBlendState = &colourBlend;
    info.layout = layout->layout;
    info.renderPass = renderpass->renderPass;
    info.subpass = subpass;
    Device::Check(vkCreateGraphicsPipelines(device->handle, VK_NULL_HANDLE, 1, &info, nullptr, &pipeline),
        "vkCreateGraphicsPipelines");
}

}
