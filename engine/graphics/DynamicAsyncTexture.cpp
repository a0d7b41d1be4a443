#include "engine/graphics/DynamicAsyncTexture.h"

#include "engine/vk/Buffer.h"

#include <stb_image.h>
#include <stb_image_resize.h>

#include <algorithm>
#include <utility>

namespace quorl::graphics {

DynamicAsyncTexture::DynamicAsyncTexture(vk::Device* device, uint32_t width, uint32_t height, std::string const& name)
    : Texture(device, width, height, VK_FORMAT_R8G8B8A8_UNORM,
          VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT, name) {
    std::vector<unsigned char> const zeros(static_cast<size_t>(width) * height * 4);
    Upload(zeros.data(), zeros.size());
}

DynamicAsyncTexture::~DynamicAsyncTexture() = default;

bool DynamicAsyncTexture::Load(unsigned char const* data, unsigned long size) {
    int decodedWidth = 0;
    int decodedHeight = 0;
    int channels = 0;
    std::unique_ptr<stbi_uc, void (*)(void*)> decoded{
        stbi_load_from_memory(data, static_cast<int>(size), &decodedWidth, &decodedHeight, &channels, 4),
        stbi_image_free};
    if (!decoded)
        return false;

    // Decode and scale outside the lock: only the hand-over of the finished frame is shared with Push.
    std::vector<unsigned char> frame(static_cast<size_t>(width) * height * 4);
    if (decodedWidth == static_cast<int>(width) && decodedHeight == static_cast<int>(height)) {
        std::copy_n(decoded.get(), frame.size(), frame.begin());
    } else if (!stbir_resize_uint8(decoded.get(), decodedWidth, decodedHeight, 0, frame.data(),
                   static_cast<int>(width), static_cast<int>(height), 0, 4)) {
        return false;
    }

    std::lock_guard lock(_pendingMutex);
    _pending = std::move(frame);
    _hasPending = true;
    return true;
}

void DynamicAsyncTexture::Push(VkCommandBuffer commandBuffer) {
    std::vector<unsigned char> frame;
    {
        std::lock_guard lock(_pendingMutex);
        if (!_hasPending)
            return;
        frame = std::move(_pending);
        _hasPending = false;
    }
    auto staging = MakeStagingBuffer(frame.data(), frame.size());
    RecordUpload(commandBuffer, staging->buffer);
    _previousStaging = std::move(_staging);
    _staging = std::move(staging);
}

}
