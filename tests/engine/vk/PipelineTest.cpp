#include "engine/vk/Buffer.h"
#include "engine/vk/CommandBuffer.h"
#include "engine/vk/Device.h"
#include "engine/vk/GraphicsPipeline.h"
#include "engine/vk/Image.h"
#include "engine/vk/ImageView.h"
#include "engine/vk/PipelineLayout.h"
#include "engine/vk/Renderpass.h"
#include "engine/vk/Shader.h"

#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace quorl::vk;
using testing::HasSubstr;

namespace {

constexpr unsigned Size = 64;

/// One B8G8R8A8 pixel as read back.
struct Pixel {
    uint8_t b, g, r, a;

    bool White() const { return r > 200 && g > 200 && b > 200; }
    bool Black() const { return r < 16 && g < 16 && b < 16; }
};

/// The physics collider shader's push constants: 96 bytes of the 128-byte range.
struct ColliderPush {
    float transform[16];
    float colour[4];
    VkDeviceAddress positions;
    VkDeviceAddress indices;
};
static_assert(sizeof(ColliderPush) == 96);

/// A headless lavapipe device with validation, and a 64 x 64 frame image in GENERAL layout that a LOAD render pass
/// draws over, as the frame driver's image is.
class PipelineTest : public testing::Test {
protected:
    void SetUp() override {
        Device::CreateInfo info;
        info.validation = true;
        info.features.features2.features.largePoints = VK_TRUE;
        info.features.vulkan12.bufferDeviceAddress = VK_TRUE;
        device = std::make_unique<Device>(info);

        VkImageCreateInfo imageInfo{};
        imageInfo.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
        imageInfo.imageType = VK_IMAGE_TYPE_2D;
        imageInfo.format = VK_FORMAT_B8G8R8A8_UNORM;
        imageInfo.extent = {Size, Size, 1};
        imageInfo.mipLevels = 1;
        imageInfo.arrayLayers = 1;
        imageInfo.samples = VK_SAMPLE_COUNT_1_BIT;
        imageInfo.tiling = VK_IMAGE_TILING_OPTIMAL;
        imageInfo.usage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT |
                          VK_IMAGE_USAGE_TRANSFER_DST_BIT;
        imageInfo.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
        image = std::make_unique<Image>(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, imageInfo);
        view = std::make_unique<ImageView>(image.get());
        readback = std::make_unique<Buffer>(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST,
            VK_BUFFER_USAGE_TRANSFER_DST_BIT, Size * Size * sizeof(Pixel), VMA_ALLOCATION_CREATE_HOST_ACCESS_RANDOM_BIT);
        renderpass = std::make_unique<Renderpass>(device.get(), VK_FORMAT_B8G8R8A8_UNORM, Size, Size, 27, nullptr,
            VK_ATTACHMENT_LOAD_OP_LOAD);
    }

    void TearDown() override {
        pipeline.reset();
        layout.reset();
        renderpass.reset();
        readback.reset();
        view.reset();
        image.reset();
        EXPECT_EQ(device->ValidationMessageCount(), 0u);
    }

    void MakePipeline(std::string const& shader, GraphicsPipelineConfig const& config,
        std::vector<VkPushConstantRange> const& pushConstants = {}) {
        layout = std::make_unique<PipelineLayout>(device.get(), std::vector<VkDescriptorSetLayout>{}, pushConstants);
        pipeline = std::make_unique<GraphicsPipeline>(device.get(), layout.get(), Shader::Load(device.get(), shader),
            renderpass.get(), 0, config);
    }

    /// Clears the frame image to black, records `draw` inside the render pass and reads the image back.
    void Render(std::function<void(VkCommandBuffer)> const& draw) {
        CommandBuffer::Run(device.get(), device->graphicsQueue, [&](VkCommandBuffer commandBuffer) {
            VkImageSubresourceRange range{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
            image->Transition(commandBuffer, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
            VkClearColorValue black{};
            black.float32[3] = 1.0f;
            vkCmdClearColorImage(commandBuffer, image->image, VK_IMAGE_LAYOUT_GENERAL, &black, 1, &range);

            renderpass->Begin(commandBuffer, {view->view}, {}, VK_SUBPASS_CONTENTS_INLINE);
            pipeline->Bind(commandBuffer, {});
            draw(commandBuffer);
            renderpass->End(commandBuffer);

            image->Transition(commandBuffer, VK_IMAGE_LAYOUT_GENERAL, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL);
            VkBufferImageCopy region{};
            region.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
            region.imageExtent = {Size, Size, 1};
            vkCmdCopyImageToBuffer(commandBuffer, image->image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL,
                readback->buffer, 1, &region);
            VkMemoryBarrier toHost{};
            toHost.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
            toHost.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
            toHost.dstAccessMask = VK_ACCESS_HOST_READ_BIT;
            vkCmdPipelineBarrier(commandBuffer, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_HOST_BIT, 0, 1,
                &toHost, 0, nullptr, 0, nullptr);
        }, "pipeline test frame");
        pixels.resize(Size * Size);
        std::memcpy(pixels.data(), readback->Map(), Size * Size * sizeof(Pixel));
        readback->Unmap();
    }

    Pixel At(unsigned x, unsigned y) const { return pixels[y * Size + x]; }

    /// Checks the crosshair's white arms through (centreX, centreY): 2 pixels thick, 20 long.
    void ExpectCrossAt(unsigned centreX, unsigned centreY) {
        for (unsigned offset = 0; offset < 20; ++offset) {
            unsigned along = centreX - 10 + offset;
            EXPECT_TRUE(At(along, centreY).White()) << "row pixel " << along;
            EXPECT_TRUE(At(along, centreY - 1).White()) << "row pixel " << along;
            along = centreY - 10 + offset;
            EXPECT_TRUE(At(centreX, along).White()) << "column pixel " << along;
        }
        // Between the arms and beyond their ends, the point's fragments are discarded.
        EXPECT_TRUE(At(centreX - 6, centreY - 6).Black());
        EXPECT_TRUE(At(centreX + 5, centreY + 5).Black());
        EXPECT_TRUE(At(centreX - 12, centreY).Black());
    }

    std::unique_ptr<Device> device;
    std::unique_ptr<Image> image;
    std::unique_ptr<ImageView> view;
    std::unique_ptr<Buffer> readback;
    std::unique_ptr<Renderpass> renderpass;
    std::unique_ptr<PipelineLayout> layout;
    std::unique_ptr<GraphicsPipeline> pipeline;
    std::vector<Pixel> pixels;
};

TEST_F(PipelineTest, CrosshairDrawsAWhiteCrossAtTheCentre) {
    MakePipeline("game/graphics/crosshair", {.topology = VK_PRIMITIVE_TOPOLOGY_POINT_LIST});
    EXPECT_THAT(pipeline->shader->pipelines, testing::ElementsAre(pipeline.get()));

    Render([&](VkCommandBuffer commandBuffer) { pipeline->Draw(commandBuffer, 1, 1); });

    EXPECT_TRUE(At(Size / 2, Size / 2).White());
    EXPECT_TRUE(At(0, 0).Black());
    EXPECT_TRUE(At(Size - 1, Size - 1).Black());
    ExpectCrossAt(Size / 2, Size / 2);
}

TEST_F(PipelineTest, RefreshViewportMovesTheCrossToTheNewViewportsCentre) {
    MakePipeline("game/graphics/crosshair", {.topology = VK_PRIMITIVE_TOPOLOGY_POINT_LIST});
    VkViewport viewport{0.0f, 0.0f, Size / 2.0f, Size / 2.0f, 0.0f, 1.0f};
    VkRect2D scissor{{0, 0}, {Size / 2, Size / 2}};
    VkPipelineViewportStateCreateInfo viewportState{};
    viewportState.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewportState.viewportCount = 1;
    viewportState.pViewports = &viewport;
    viewportState.scissorCount = 1;
    viewportState.pScissors = &scissor;
    pipeline->RefreshViewport(renderpass.get(), viewportState);

    Render([&](VkCommandBuffer commandBuffer) { pipeline->Draw(commandBuffer, 1, 1); });

    EXPECT_TRUE(At(Size / 4, Size / 4).White());
    EXPECT_TRUE(At(Size / 2, Size / 2).Black());
    ExpectCrossAt(Size / 4, Size / 4);
}

TEST_F(PipelineTest, ColliderShaderDrawsIndexedTrianglesFromBufferAddresses) {
    VkPushConstantRange range{VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT, 0, 128};
    MakePipeline("game/graphics/physicsCollider", {}, {range});

    // The left half of the screen as two triangles. Vertex 0 lies far off: reading a wrong index shows.
    float const positions[] = {9, 9, 0, -1, -1, 0, 0, -1, 0, -1, 1, 0, 0, 1, 0};
    uint16_t const indices[] = {1, 2, 3, 3, 2, 4};
    VkBufferUsageFlags const usage = VK_BUFFER_USAGE_STORAGE_BUFFER_BIT | VK_BUFFER_USAGE_SHADER_DEVICE_ADDRESS_BIT;
    Buffer positionBuffer(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST, usage, sizeof(positions),
        VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT);
    Buffer indexBuffer(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST, usage, sizeof(indices),
        VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT);
    std::memcpy(positionBuffer.Map(), positions, sizeof(positions));
    positionBuffer.Flush();
    positionBuffer.Unmap();
    std::memcpy(indexBuffer.Map(), indices, sizeof(indices));
    indexBuffer.Flush();
    indexBuffer.Unmap();
    ASSERT_NE(positionBuffer.address, 0u);

    ColliderPush push{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, {1, 0, 0, 1}, positionBuffer, indexBuffer};
    Render([&](VkCommandBuffer commandBuffer) {
        vkCmdPushConstants(commandBuffer, layout->layout, range.stageFlags, 0, sizeof(push), &push);
        pipeline->Draw(commandBuffer, 6, 1);
    });

    for (unsigned y : {1u, Size / 2, Size - 2}) {
        Pixel const inside = At(Size / 4, y);
        EXPECT_TRUE(inside.r > 200 && inside.g < 16 && inside.b < 16) << "row " << y;
        EXPECT_TRUE(At(Size * 3 / 4, y).Black()) << "row " << y;
    }
}

TEST_F(PipelineTest, UnreadableShadersThrowNamingTheFile) {
    TempDirectory directory;
    WriteFile(directory.File("text.vert.spv"), "#version 460\nvoid main() {}\n");
    std::string const words(20, '\0');
    WriteFile(directory.File("zeros.vert.spv"), words);
    WriteFile(directory.File("vertexOnly.vert.spv"), ReadFile("game/graphics/crosshair.vert.spv"));
    struct Case {
        std::string path;
        std::string message;
    };
    Case const cases[] = {
        {"game/graphics/missing", "game/graphics/missing.vert.spv: cannot read shader"},
        {directory.File("text"), directory.File("text.vert.spv") + ": not SPIR-V"},
        {directory.File("zeros"), directory.File("zeros.vert.spv") + ": not SPIR-V"},
        {directory.File("vertexOnly"), directory.File("vertexOnly.frag.spv") + ": cannot read shader"},
    };
    for (Case const& c : cases) {
        try {
            Shader::Load(device.get(), c.path);
            ADD_FAILURE() << c.path << " loaded";
        } catch (std::runtime_error const& error) {
            EXPECT_EQ(std::string(error.what()), c.message);
        }
    }
}

}
