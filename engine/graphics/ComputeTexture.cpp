#include "engine/graphics/ComputeTexture.h"

#include "engine/graphics/VulkanRenderer.h"
#include "engine/vk/CommandBuffer.h"

#include <string>

namespace quorl::graphics {

ComputeTexture::ComputeTexture(VulkanRenderer* engine, unsigned width, unsigned height, VkFormat format,
    unsigned flags)
    : Texture(engine->device.get(), width, height, format,
          VK_IMAGE_USAGE_STORAGE_BIT | VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT |
              VK_IMAGE_USAGE_TRANSFER_DST_BIT,
          "ComputeTexture [" + std::to_string(width) + "x" + std::to_string(height) + "]")
    , flags(flags) {
    layout = VK_IMAGE_LAYOUT_GENERAL;
    vk::CommandBuffer::Run(device, device->graphicsQueue,
        [this](VkCommandBuffer commandBuffer) {
            image->Transition(commandBuffer, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
        },
        "ComputeTexture");
}

void ComputeTexture::Reload() {}

}
