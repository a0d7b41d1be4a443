#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

#include <string>
#include <vector>

namespace quorl::vk {

/// The GPU chosen for the game, with what it is and what it can do.
class QUORL_EXPORT PhysicalDevice {
public:
    /// Every feature block that the game or a module may ask for, chained through pNext in the order of the members.
    /// Copies re-link their own chain. A block left all zero asks for nothing.
    struct QUORL_EXPORT Features {
        VkPhysicalDeviceFeatures2 features2{};
        VkPhysicalDeviceShaderClockFeaturesKHR shaderClock{};
        VkPhysicalDevice16BitStorageFeatures storage16Bit{};
        VkPhysicalDeviceVulkan12Features vulkan12{};
        VkPhysicalDeviceRayTracingPipelineFeaturesKHR rayTracingPipeline{};
        VkPhysicalDeviceAccelerationStructureFeaturesKHR accelerationStructure{};
        VkPhysicalDeviceRayQueryFeaturesKHR rayQuery{};
        VkPhysicalDeviceShaderAtomicFloatFeaturesEXT shaderAtomicFloat{};
        VkPhysicalDeviceShaderAtomicFloat2FeaturesEXT shaderAtomicFloat2{};
        VkPhysicalDeviceVulkan13Features vulkan13{};

        Features();
        Features(Features const& other);
        Features& operator=(Features const& other);

        /// Turns on every feature that `other` turns on, field by field.
        Features& operator|=(Features const& other);
        /// Turns off every feature that `other` leaves off: what was asked, cut down to what a device supports.
        Features& operator&=(Features const& other);

        /// The head of the chain, for vkGetPhysicalDeviceFeatures2 and VkDeviceCreateInfo::pNext.
        VkPhysicalDeviceFeatures2* Chain() { return &features2; }
        /// Re-links the chain through only the blocks that are core or whose extension is in `deviceExtensions`, and,
        /// when `skipEmpty`, that turn something on: Vulkan rejects blocks of extensions the device lacks. Until the
        /// next copy into this object, Chain() returns that shorter chain too.
        VkPhysicalDeviceFeatures2* ChainFor(std::vector<std::string> const& deviceExtensions, bool skipEmpty);
        /// Device extensions that the enabled features need (ray tracing, acceleration structures, ...).
        std::vector<char const*> RequiredExtensions() const;
        /// Names of the features that are on, as "block.field", for messages and tests.
        std::vector<std::string> EnabledNames() const;
    };

    VkPhysicalDevice handle = VK_NULL_HANDLE;
    VkPhysicalDeviceProperties properties{};
    VkPhysicalDeviceMemoryProperties memoryProperties{};
    /// What the device supports, read once at selection.
    Features supported;
};

}
