#pragma once

#include "engine/graphics/WindowHeadless.h"
#include "game/input/Joystick.h"
#include "tests/support/GameFixture.h"

#include <memory>

/// A Game on a headless window, into which the tests plug devices as a user would.
class GameInputTest : public GameTest {
protected:
    void SetUp() override {
        GameTest::SetUp();
        Game::window = &window;
    }
    void TearDown() override {
        Game::_joysticks.clear();
        Game::window = nullptr;
        GameTest::TearDown();
    }

    /// Connects `device` to the window in `slot` and hands the game a Joystick on it, as the launcher does.
    std::shared_ptr<game::input::Joystick> Plug(int slot, quorl::graphics::WindowHeadless::Device const& device) {
        window.ConnectJoystick(slot, device);
        return Game::_joysticks[slot] = std::make_shared<game::input::Joystick>(slot);
    }

    quorl::graphics::WindowHeadless window;
};
