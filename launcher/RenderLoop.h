#pragma once

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

namespace game::graphics { class GameRenderer; }
namespace quorl::graphics { class Window; }

/// The renderer's frames on the main thread, which GLFW wants for its calls: a frame when one is due at the render
/// rate, a screenshot after the frame in which F4 was released, and quitting when Escape is held for two seconds.
class RenderLoop {
public:
    RenderLoop(game::graphics::GameRenderer& renderer, quorl::graphics::Window* window, double hz);
    ~RenderLoop();

    /// Renders a frame if one is due. Returns the seconds until the next one is.
    double Poll();
    void RenderFrame();
    /// Saves the frame last rendered as a PNG; false, with the reason on standard error, when it cannot.
    bool SaveScreenshot(std::string const& path);

private:
    using Clock = std::chrono::steady_clock;

    game::graphics::GameRenderer& _renderer;
    quorl::graphics::Window* _window;
    Clock::duration _period;
    Clock::time_point _nextFrame;
    std::optional<Clock::time_point> _escapeSince;
    std::atomic<bool> _screenshotAsked{false};
};
