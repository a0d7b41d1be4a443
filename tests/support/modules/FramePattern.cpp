// Draws a known pattern into every frame from Renderer_FrameRenderCommands: a 16 x 16 block at (32, 32) of four
// 8 x 8 quadrants, red, green, blue and white, on the cleared (black) frame. The screenshot tests look for it.

#include "modules/ModuleApi.h"

#include "engine/vk/Buffer.h"
#include "game/Game.h"
#include "game/graphics/GameRenderer.h"

#include <cstdint>
#include <memory>

namespace {

constexpr uint32_t kBlock = 16;
constexpr int32_t kAt = 32;

std::unique_ptr<quorl::vk::Buffer> pattern;

/// One pixel in the frame's byte order, B8G8R8A8.
uint32_t Bgra(uint8_t r, uint8_t g, uint8_t b) {
    return uint32_t(b) | uint32_t(g) << 8 | uint32_t(r) << 16 | 0xff000000u;
}

}

extern "C" void Renderer_StartRendering() {
    auto* renderer = Game::renderer;
    pattern = std::make_unique<quorl::vk::Buffer>(renderer->device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST,
        VK_BUFFER_USAGE_TRANSFER_SRC_BIT, kBlock * kBlock * 4, VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT);
    auto* pixels = static_cast<uint32_t*>(pattern->Map());
    for (uint32_t y = 0; y < kBlock; ++y) {
        for (uint32_t x = 0; x < kBlock; ++x) {
            bool const right = x >= kBlock / 2, bottom = y >= kBlock / 2;
            pixels[y * kBlock + x] = !bottom ? (right ? Bgra(0, 255, 0) : Bgra(255, 0, 0))
                                             : (right ? Bgra(255, 255, 255) : Bgra(0, 0, 255));
        }
    }
    pattern->Flush();
    pattern->Unmap();
}

extern "C" void Renderer_StopRendering() {
    pattern.reset();
}

extern "C" void Renderer_FrameRenderCommands(VkCommandBuffer commands) {
    auto* renderer = Game::renderer;
    VkBufferImageCopy region{};
    region.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    region.imageOffset = {kAt, kAt, 0};
    region.imageExtent = {kBlock, kBlock, 1};
    // The frame image is in the general layout for every command stage.
    renderer->vkCmdCopyBufferToImage(commands, pattern->buffer, renderer->CurrentImage(), VK_IMAGE_LAYOUT_GENERAL, 1,
        &region);
}
