#include "game/graphics/GameRenderer.h"

#include "engine/vk/CommandBuffer.h"
#include "engine/vk/Image.h"
#include "game/Game.h"
#include "game/GameSettings.h"

#include <glm/geometric.hpp>

#include <cstring>
#include <optional>

namespace game::graphics {

namespace {

struct PixelLayout {
    int channels;
    bool isFloat;
    bool hasAlpha;
};

/// The formats a screenshot can come in; nullopt for any other.
std::optional<PixelLayout> LayoutOf(VkFormat format) {
    switch (format) {
    case VK_FORMAT_R8_UNORM: return PixelLayout{1, false, false};
    case VK_FORMAT_R8G8_UNORM: return PixelLayout{2, false, false};
    case VK_FORMAT_R8G8B8_UNORM: return PixelLayout{3, false, false};
    case VK_FORMAT_R8G8B8A8_UNORM: return PixelLayout{4, false, true};
    case VK_FORMAT_B8G8R8A8_UNORM: return PixelLayout{4, false, true};
    case VK_FORMAT_R32_SFLOAT: return PixelLayout{1, true, false};
    case VK_FORMAT_R32G32_SFLOAT: return PixelLayout{2, true, false};
    case VK_FORMAT_R32G32B32A32_SFLOAT: return PixelLayout{4, true, true};
    default: return std::nullopt;
    }
}

/// The copy needs the image in a transfer layout; any other layout is left and restored around it.
bool CopyableIn(VkImageLayout layout) {
    return layout == VK_IMAGE_LAYOUT_GENERAL || layout == VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
}

}

int GameRenderer::SaveImage(VkImage image, VkExtent2D extent, VkFormat format, VkImageLayout layout,
    std::string const& path, int quality, bool forceOpaque) {
    std::optional<PixelLayout> pixels = LayoutOf(format);
    if (!pixels)
        return 0;
    forceOpaque = forceOpaque && pixels->hasAlpha;
    size_t const componentSize = pixels->isFloat ? sizeof(float) : 1;
    size_t const pixelCount = size_t(extent.width) * extent.height;
    size_t const size = pixelCount * pixels->channels * componentSize;

    quorl::vk::Buffer buffer(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST, VK_BUFFER_USAGE_TRANSFER_DST_BIT, size,
        VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT);
    device->SetDebugName(buffer.allocation, "SaveImage Tmp Buffer");
    auto* data = static_cast<unsigned char*>(buffer.Map());
    quorl::vk::CommandBuffer::Run(device.get(), device->graphicsQueue, [&](VkCommandBuffer commandBuffer) {
        VkImageLayout const copyLayout = CopyableIn(layout) ? layout : VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
        if (copyLayout != layout)
            quorl::vk::Image::Transition(commandBuffer, image, VK_IMAGE_ASPECT_COLOR_BIT, layout, copyLayout);
        VkBufferImageCopy region{};
        region.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
        region.imageExtent = {extent.width, extent.height, 1};
        vkCmdCopyImageToBuffer(commandBuffer, image, copyLayout, buffer.buffer, 1, &region);
        if (copyLayout != layout)
            quorl::vk::Image::Transition(commandBuffer, image, VK_IMAGE_ASPECT_COLOR_BIT, copyLayout, layout);
    }, "renderer::SaveImage");

    if (format == VK_FORMAT_B8G8R8A8_UNORM) {
        for (size_t i = 0; i < pixelCount; ++i)
            std::swap(data[i * 4], data[i * 4 + 2]);
    }
    if (forceOpaque) {
        for (size_t i = 0; i < pixelCount; ++i) {
            if (pixels->isFloat) {
                float const one = 1.0f;
                std::memcpy(data + (i * 4 + 3) * sizeof(float), &one, sizeof(float));
            } else {
                data[i * 4 + 3] = 255;
            }
        }
    }
    int const result = quorl::graphics::Texture::SaveFile(path, int(extent.width), int(extent.height),
        pixels->channels, pixels->isFloat, data, quality);
    buffer.Unmap();
    return result;
}

double GameRenderer::GetFixedBoundingSizeInScreenPixels(glm::dvec3 const& position, double size, double fov) {
    if (fov == 0.0 && Game::settings)
        fov = Game::settings->fov;
    auto const width = uint32_t(swapchain.width * frame.renderScale);
    auto const height = uint32_t(swapchain.height * frame.renderScale);
    double const distance = glm::distance(frame.cameraPosition, position);
    double factor = 6.283185307179586;
    if (distance != 0.0 && fov != 0.0) {
        double const angle = (size / distance) / (fov * 0.017453292519943295);
        factor = angle > 3.141592653589793 ? 6.283185307179586 : angle + angle;
    }
    return (width * 0.5 + height * 0.5) * factor;
}

}
