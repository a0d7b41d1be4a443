#include "engine/renderer/QuorlRenderer.h"

#include "engine/graphics/WindowGlfw.h"
#include "engine/graphics/WindowHeadless.h"
#include "tests/support/VulkanDevice.h"

#include <gtest/gtest.h>
#include <imgui.h>

#include <cstdlib>
#include <memory>
#include <vector>

using quorl::graphics::WindowHeadless;
using quorl::renderer::QuorlRenderer;

namespace {

constexpr uint32_t kWidth = 160;
constexpr uint32_t kHeight = 96;

/// Paints the frame image one colour from its render commands. The order of all the stages is GameRendererTest's:
/// the game renderer hands each one to the modules' hooks.
class PaintingRenderer : public QuorlRenderer {
public:
    using QuorlRenderer::QuorlRenderer;

    void FrameUpdateUi() override {
        if (drawUi) {
            ImGui::Begin("Test window");
            ImGui::Text("Frame %llu", static_cast<unsigned long long>(frameNumber));
            ImGui::End();
            UiShowAdvancedPerformanceMetrics();
        }
    }
    void FrameRenderCommands(VkCommandBuffer commandBuffer) override {
        if (paint.float32[0] < 0.0f)
            return;
        VkImageSubresourceRange const range{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
        vkCmdClearColorImage(commandBuffer, CurrentImage(), VK_IMAGE_LAYOUT_GENERAL, &paint, 1, &range);
    }

    /// Red 1, green 0.2 (51 of 255 exactly), blue 0, opaque. A negative red paints nothing.
    VkClearColorValue paint{{1.0f, 0.2f, 0.0f, 1.0f}};
    bool drawUi = false;
};

/// The ImGui context the renderer takes, one that keeps no settings file in the tests' tree.
struct ImGuiContextWithoutIni {
    ImGuiContextWithoutIni() {
        ImGui::CreateContext();
        ImGui::GetIO().IniFilename = nullptr;
    }
    ~ImGuiContextWithoutIni() { ImGui::DestroyContext(); }
};

/// The frame image's pixels, B, G, R, A bytes per pixel.
std::vector<uint8_t> ReadBack(QuorlRenderer& renderer) {
    renderer.vkDeviceWaitIdle(renderer.device->handle);
    return ReadImage(renderer.device.get(), renderer.CurrentImage(), VK_IMAGE_LAYOUT_GENERAL, renderer.swapchain.width,
        renderer.swapchain.height);
}

class QuorlRendererTest : public testing::Test {
protected:
    QuorlRendererTest() {
        window.width = static_cast<int>(kWidth);
        window.height = static_cast<int>(kHeight);
        renderer = std::make_unique<PaintingRenderer>(&window, "QuorlRendererTest", 1,
            quorl::vk::PhysicalDevice::Features{}, true, true);
    }

    /// Validation is on: any message it reports fails the test.
    void TearDown() override { EXPECT_EQ(renderer->device->ValidationMessageCount(), 0u); }

    ImGuiContextWithoutIni imgui;
    WindowHeadless window;
    std::unique_ptr<PaintingRenderer> renderer;
};

}

TEST_F(QuorlRendererTest, RendersHeadlessAtTheWindowSizeKeepsWhatFramesDrawAndStartsEachFrameOpaqueBlack) {
    EXPECT_TRUE(renderer->Headless());
    EXPECT_EQ(renderer->swapchain.width, kWidth);
    EXPECT_EQ(renderer->swapchain.height, kHeight);
    EXPECT_EQ(renderer->swapchain.format, VK_FORMAT_B8G8R8A8_UNORM);

    renderer->StartRendering();
    std::vector<VkImage> images;
    for (int i = 0; i < 3; ++i) {
        renderer->RenderFrame();
        images.push_back(renderer->CurrentImage());
    }
    EXPECT_EQ(renderer->frameNumber, 3u);
    EXPECT_NE(images[0], images[1]) << "consecutive frames draw into different images";
    EXPECT_EQ(images[0], images[2]);
    std::vector<uint8_t> pixels = ReadBack(*renderer);
    auto const at = [&](size_t pixel) { return std::vector<uint8_t>(&pixels[pixel * 4], &pixels[pixel * 4] + 4); };
    for (size_t pixel : {size_t{0}, size_t{kWidth * kHeight / 2 + kWidth / 2}, size_t{kWidth * kHeight - 1}})
        EXPECT_EQ(at(pixel), (std::vector<uint8_t>{0, 51, 255, 255})) << "pixel " << pixel;

    // Both images hold the paint now: frames that paint nothing must not show it.
    renderer->paint.float32[0] = -1.0f;
    renderer->RenderFrame();
    renderer->RenderFrame();
    pixels = ReadBack(*renderer);
    for (size_t pixel = 0; pixel < kWidth * kHeight; ++pixel)
        ASSERT_EQ(at(pixel), (std::vector<uint8_t>{0, 0, 0, 255})) << "pixel " << pixel;
    renderer->StopRendering();

    // Rendering starts again after a stop, and the frame images follow the window's size.
    renderer->StartRendering();
    renderer->RenderFrame();
    window.width = 64;
    window.height = 32;
    renderer->ReCreateSwapchain();
    EXPECT_EQ(renderer->swapchain.width, 64u);
    EXPECT_EQ(renderer->swapchain.height, 32u);
    renderer->RenderFrame();
    EXPECT_EQ(ReadBack(*renderer).size(), 64u * 32u * 4u);
    renderer->StopRendering();
    EXPECT_EQ(renderer->frameNumber, 7u);
}

TEST_F(QuorlRendererTest, DrawsImGuiWindowsOverTheFrame) {
    renderer->paint = {{0.0f, 0.0f, 0.0f, 1.0f}};
    renderer->drawUi = true;
    renderer->StartRendering();
    for (int i = 0; i < 3; ++i)
        renderer->RenderFrame();
    ASSERT_NE(ImGui::GetDrawData(), nullptr);
    EXPECT_GT(ImGui::GetDrawData()->TotalVtxCount, 0);

    std::vector<uint8_t> const pixels = ReadBack(*renderer);
    size_t drawn = 0;
    for (size_t i = 0; i < pixels.size(); i += 4)
        drawn += pixels[i] != 0 || pixels[i + 1] != 0 || pixels[i + 2] != 0;
    EXPECT_GT(drawn, 0u) << "the windows show on the black frame";
    renderer->StopRendering();
}

TEST(QuorlRendererWindowTest, PresentsToAWindowAndReCreatesItsSwapchain) {
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr)
        GTEST_SKIP() << "no display";
    ImGuiContextWithoutIni imgui;
    quorl::graphics::WindowGlfw window("QuorlRendererTest", 320, 200);
    PaintingRenderer renderer(&window, "QuorlRendererTest", 1, quorl::vk::PhysicalDevice::Features{}, true, true);
    EXPECT_FALSE(renderer.Headless());
    EXPECT_EQ(renderer.swapchain.width, 320u);
    EXPECT_EQ(renderer.swapchain.height, 200u);
    EXPECT_GE(renderer.swapchain.images.size(), 2u);
    renderer.drawUi = true;
    renderer.StartRendering();
    for (int i = 0; i < 6; ++i) {
        window.PollEvents();
        renderer.RenderFrame();
        if (i == 2)
            renderer.ReCreateSwapchain();
    }
    renderer.StopRendering();
    EXPECT_EQ(renderer.frameNumber, 6u);
    EXPECT_EQ(renderer.device->ValidationMessageCount(), 0u);
}
