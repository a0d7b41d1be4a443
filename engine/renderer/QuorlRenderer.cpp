#include "engine/renderer/QuorlRenderer.h"

#include <imgui.h>

namespace quorl::renderer {

QuorlRenderer::QuorlRenderer(graphics::Window* window, char const* name, unsigned int version,
    vk::PhysicalDevice::Features const& features, bool vsync, bool validation)
    : VulkanRenderer(window, name, version, features, vsync, validation)
    , _textures(std::make_unique<TextureTable>(device.get())) {
    frame.vsync = vsync;
}

QuorlRenderer::~QuorlRenderer() {
    // The table's set and textures may still be read by frames in flight.
    vkDeviceWaitIdle(device->handle);
}

uint32_t QuorlRenderer::AddTexture(graphics::TextureRef texture, VkSampler sampler) {
    return _textures->Add(std::move(texture), sampler);
}

uint32_t QuorlRenderer::AddTextures(std::vector<std::tuple<graphics::TextureRef, VkSampler>> const& textures) {
    return _textures->Add(textures);
}

void QuorlRenderer::ClearTextures() {
    _textures->Clear();
}

VkDescriptorSetLayout QuorlRenderer::GlobalDescriptorSetLayout() const {
    return _textures->layout;
}

VkDescriptorSet QuorlRenderer::GlobalDescriptorSet() const {
    return _textures->set;
}

void QuorlRenderer::RenderFrame() {
    if (!BeginFrame()) {
        ReCreateSwapchain();
        return;
    }
    // The set is not double-buffered: rewrite it only once no frame reads it.
    if (_textures->Dirty()) {
        vkDeviceWaitIdle(device->handle);
        _textures->Flush();
    }

    FrameCollectGarbage();
    FrameUpdateDescriptorSets();
    FrameBeforePost();
    FrameInit();
    FrameUpdateUi();
    FrameBeforeUpdate();
    FrameUpdate();
    FrameBeforeRender();
    FrameAfterRender();
    FrameAfterUpdate();

    EndFrame([this](VkCommandBuffer commandBuffer) {
        FramePushCommands(commandBuffer);
        FrameBuildCommands(commandBuffer);
        FrameRenderCommands(commandBuffer);
        FrameResolveCommands(commandBuffer);
        FrameBlitCommands(commandBuffer);
        FramePostCommands(commandBuffer);
        FrameOverlayCommands(commandBuffer);
    }, {}, {}, VK_NULL_HANDLE);
    ++frameNumber;
}

void QuorlRenderer::ReCreateSwapchain() {
    VulkanRenderer::ReCreateSwapchain();
    RefreshViewport();
}

void QuorlRenderer::UiShowAdvancedPerformanceMetrics() {
    if (!ImGui::Begin("Advanced Performance Metrics")) {
        ImGui::End();
        return;
    }
    ImGuiIO const& io = ImGui::GetIO();
    ImGui::Text("Frame %llu", static_cast<unsigned long long>(frameNumber));
    ImGui::Text("Frame time %.3f ms (%.1f FPS)", 1000.0f / io.Framerate, io.Framerate);
    ImGui::Text("Device memory %.1f MiB in %llu allocations",
        static_cast<double>(device->Allocator().DeviceBytes()) / (1024.0 * 1024.0),
        static_cast<unsigned long long>(device->Allocator().DeviceAllocationCount()));
    ImGui::Text("Textures %u / %u", _textures->size(), _textures->capacity);
    ImGui::End();
}

}
