#pragma once

#include "engine/Export.h"

#include <vulkan/vulkan_core.h>

namespace quorl::vk::interface {

/// The Vulkan device functions, fetched with vkGetDeviceProcAddr for the renderer's device: calls through them skip
/// the loader's dispatch, and modules reach the device through the renderer object without linking the loader.
// X-macro list: one row per device function the renderer and modules call. Add a row to make another function
// available as a member of the same name.
#define QUORL_VK_DEVICE_FUNCTIONS(X) \
    X(vkDeviceWaitIdle) \
    X(vkQueueWaitIdle) \
    X(vkCmdPipelineBarrier) \
    X(vkCmdBeginRenderPass) \
    X(vkCmdEndRenderPass) \
    X(vkCmdBindPipeline) \
    X(vkCmdBindDescriptorSets) \
    X(vkCmdPushConstants) \
    X(vkCmdDraw) \
    X(vkCmdDrawIndexed) \
    X(vkCmdSetViewport) \
    X(vkCmdSetScissor) \
    X(vkCmdClearColorImage) \
    X(vkCmdClearAttachments) \
    X(vkCmdCopyBuffer) \
    X(vkCmdCopyBufferToImage) \
    X(vkCmdCopyImageToBuffer) \
    X(vkCmdBlitImage) \
    X(vkCmdFillBuffer) \
    X(vkCmdDispatch) \
    X(vkUpdateDescriptorSets)

class QUORL_EXPORT DeviceInterface {
public:
    virtual ~DeviceInterface() = default;

#define QUORL_VK_DECLARE(name) PFN_##name name = nullptr;
    QUORL_VK_DEVICE_FUNCTIONS(QUORL_VK_DECLARE)
#undef QUORL_VK_DECLARE

    /// Fills every member from `device`; throws std::runtime_error naming the first function the device lacks.
    void LoadFunctionPointersInterface(VkDevice device);
};

}
