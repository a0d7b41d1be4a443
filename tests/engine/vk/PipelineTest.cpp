#include "engine/vk/GraphicsPipeline.h"

#include "engine/vk/ImageView.h"
#include "engine/vk/PipelineLayout.h"
#include "engine/vk/Renderpass.h"
#include "engine/vk/Shader.h"

#include "tests/support/Capture.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/VulkanDevice.h"

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

/// The crosshair is one large point; the collider shader reads buffers by address, which the device always allows.
PhysicalDevice::Features LargePoints() {
    PhysicalDevice::Features features;
    features.features2.features.largePoints = VK_TRUE;
    return features;
}

/// A 64 x 64 frame image in GENERAL layout that a LOAD render pass draws over, as the frame driver's image is.
class PipelineTest : public VulkanDeviceTest {
protected:
    PipelineTest() : VulkanDeviceTest(LargePoints()) {}

    void MakePipeline(std::string const& shader, GraphicsPipelineConfig const& config,
        std::vector<VkPushConstantRange> const& pushConstants = {}) {
        layout = std::make_unique<PipelineLayout>(device.get(), std::vector<VkDescriptorSetLayout>{}, pushConstants);
        pipeline = std::make_unique<GraphicsPipeline>(device.get(), layout.get(), Shader::Load(device.get(), shader),
            &renderpass, 0, config);
    }

    /// Clears the frame image to black, records `draw` inside the render pass and reads the image back.
    void Render(std::function<void(VkCommandBuffer)> const& draw) {
        Run([&](VkCommandBuffer commandBuffer) {
            VkImageSubresourceRange range{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
            image.Transition(commandBuffer, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
            VkClearColorValue black{};
            black.float32[3] = 1.0f;
            vkCmdClearColorImage(commandBuffer, image.image, VK_IMAGE_LAYOUT_GENERAL, &black, 1, &range);
            renderpass.Begin(commandBuffer, {view.view}, {}, VK_SUBPASS_CONTENTS_INLINE);
            pipeline->Bind(commandBuffer, {});
            draw(commandBuffer);
            renderpass.End(commandBuffer);
        });
        auto const bytes = ReadImage(device.get(), image.image, VK_IMAGE_LAYOUT_GENERAL, Size, Size);
        pixels.resize(Size * Size);
        std::memcpy(pixels.data(), bytes.data(), bytes.size());
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

    Image image{device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE, ImageInfo2D(VK_FORMAT_B8G8R8A8_UNORM,
        VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT, Size,
        Size)};
    ImageView view{&image};
    Renderpass renderpass{device.get(), VK_FORMAT_B8G8R8A8_UNORM, Size, Size, 27, nullptr, VK_ATTACHMENT_LOAD_OP_LOAD};
    std::unique_ptr<PipelineLayout> layout;
    std::unique_ptr<GraphicsPipeline> pipeline;
    std::vector<Pixel> pixels;
};

TEST_F(PipelineTest, CrosshairDrawsAWhiteCrossAtTheCentreOfTheViewportItWasLastGiven) {
    MakePipeline("game/graphics/crosshair", {.topology = VK_PRIMITIVE_TOPOLOGY_POINT_LIST});
    EXPECT_THAT(pipeline->shader->pipelines, testing::ElementsAre(pipeline.get()));
    for (unsigned const extent : {Size, Size / 2}) {
        SCOPED_TRACE(extent);
        if (extent != Size) {
            VkViewport viewport{0.0f, 0.0f, float(extent), float(extent), 0.0f, 1.0f};
            VkRect2D scissor{{0, 0}, {extent, extent}};
            pipeline->RefreshViewport(&renderpass, {.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO,
                .pNext = nullptr, .flags = 0, .viewportCount = 1, .pViewports = &viewport, .scissorCount = 1,
                .pScissors = &scissor});
        }
        Render([&](VkCommandBuffer commandBuffer) { pipeline->Draw(commandBuffer, 1, 1); });
        ExpectCrossAt(extent / 2, extent / 2);
        EXPECT_TRUE(At(0, 0).Black());
        EXPECT_TRUE(At(Size - 1, Size - 1).Black());
    }
}

TEST_F(PipelineTest, ColliderShaderDrawsIndexedTrianglesFromBufferAddresses) {
    VkPushConstantRange range{VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT, 0, 128};
    MakePipeline("game/graphics/physicsCollider", {}, {range});

    // The left half of the screen as two triangles. Vertex 0 lies far off: reading a wrong index shows.
    float const positions[] = {9, 9, 0, -1, -1, 0, 0, -1, 0, -1, 1, 0, 0, 1, 0};
    uint16_t const indices[] = {1, 2, 3, 3, 2, 4};
    auto const upload = [&](void const* data, unsigned long size) {
        auto buffer = std::make_unique<Buffer>(device.get(), VMA_MEMORY_USAGE_AUTO_PREFER_HOST,
            VK_BUFFER_USAGE_STORAGE_BUFFER_BIT, size, VMA_ALLOCATION_CREATE_HOST_ACCESS_SEQUENTIAL_WRITE_BIT);
        std::memcpy(buffer->Map(), data, size);
        buffer->Flush();
        buffer->Unmap();
        return buffer;
    };
    auto const positionBuffer = upload(positions, sizeof(positions));
    auto const indexBuffer = upload(indices, sizeof(indices));
    ASSERT_NE(positionBuffer->address, 0u);

    ColliderPush push{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, {1, 0, 0, 1}, *positionBuffer, *indexBuffer};
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
    WriteFile(directory.File("vertexOnly.vert.spv"), ReadFile("game/graphics/crosshair.vert.spv"));
    struct Case {
        std::string path;
        std::string message;
    };
    Case const cases[] = {
        {"game/graphics/missing", "game/graphics/missing.vert.spv: cannot read shader"},
        {directory.File("text"), directory.File("text.vert.spv") + ": not SPIR-V"},
        {directory.File("vertexOnly"), directory.File("vertexOnly.frag.spv") + ": cannot read shader"},
    };
    for (Case const& c : cases)
        EXPECT_EQ(ErrorOf([&] { Shader::Load(device.get(), c.path); }), c.message);
}

}
