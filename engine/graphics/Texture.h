#pragma once

#include "engine/Export.h"
#include "engine/vk/Image.h"
#include "engine/vk/ImageView.h"

#include <vulkan/vulkan_core.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace quorl::vk {
class Buffer;
class Device;
}

namespace quorl::graphics {

/// A 2D image with a view of it, for shaders to sample or write. Made in VK_IMAGE_LAYOUT_UNDEFINED: the first Upload
/// (or a subclass) puts it in `layout`.
class QUORL_EXPORT Texture {
public:
    Texture(vk::Device* device, uint32_t width, uint32_t height, VkFormat format,
        VkImageUsageFlags usage = VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT |
                                  VK_IMAGE_USAGE_TRANSFER_SRC_BIT,
        std::string const& name = {});
    virtual ~Texture();
    Texture(Texture const&) = delete;
    Texture& operator=(Texture const&) = delete;

    /// Reads a PNG or JPEG file as RGBA8 and uploads it. Throws std::runtime_error("<path>: <reason>").
    static std::shared_ptr<Texture> Load(vk::Device* device, std::string const& path);

    /// Replaces the whole image with `size` bytes of tightly packed pixels and waits for the copy; leaves the image in
    /// `layout`.
    void Upload(void const* pixels, size_t size);

    /// Records the work the texture needs before the frame's draws. Nothing here; the renderer does not call it for
    /// textures that do not override it.
    virtual void Push(VkCommandBuffer commandBuffer);

    /// Writes 8-bit `data` as PNG (JPEG at `quality` when the path ends in .jpg or .jpeg), or float `data` as Radiance
    /// HDR. channels: 1 to 4. Returns non-zero on success, 0 on failure or bad arguments.
    static int SaveFile(std::string const& path, int width, int height, int channels, bool isFloat,
        unsigned char const* data, int quality);

    vk::Device* device;
    std::unique_ptr<vk::Image> image;
    std::unique_ptr<vk::ImageView> view;
    uint32_t width;
    uint32_t height;
    VkFormat format;
    /// The layout shaders see the image in: SHADER_READ_ONLY_OPTIMAL when sampled, GENERAL when a storage image.
    VkImageLayout layout = VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL;

protected:
    /// A host-visible transfer source holding a copy of `pixels`.
    std::unique_ptr<vk::Buffer> MakeStagingBuffer(void const* pixels, size_t size) const;
    /// Records a copy of the whole image from `buffer` (from any layout, dropping the old content), ending in `layout`.
    void RecordUpload(VkCommandBuffer commandBuffer, VkBuffer buffer) const;
};

}
