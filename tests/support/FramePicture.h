#pragma once

#include "game/graphics/GameRenderer.h"

#include <glm/vec3.hpp>
#include <glm/vector_relational.hpp>
#include <gtest/gtest.h>
#include <stb/stb_image.h>

#include <filesystem>
#include <string>

/// A frame as stb reads its PNG back, RGBA.
struct FramePicture {
    explicit FramePicture(std::string const& path) : pixels(stbi_load(path.c_str(), &width, &height, &channels, 4)) {}
    ~FramePicture() { stbi_image_free(pixels); }
    FramePicture(FramePicture const&) = delete;
    FramePicture& operator=(FramePicture const&) = delete;

    glm::vec3 At(int x, int y) const {
        unsigned char const* p = pixels + (size_t(y) * width + x) * 4;
        return glm::vec3(p[0], p[1], p[2]) / 255.0f;
    }

    int width = 0, height = 0, channels = 0;
    unsigned char* pixels;
};

/// Renders one frame, waits for it and keeps it as `path` (a PNG), which it reads back; no pixels when it could not.
inline FramePicture RenderAndKeep(game::graphics::GameRenderer& renderer, std::string const& path) {
    renderer.RenderFrame();
    vkDeviceWaitIdle(renderer.device->handle);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    EXPECT_NE(renderer.SaveImage(renderer.CurrentImage(), {renderer.swapchain.width, renderer.swapchain.height},
                  renderer.swapchain.format, VK_IMAGE_LAYOUT_GENERAL, path, 90, true),
        0);
    return FramePicture(path);
}

/// Within `tolerance` in every channel, 0..1.
inline ::testing::AssertionResult Near(glm::vec3 seen, glm::vec3 expected, float tolerance) {
    if (glm::all(glm::lessThanEqual(glm::abs(seen - expected), glm::vec3(tolerance))))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "saw (" << seen.r * 255 << ", " << seen.g * 255 << ", " << seen.b * 255
                                         << "), expected (" << expected.r * 255 << ", " << expected.g * 255 << ", "
                                         << expected.b * 255 << ")";
}
