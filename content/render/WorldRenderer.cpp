// The module's drawing, in the order of a frame:
//   1. gather: the visible instances grouped by geometry, the active lights, the sky at the camera;
//   2. records: everything the shaders read, written into this frame's slot of one mapped buffer;
//   3. shadow map: the meshes as the sun sees them, depth only, in a square around the camera;
//   4. frame: the sky over the whole image, then the meshes, then the glows, added to what lies behind them.

#include "WorldRenderer.h"

#include "Camera.h"

#include "engine/vk/CommandBuffer.h"
#include "engine/vk/Device.h"
#include "engine/vk/Shader.h"
#include "game/Game.h"
#include "game/graphics/GameRenderer.h"
#include "game/physics/EnvironmentInfo.h"

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/ext/matrix_transform.hpp>
#include <glm/matrix.hpp>

#include <chrono>
#include <cmath>
#include <cstring>
#include <vector>

namespace render {

namespace {

using quorl::vk::Device;

/// Texels a side of the shadow map, and the metres it covers around the camera and along the sun's rays.
constexpr uint32_t kShadowSize = 1024;
constexpr float kShadowHalfWidth = 32.0f;
constexpr float kShadowDepth = 400.0f;
/// What may cast a shadow into the map: instances whose origin lies within its corners' distance of the camera, and
/// a margin for their size. Larger things far away cast no shadow here.
constexpr float kShadowCasterReach = kShadowHalfWidth * 1.4143f + 16.0f;
constexpr VkFormat kDepthFormat = VK_FORMAT_D32_SFLOAT;

VkImageCreateInfo DepthImageInfo(uint32_t width, uint32_t height, VkImageUsageFlags usage) {
    VkImageCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = kDepthFormat;
    info.extent = {width, height, 1};
    info.mipLevels = 1;
    info.arrayLayers = 1;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.tiling = VK_IMAGE_TILING_OPTIMAL;
    info.usage = VK_IMAGE_USAGE_DEPTH_STENCIL_ATTACHMENT_BIT | usage;
    info.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
    return info;
}

/// A depth image in the general layout, where the engine's render passes keep every attachment.
std::unique_ptr<quorl::vk::Image> MakeDepthImage(Device* device, uint32_t width, uint32_t height,
    VkImageUsageFlags usage, char const* name) {
    auto image = std::make_unique<quorl::vk::Image>(device, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
        DepthImageInfo(width, height, usage));
    device->SetDebugName(VK_OBJECT_TYPE_IMAGE, reinterpret_cast<uint64_t>(image->image), name);
    quorl::vk::CommandBuffer::Run(device, device->graphicsQueue, [&](VkCommandBuffer commands) {
        image->Transition(commands, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
    }, "MERIDON_render depth layout");
    return image;
}

/// The sun's orthographic view of a square around the camera, depth 0 nearest the sun.
glm::mat4 SunViewProjection(glm::vec3 camera, glm::vec3 toSun) {
    glm::vec3 const side = std::abs(toSun.y) < 0.99f ? glm::vec3(0.0f, 1.0f, 0.0f) : glm::vec3(1.0f, 0.0f, 0.0f);
    glm::mat4 const view = glm::lookAtRH(camera + toSun * (kShadowDepth * 0.5f), camera, side);
    return glm::orthoRH_ZO(-kShadowHalfWidth, kShadowHalfWidth, -kShadowHalfWidth, kShadowHalfWidth, 0.0f,
               kShadowDepth) * view;
}

size_t AlignUp(size_t size, size_t alignment) {
    return (size + alignment - 1) / alignment * alignment;
}

}

// ---- Making and remaking ------------------------------------------------------------------------------------------

WorldRenderer::WorldRenderer(game::graphics::GameRenderer& renderer, std::string const& shaderFolder)
    : _renderer(renderer), _shaderFolder(shaderFolder) {
    Device* device = renderer.device.get();

    // Set 0 is the renderer's texture table, for monitor pictures. The shadow map is read by address, not through
    // a sampler of its own: the table may take every sampler a stage is allowed (lavapipe allows 32).
    VkPushConstantRange const push{VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT, 0,
        sizeof(PushConstants)};
    _layout = std::make_unique<quorl::vk::PipelineLayout>(device,
        std::vector<VkDescriptorSetLayout>{renderer.GlobalDescriptorSetLayout()},
        std::vector<VkPushConstantRange>{push});

    CreateShadowMap();
    CreateFrameTargets();
}

void WorldRenderer::CreateShadowMap() {
    Device* device = _renderer.device.get();
    _shadowImage = MakeDepthImage(device, kShadowSize, kShadowSize, VK_IMAGE_USAGE_TRANSFER_SRC_BIT,
        "MERIDON_render shadow map");
    _shadowTexels = std::make_unique<quorl::vk::Buffer>(device, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
        VK_BUFFER_USAGE_TRANSFER_DST_BIT | VK_BUFFER_USAGE_STORAGE_BUFFER_BIT,
        kShadowSize * kShadowSize * sizeof(float));
    device->SetDebugName(_shadowTexels->allocation, "MERIDON_render shadow texels");
    _shadowView = std::make_unique<quorl::vk::ImageView>(_shadowImage.get());
    _shadowPass = std::make_unique<quorl::vk::Renderpass>(device, VK_FORMAT_UNDEFINED, kShadowSize, kShadowSize, 0,
        _shadowImage.get(), VK_ATTACHMENT_LOAD_OP_CLEAR);
    quorl::vk::GraphicsPipelineConfig config;
    config.alphaBlending = false;
    config.depthTest = true;
    _shadowPipeline = std::make_unique<quorl::vk::GraphicsPipeline>(device, _layout.get(),
        quorl::vk::Shader::Load(device, _shaderFolder + "shadow"), _shadowPass.get(), 0, config);
}

void WorldRenderer::CreateFrameTargets() {
    Device* device = _renderer.device.get();
    auto const& target = _renderer.swapchain;
    _depthImage = MakeDepthImage(device, target.width, target.height, 0, "MERIDON_render depth");
    _depthView = std::make_unique<quorl::vk::ImageView>(_depthImage.get());
    _pass = std::make_unique<quorl::vk::Renderpass>(device, target.format, target.width, target.height, 0,
        _depthImage.get(), VK_ATTACHMENT_LOAD_OP_CLEAR);

    auto const pipeline = [&](char const* shader, bool depthTest, bool additive) {
        quorl::vk::GraphicsPipelineConfig config;
        config.alphaBlending = additive;
        config.additiveBlending = additive;
        config.depthTest = depthTest;
        return std::make_unique<quorl::vk::GraphicsPipeline>(device, _layout.get(),
            quorl::vk::Shader::Load(device, _shaderFolder + shader), _pass.get(), 0, config);
    };
    _skyPipeline = pipeline("sky", false, false);
    _meshPipeline = pipeline("mesh", true, false);
    _glowPipeline = pipeline("glow", true, true);
}

void WorldRenderer::DestroyFrameTargets() {
    _glowPipeline.reset();
    _meshPipeline.reset();
    _skyPipeline.reset();
    _pass.reset();
    _depthView.reset();
    _depthImage.reset();
}

void WorldRenderer::RefreshViewport() {
    DestroyFrameTargets();
    CreateFrameTargets();
}

// ---- Gathering ------------------------------------------------------------------------------------------------------

Lighting WorldRenderer::LightingAtCamera() const {
    auto const found = Game::_environmentFunctions.find(Game::parentEnvironmentId);
    // Without an environment the camera is in empty space, and the world's y is up.
    game::physics::EnvironmentInfo info;
    if (Game::parentEnvironmentId != 0 && found != Game::_environmentFunctions.end() && found->second)
        info = found->second(_renderer.frame.cameraPosition, game::ENVIRONMENT_BODY, 0.0);
    glm::dmat3 const local(info.transform);
    glm::vec3 const up(glm::normalize(local * glm::dvec3(0.0, 1.0, 0.0)));
    glm::vec3 const sun(glm::normalize(local * glm::dvec3(kSunInLocalFrame)));
    Lighting lighting = LightingFor(info.density, info.liquidDensity, up, sun);
    lighting.exposure = _renderer.frame.brightness;
    return lighting;
}

WorldRenderer::FrameSlot& WorldRenderer::SlotFor(size_t size) {
    FrameSlot& slot = _slots[_frames % kFrameSlots];
    if (!slot.buffer || slot.buffer->size < size) {
        // The slot's last frame has finished by now; through the trash all the same, like all the GPU reads.
        if (slot.buffer)
            _renderer.Trash(std::move(slot.buffer));
        slot.buffer = std::make_shared<quorl::vk::Buffer>(_renderer.device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
            VK_BUFFER_USAGE_STORAGE_BUFFER_BIT, size + size / 2,
            VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT);
        _renderer.device->SetDebugName(slot.buffer->allocation, "MERIDON_render frame records");
        slot.data = static_cast<unsigned char*>(slot.buffer->Map());
    }
    return slot;
}

// ---- Recording ------------------------------------------------------------------------------------------------------

WorldRenderer::Addresses WorldRenderer::WriteRecords(glm::vec3 eye) {
    auto const& frame = _renderer.frame;
    auto const& draws = _drawList.draws;
    auto const& instances = _drawList.instances;
    auto const& lights = _drawList.lights;
    size_t const lightsAt = sizeof(FrameRecord);
    size_t const drawsAt = AlignUp(lightsAt + lights.size() * sizeof(LightRecord), 16);
    size_t const instancesAt = AlignUp(drawsAt + draws.size() * sizeof(DrawRecord), 16);
    FrameSlot& slot = SlotFor(instancesAt + instances.size() * sizeof(InstanceRecord));
    uint64_t const base = slot.buffer->address;

    Lighting const lighting = LightingAtCamera();
    float const aspect = float(_renderer.swapchain.width) / float(_renderer.swapchain.height);
    FrameRecord record{};
    record.viewProjection = Projection(frame.fov, aspect) * glm::mat4(frame.viewMatrix);
    record.inverseViewProjection = glm::inverse(record.viewProjection);
    record.sunViewProjection = SunViewProjection(eye, lighting.sunDirection);
    record.camera = eye;
    record.exposure = lighting.exposure;
    record.sunDirection = lighting.sunDirection;
    record.shadowSize = kShadowSize;
    record.sunColor = lighting.sunColor;
    record.lightCount = uint32_t(lights.size());
    record.skyZenith = lighting.skyZenith;
    record.skyHorizon = lighting.skyHorizon;
    record.ground = lighting.ground;
    record.up = lighting.up;
    record.lights = base + lightsAt;
    record.instances = base + instancesAt;
    record.shadowMap = _shadowTexels->address;

    std::memcpy(slot.data, &record, sizeof(record));
    // An empty vector may hold no storage at all, and memcpy takes no null pointer even for no bytes.
    if (!lights.empty())
        std::memcpy(slot.data + lightsAt, lights.data(), lights.size() * sizeof(LightRecord));
    for (size_t i = 0; i < draws.size(); ++i)
        std::memcpy(slot.data + drawsAt + i * sizeof(DrawRecord), &draws[i].record, sizeof(DrawRecord));
    if (!instances.empty())
        std::memcpy(slot.data + instancesAt, instances.data(), instances.size() * sizeof(InstanceRecord));
    slot.buffer->Flush();
    return {base, base + drawsAt};
}

void WorldRenderer::Record(VkCommandBuffer commands) {
    auto const started = std::chrono::steady_clock::now();
    glm::vec3 const eye(glm::inverse(_renderer.frame.viewMatrix)[3]);
    _drawList.Gather(_renderer.inverseWorldOrigin, eye, kShadowCasterReach);
    Addresses const at = WriteRecords(eye);
    stats.drawCalls = 0;

    VkClearValue farthest{};
    farthest.depthStencil = {1.0f, 0};
    _shadowPass->Begin(commands, {_shadowView->view}, {farthest}, VK_SUBPASS_CONTENTS_INLINE);
    _shadowPipeline->Bind(commands, {});
    DrawAll(commands, at, false, true);
    _shadowPass->End(commands);
    // The render passes' own dependencies order this copy after the shadow pass and before the shaders that read it.
    VkBufferImageCopy region{};
    region.imageSubresource = {VK_IMAGE_ASPECT_DEPTH_BIT, 0, 0, 1};
    region.imageExtent = {kShadowSize, kShadowSize, 1};
    _renderer.vkCmdCopyImageToBuffer(commands, _shadowImage->image, VK_IMAGE_LAYOUT_GENERAL, _shadowTexels->buffer, 1,
        &region);

    VkClearValue black{};
    black.color = {{0.0f, 0.0f, 0.0f, 1.0f}};
    _pass->Begin(commands, {_renderer.swapchain.imageViews[_renderer.swapchainImageIndex], _depthView->view},
        {black, farthest}, VK_SUBPASS_CONTENTS_INLINE);
    std::vector<VkDescriptorSet> const sets{_renderer.GlobalDescriptorSet()};
    _skyPipeline->Bind(commands, sets);
    PushConstants const push{at.frame, 0};
    _renderer.vkCmdPushConstants(commands, _layout->layout, VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT,
        0, sizeof(push), &push);
    _renderer.vkCmdDraw(commands, 3, 1, 0, 0);
    ++stats.drawCalls;
    _meshPipeline->Bind(commands, sets);
    DrawAll(commands, at, false, false);
    _glowPipeline->Bind(commands, sets);
    DrawAll(commands, at, true, false);
    _pass->End(commands);

    ++_frames;
    stats.instances = uint32_t(_drawList.instances.size());
    stats.lights = uint32_t(_drawList.lights.size());
    stats.recordMilliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
}

void WorldRenderer::DrawAll(VkCommandBuffer commands, Addresses const& at, bool glows, bool nearOnly) {
    auto const& draws = _drawList.draws;
    for (size_t i = 0; i < draws.size(); ++i) {
        if ((draws[i].record.kind != DrawKind::kMesh) != glows)
            continue;
        PushConstants const push{at.frame, at.draws + i * sizeof(DrawRecord)};
        _renderer.vkCmdPushConstants(commands, _layout->layout,
            VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT, 0, sizeof(push), &push);
        uint32_t const count = nearOnly ? draws[i].nearCount : draws[i].instanceCount;
        if (count == 0)
            continue;
        _renderer.vkCmdDraw(commands, draws[i].vertexCount, count, 0, draws[i].firstInstance);
        ++stats.drawCalls;
    }
}

}
