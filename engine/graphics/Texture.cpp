#include "engine/graphics/Texture.h"

#include "engine/vk/Buffer.h"
#include "engine/vk/CommandBuffer.h"
#include "engine/vk/Device.h"

#include <stb_image.h>
#include <stb_image_write.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <stdexcept>

namespace quorl::graphics {

namespace {

bool EndsWith(std::string const& text, std::string const& suffix) {
    return text.size() >= suffix.size() &&
           std::equal(suffix.rbegin(), suffix.rend(), text.rbegin(), [](char a, char b) {
               return a == std::tolower(static_cast<unsigned char>(b));
           });
}

}

Texture::Texture(vk::Device* device, uint32_t width, uint32_t height, VkFormat format, VkImageUsageFlags usage,
    std::string const& name)
    : device(device), width(width), height(height), format(format) {
    VkImageCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = format;
    info.extent = {width, height, 1};
    info.mipLevels = 1;
    info.arrayLayers = 1;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.tiling = VK_IMAGE_TILING_OPTIMAL;
    info.usage = usage;
    info.sharingMode = VK_SHARING_MODE_EXCLUSIVE;
    info.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
    image = std::make_unique<vk::Image>(device, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, info);
    view = std::make_unique<vk::ImageView>(image.get());
    if (!name.empty()) {
        device->SetDebugName(image->allocation, name);
        device->SetDebugName(VK_OBJECT_TYPE_IMAGE, reinterpret_cast<uint64_t>(image->image), name.c_str());
        device->SetDebugName(VK_OBJECT_TYPE_IMAGE_VIEW, reinterpret_cast<uint64_t>(view->view), name.c_str());
    }
}

Texture::~Texture() = default;

std::shared_ptr<Texture> Texture::Load(vk::Device* device, std::string const& path) {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::unique_ptr<stbi_uc, void (*)(void*)> pixels{stbi_load(path.c_str(), &width, &height, &channels, 4),
        stbi_image_free};
    if (!pixels)
        throw std::runtime_error(path + ": " + stbi_failure_reason());
    auto texture = std::make_shared<Texture>(device, static_cast<uint32_t>(width), static_cast<uint32_t>(height),
        VK_FORMAT_R8G8B8A8_UNORM, VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT |
                                      VK_IMAGE_USAGE_TRANSFER_SRC_BIT, path);
    texture->Upload(pixels.get(), static_cast<size_t>(width) * height * 4);
    return texture;
}

std::unique_ptr<vk::Buffer> Texture::MakeStagingBuffer(void const* pixels, size_t size) const {
    auto staging = std::make_unique<vk::Buffer>(device, VMA_MEMORY_USAGE_AUTO_PREFER_HOST,
        VK_BUFFER_USAGE_TRANSFER_SRC_BIT, size, VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT);
    std::memcpy(staging->Map(), pixels, size);
    staging->Flush();
    staging->Unmap();
    return staging;
}

void Texture::RecordUpload(VkCommandBuffer commandBuffer, VkBuffer buffer) const {
    // The whole image is replaced, so its old content may be dropped: coming from UNDEFINED is valid in any state.
    image->Transition(commandBuffer, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL);
    VkBufferImageCopy region{};
    region.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    region.imageExtent = {width, height, 1};
    vkCmdCopyBufferToImage(commandBuffer, buffer, image->image, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, 1, &region);
    image->Transition(commandBuffer, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, layout);
}

void Texture::Upload(void const* pixels, size_t size) {
    auto staging = MakeStagingBuffer(pixels, size);
    vk::CommandBuffer::Run(device, device->graphicsQueue,
        [&](VkCommandBuffer commandBuffer) { RecordUpload(commandBuffer, staging->buffer); }, "Texture::Upload");
}

void Texture::Push(VkCommandBuffer) {}

int Texture::SaveFile(std::string const& path, int width, int height, int channels, bool isFloat,
    unsigned char const* data, int quality) {
    if (!data || width <= 0 || height <= 0 || channels < 1 || channels > 4)
        return 0;
    if (isFloat)
        return stbi_write_hdr(path.c_str(), width, height, channels, reinterpret_cast<float const*>(data));
    if (EndsWith(path, ".jpg") || EndsWith(path, ".jpeg"))
        return stbi_write_jpg(path.c_str(), width, height, channels, data, quality);
    return stbi_write_png(path.c_str(), width, height, channels, data, width * channels);
}

}
