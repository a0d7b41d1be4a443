#include "engine/vk/interface/DeviceInterface.h"

#include <stdexcept>
#include <string>

namespace quorl::vk::interface {

void DeviceInterface::LoadFunctionPointersInterface(VkDevice device) {
#define QUORL_VK_LOAD(name) \
    name = reinterpret_cast<PFN_##name>(vkGetDeviceProcAddr(device, #name)); \
    if (name == nullptr) { \
        throw std::runtime_error("Vulkan device function missing: " #name); \
    }
    QUORL_VK_DEVICE_FUNCTIONS(QUORL_VK_LOAD)
#undef QUORL_VK_LOAD
}

}
