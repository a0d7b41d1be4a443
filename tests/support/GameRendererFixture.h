#pragma once

#include "game/GameSettings.h"
#include "game/graphics/GameRenderer.h"
#include "tests/support/GameFixture.h"
#include "tests/support/TempDirectory.h"

#include <memory>
#include <optional>

/// A Game with a headless renderer on a real Vulkan device (lavapipe where there is no GPU) as Game::renderer,
/// validation on: each test fails on any validation message.
class GameWithRendererTest : public GameTest {
protected:
    void SetUp() override {
        GameTest::SetUp();
        Game::settings = game::GameSettings::Instance(directory.File("settings.ini"), std::nullopt);
        Game::settings->graphics_preset = 3;
        renderer = std::make_unique<game::graphics::GameRenderer>(nullptr, "GameRendererTest", 1,
            quorl::vk::PhysicalDevice::Features{}, true);
        Game::renderer = renderer.get();
    }

    void TearDown() override {
        uint32_t const messages = renderer->device->ValidationMessageCount();
        Game::renderer = nullptr;
        renderer.reset();
        Game::settings.reset();
        EXPECT_EQ(messages, 0u) << "the validation layer reported problems (see standard error)";
        GameTest::TearDown();
    }

    TempDirectory directory;
    std::unique_ptr<game::graphics::GameRenderer> renderer;
};
