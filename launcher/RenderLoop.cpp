#include "RenderLoop.h"

#include "engine/graphics/Window.h"
#include "game/Game.h"
#include "game/graphics/GameRenderer.h"

#include <ctime>
#include <filesystem>
#include <iostream>

namespace {

constexpr int kKeyEscape = 256;
constexpr int kKeyF4 = 293;
constexpr int kRelease = 0;
constexpr auto kEscapeHoldToQuit = std::chrono::seconds(2);
constexpr char kScreenshotFolder[] = "../Meridon-data/screenshots";

std::string ScreenshotName() {
    std::time_t now = std::time(nullptr);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d_%H-%M-%S", std::localtime(&now));
    return std::string(kScreenshotFolder) + "/screenshot_" + stamp + ".png";
}

}

RenderLoop::RenderLoop(game::graphics::GameRenderer& renderer, quorl::graphics::Window* window, double hz)
    : _renderer(renderer)
    , _window(window)
    , _period(hz > 0 ? std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1.0 / hz))
                     : Clock::duration::zero())
    , _nextFrame(Clock::now()) {
    if (_window) {
        _window->AddCallback_Key("launcher_screenshot", [this](int key, int, int action, int) {
            if (key == kKeyF4 && action == kRelease)
                _screenshotAsked = true;
        });
    }
}

RenderLoop::~RenderLoop() {
    if (_window)
        _window->RemoveCallback_Key("launcher_screenshot");
}

double RenderLoop::Poll() {
    auto now = Clock::now();
    if (_window && _window->GetKey(kKeyEscape)) {
        if (!_escapeSince)
            _escapeSince = now;
        else if (now - *_escapeSince >= kEscapeHoldToQuit)
            Game::Quit();
    } else {
        _escapeSince.reset();
    }
    if (now < _nextFrame)
        return std::chrono::duration<double>(_nextFrame - now).count();

    // A late frame starts the schedule afresh rather than rendering a burst to catch up.
    _nextFrame = std::max(_nextFrame + _period, now);
    RenderFrame();
    if (_screenshotAsked.exchange(false))
        SaveScreenshot(ScreenshotName());
    return std::chrono::duration<double>(_nextFrame - Clock::now()).count();
}

void RenderLoop::RenderFrame() {
    Game::mainRenderingFramerate.Tick();
    quorl::FPSCounter::BusyScope busy(Game::mainRenderingFramerate);
    _renderer.RenderFrame();
}

bool RenderLoop::SaveScreenshot(std::string const& path) {
    std::error_code ignored;  // a folder that cannot be made shows as the save's own error
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    vkDeviceWaitIdle(_renderer.device->handle);
    VkImageLayout layout = _renderer.Headless() ? VK_IMAGE_LAYOUT_GENERAL : VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
    VkExtent2D extent{_renderer.swapchain.width, _renderer.swapchain.height};
    if (!_renderer.SaveImage(_renderer.CurrentImage(), extent, _renderer.swapchain.format, layout, path, 90, true)) {
        std::cerr << "meridon: cannot save the screenshot " << path << std::endl;
        return false;
    }
    std::cout << "Screenshot saved to " << path << std::endl;
    return true;
}
