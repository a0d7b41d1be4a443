#include "engine/renderer/TextureTable.h"

#include "engine/vk/Device.h"
#include "engine/vk/Sampler.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <stdexcept>
#include <string>

namespace quorl::renderer {

namespace {

constexpr uint32_t kMaxTextures = 1024;

uint32_t CapacityOf(VkPhysicalDeviceLimits const& limits) {
    return std::min({kMaxTextures, limits.maxPerStageDescriptorSamplers, limits.maxPerStageDescriptorSampledImages,
        limits.maxPerStageDescriptorStorageImages, limits.maxDescriptorSetSamplers,
        limits.maxDescriptorSetSampledImages, limits.maxDescriptorSetStorageImages});
}

graphics::TextureRef MakeDefault(vk::Device* device, VkImageUsageFlags usage, VkImageLayout layout,
    std::array<unsigned char, 4> const& pixel, char const* name) {
    auto texture = std::make_shared<graphics::Texture>(device, 1, 1, VK_FORMAT_R8G8B8A8_UNORM,
        usage | VK_IMAGE_USAGE_TRANSFER_DST_BIT, name);
    texture->layout = layout;
    texture->Upload(pixel.data(), pixel.size());
    return texture;
}

}

TextureTable::TextureTable(vk::Device* device)
    : capacity(CapacityOf(device->physicalDevice.properties.limits)), _device(device), _dirty(capacity, false) {
    std::array<VkDescriptorSetLayoutBinding, 2> bindings{};
    bindings[0] = {0, VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, capacity, VK_SHADER_STAGE_ALL, nullptr};
    bindings[1] = {1, VK_DESCRIPTOR_TYPE_STORAGE_IMAGE, capacity, VK_SHADER_STAGE_ALL, nullptr};
    VkDescriptorSetLayoutCreateInfo layoutInfo{};
    layoutInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    layoutInfo.bindingCount = static_cast<uint32_t>(bindings.size());
    layoutInfo.pBindings = bindings.data();
    vk::Device::Check(vkCreateDescriptorSetLayout(device->handle, &layoutInfo, nullptr, &layout),
        "vkCreateDescriptorSetLayout");

    std::array<VkDescriptorPoolSize, 2> const poolSizes{{
        {VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, capacity},
        {VK_DESCRIPTOR_TYPE_STORAGE_IMAGE, capacity},
    }};
    VkDescriptorPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
    poolInfo.maxSets = 1;
    poolInfo.poolSizeCount = static_cast<uint32_t>(poolSizes.size());
    poolInfo.pPoolSizes = poolSizes.data();
    vk::Device::Check(vkCreateDescriptorPool(device->handle, &poolInfo, nullptr, &_pool), "vkCreateDescriptorPool");

    VkDescriptorSetAllocateInfo allocateInfo{};
    allocateInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
    allocateInfo.descriptorPool = _pool;
    allocateInfo.descriptorSetCount = 1;
    allocateInfo.pSetLayouts = &layout;
    vk::Device::Check(vkAllocateDescriptorSets(device->handle, &allocateInfo, &set), "vkAllocateDescriptorSets");

    VkSamplerCreateInfo samplerInfo{};
    samplerInfo.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    samplerInfo.magFilter = VK_FILTER_NEAREST;
    samplerInfo.minFilter = VK_FILTER_NEAREST;
    samplerInfo.addressModeU = VK_SAMPLER_ADDRESS_MODE_REPEAT;
    samplerInfo.addressModeV = VK_SAMPLER_ADDRESS_MODE_REPEAT;
    samplerInfo.addressModeW = VK_SAMPLER_ADDRESS_MODE_REPEAT;
    _defaultSampler = std::make_unique<vk::Sampler>(device, samplerInfo);
    _defaultTexture = MakeDefault(device, VK_IMAGE_USAGE_SAMPLED_BIT, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL,
        {255, 255, 255, 255}, "TextureTable default texture");
    _defaultStorage = MakeDefault(device, VK_IMAGE_USAGE_STORAGE_BIT, VK_IMAGE_LAYOUT_GENERAL, {0, 0, 0, 0},
        "TextureTable default storage image");

    // Every slot is read by the layout's validity rules, used or not: fill them all before anyone binds the set.
    std::vector<uint32_t> all(capacity);
    std::iota(all.begin(), all.end(), 0u);
    Write(all);
}

TextureTable::~TextureTable() {
    vkDestroyDescriptorPool(_device->handle, _pool, nullptr);
    vkDestroyDescriptorSetLayout(_device->handle, layout, nullptr);
}

uint32_t TextureTable::Add(graphics::TextureRef texture, VkSampler sampler) {
    return Add({{std::move(texture), sampler}});
}

uint32_t TextureTable::Add(std::vector<std::tuple<graphics::TextureRef, VkSampler>> const& textures) {
    if (_entries.size() + textures.size() > capacity)
        throw std::runtime_error("Texture table is full: " + std::to_string(capacity) + " textures");
    auto const first = size();
    for (auto const& [texture, sampler] : textures) {
        _dirty[_entries.size()] = true;
        _entries.push_back({texture, sampler});
    }
    return first;
}

void TextureTable::Clear() {
    std::fill_n(_dirty.begin(), _entries.size(), true);
    _entries.clear();
}

bool TextureTable::Dirty() const {
    return std::find(_dirty.begin(), _dirty.end(), true) != _dirty.end();
}

void TextureTable::Flush() {
    std::vector<uint32_t> slots;
    for (uint32_t slot = 0; slot < capacity; ++slot)
        if (_dirty[slot])
            slots.push_back(slot);
    Write(slots);
    std::fill(_dirty.begin(), _dirty.end(), false);
}

void TextureTable::Write(std::vector<uint32_t> const& slots) {
    // Each slot has a descriptor in both bindings: the texture in the one its sampler picks, the default in the other.
    std::vector<VkDescriptorImageInfo> images;
    images.reserve(slots.size() * 2);
    std::vector<VkWriteDescriptorSet> writes;
    writes.reserve(slots.size() * 2);
    for (auto const slot : slots) {
        Entry const* entry = slot < _entries.size() ? &_entries[slot] : nullptr;
        bool const sampled = entry && entry->sampler != VK_NULL_HANDLE;
        bool const storage = entry && entry->sampler == VK_NULL_HANDLE;
        images.push_back(sampled ? VkDescriptorImageInfo{entry->sampler, entry->texture->view->view,
                                       entry->texture->layout}
                                 : VkDescriptorImageInfo{_defaultSampler->sampler, _defaultTexture->view->view,
                                       _defaultTexture->layout});
        images.push_back(VkDescriptorImageInfo{VK_NULL_HANDLE,
            (storage ? entry->texture : _defaultStorage)->view->view, VK_IMAGE_LAYOUT_GENERAL});
        for (uint32_t binding = 0; binding < 2; ++binding) {
            VkWriteDescriptorSet write{};
            write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
            write.dstSet = set;
            write.dstBinding = binding;
            write.dstArrayElement = slot;
            write.descriptorCount = 1;
            write.descriptorType =
                binding == 0 ? VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER : VK_DESCRIPTOR_TYPE_STORAGE_IMAGE;
            write.pImageInfo = &images[images.size() - 2 + binding];
            writes.push_back(write);
        }
    }
    if (!writes.empty())
        vkUpdateDescriptorSets(_device->handle, static_cast<uint32_t>(writes.size()), writes.data(), 0, nullptr);
}

}
