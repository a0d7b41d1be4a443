#include "engine/vk/Device.h"

#include "tests/support/Capture.h"
#include "tests/support/VulkanDevice.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <stdexcept>

using quorl::vk::Device;

namespace {

TEST(DeviceTest, StartsWithWhatTheEngineNeedsAndTheFeaturesAskedForThatAreSupported) {
    Device::CreateInfo info = ValidatedDevice();
    info.features.rayTracingPipeline.rayTracingPipeline = VK_TRUE;
    info.features.features2.features.sparseBinding = VK_TRUE;
    info.features.vulkan12.scalarBlockLayout = VK_TRUE;
    Device device(info);
    // Its queue and command pool are in use in every device test.
    EXPECT_TRUE(device.debugNames);
    EXPECT_GE(device.physicalDevice.properties.apiVersion, VK_API_VERSION_1_3);

    // Every Vulkan 1.3 device has these; the renderer records and synchronises with them.
    auto const& supported = device.physicalDevice.supported;
    auto const& enabled = device.enabledFeatures;
    EXPECT_TRUE(enabled.vulkan12.bufferDeviceAddress);
    EXPECT_TRUE(enabled.vulkan12.timelineSemaphore);
    EXPECT_TRUE(enabled.vulkan13.synchronization2);
    EXPECT_TRUE(enabled.vulkan13.dynamicRendering);
    EXPECT_EQ(enabled.features2.features.shaderInt64, supported.features2.features.shaderInt64);
    // Asked for: on where supported.
    EXPECT_EQ(enabled.rayTracingPipeline.rayTracingPipeline, supported.rayTracingPipeline.rayTracingPipeline);
    EXPECT_EQ(enabled.features2.features.sparseBinding, supported.features2.features.sparseBinding);
    EXPECT_EQ(enabled.vulkan12.scalarBlockLayout, supported.vulkan12.scalarBlockLayout);
    // Not asked for, not needed by the engine: stays off even where supported.
    EXPECT_FALSE(enabled.features2.features.geometryShader);
    EXPECT_EQ(device.ValidationMessageCount(), 0u);
}

#ifdef __SANITIZE_ADDRESS__
// Leak-checked programs keep the CPU driver loaded past the last device, so that LeakSanitizer still reaches what
// the driver keeps in its globals (on some processors it reports those blocks as leaked otherwise).
TEST(DeviceTest, LeakCheckedBuildsKeepTheCpuDriverLoaded) {
    { Device device(ValidatedDevice()); }
    void* driver = dlopen("libvulkan_lvp.so", RTLD_LAZY | RTLD_NOLOAD);
    EXPECT_NE(driver, nullptr) << "libvulkan_lvp.so was unloaded with the last device";
    if (driver)
        dlclose(driver);
}
#endif

TEST(DeviceTest, FailuresNameTheStepAndTheResult) {
    EXPECT_EQ(ErrorOf([] { Device::Check(VK_ERROR_DEVICE_LOST, "vkQueueSubmit"); }),
        "Vulkan: vkQueueSubmit failed: VK_ERROR_DEVICE_LOST");
    EXPECT_EQ(Device::ResultName(static_cast<VkResult>(-12345)), "-12345");

    Device::CreateInfo info = ValidatedDevice();
    info.deviceExtensions.push_back("VK_QUORL_no_such_extension");
    EXPECT_EQ(ErrorOf([&] { Device device(info); }), "Vulkan: vkCreateDevice failed: VK_ERROR_EXTENSION_NOT_PRESENT");
}

}
