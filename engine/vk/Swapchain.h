#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <vector>

namespace quorl::vk {

class Device;

/// The images a window surface shows, with a colour view of each. Images are B8G8R8A8_UNORM in the sRGB colour space
/// where the surface offers it, and usable as colour attachments, copy sources and destinations (and storage images
/// where the surface allows), so that frames can be cleared, blitted and written by compute.
class QUORL_EXPORT Swapchain {
public:
    /// width, height: the size wanted, used where the surface leaves the size to us. `old` is handed to the driver
    /// for reuse and must be destroyed by the caller afterwards. Throws std::runtime_error naming the failing call.
    Swapchain(Device* device, VkSurfaceKHR surface, uint32_t width, uint32_t height, bool vsync,
        VkSwapchainKHR old = VK_NULL_HANDLE);
    ~Swapchain();
    Swapchain(Swapchain const&) = delete;
    Swapchain& operator=(Swapchain const&) = delete;

    /// False while the surface has no area (a minimised window): no swapchain can be made for it then.
    static bool IsCurrentExtentValid(Device* device, VkSurfaceKHR surface);

    Device* device;
    VkSwapchainKHR swapchain = VK_NULL_HANDLE;
    VkFormat format = VK_FORMAT_UNDEFINED;
    VkExtent2D extent{};
    std::vector<VkImage> images;
    std::vector<VkImageView> views;

private:
    void Release();
};

}
