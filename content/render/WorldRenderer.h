#pragma once

#include "DrawList.h"
#include "RenderStats.h"
#include "Shading.h"

#include "engine/vk/Buffer.h"
#include "engine/vk/GraphicsPipeline.h"
#include "engine/vk/Image.h"
#include "engine/vk/ImageView.h"
#include "engine/vk/PipelineLayout.h"
#include "engine/vk/Renderpass.h"

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace game::graphics {
class GameRenderer;
}

namespace render {

/// Draws the world into the frame image: a shadow map from the sun, then the sky, every visible instance's meshes,
/// and the glows of light boxes and plasma trails, all in one pass with a depth image of its own.
class WorldRenderer {
public:
    /// shaderFolder: where the module's compiled shaders lie, with a trailing "/". The device must be idle when the
    /// renderer goes, as StopRendering leaves it.
    WorldRenderer(game::graphics::GameRenderer& renderer, std::string const& shaderFolder);
    WorldRenderer(WorldRenderer const&) = delete;
    WorldRenderer& operator=(WorldRenderer const&) = delete;

    /// Remakes what follows the frame's size; the device is idle.
    void RefreshViewport();
    /// Records the frame into `commands`, which draws into the current frame image.
    void Record(VkCommandBuffer commands);

    RenderStats stats;

private:
    /// The frame's records in one mapped buffer: the frame, the lights, the draws, the instances.
    struct FrameSlot {
        std::shared_ptr<quorl::vk::Buffer> buffer;
        unsigned char* data = nullptr;
    };

    /// Where this frame's records lie.
    struct Addresses {
        uint64_t frame;
        uint64_t draws;
    };

    void CreateShadowMap();
    void CreateFrameTargets();
    void DestroyFrameTargets();
    Lighting LightingAtCamera() const;
    /// The slot's buffer, grown to `size` bytes when it is smaller.
    FrameSlot& SlotFor(size_t size);
    /// Writes what the shaders read this frame into the frame's slot.
    Addresses WriteRecords(glm::vec3 eye);
    /// One draw call per geometry: the meshes, or the glowing boxes; all their instances, or the near ones only.
    void DrawAll(VkCommandBuffer commands, Addresses const& at, bool glows, bool nearOnly);

    game::graphics::GameRenderer& _renderer;
    std::string _shaderFolder;
    DrawList _drawList;

    std::unique_ptr<quorl::vk::PipelineLayout> _layout;

    std::unique_ptr<quorl::vk::Image> _shadowImage;
    std::unique_ptr<quorl::vk::ImageView> _shadowView;
    std::unique_ptr<quorl::vk::Renderpass> _shadowPass;
    std::unique_ptr<quorl::vk::GraphicsPipeline> _shadowPipeline;
    /// The shadow map's depths, copied out each frame for the shaders to read by address.
    std::unique_ptr<quorl::vk::Buffer> _shadowTexels;

    std::unique_ptr<quorl::vk::Image> _depthImage;
    std::unique_ptr<quorl::vk::ImageView> _depthView;
    std::unique_ptr<quorl::vk::Renderpass> _pass;
    std::unique_ptr<quorl::vk::GraphicsPipeline> _skyPipeline;
    std::unique_ptr<quorl::vk::GraphicsPipeline> _meshPipeline;
    std::unique_ptr<quorl::vk::GraphicsPipeline> _glowPipeline;

    /// At least the renderer's frames in flight (two): a slot is written again only once its frame has finished.
    static constexpr size_t kFrameSlots = 3;
    std::array<FrameSlot, kFrameSlots> _slots;
    uint64_t _frames = 0;
};

}
