#include "engine/renderer/TextureTable.h"

#include "engine/vk/Sampler.h"
#include "tests/support/Capture.h"
#include "tests/support/VulkanDevice.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

using quorl::graphics::Texture;
using quorl::graphics::TextureRef;
using quorl::renderer::TextureTable;

namespace {

class TextureTableTest : public VulkanDeviceTest {
protected:
    TextureTableTest() {
        VkSamplerCreateInfo info{};
        info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
        info.magFilter = VK_FILTER_LINEAR;
        info.minFilter = VK_FILTER_LINEAR;
        sampler = std::make_unique<quorl::vk::Sampler>(device.get(), info);
        table = std::make_unique<TextureTable>(device.get());
    }

    // Nothing here draws with the table, so the images need no content: writing a descriptor reads only its fields.
    TextureRef Sampled() { return std::make_shared<Texture>(device.get(), 2, 2, VK_FORMAT_R8G8B8A8_UNORM); }

    /// A storage image in GENERAL layout, as the table wants it.
    TextureRef Storage() {
        auto texture = std::make_shared<Texture>(device.get(), 2, 2, VK_FORMAT_R8G8B8A8_UNORM,
            VK_IMAGE_USAGE_STORAGE_BIT);
        texture->layout = VK_IMAGE_LAYOUT_GENERAL;
        return texture;
    }

    std::unique_ptr<quorl::vk::Sampler> sampler;
    std::unique_ptr<TextureTable> table;
};

}

TEST_F(TextureTableTest, AddGivesConsecutiveIndicesKeepsTexturesAliveAndFlushesUntilClearStartsAgainAtZero) {
    EXPECT_EQ(table->size(), 0u);
    EXPECT_FALSE(table->Dirty());
    auto const texture = Sampled();
    EXPECT_EQ(table->Add(texture, *sampler), 0u);
    std::weak_ptr<Texture> storage;
    {
        auto const made = Storage();
        storage = made;
        EXPECT_EQ(table->Add(made, VK_NULL_HANDLE), 1u);
    }
    EXPECT_EQ(table->Add({{texture, *sampler}, {Storage(), VK_NULL_HANDLE}, {texture, *sampler}}), 2u);
    EXPECT_EQ(table->size(), 5u);
    EXPECT_EQ(table->Add(texture, *sampler), 5u);
    EXPECT_TRUE(table->Dirty());
    EXPECT_FALSE(storage.expired()) << "the table holds what it was given";
    table->Flush();
    EXPECT_FALSE(table->Dirty());

    table->Clear();
    EXPECT_TRUE(storage.expired());
    EXPECT_EQ(table->size(), 0u);
    EXPECT_TRUE(table->Dirty()) << "the cleared slots go back to the defaults";
    table->Flush();
    EXPECT_FALSE(table->Dirty());
    EXPECT_EQ(table->Add(texture, *sampler), 0u);
}

TEST_F(TextureTableTest, HoldsAsManyTexturesAsAStageMaySeeUpTo1024AndAddsNoneOfAListThatDoesNotFit) {
    auto const& limits = device->physicalDevice.properties.limits;
    EXPECT_GT(table->capacity, 0u);
    EXPECT_LE(table->capacity, 1024u);
    EXPECT_LE(table->capacity, limits.maxPerStageDescriptorSamplers);
    EXPECT_LE(table->capacity, limits.maxPerStageDescriptorStorageImages);
    EXPECT_NE(table->layout, VK_NULL_HANDLE);
    EXPECT_NE(table->set, VK_NULL_HANDLE);
    auto const texture = Sampled();
    std::vector<std::tuple<TextureRef, VkSampler>> const all(table->capacity - 1, {texture, *sampler});
    EXPECT_EQ(table->Add(all), 0u);

    std::string const full = "Texture table is full: " + std::to_string(table->capacity) + " textures";
    EXPECT_EQ(ErrorOf([&] { table->Add({{texture, *sampler}, {texture, *sampler}}); }), full);
    EXPECT_EQ(table->size(), table->capacity - 1);
    EXPECT_EQ(table->Add(texture, *sampler), table->capacity - 1);
    EXPECT_EQ(ErrorOf([&] { table->Add(Storage(), VK_NULL_HANDLE); }), full);
}
