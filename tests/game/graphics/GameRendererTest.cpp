#include "game/graphics/GameRenderer.h"

#include "game/GameSettings.h"
#include "game/Options.h"
#include "tests/support/GameRendererFixture.h"

#include <stb/stb_image.h>

#include <array>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>

using game::graphics::GameRenderer;
using Entries = std::vector<std::string>;

namespace {

using GameRendererTest = GameWithRendererTest;
using Rgba = std::array<int, 4>;

/// Stb's reading of a PNG, RGBA.
struct Png {
    explicit Png(std::string const& path) : pixels(stbi_load(path.c_str(), &width, &height, &channels, 4)) {}
    ~Png() { stbi_image_free(pixels); }
    Rgba At(int x, int y) const {
        unsigned char const* p = pixels + (y * width + x) * 4;
        return {p[0], p[1], p[2], p[3]};
    }
    int width = 0, height = 0, channels = 0;
    unsigned char* pixels;
};

}

// ---- Frames and their hooks -----------------------------------------------------------------------------------------

TEST_F(GameRendererTest, FramesRunEveryStageInOrderWithTheSortedListsInTheirOrder) {
    GAME_Mod::LoadModule("TEST_alpha", true);  // sorts second
    GAME_Mod::LoadModule("TEST_beta", true);   // sorts first
    SortAllLists();
    renderer->StartRendering();
    std::vector<Entries> frames(2);
    for (auto& frame : frames) {
        journal::Clear();
        renderer->RenderFrame();
        // The module prefix without its class part.
        for (auto const& entry : journal::Entries())
            if (entry.find(":Renderer_") != std::string::npos)
                frame.push_back(entry.substr(0, entry.find('.')) + entry.substr(entry.find(':')));
    }
    renderer->StopRendering();
    EXPECT_EQ(journal::EntriesOf("Renderer_StopRendering").size(), 2u);

    Entries expected;
    for (std::string const hook : {"Renderer_FrameCollectGarbage", "Renderer_FrameUpdateDescriptorSets",
             "Renderer_FrameBeforePost", "Renderer_FrameInit", "Renderer_FrameUpdateUi", "Renderer_FrameBeforeUpdate",
             "Renderer_FrameUpdate", "Renderer_FrameBeforeRender", "Renderer_FrameAfterRender",
             "Renderer_FrameAfterUpdate", "Renderer_FramePushCommands", "Renderer_FrameBuildCommands",
             "Renderer_FrameRenderCommands", "Renderer_FrameResolveCommands", "Renderer_FrameBlitCommands",
             "Renderer_FramePostCommands", "Renderer_FrameOverlayCommands"})
        expected.insert(expected.end(), {"TEST_beta:" + hook, "TEST_alpha:" + hook});
    // Stages over all modules answer in registry order: put each such pair in list order. The sorted stages must
    // already be in it: beta (1) before alpha (2).
    std::set<std::string> const overAllModules{"Renderer_FrameCollectGarbage", "Renderer_FrameUpdateDescriptorSets",
        "Renderer_FrameBeforePost", "Renderer_FrameInit", "Renderer_FramePushCommands", "Renderer_FrameBuildCommands"};
    for (Entries frame : frames) {
        for (size_t i = 0; i + 1 < frame.size(); i += 2)
            if (overAllModules.contains(frame[i].substr(frame[i].find(':') + 1)) && frame[i].starts_with("TEST_alpha"))
                std::swap(frame[i], frame[i + 1]);
        EXPECT_EQ(frame, expected);
    }
}

TEST_F(GameRendererTest, ScreenshotHoldsWhatAModuleDrewAndTheCrosshairOnlyInMouseLookAndRefusesOtherFormats) {
    GAME_Mod::LoadModule("TEST_pattern", true);
    SortAllLists();
    std::string const path = directory.File("frame.png");
    Rgba const black{0, 0, 0, 255}, white{255, 255, 255, 255};
    Game::uiVisible = true;
    renderer->StartRendering();
    for (bool mouseLook : {true, false}) {
        SCOPED_TRACE(mouseLook ? "mouse look" : "a free mouse");
        Game::_mouseLook = mouseLook;
        renderer->RenderFrame();
        vkDeviceWaitIdle(renderer->device->handle);
        ASSERT_NE(renderer->SaveImage(renderer->CurrentImage(), {renderer->swapchain.width, renderer->swapchain.height},
                      renderer->swapchain.format, VK_IMAGE_LAYOUT_GENERAL, path, 90, true),
            0);
        Png const png(path);
        ASSERT_NE(png.pixels, nullptr);
        EXPECT_EQ(png.width, 1280);
        EXPECT_EQ(png.height, 720);
        // The red and white corners are the launcher test's; these catch a transposed or swizzled copy.
        EXPECT_EQ(png.At(46, 33), (Rgba{0, 255, 0, 255}));
        EXPECT_EQ(png.At(33, 46), (Rgba{0, 0, 255, 255}));
        EXPECT_EQ(png.At(48, 48), black);
        EXPECT_EQ(png.At(640, 360), mouseLook ? white : black) << "the crosshair";
    }
    renderer->StopRendering();

    std::string const refused = directory.File("refused.png");
    EXPECT_EQ(renderer->SaveImage(renderer->CurrentImage(), {4, 4}, VK_FORMAT_R16G16B16A16_SFLOAT,
                  VK_IMAGE_LAYOUT_GENERAL, refused, 90, false),
        0);
    EXPECT_FALSE(std::filesystem::exists(refused));
}

// ---- Deferred destruction -------------------------------------------------------------------------------------------

TEST_F(GameRendererTest, TrashAndPendingTexturesHeldByNobodySurviveOneWholeFrame) {
    renderer->StartRendering();
    renderer->RenderFrame();
    auto wanted = std::make_shared<quorl::graphics::Texture>(renderer->device.get(), 4, 4, VK_FORMAT_R8G8B8A8_UNORM);
    std::weak_ptr<quorl::graphics::Texture> abandoned;
    {
        auto texture = std::make_shared<quorl::graphics::Texture>(renderer->device.get(), 4, 4,
            VK_FORMAT_R8G8B8A8_UNORM);
        abandoned = texture;
        std::lock_guard lock(renderer->pendingTexturesMutex);
        renderer->pendingTextures = {texture, wanted};
    }
    renderer->RenderFrame();
    EXPECT_TRUE(renderer->pendingTextures.empty());
    EXPECT_FALSE(abandoned.expired()) << "an abandoned texture is trashed, not pushed";
    renderer->RenderFrame();
    EXPECT_FALSE(abandoned.expired()) << "released while the frame that may read it was in flight";
    renderer->RenderFrame();
    EXPECT_TRUE(abandoned.expired());
    EXPECT_EQ(wanted.use_count(), 1);
    renderer->StopRendering();
}

// ---- Floating world origin ------------------------------------------------------------------------------------------

TEST_F(GameRendererTest, ThresholdZeroMakesTheOriginTrackTheCameraEveryFrame) {
    game::Options::Set("world_origin_reset_distance_threshold", 0.0f);
    for (double x : {0.25, 3.5, 3.5}) {
        renderer->frame.cameraPosition = {x, -2.75, 1e7 + 0.5};
        renderer->FrameInit();
        EXPECT_EQ(renderer->worldOriginChanged, 1);
        EXPECT_EQ(glm::dvec3(renderer->worldOrigin[3]), renderer->frame.cameraPosition);
        // The view is relative to the origin, so the camera sits at its centre.
        EXPECT_NEAR(glm::length(glm::dvec3(renderer->frame.viewMatrix[3])), 0.0, 1e-9);
    }
}

TEST_F(GameRendererTest, AJumpPastTheThresholdRoundsTheOriginAndSmallMovesKeepIt) {
    game::Options::Set("world_origin_reset_distance_threshold", 100.0);
    renderer->frame.cameraPosition = {60.0, 0.0, 0.0};
    renderer->FrameInit();
    EXPECT_EQ(renderer->worldOriginChanged, 0);

    renderer->frame.cameraPosition = {150.6, -20.4, 0.5};
    renderer->FrameInit();
    EXPECT_EQ(renderer->worldOriginChanged, 1);
    EXPECT_EQ(glm::dvec3(renderer->worldOrigin[3]), glm::dvec3(151.0, -20.0, 1.0));
    EXPECT_EQ(renderer->worldOriginX, 151);
    EXPECT_EQ(renderer->worldOriginY, -20);
    EXPECT_EQ(renderer->worldOriginZ, 1);
    EXPECT_NEAR(renderer->frame.viewMatrix[3].x, 0.4, 1e-9);
    EXPECT_NEAR(renderer->frame.viewMatrix[3].y, 0.4, 1e-9);

    renderer->frame.cameraPosition = {200.0, -20.0, 1.0};
    renderer->FrameInit();
    EXPECT_EQ(renderer->worldOriginChanged, 0);
    EXPECT_EQ(renderer->worldOriginX, 151);
}

// ---- Settings and sizes ---------------------------------------------------------------------------------------------

TEST(GameRendererPresets, TheGpuNameChoosesThePreset) {
    std::pair<char const*, int> const cases[] = {{"NVIDIA GeForce RTX 4090", 5}, {"GeForce RTX_3060 Laptop GPU", 2},
        {"NVIDIA RTX-2070 SUPER", 2}, {"RTX 5090", 6}, {"NVIDIA GeForce RTX 3080 Ti", 4},
        {"NVIDIA GeForce RTX 4060", 3}, {"llvmpipe (LLVM 15.0.6, 256 bits)", 3}, {"AMD Radeon RX 7900 XTX", 3},
        {"NVIDIA H100 80GB HBM3", 3}};
    for (auto [name, preset] : cases)
        EXPECT_EQ(GameRenderer::PresetForDeviceName(name), preset) << name;
}

TEST_F(GameRendererTest, PresetsSetTheUpscalingQuality) {
    std::pair<int, int> const cases[] = {{1, 1}, {4, 1}, {5, 2}, {6, 3}, {7, 6}, {0, 9}, {8, 9}};
    for (auto [preset, quality] : cases) {
        Game::settings->graphics_preset = preset;
        Game::settings->upscaling_quality_setting = 9;
        renderer->ConfigureSettingsFromPreset();
        EXPECT_EQ(Game::settings->upscaling_quality_setting, quality) << "preset " << preset;
    }
}

TEST_F(GameRendererTest, FirstStartDetectsThePresetAndSavesIt) {
    renderer.reset();
    Game::settings->graphics_preset = -1;
    renderer = std::make_unique<GameRenderer>(nullptr, "GameRendererTest", 1, quorl::vk::PhysicalDevice::Features{},
        true);
    int const detected = GameRenderer::PresetForDeviceName(renderer->device->physicalDevice.properties.deviceName);
    EXPECT_EQ(Game::settings->graphics_preset, detected);
    auto reread = std::make_shared<game::GameSettings>(directory.File("settings.ini"), std::nullopt);
    reread->ReadConfig();
    EXPECT_EQ(reread->graphics_preset, detected);
}

TEST_F(GameRendererTest, BoundingSizeAtTheCameraIsTheFullFactor) {
    renderer->frame.cameraPosition = {5.0, 6.0, 7.0};
    renderer->frame.renderScale = 1.0f;
    double const mean = (renderer->swapchain.width + renderer->swapchain.height) * 0.5;
    EXPECT_DOUBLE_EQ(renderer->GetFixedBoundingSizeInScreenPixels({5.0, 6.0, 7.0}, 2.0, 90.0),
        6.283185307179586 * mean);
    // Ten units away at 90 degrees: twice (1 / 10) / (pi / 2) of the mean size.
    double const angle = (1.0 / 10.0) / (90.0 * 0.017453292519943295);
    EXPECT_DOUBLE_EQ(renderer->GetFixedBoundingSizeInScreenPixels({15.0, 6.0, 7.0}, 1.0, 90.0), mean * 2 * angle);
}

TEST_F(GameRendererTest, CleanupEmptiesTheAimReferencesSoTheNextOneIsIndexZero) {
    EXPECT_EQ(renderer->AddAimReference("TEST_alpha", 5), 1u);
    GameRenderer::Cleanup();
    EXPECT_EQ(renderer->AddAimReference("TEST_alpha", 6), 0u);
    EXPECT_EQ(std::any_cast<int>(renderer->aim.reference.data), 0);
}
