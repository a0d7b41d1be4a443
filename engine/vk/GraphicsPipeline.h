#pragma once

#include "engine/Export.h"
#include "engine/vk/Pipeline.h"
#include "engine/vk/Shader.h"

#include <vulkan/vulkan_core.h>

namespace quorl::vk {

class Renderpass;

struct GraphicsPipelineConfig {
    /// Default VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST.
    VkPrimitiveTopology topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    /// Default on: colour = src * srcAlpha + dst * (1 - srcAlpha); alpha likewise.
    bool alphaBlending = true;
    /// Default off. On, with alphaBlending: colour = src * srcAlpha + dst, for glows that only add light.
    bool additiveBlending = false;
    /// Default off. On: test and write depth, nearer or equal passes (VK_COMPARE_OP_LESS_OR_EQUAL).
    bool depthTest = false;
    /// Default VK_CULL_MODE_NONE; front faces are counter-clockwise.
    VkCullModeFlags cullMode = VK_CULL_MODE_NONE;
    /// Default VK_POLYGON_MODE_FILL.
    VkPolygonMode polygonMode = VK_POLYGON_MODE_FILL;
    /// Default 1; other widths need the wideLines feature.
    float lineWidth = 1.0f;
};

/// A graphics pipeline without vertex input: shaders read their vertices from buffer device addresses or make them
/// from gl_VertexIndex. Viewport and scissor are baked in (the render pass's size), so a new size means
/// RefreshViewport.
class QUORL_EXPORT GraphicsPipeline : public Pipeline {
public:
    /// Throws std::runtime_error when the pipeline cannot be built.
    GraphicsPipeline(Device* device, PipelineLayout* layout, ShaderRef shader, Renderpass const* renderpass,
        unsigned subpass, GraphicsPipelineConfig const& config);
    ~GraphicsPipeline() override;

    /// Rebuilds the pipeline for `renderpass` with `viewportState` (viewports and scissors, used during this call
    /// only). The old pipeline is destroyed at once: no command buffer that uses it may still be pending.
    void RefreshViewport(Renderpass const* renderpass, VkPipelineViewportStateCreateInfo const& viewportState);
    void Draw(VkCommandBuffer commandBuffer, unsigned vertexCount, unsigned instanceCount);

    ShaderRef shader;
    unsigned subpass;
    GraphicsPipelineConfig config;

private:
    void Build(Renderpass const* renderpass, VkPipelineViewportStateCreateInfo const& viewportState);
};

}
