// The frame stages: each runs the library's part and calls the module hook of the same name.

#include "game/graphics/GameRenderer.h"

#include "game/Game.h"
#include "game/GameSettings.h"
#include "game/Options.h"
#include "modules/GAME_Mod.h"

#include <glm/gtc/matrix_transform.hpp>
#include <glm/matrix.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>

namespace game::graphics {

namespace {

constexpr char const* originThresholdOption = "world_origin_reset_distance_threshold";

glm::dvec3 OriginOf(glm::dmat4 const& origin) {
    return glm::dvec3(origin[3]);
}

}

void GameRenderer::StartRendering() {
    QuorlRenderer::StartRendering();
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_StartRendering);
}

void GameRenderer::StopRendering() {
    vkDeviceWaitIdle(device->handle);
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_StopRendering);
    QuorlRenderer::StopRendering();
}

void GameRenderer::RefreshViewport() {
    overlayRenderPass->Destroy();
    overlayRenderPass->Create(device.get(), swapchain.format, swapchain.width, swapchain.height,
        overlayRenderPass->flags, nullptr, VK_ATTACHMENT_LOAD_OP_LOAD);
    VkViewport viewport{0.0f, 0.0f, float(swapchain.width), float(swapchain.height), 0.0f, 1.0f};
    VkRect2D scissor{{0, 0}, {swapchain.width, swapchain.height}};
    VkPipelineViewportStateCreateInfo viewportState{};
    viewportState.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewportState.viewportCount = 1;
    viewportState.pViewports = &viewport;
    viewportState.scissorCount = 1;
    viewportState.pScissors = &scissor;
    for (auto* pipeline : {crosshairPipeline.get(), physicsColliderPipeline.get(), physicsLinePipeline.get()})
        pipeline->RefreshViewport(overlayRenderPass.get(), viewportState);
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_RefreshViewport);
}

void GameRenderer::FrameCollectGarbage() {
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_FrameCollectGarbage);
    CollectTrash();
}

void GameRenderer::FrameUpdateDescriptorSets() {
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_FrameUpdateDescriptorSets);
}

void GameRenderer::FrameBeforePost() {
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_FrameBeforePost);
}

void GameRenderer::FrameInit() {
    if (Game::settings) {
        GameSettings& settings = *Game::settings;
        frame.vsync = settings.vsync;
        frame.renderScale = settings.render_scale;
        frame.upscalingSharpness = settings.upscaling_sharpness;
        frame.upscalingQuality = settings.upscaling_quality_setting;
        frame.brightness = settings.brightness;
        frame.contrast = settings.contrast;
        frame.gamma = settings.gamma;
        frame.fov = settings.fov;
        frame.minExposure = settings.min_exposure;
        frame.maxExposure = settings.max_exposure;
        std::transform(settings.upscaling_algo.begin(), settings.upscaling_algo.end(),
            settings.upscaling_algo.begin(), [](unsigned char c) { return std::toupper(c); });
        frame.upscalingAlgo = quorl::renderer::Upscaler::GetAlgoEnumFromStr(settings.upscaling_algo.c_str());
        frame.options = (settings.tone_mapping ? 1u : 0u) | (settings.taa ? 2u : 0u)
            | (upscaler.IsTemporal(frame.upscalingAlgo) ? 4u : 0u) | (moduleOptionFlag ? 8u : 0u)
            | (settings.dithering ? 16u : 0u);
        frame.devTools = settings.dev_tools;
    }

    // An absent option reads as +infinity: never positive-or-less, so only a stored value of 0 or below (or NaN)
    // makes the origin follow the camera exactly.
    double const tracking = Options::Get<double>(originThresholdOption, std::numeric_limits<double>::infinity());
    if (!(tracking > 0.0)) {
        worldOrigin = glm::translate(glm::dmat4(1.0), frame.cameraPosition);
        worldOriginChanged = 1;
    } else {
        glm::dvec3 const offset = glm::round(frame.cameraPosition - OriginOf(worldOrigin));
        glm::dvec3 const whole(double(int64_t(offset.x)), double(int64_t(offset.y)), double(int64_t(offset.z)));
        double const threshold = Options::Get<double>(originThresholdOption, 1000.0);
        if (glm::length(whole) > threshold) {
            worldOrigin[3] = glm::dvec4(glm::round(frame.cameraPosition), 1.0);
            worldOriginChanged = 1;
        } else {
            worldOriginChanged = 0;
        }
    }

    // Modules see worldOriginChanged here and may rebase their data.
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_FrameInit);

    if (worldOriginChanged) {
        glm::dvec3 const origin = OriginOf(worldOrigin);
        worldOriginX = int64_t(origin.x);
        worldOriginY = int64_t(origin.y);
        worldOriginZ = int64_t(origin.z);
        inverseWorldOrigin = glm::inverse(worldOrigin);
    }
    glm::dmat4 camera = frame.cameraMatrix;
    camera[3] = glm::dvec4(frame.cameraPosition, 1.0);
    frame.viewMatrix = glm::inverse(inverseWorldOrigin * camera);
}

void GameRenderer::FrameUpdateUi() {
    GAME_Mod::CallSortedHooks("ui", &GAME_Mod::Renderer_FrameUpdateUi);
}

void GameRenderer::FrameBeforeUpdate() {
    GAME_Mod::CallSortedHooks("update", &GAME_Mod::Renderer_FrameBeforeUpdate);
}

void GameRenderer::FrameUpdate() {
    GAME_Mod::CallSortedHooks("update", &GAME_Mod::Renderer_FrameUpdate);
}

void GameRenderer::FrameAfterUpdate() {
    GAME_Mod::CallSortedHooks("update", &GAME_Mod::Renderer_FrameAfterUpdate);
}

void GameRenderer::FrameBeforeRender() {
    GAME_Mod::CallSortedHooks("render", &GAME_Mod::Renderer_FrameBeforeRender);
}

void GameRenderer::FrameAfterRender() {
    GAME_Mod::CallSortedHooks("render", &GAME_Mod::Renderer_FrameAfterRender);
}

void GameRenderer::FramePushCommands(VkCommandBuffer commandBuffer) {
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_FramePushCommands, commandBuffer);
    std::lock_guard lock(pendingTexturesMutex);
    for (auto& texture : pendingTextures) {
        // Held by this list alone: nobody wants it any more, and the GPU may still read it.
        if (texture.use_count() == 1)
            Trash(std::move(texture));
        else
            texture->Push(commandBuffer);
    }
    pendingTextures.clear();
}

void GameRenderer::FrameBuildCommands(VkCommandBuffer commandBuffer) {
    GAME_Mod::CallHooks(&GAME_Mod::Renderer_FrameBuildCommands, commandBuffer);
}

void GameRenderer::FrameRenderCommands(VkCommandBuffer commandBuffer) {
    GAME_Mod::CallSortedHooks("render", &GAME_Mod::Renderer_FrameRenderCommands, commandBuffer);
}

void GameRenderer::FrameResolveCommands(VkCommandBuffer commandBuffer) {
    GAME_Mod::CallSortedHooks("post", &GAME_Mod::Renderer_FrameResolveCommands, commandBuffer);
}

void GameRenderer::FrameBlitCommands(VkCommandBuffer commandBuffer) {
    GAME_Mod::CallSortedHooks("post", &GAME_Mod::Renderer_FrameBlitCommands, commandBuffer);
}

void GameRenderer::FramePostCommands(VkCommandBuffer commandBuffer) {
    GAME_Mod::CallSortedHooks("post", &GAME_Mod::Renderer_FramePostCommands, commandBuffer);
}

void GameRenderer::FrameOverlayCommands(VkCommandBuffer commandBuffer) {
    GAME_Mod::CallSortedHooks("overlay", &GAME_Mod::Renderer_FrameOverlayCommands, commandBuffer);
    overlayRenderPass->Begin(commandBuffer, {swapchain.imageViews[swapchainImageIndex]}, {},
        VK_SUBPASS_CONTENTS_INLINE);
    // A free mouse shows no crosshair.
    if (Game::uiVisible && Game::MouseLook()) {
        crosshairPipeline->Bind(commandBuffer, {});
        crosshairPipeline->Draw(commandBuffer, 1, 1);
    }
    overlayRenderPass->End(commandBuffer);
}

}
