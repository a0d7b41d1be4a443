#include "engine/graphics/DynamicAsyncTexture.h"

#include "tests/support/TempDirectory.h"
#include "tests/support/VulkanDevice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using quorl::graphics::DynamicAsyncTexture;

namespace {

/// RGBA8 pixels as the bytes of a PNG file.
std::vector<unsigned char> EncodePng(int width, int height, std::vector<unsigned char> const& rgba) {
    TempDirectory directory;
    quorl::graphics::Texture::SaveFile(directory.File("frame.png"), width, height, 4, false, rgba.data(), 0);
    auto const png = ReadFile(directory.File("frame.png"));
    return {png.begin(), png.end()};
}

std::vector<unsigned char> Solid(int width, int height, std::vector<unsigned char> const& colour) {
    std::vector<unsigned char> rgba;
    for (int i = 0; i < width * height; ++i)
        rgba.insert(rgba.end(), colour.begin(), colour.end());
    return rgba;
}

}

using DynamicAsyncTextureTest = VulkanDeviceTest;

TEST_F(DynamicAsyncTextureTest, PushUploadsTheLoadedFrameScaledToTheTexture) {
    DynamicAsyncTexture texture(device.get(), 8, 4);
    // Left half red, right half blue, at a quarter of the texture's size.
    std::vector<unsigned char> const frame{255, 0, 0, 255, 0, 0, 255, 255};
    auto const png = EncodePng(2, 1, frame);
    ASSERT_TRUE(texture.Load(png.data(), png.size()));
    Run([&](VkCommandBuffer commandBuffer) { texture.Push(commandBuffer); });

    auto const pixels = ReadBack(texture);
    for (int y = 0; y < 4; ++y) {
        SCOPED_TRACE(y);
        unsigned char const* left = &pixels[(y * 8 + 0) * 4];
        unsigned char const* right = &pixels[(y * 8 + 7) * 4];
        EXPECT_GT(left[0], 200);
        EXPECT_LT(left[2], 55);
        EXPECT_LT(right[0], 55);
        EXPECT_GT(right[2], 200);
        EXPECT_EQ(left[3], 255);
        EXPECT_EQ(right[3], 255);
    }
}

TEST_F(DynamicAsyncTextureTest, IsBlackUntilAFramePushesAndANewerFrameReplacesOneNotPushedYetAndEachPushesOnce) {
    DynamicAsyncTexture texture(device.get(), 2, 2, "video");
    auto const push = [&] { Run([&](VkCommandBuffer commandBuffer) { texture.Push(commandBuffer); }); };
    std::vector<unsigned char> const black(2 * 2 * 4, 0);
    EXPECT_EQ(texture.layout, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL);
    EXPECT_EQ(ReadBack(texture), black);
    std::string const garbage = "definitely not a PNG";
    EXPECT_FALSE(texture.Load(reinterpret_cast<unsigned char const*>(garbage.data()), garbage.size()));
    EXPECT_FALSE(texture.Load(nullptr, 0));
    push();
    EXPECT_EQ(ReadBack(texture), black) << "bytes that are no image leave nothing to push";

    auto const green = Solid(2, 2, {0, 255, 0, 255});
    auto const grey = Solid(2, 2, {90, 90, 90, 255});
    auto const redPng = EncodePng(2, 2, Solid(2, 2, {255, 0, 0, 255}));
    auto const greenPng = EncodePng(2, 2, green);
    auto const greyPng = EncodePng(2, 2, grey);
    ASSERT_TRUE(texture.Load(redPng.data(), redPng.size()));
    ASSERT_TRUE(texture.Load(greenPng.data(), greenPng.size()));
    push();
    EXPECT_EQ(ReadBack(texture), green);

    // Several pushes in a row keep the staging buffers of the earlier ones alive while their uploads may still run.
    for (int frame = 0; frame < 3; ++frame) {
        auto const& png = frame % 2 ? greenPng : greyPng;
        ASSERT_TRUE(texture.Load(png.data(), png.size()));
        push();
        push();
        EXPECT_EQ(ReadBack(texture), frame % 2 ? green : grey) << frame;
    }
}
