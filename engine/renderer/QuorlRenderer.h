#pragma once

#include "engine/Export.h"
#include "engine/graphics/TextureRef.h"
#include "engine/graphics/VulkanRenderer.h"
#include "engine/renderer/TextureTable.h"
#include "engine/renderer/Upscaler.h"

#include <glm/glm.hpp>
#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <memory>
#include <tuple>
#include <vector>

namespace quorl::renderer {

/// The renderer that the game specialises: the texture table that shaders index, the per-frame state that the game
/// fills, and the frame itself, which calls the stage virtuals in a fixed order (RenderFrame). Every stage is empty
/// here: the game and its modules fill them.
class QUORL_EXPORT QuorlRenderer : public graphics::VulkanRenderer {
public:
    /// What a frame is drawn with; the game writes it in FrameInit.
    struct FrameState {
        bool vsync = true;
        float renderScale = 1.0f;
        float upscalingSharpness = 0.0f;
        int upscalingQuality = 0;
        float brightness = 1.0f;
        float contrast = 1.0f;
        float gamma = 1.0f;
        float fov = 80.0f;
        float minExposure = 0.0f;
        float maxExposure = 1.0f;
        Upscaler::UPSCALE_ALGO upscalingAlgo = Upscaler::UPSCALE_ALGO::AUTO;
        /// Bit 0 tone mapping, 1 TAA, 2 temporal upscaling, 3 a module's flag, 4 dithering.
        uint32_t options = 0;
        bool devTools = false;
        /// The camera in world space, double precision; its matrix has cameraPosition as translation.
        glm::dvec3 cameraPosition{0.0};
        glm::dmat4 cameraMatrix{1.0};
        /// World-to-view, relative to the floating origin.
        glm::dmat4 viewMatrix{1.0};
    };

    QuorlRenderer(graphics::Window* window, char const* name, unsigned int version,
        vk::PhysicalDevice::Features const& features, bool vsync, bool validation = false);
    ~QuorlRenderer() override;

    /// What a geometry's texture index holds until someone gives it a picture. Slot 0 holds the game's font atlas,
    /// which is never a monitor's picture, so index 0 means "no texture", as zero means "no override" in the
    /// instance records.
    static constexpr uint32_t kDefaultTextureIndex = 0;

    /// Registers a texture for shaders, which address it by the returned index. sampler may be VK_NULL_HANDLE for
    /// storage images.
    uint32_t AddTexture(graphics::TextureRef texture, VkSampler sampler);
    /// Registers textures at consecutive indices; returns the first.
    uint32_t AddTextures(std::vector<std::tuple<graphics::TextureRef, VkSampler>> const& textures);
    void ClearTextures();

    /// The set that shaders bind as set 0: the texture table.
    VkDescriptorSetLayout GlobalDescriptorSetLayout() const;
    VkDescriptorSet GlobalDescriptorSet() const;

    /// One frame: BeginFrame, then every stage in order (the command stages recorded into the frame's command
    /// buffer), then EndFrame. Re-creates the swapchain when it is out of date.
    void RenderFrame();

    /// ImGui window with frame timings and device memory.
    void UiShowAdvancedPerformanceMetrics();

    void ReCreateSwapchain() override;

    virtual void RefreshViewport() {}
    virtual void FrameCollectGarbage() {}
    virtual void FrameUpdateDescriptorSets() {}
    virtual void FrameBeforePost() {}
    virtual void FrameInit() {}
    virtual void FrameUpdateUi() {}
    virtual void FrameBeforeUpdate() {}
    virtual void FrameUpdate() {}
    virtual void FrameBeforeRender() {}
    virtual void FrameAfterRender() {}
    virtual void FrameAfterUpdate() {}
    virtual void FramePushCommands(VkCommandBuffer) {}
    virtual void FrameBuildCommands(VkCommandBuffer) {}
    virtual void FrameRenderCommands(VkCommandBuffer) {}
    virtual void FrameResolveCommands(VkCommandBuffer) {}
    virtual void FrameBlitCommands(VkCommandBuffer) {}
    virtual void FramePostCommands(VkCommandBuffer) {}
    virtual void FrameOverlayCommands(VkCommandBuffer) {}

    FrameState frame;
    Upscaler upscaler;
    /// Frames rendered so far: RenderFrame calls that reached EndFrame.
    uint64_t frameNumber = 0;

private:
    std::unique_ptr<TextureTable> _textures;
};

}
