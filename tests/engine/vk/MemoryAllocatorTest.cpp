#include "engine/vk/MemoryAllocator.h"

#include "engine/vk/ImageView.h"
#include "tests/support/VulkanDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <vector>

using quorl::vk::Buffer;
using quorl::vk::Image;
using quorl::vk::ImageView;
using quorl::vk::MemoryAllocator;

namespace {

// ---- Memory type choice, on the memory types of a typical discrete GPU ----------------------------------------------

constexpr VkMemoryPropertyFlags deviceLocal = VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT;
constexpr VkMemoryPropertyFlags hostVisible = VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT;
constexpr VkMemoryPropertyFlags coherent = VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
constexpr VkMemoryPropertyFlags cached = VK_MEMORY_PROPERTY_HOST_CACHED_BIT;

VkPhysicalDeviceMemoryProperties DiscreteGpu() {
    VkPhysicalDeviceMemoryProperties properties{};
    properties.memoryHeapCount = 2;
    properties.memoryHeaps[0] = {8ull << 30, VK_MEMORY_HEAP_DEVICE_LOCAL_BIT};
    properties.memoryHeaps[1] = {16ull << 30, 0};
    properties.memoryTypeCount = 4;
    properties.memoryTypes[0] = {deviceLocal, 0};
    properties.memoryTypes[1] = {hostVisible | coherent, 1};
    properties.memoryTypes[2] = {hostVisible | coherent | cached, 1};
    // The resizable BAR: video memory the host writes through.
    properties.memoryTypes[3] = {deviceLocal | hostVisible | coherent, 0};
    return properties;
}

struct TypeCase {
    char const* what;
    VmaAllocationCreateInfo info;
    uint32_t typeBits;
    uint32_t expected;
};

TEST(MemoryAllocatorTest, ChoosesMemoryTypesAsVmaDoes) {
    constexpr uint32_t all = 0b1111;
    constexpr auto sequential = VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT;
    constexpr auto random = VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT;
    TypeCase const cases[] = {
        {"prefer device", {0, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE}, all, 0},
        {"auto is prefer device", {0, VMA_MEMORY_USAGE_AUTO}, all, 0},
        {"prefer device, host writes", {sequential, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE}, all, 3},
        {"prefer device, only host types", {0, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE}, 0b0110, 1},
        {"prefer host", {0, VMA_MEMORY_USAGE_AUTO_PREFER_HOST}, all, 1},
        {"prefer host, host writes", {sequential, VMA_MEMORY_USAGE_AUTO_PREFER_HOST}, all, 1},
        {"prefer host, host reads", {random, VMA_MEMORY_USAGE_AUTO_PREFER_HOST}, all, 2},
        {"prefer host, only device types", {0, VMA_MEMORY_USAGE_AUTO_PREFER_HOST}, 0b1001, 3},
        {"gpu only", {0, VMA_MEMORY_USAGE_GPU_ONLY}, all, 0},
        {"cpu only", {0, VMA_MEMORY_USAGE_CPU_ONLY}, all, 1},
        {"cpu to gpu", {0, VMA_MEMORY_USAGE_CPU_TO_GPU}, all, 3},
        {"gpu to cpu", {0, VMA_MEMORY_USAGE_GPU_TO_CPU}, all, 2},
        {"cpu copy", {0, VMA_MEMORY_USAGE_CPU_COPY}, all, 1},
        {"required flags", {0, VMA_MEMORY_USAGE_UNKNOWN, cached, 0}, all, 2},
        {"preferred flags", {0, VMA_MEMORY_USAGE_UNKNOWN, 0, deviceLocal | hostVisible}, all, 3},
    };
    for (auto const& c : cases)
        EXPECT_EQ(MemoryAllocator::FindMemoryType(DiscreteGpu(), c.typeBits, c.info), c.expected) << c.what;
}

TEST(MemoryAllocatorTest, RefusesWhenNoTypeHasTheRequiredProperties) {
    EXPECT_THROW(MemoryAllocator::FindMemoryType(DiscreteGpu(), 0b0001, {0, VMA_MEMORY_USAGE_CPU_ONLY}),
        std::runtime_error);
}

// ---- On the machine's Vulkan device ---------------------------------------------------------------------------------

/// Buffers have device addresses: the device always enables them.
class MemoryAllocatorDeviceTest : public VulkanDeviceTest {
protected:
    MemoryAllocator& Allocator() { return device->Allocator(); }

    /// The device memory a fresh block of `memoryType` takes.
    VkDeviceSize BlockBytes(uint32_t memoryType) const {
        auto const& memory = device->physicalDevice.memoryProperties;
        return std::min(MemoryAllocator::blockSize, memory.memoryHeaps[memory.memoryTypes[memoryType].heapIndex].size / 8);
    }
};

TEST_F(MemoryAllocatorDeviceTest, PacksTenThousandSmallBuffersIntoFewAllocations) {
    constexpr int count = 10'000;
    VkBufferUsageFlags const usages[] = {
        VK_BUFFER_USAGE_VERTEX_BUFFER_BIT | VK_BUFFER_USAGE_TRANSFER_DST_BIT,
        VK_BUFFER_USAGE_INDEX_BUFFER_BIT,
        VK_BUFFER_USAGE_UNIFORM_BUFFER_BIT,
        VK_BUFFER_USAGE_STORAGE_BUFFER_BIT,
        VK_BUFFER_USAGE_TRANSFER_SRC_BIT,
    };
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::set<uint32_t> types;
    for (int i = 0; i < count; ++i) {
        unsigned long const size = 16 + (i * 977ul) % (4096 - 16 + 1);
        VmaMemoryUsage const usage = i % 3 == 0 ? VMA_MEMORY_USAGE_AUTO_PREFER_HOST : VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE;
        unsigned int const flags = i % 3 == 0 ? VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT : 0;
        buffers.push_back(std::make_unique<Buffer>(device.get(), usage, usages[i % 5], size, flags));
        types.insert(buffers.back()->allocation->memoryType);
    }

    // Within one memory object, allocations are aligned as asked and never overlap.
    std::map<VkDeviceMemory, std::vector<std::pair<VkDeviceSize, VkDeviceSize>>> ranges;
    std::set<VkDeviceAddress> addresses;
    for (auto const& buffer : buffers) {
        VkMemoryRequirements requirements;
        vkGetBufferMemoryRequirements(device->handle, buffer->buffer, &requirements);
        ASSERT_EQ(buffer->allocation->offset % requirements.alignment, 0u);
        ASSERT_GE(buffer->allocation->size, requirements.size);
        ASSERT_NE(buffer->address, 0u);
        ASSERT_EQ(buffer->address % requirements.alignment, 0u);
        addresses.insert(buffer->address);
        ranges[buffer->allocation->memory].emplace_back(
            buffer->allocation->offset, buffer->allocation->offset + buffer->allocation->size);
    }
    EXPECT_EQ(addresses.size(), buffers.size());
    for (auto& [memory, list] : ranges) {
        std::sort(list.begin(), list.end());
        for (size_t i = 1; i < list.size(); ++i)
            ASSERT_LE(list[i - 1].second, list[i].first);
    }

    uint64_t const allocations = Allocator().DeviceAllocationCount();
    RecordProperty("device_allocations", static_cast<int>(allocations));
    EXPECT_LE(allocations, 2 * types.size());

    // Freed in any order, the free list merges back into one block per memory type, which stays for the next level:
    // two buffers of half a block each fill it again.
    std::shuffle(buffers.begin(), buffers.end(), std::mt19937(7));
    buffers.clear();
    VkDeviceSize expected = 0;
    for (uint32_t type : types)
        expected += BlockBytes(type);
    EXPECT_EQ(Allocator().DeviceBytes(), expected);
    auto const half = [&] {
        return std::make_unique<Buffer>(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
            VK_BUFFER_USAGE_STORAGE_BUFFER_BIT, BlockBytes(*types.begin()) / 2);
    };
    auto const first = half(), second = half();
    EXPECT_GE(first->allocation->block, 0);
    EXPECT_EQ(first->allocation->block, second->allocation->block);
    EXPECT_EQ(Allocator().DeviceAllocationCount(), allocations);
}

TEST_F(MemoryAllocatorDeviceTest, GivesLargeAndDedicatedBuffersTheirOwnMemory) {
    Buffer const small(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT, 256);
    uint64_t const allocations = Allocator().DeviceAllocationCount();
    VkDeviceSize const bytes = Allocator().DeviceBytes();
    {
        Buffer const dedicated(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT,
            256, VMA_ALLOCATION_CREATE_DEDICATED_MEMORY_BIT);
        Buffer const large(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT,
            BlockBytes(small.allocation->memoryType) / 2 + 1);
        EXPECT_EQ(dedicated.allocation->block, -1);
        EXPECT_EQ(dedicated.allocation->offset, 0u);
        EXPECT_EQ(large.allocation->block, -1);
        EXPECT_EQ(Allocator().DeviceAllocationCount(), allocations + 2);
    }
    EXPECT_EQ(Allocator().DeviceBytes(), bytes);
}

// Host writes reach the device and device writes the host through the staging and read-back buffers of TextureTest.
TEST_F(MemoryAllocatorDeviceTest, HostReadsGetCachedMemoryWhereThereIsSome) {
    Buffer target(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST, VK_BUFFER_USAGE_TRANSFER_DST_BIT, 4096,
        VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT);
    auto const& memory = device->physicalDevice.memoryProperties;
    bool const anyCached = std::any_of(memory.memoryTypes, memory.memoryTypes + memory.memoryTypeCount,
        [](VkMemoryType const& type) { return (type.propertyFlags & cached) != 0; });
    VkMemoryPropertyFlags const flags = Allocator().MemoryTypeFlags(target.allocation->memoryType);
    EXPECT_TRUE(flags & hostVisible);
    EXPECT_EQ((flags & cached) != 0, anyCached);
    EXPECT_NE(target.Map(), nullptr);
}

TEST_F(MemoryAllocatorDeviceTest, ImagesLiveApartFromBuffersAndTakeViewsAndTransitionsOfTheirAspects) {
    Buffer const buffer(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT, 4096);
    Image colour(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
        ImageInfo2D(VK_FORMAT_R8G8B8A8_UNORM, VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT, 64, 64));
    Image depth(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, ImageInfo2D(VK_FORMAT_D32_SFLOAT_S8_UINT,
        VK_IMAGE_USAGE_DEPTH_STENCIL_ATTACHMENT_BIT | VK_IMAGE_USAGE_SAMPLED_BIT, 64, 64));
    EXPECT_GE(colour.allocation->block, 0);
    EXPECT_NE(colour.allocation->block, buffer.allocation->block);
    EXPECT_EQ(colour.allocation->block, depth.allocation->block);
    EXPECT_EQ(Image::Aspects(VK_FORMAT_D32_SFLOAT_S8_UINT), VK_IMAGE_ASPECT_DEPTH_BIT | VK_IMAGE_ASPECT_STENCIL_BIT);

    // Colour images go through their transitions in the texture tests.
    Run([&](VkCommandBuffer commandBuffer) {
        depth.Transition(commandBuffer, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_DEPTH_STENCIL_ATTACHMENT_OPTIMAL);
    });
    // A view that Vulkan refuses throws; the layer checks the aspects of those it takes.
    ImageView const colourView(&colour);
    ImageView const depthView(&depth);
}

}
