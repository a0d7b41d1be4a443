#pragma once

#include "engine/Export.h"
#include "engine/vk/Device.h"
#include "engine/vk/Image.h"
#include "engine/vk/ImageView.h"
#include "engine/vk/interface/DeviceInterface.h"

#include <vulkan/vulkan_core.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

struct GLFWwindow;

namespace quorl::vk {
class Renderpass;
class Swapchain;
}

namespace quorl::graphics {

class Window;

/// The frame driver: owns the device, the presentation target and the per-frame command buffers and fences. It
/// presents to a swapchain when given a GLFW window and to offscreen images otherwise (headless: no window, no
/// display), so the same frames run on a desk and in CI. The frame image is in VK_IMAGE_LAYOUT_GENERAL for all the
/// commands recorded in a frame, and holds the finished frame in that layout after EndFrame when headless.
class QUORL_EXPORT VulkanRenderer : public vk::interface::DeviceInterface {
public:
    /// What the frame's commands draw into.
    struct SwapchainTarget {
        VkFormat format = VK_FORMAT_B8G8R8A8_UNORM;
        uint32_t width = 0;
        uint32_t height = 0;
        std::vector<VkImage> images;
        std::vector<VkImageView> imageViews;
    };

    /// window: a WindowGlfw to present to; null or any other window renders headless at the window's size (or
    /// 1280 x 720 without one). Validation follows `validation`. Throws std::runtime_error when no device can be made.
    VulkanRenderer(Window* window, char const* name, unsigned int version, vk::PhysicalDevice::Features const& features,
        bool vsync, bool validation);
    virtual ~VulkanRenderer();

    virtual void StartRendering();
    virtual void StopRendering();
    /// Waits for the frame slot, acquires the next image. False when the swapchain is out of date: re-create it and
    /// try again next frame.
    virtual bool BeginFrame();
    /// Records the frame's command buffer: clears the frame image, calls `record`, draws the immediate-mode interface
    /// over it, and submits (waiting on `waitSemaphores` at `waitStages`, signalling `fence` too when given) and
    /// presents.
    virtual void EndFrame(std::function<void(VkCommandBuffer)> record, std::vector<VkSemaphore> waitSemaphores,
        std::vector<unsigned int> waitStages, VkFence fence);

    /// Destroys and re-creates the swapchain and everything made for its size.
    virtual void ReCreateSwapchain();
    virtual void CreateSwapchainDependantObjects();
    virtual void DestroySwapchainDependantObjects();

    bool Headless() const { return _swapchain == nullptr; }
    /// The frame image of the last frame: in GENERAL layout after EndFrame when headless.
    VkImage CurrentImage() const { return swapchain.images[swapchainImageIndex]; }

    std::unique_ptr<vk::Device> device;
    SwapchainTarget swapchain;
    uint32_t swapchainImageIndex = 0;
    bool vsync;
    Window* window;

protected:
    /// The command buffer being recorded in EndFrame; null outside it.
    VkCommandBuffer currentCommandBuffer = VK_NULL_HANDLE;

private:
    struct FrameSlot;
    /// The swapchain (reusing `old` where there is one) or the offscreen images, at the window's size.
    void CreateTarget(VkSwapchainKHR old);
    void DestroyTarget();
    void BeginImGuiFrame();
    void InitImGuiVulkan();
    void Submit(FrameSlot& slot, std::vector<VkSemaphore> const& waitSemaphores,
        std::vector<unsigned int> const& waitStages, VkFence fence);
    void Present();

    VkSurfaceKHR _surface = VK_NULL_HANDLE;
    GLFWwindow* _glfwWindow = nullptr;
    std::unique_ptr<vk::Swapchain> _swapchain;
    /// The window size the target was made for: a different one means the swapchain must be re-created.
    int _targetWidth = 0;
    int _targetHeight = 0;
    /// Set when presenting reported the swapchain out of date or suboptimal; BeginFrame then asks for re-creation.
    bool _swapchainStale = false;
    std::vector<std::unique_ptr<vk::Image>> _offscreenImages;
    std::vector<std::unique_ptr<vk::ImageView>> _offscreenViews;
    /// One per swapchain image: a presentation may still wait on it when the frame slot comes round again.
    std::vector<VkSemaphore> _renderFinished;
    std::vector<std::unique_ptr<FrameSlot>> _frames;
    uint32_t _frameIndex = 0;

    /// StartRendering has run: the ImGui context and platform side exist.
    bool _imguiReady = false;
    /// The ImGui Vulkan backend is initialised, for the current render pass.
    bool _imguiVulkan = false;
    bool _ownsImGuiContext = false;
    VkDescriptorPool _imguiPool = VK_NULL_HANDLE;
    std::unique_ptr<vk::Renderpass> _imguiPass;
    /// Headless ImGui frames measure their own time step.
    std::chrono::steady_clock::time_point _lastImGuiFrame;
};

}
