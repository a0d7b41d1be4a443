#pragma once

#include "engine/Export.h"
#include "engine/graphics/Texture.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quorl::graphics {

/// An RGBA8 texture fed with encoded frames (a video, a remote screen): any thread decodes a frame with Load, and
/// the render thread records its upload with Push. Always readable by shaders, black until the first frame.
class QUORL_EXPORT DynamicAsyncTexture : public Texture {
public:
    /// Uploads zeros and waits, so that the image is in SHADER_READ_ONLY_OPTIMAL from the start.
    DynamicAsyncTexture(vk::Device* device, uint32_t width, uint32_t height, std::string const& name = {});
    ~DynamicAsyncTexture() override;

    /// Decodes PNG or JPEG bytes, scaled to the texture's size, as the next frame to upload; a frame not pushed yet
    /// is replaced. Any thread. False when the bytes are not an image.
    bool Load(unsigned char const* data, unsigned long size);

    /// Records the upload of the pending frame, if any. Render thread.
    void Push(VkCommandBuffer commandBuffer) override;

private:
    std::mutex _pendingMutex;
    std::vector<unsigned char> _pending;
    bool _hasPending = false;
    // The upload recorded by Push runs after Push returns, so its staging buffer must outlive the call. The renderer
    // has at most two frames in flight and waits for a frame slot's fence before recording into it again, so the
    // buffer of one Push is free once the Push after next records: the current and the previous one stay alive.
    std::unique_ptr<vk::Buffer> _staging;
    std::unique_ptr<vk::Buffer> _previousStaging;
};

}
