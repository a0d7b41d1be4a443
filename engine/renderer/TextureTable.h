#pragma once

#include "engine/Export.h"
#include "engine/graphics/TextureRef.h"

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <memory>
#include <tuple>
#include <vector>

namespace quorl::vk {
class Device;
class Sampler;
}

namespace quorl::renderer {

/// The textures shaders address by index (from a push constant): one descriptor set, bound as set 0, with binding 0
/// an array of combined image samplers and binding 1 an array of storage images, `capacity` entries each. Without
/// descriptor indexing every slot must hold a valid descriptor, so slots without a texture point at a 1x1 white
/// texture (binding 0) and a 1x1 storage image (binding 1).
class QUORL_EXPORT TextureTable {
public:
    explicit TextureTable(vk::Device* device);
    ~TextureTable();
    TextureTable(TextureTable const&) = delete;
    TextureTable& operator=(TextureTable const&) = delete;

    /// Takes the next index and keeps the texture alive until Clear. With a sampler it goes to binding 0; without
    /// (VK_NULL_HANDLE) to binding 1, and must then be in GENERAL layout. Throws std::runtime_error when full.
    uint32_t Add(graphics::TextureRef texture, VkSampler sampler);
    /// Adds at consecutive indices and returns the first; adds none when they do not all fit.
    uint32_t Add(std::vector<std::tuple<graphics::TextureRef, VkSampler>> const& textures);
    /// Drops every texture; the next Add gets index 0 again.
    void Clear();

    /// Whether some slot changed since the last Flush.
    bool Dirty() const;
    /// Writes the changed slots into the set. The set must not be in use by the GPU.
    void Flush();

    uint32_t size() const { return static_cast<uint32_t>(_entries.size()); }

    VkDescriptorSetLayout layout = VK_NULL_HANDLE;
    VkDescriptorSet set = VK_NULL_HANDLE;
    uint32_t capacity;

private:
    struct Entry {
        graphics::TextureRef texture;
        VkSampler sampler;
    };

    void Write(std::vector<uint32_t> const& slots);

    vk::Device* _device;
    VkDescriptorPool _pool = VK_NULL_HANDLE;
    std::unique_ptr<vk::Sampler> _defaultSampler;
    graphics::TextureRef _defaultTexture;
    graphics::TextureRef _defaultStorage;
    std::vector<Entry> _entries;
    std::vector<bool> _dirty;
};

}
