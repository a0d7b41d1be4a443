#pragma once

#include "engine/graphics/Texture.h"
#include "engine/modular/ModuleID.h"
#include "engine/renderer/QuorlRenderer.h"
#include "engine/vk/Buffer.h"
#include "engine/vk/GraphicsPipeline.h"
#include "engine/vk/PipelineLayout.h"
#include "engine/vk/Renderpass.h"
#include "engine/vk/Sampler.h"
#include "game/Export.h"

#include <glm/mat4x4.hpp>
#include <vulkan/vulkan_core.h>

#include <any>
#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace game::graphics {

/// The game's renderer: turns every frame stage of the engine into the module hook of the same name, feeds the
/// settings into the frame, keeps the floating world origin, draws the overlay, and defers the destruction of what
/// the GPU may still read. Exactly one exists, as Game::renderer.
class MERIDON_EXPORT GameRenderer : public quorl::renderer::QuorlRenderer {
public:
    /// What a module wants back when the player aims at one of its instances.
    struct AimReference {
        quorl::modular::ModuleID moduleId;
        std::any data;
    };
    /// Written by the ray-tracing shaders: what lies under the crosshair.
    struct AimBuffer {
        uint8_t shaderData[12];
        uint32_t aimReferenceIndex;
        uint8_t hitData0[28];
        float distance;
        uint8_t hitData1[32];
        float monitorX;
        float monitorY;
        uint32_t monitorId;
        uint32_t reserved;
    };
    static_assert(sizeof(AimBuffer) == 96);
    struct Aim {
        AimReference reference{{}, 0};
        AimBuffer buffer{};
        uint64_t word = 0;
        std::shared_ptr<void> object;
        std::mutex mutex;
    };

    /// Builds everything the library draws with and picks the graphics preset (from the GPU's name on the first
    /// start). Validation layers follow `validation`.
    GameRenderer(quorl::graphics::Window* window, char const* name, unsigned int version,
        quorl::vk::PhysicalDevice::Features const& features, bool validation = false);
    ~GameRenderer() override;

    /// Hands over an object that the GPU may still read; it is released after one full further frame. Any thread.
    void Trash(std::shared_ptr<void> object);
    /// Releases what was trashed before the previous collection. Render thread only.
    void CollectTrash();
    void CollectAllTrash();

    /// Copies an image to a file through Texture::SaveFile; 0 for a format it does not know.
    int SaveImage(VkImage image, VkExtent2D extent, VkFormat format, VkImageLayout layout, std::string const& path,
        int quality, bool forceOpaque);
    /// A world-space size at a position, in screen pixels. fov 0 means the fov setting.
    double GetFixedBoundingSizeInScreenPixels(glm::dvec3 const& position, double size, double fov = 0.0);
    /// Under aimReferencesMutex; the index goes into the renderable's aim id.
    uint32_t AddAimReference(std::string const& moduleName, std::any data);
    /// Writes upscaling_quality_setting from graphics_preset.
    void ConfigureSettingsFromPreset();
    /// The preset for a GPU by its name: from the RTX model number, 3 when there is none.
    static int PresetForDeviceName(std::string const& deviceName);
    /// Forgets the world's instances, textures, aim and trash when a world is left; works on Game::renderer.
    static void Cleanup();

    void StartRendering() override;
    void StopRendering() override;
    void RefreshViewport() override;
    void FrameCollectGarbage() override;
    void FrameUpdateDescriptorSets() override;
    void FrameBeforePost() override;
    void FrameInit() override;
    void FrameUpdateUi() override;
    void FrameBeforeUpdate() override;
    void FrameUpdate() override;
    void FrameBeforeRender() override;
    void FrameAfterRender() override;
    void FrameAfterUpdate() override;
    void FramePushCommands(VkCommandBuffer commandBuffer) override;
    void FrameBuildCommands(VkCommandBuffer commandBuffer) override;
    void FrameRenderCommands(VkCommandBuffer commandBuffer) override;
    void FrameResolveCommands(VkCommandBuffer commandBuffer) override;
    void FrameBlitCommands(VkCommandBuffer commandBuffer) override;
    void FramePostCommands(VkCommandBuffer commandBuffer) override;
    void FrameOverlayCommands(VkCommandBuffer commandBuffer) override;

    static constexpr std::array<char const*, 8> presetNames{
        "Custom Graphics Settings (I want to tweak everything myself!)",
        "FAST FAST (I don't care about graphics at all, Just give me them frames!)",
        "Low quality (recommended for lower end RTX GPUs)",
        "Medium quality (recommended for most RTX GPUs)",
        "Good quality (recommended for high end RTX GPUs)",
        "High quality (only for RTX 4090)",
        "Ultra quality (that GPU is not out yet)",
        "ONE FPS (just make my computer beg for mercy)",
    };

    std::unique_ptr<quorl::vk::Renderpass> overlayRenderPass;
    std::unique_ptr<quorl::vk::Sampler> linearSampler;
    std::unique_ptr<quorl::vk::Sampler> nearestSampler;
    std::unique_ptr<quorl::vk::Sampler> defaultSampler;
    std::unique_ptr<quorl::vk::PipelineLayout> overlayPipelineLayout;
    std::vector<char const*> debugViewNames{"NONE"};

    glm::dmat4 worldOrigin{1.0};
    glm::dmat4 inverseWorldOrigin{1.0};
    int64_t worldOriginX = 0;
    int64_t worldOriginY = 0;
    int64_t worldOriginZ = 0;
    uint8_t worldOriginChanged = 0;
    /// Bit 3 of the frame's option bits; only modules set it.
    uint8_t moduleOptionFlag = 0;

    std::vector<std::shared_ptr<void>> trashIncoming;
    std::vector<std::shared_ptr<void>> trashOutgoing;
    std::mutex trashMutex;

    Aim aim;
    std::vector<AimReference> aimReferences;
    std::mutex aimReferencesMutex;

    std::vector<std::string> rcallShaders;
    std::mutex rcallShadersMutex;
    uint32_t defaultRcallShader = 0;

    std::vector<std::shared_ptr<quorl::graphics::Texture>> pendingTextures;
    std::mutex pendingTexturesMutex;

    std::unique_ptr<quorl::vk::GraphicsPipeline> crosshairPipeline;
    std::unique_ptr<quorl::vk::GraphicsPipeline> physicsColliderPipeline;
    std::unique_ptr<quorl::vk::GraphicsPipeline> physicsLinePipeline;

    uint32_t physicsDebugMaxColliders = 0;
    std::unique_ptr<quorl::vk::Buffer> physicsDebugVertexBuffer;
    std::unique_ptr<quorl::vk::Buffer> physicsDebugIndexBuffer;

private:
    void CreateOverlayPipelines();
    static quorl::vk::PhysicalDevice::Features WithOwnFeatures(quorl::vk::PhysicalDevice::Features const& features);
};

}
