#pragma once

#include "engine/Export.h"
#include "engine/vk/MemoryAllocator.h"
#include "engine/vk/PhysicalDevice.h"
#include "engine/vk/Queue.h"
#include "engine/vk/VmaTypes.h"

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quorl::vk {

/// The Vulkan instance, the chosen GPU and the logical device on it, with one graphics queue (which also presents),
/// the memory allocator and a command pool for one-shot work. Every other object of quorl::vk is made from one.
class QUORL_EXPORT Device {
public:
    struct CreateInfo {
        char const* applicationName = "Meridon";
        uint32_t applicationVersion = 0;
        /// Asked for; the device is created with the part of it that the GPU supports.
        PhysicalDevice::Features features;
        /// Khronos validation layer and debug messenger; on in debug builds and tests.
        bool validation = false;
        /// Instance extensions the window system needs (from glfwGetRequiredInstanceExtensions); none when headless.
        std::vector<char const*> instanceExtensions;
        /// Device extensions beyond those the features need, such as VK_KHR_swapchain for a window.
        std::vector<char const*> deviceExtensions;
    };

    /// Throws std::runtime_error naming the step and the VkResult when no Vulkan device can be made.
    explicit Device(CreateInfo const& info);
    ~Device();
    Device(Device const&) = delete;
    Device& operator=(Device const&) = delete;

    VkInstance instance = VK_NULL_HANDLE;
    PhysicalDevice physicalDevice;
    VkDevice handle = VK_NULL_HANDLE;
    Queue graphicsQueue;
    /// What the device was created with: the features asked for, cut down to those supported.
    PhysicalDevice::Features enabledFeatures;
    /// Whether VK_EXT_debug_utils is present, so that objects carry names in debuggers and validation messages.
    bool debugNames = false;

    MemoryAllocator& Allocator() { return *_allocator; }

    void SetDebugName(VmaAllocation allocation, char const* name) const;
    void SetDebugName(VmaAllocation allocation, std::string const& name) const;
    void SetDebugName(VkObjectType type, uint64_t handle, char const* name) const;

    /// Throws std::runtime_error("Vulkan: <step> failed: <result>") unless `result` is VK_SUCCESS.
    static void Check(VkResult result, char const* step);
    /// The enumerator's name, such as "VK_ERROR_DEVICE_LOST", or its number when it has none here.
    static std::string ResultName(VkResult result);

    /// Messages of severity warning or error that the validation layer reported since the device was made. Every
    /// message is also printed on standard error.
    uint32_t ValidationMessageCount() const { return _validationMessages.load(); }

    /// The pool of one-shot command buffers, with the lock that guards it (command pools are not thread-safe).
    VkCommandPool commandPool = VK_NULL_HANDLE;
    std::mutex commandPoolMutex;

private:
    void CreateInstance(CreateInfo const& info);
    /// Returns the chosen device's extensions.
    std::vector<std::string> ChoosePhysicalDevice();
    void CreateDevice(CreateInfo const& info, std::vector<std::string> const& available);
    /// Releases whatever was made so far; the constructor calls it when a later step throws.
    void Destroy();

    static VKAPI_ATTR VkBool32 VKAPI_CALL OnValidationMessage(VkDebugUtilsMessageSeverityFlagBitsEXT severity,
        VkDebugUtilsMessageTypeFlagsEXT types, VkDebugUtilsMessengerCallbackDataEXT const* data, void* self);

    VkDebugUtilsMessengerEXT _messenger = VK_NULL_HANDLE;
    std::mutex _queueMutex;
    std::unique_ptr<MemoryAllocator> _allocator;
    std::atomic<uint32_t> _validationMessages{0};
    PFN_vkSetDebugUtilsObjectNameEXT _setObjectName = nullptr;
};

}
