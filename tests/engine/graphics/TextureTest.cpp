#include "engine/graphics/Texture.h"

#include "tests/support/Capture.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/VulkanDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stb_image.h>

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using quorl::graphics::Texture;
using testing::StartsWith;

namespace {

using Pixels = std::unique_ptr<stbi_uc, void (*)(void*)>;

}

// ---- SaveFile -----------------------------------------------------------------------------------------------------

TEST(TextureSaveFileTest, WritesJpegForJpegSuffixes) {
    TempDirectory directory;
    std::vector<unsigned char> const grey(8 * 8 * 3, 128);
    for (char const* name : {"a.jpg", "b.jpeg", "c.JPG"}) {
        SCOPED_TRACE(name);
        auto const path = directory.File(name);
        EXPECT_NE(Texture::SaveFile(path, 8, 8, 3, false, grey.data(), 95), 0);
        EXPECT_EQ(ReadFile(path).substr(0, 2), "\xFF\xD8");
        int width = 0, height = 0, channels = 0;
        Pixels read{stbi_load(path.c_str(), &width, &height, &channels, 3), stbi_image_free};
        ASSERT_TRUE(read);
        EXPECT_NEAR(read.get()[0], 128, 2);
    }
}

TEST(TextureSaveFileTest, WritesFloatDataAsRadianceHdr) {
    TempDirectory directory;
    std::vector<float> const data{0.5f, 1.0f, 2.0f, 10.0f, 0.25f, 0.125f, 3.0f, 3.0f, 3.0f, 0.0f, 0.75f, 100.0f};
    auto const path = directory.File("light.hdr");
    EXPECT_NE(Texture::SaveFile(path, 2, 2, 3, true, reinterpret_cast<unsigned char const*>(data.data()), 0), 0);

    EXPECT_THAT(ReadFile(path), StartsWith("#?RADIANCE"));
    int width = 0, height = 0, channels = 0;
    std::unique_ptr<float, void (*)(void*)> read{stbi_loadf(path.c_str(), &width, &height, &channels, 3),
        stbi_image_free};
    ASSERT_TRUE(read);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 2);
    for (size_t i = 0; i < data.size(); ++i) {
        // RGBE keeps 8 bits of mantissa against the pixel's largest component.
        float const largest = std::max({data[i / 3 * 3], data[i / 3 * 3 + 1], data[i / 3 * 3 + 2]});
        EXPECT_NEAR(read.get()[i], data[i], largest / 128.0f) << i;
    }
}

TEST(TextureSaveFileTest, RefusesBadArgumentsWithoutWriting) {
    TempDirectory directory;
    std::vector<unsigned char> const data(64);
    auto const path = directory.File("bad.png");
    EXPECT_EQ(Texture::SaveFile(path, 2, 2, 0, false, data.data(), 90), 0);
    EXPECT_EQ(Texture::SaveFile(path, 2, 2, 5, false, data.data(), 90), 0);
    EXPECT_EQ(Texture::SaveFile(path, 2, 2, 4, false, nullptr, 90), 0);
    EXPECT_EQ(Texture::SaveFile(path, 0, 2, 4, false, data.data(), 90), 0);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(Texture::SaveFile(directory.File("missing/folder.png"), 2, 2, 4, false, data.data(), 90), 0);
}

// ---- On the device ------------------------------------------------------------------------------------------------

using TextureTest = VulkanDeviceTest;

TEST_F(TextureTest, SavedPngsHoldTheirPixelsAndLoadAsRgba8AndLoadNamesTheFileItCannotRead) {
    TempDirectory directory;
    std::vector<unsigned char> rgba(7 * 5 * 4);
    for (size_t i = 0; i < rgba.size(); ++i)
        rgba[i] = static_cast<unsigned char>(i * 37 + 11);
    struct Case {
        uint32_t width, height;
        int channels;
        std::vector<unsigned char> file, expected;
    };
    // Grey stands for all three colours, and a file without alpha is opaque.
    for (Case const& c : {Case{7, 5, 4, rgba, rgba},
             Case{2, 1, 3, {10, 20, 30, 40, 50, 60}, {10, 20, 30, 255, 40, 50, 60, 255}},
             Case{2, 1, 2, {10, 200, 20, 100}, {10, 10, 10, 200, 20, 20, 20, 100}}}) {
        SCOPED_TRACE(c.channels);
        auto const path = directory.File("pattern" + std::to_string(c.channels) + ".png");
        ASSERT_NE(Texture::SaveFile(path, int(c.width), int(c.height), c.channels, false, c.file.data(), 0), 0);
        EXPECT_EQ(ReadFile(path).substr(1, 3), "PNG");
        auto const texture = Texture::Load(device.get(), path);
        EXPECT_EQ(texture->width, c.width);
        EXPECT_EQ(texture->height, c.height);
        EXPECT_EQ(texture->format, VK_FORMAT_R8G8B8A8_UNORM);
        EXPECT_EQ(texture->layout, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL);
        EXPECT_EQ(ReadBack(*texture), c.expected);
    }

    auto const absent = directory.File("absent.png");
    auto const error = ErrorOf([&] { Texture::Load(device.get(), absent); });
    EXPECT_THAT(error, StartsWith(absent + ": "));
    EXPECT_GT(error.size(), absent.size() + 2) << "the reason follows the path";
}
