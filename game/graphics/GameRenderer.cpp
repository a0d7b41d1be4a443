#include "game/graphics/GameRenderer.h"

#include "engine/vk/Shader.h"
#include "game/Game.h"
#include "game/GameSettings.h"
#include "game/graphics/LightSourceInstance.h"
#include "game/graphics/RenderableInstance.h"
#include "modules/GAME_Mod.h"

#include <iostream>
#include <regex>
#include <stdexcept>

namespace game::graphics {

namespace {

// The overlay pass draws over the finished frame, so it loads what is there.
constexpr unsigned int overlayRenderPassFlags = 27;
constexpr char const* fontAtlasPath = "game/graphics/ui/textures/monospace_font_atlas.png";

bool SettingsVsync() {
    return Game::settings ? Game::settings->vsync : true;
}

VkSamplerCreateInfo LinearClampSampler() {
    VkSamplerCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    info.magFilter = VK_FILTER_LINEAR;
    info.minFilter = VK_FILTER_LINEAR;
    info.mipmapMode = VK_SAMPLER_MIPMAP_MODE_LINEAR;
    info.addressModeU = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
    info.addressModeV = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
    info.addressModeW = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
    info.maxLod = VK_LOD_CLAMP_NONE;
    return info;
}

VkSamplerCreateInfo NearestRepeatSampler() {
    // An all-zero description: nearest filtering, repeat addressing.
    VkSamplerCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    return info;
}

}

quorl::vk::PhysicalDevice::Features GameRenderer::WithOwnFeatures(quorl::vk::PhysicalDevice::Features const& features) {
    // What the library's own shaders use; the device keeps the part of it that it supports.
    quorl::vk::PhysicalDevice::Features own;
    own.features2.features.largePoints = VK_TRUE;
    own.features2.features.wideLines = VK_TRUE;
    own.vulkan12.bufferDeviceAddress = VK_TRUE;
    own.vulkan12.scalarBlockLayout = VK_TRUE;
    own |= features;
    return own;
}

GameRenderer::GameRenderer(quorl::graphics::Window* window, char const* name, unsigned int version,
    quorl::vk::PhysicalDevice::Features const& features, bool validation)
    : QuorlRenderer(window, name, version, WithOwnFeatures(features), SettingsVsync(), validation) {
    quorl::vk::Device* vkDevice = device.get();
    overlayRenderPass = std::make_unique<quorl::vk::Renderpass>(vkDevice, swapchain.format, swapchain.width,
        swapchain.height, overlayRenderPassFlags, nullptr, VK_ATTACHMENT_LOAD_OP_LOAD);
    linearSampler = std::make_unique<quorl::vk::Sampler>(vkDevice, LinearClampSampler());
    nearestSampler = std::make_unique<quorl::vk::Sampler>(vkDevice, NearestRepeatSampler());
    defaultSampler = std::make_unique<quorl::vk::Sampler>(vkDevice, LinearClampSampler());
    overlayPipelineLayout = std::make_unique<quorl::vk::PipelineLayout>(vkDevice,
        std::vector<VkDescriptorSetLayout>{GlobalDescriptorSetLayout()},
        std::vector<VkPushConstantRange>{{VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT, 0, 128}});
    // Index 0 is reserved: an aim id of 0 means that the aim hit nothing of ours.
    aimReferences.push_back(AimReference{{}, 0});
    rcallShaders.push_back("#rcall\nvoid main(){}");
    defaultRcallShader = static_cast<uint32_t>(rcallShaders.size() - 1);

    CreateOverlayPipelines();

    // The text shader addresses the atlas as texture 0.
    if (AddTexture(quorl::graphics::Texture::Load(vkDevice, fontAtlasPath), *linearSampler) != 0)
        throw std::runtime_error("Font Atlas Index is not 0");

    if (!Game::settings)
        return;
    if (Game::settings->graphics_preset >= 0) {
        ConfigureSettingsFromPreset();
        return;
    }
    Game::settings->graphics_preset = PresetForDeviceName(device->physicalDevice.properties.deviceName);
    ConfigureSettingsFromPreset();
    // Detection runs once: the next start reads the preset from the file. A file that cannot be written costs the
    // detection again next time, not the renderer.
    try {
        Game::settings->WriteConfig();
    } catch (std::exception const& error) {
        std::cerr << "the detected graphics preset is not saved: " << error.what() << std::endl;
    }
}

GameRenderer::~GameRenderer() {
    if (device)
        vkDeviceWaitIdle(device->handle);
    CollectAllTrash();
    physicsDebugVertexBuffer.reset();
    physicsDebugIndexBuffer.reset();
    crosshairPipeline.reset();
    physicsColliderPipeline.reset();
    physicsLinePipeline.reset();
    overlayPipelineLayout.reset();
    defaultSampler.reset();
    nearestSampler.reset();
    linearSampler.reset();
    overlayRenderPass.reset();
}

void GameRenderer::CreateOverlayPipelines() {
    quorl::vk::Device* vkDevice = device.get();
    quorl::vk::GraphicsPipelineConfig crosshair;
    crosshair.topology = VK_PRIMITIVE_TOPOLOGY_POINT_LIST;
    crosshairPipeline = std::make_unique<quorl::vk::GraphicsPipeline>(vkDevice, overlayPipelineLayout.get(),
        quorl::vk::Shader::Load(vkDevice, "game/graphics/crosshair"), overlayRenderPass.get(), 0, crosshair);

    auto colliderShader = quorl::vk::Shader::Load(vkDevice, "game/graphics/physicsCollider");
    quorl::vk::GraphicsPipelineConfig collider;
    collider.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    physicsColliderPipeline = std::make_unique<quorl::vk::GraphicsPipeline>(vkDevice, overlayPipelineLayout.get(),
        colliderShader, overlayRenderPass.get(), 0, collider);
    quorl::vk::GraphicsPipelineConfig line;
    line.topology = VK_PRIMITIVE_TOPOLOGY_LINE_LIST;
    physicsLinePipeline = std::make_unique<quorl::vk::GraphicsPipeline>(vkDevice, overlayPipelineLayout.get(),
        colliderShader, overlayRenderPass.get(), 0, line);
}

int GameRenderer::PresetForDeviceName(std::string const& deviceName) {
    static std::regex const rtx(R"(.*RTX[\s_-]*(\d{4}).*)", std::regex::ECMAScript);
    std::smatch match;
    if (!std::regex_match(deviceName, match, rtx))
        return 3;
    switch (std::stoi(match[1].str())) {
    case 2060: case 2070: case 3050: case 3060: case 4050: return 2;
    case 3080: case 3090: case 5070: return 4;
    case 4080: case 4090: case 5080: return 5;
    case 5090: return 6;
    default: return 3;
    }
}

void GameRenderer::ConfigureSettingsFromPreset() {
    int& quality = Game::settings->upscaling_quality_setting;
    switch (Game::settings->graphics_preset) {
    case 1: case 2: case 3: case 4: quality = 1; break;
    case 5: quality = 2; break;
    case 6: quality = 3; break;
    case 7: quality = 6; break;
    default: break;
    }
}

// ---- Deferred destruction -------------------------------------------------------------------------------------------

void GameRenderer::Trash(std::shared_ptr<void> object) {
    std::lock_guard lock(trashMutex);
    trashIncoming.push_back(std::move(object));
}

void GameRenderer::CollectTrash() {
    // The swap takes the lock so that a Trash from another thread never lands in the vector being released; the
    // release itself runs outside it, since destructors may trash further objects.
    std::vector<std::shared_ptr<void>> released;
    {
        std::lock_guard lock(trashMutex);
        std::swap(trashIncoming, trashOutgoing);
        released.swap(trashIncoming);
    }
}

void GameRenderer::CollectAllTrash() {
    for (;;) {
        {
            std::lock_guard lock(trashMutex);
            if (trashIncoming.empty() && trashOutgoing.empty())
                return;
        }
        CollectTrash();
    }
}

// ---- Aim and world -------------------------------------------------------------------------------------------------

uint32_t GameRenderer::AddAimReference(std::string const& moduleName, std::any data) {
    std::lock_guard lock(aimReferencesMutex);
    aimReferences.push_back(AimReference{quorl::modular::ModuleID(moduleName), std::move(data)});
    return static_cast<uint32_t>(aimReferences.size() - 1);
}

void GameRenderer::Cleanup() {
    GameRenderer* renderer = Game::renderer;
    if (!renderer)
        return;
    {
        std::lock_guard lock(renderer->aim.mutex);
        renderer->aim.reference = AimReference{{}, 0};
        renderer->aim.object.reset();
    }
    // The tables hold weak pointers: the instances themselves die with their entities.
    {
        std::lock_guard lock(RenderableInstance::_sharedObjectsMutex);
        RenderableInstance::_sharedObjects.clear();
    }
    {
        std::lock_guard lock(LightSourceInstance::_sharedObjectsMutex);
        LightSourceInstance::_sharedObjects.clear();
    }
    renderer->ClearTextures();
    {
        std::lock_guard lock(renderer->pendingTexturesMutex);
        renderer->pendingTextures.clear();
    }
    {
        std::lock_guard aimLock(renderer->aim.mutex);
        std::lock_guard lock(renderer->aimReferencesMutex);
        renderer->aim.reference = AimReference{{}, 0};
        renderer->aim.buffer = AimBuffer{};
        renderer->aim.word = 0;
        renderer->aim.object.reset();
        // Index 0 goes too: the first reference added after leaving a world gets index 0.
        renderer->aimReferences.clear();
    }
    renderer->CollectAllTrash();
}

}
