#include "engine/vk/Device.h"

#include <dlfcn.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace quorl::vk {

namespace {

constexpr char const* validationLayer = "VK_LAYER_KHRONOS_validation";

/// Lavapipe keeps what its shader compiler allocates in globals of the driver library, which the loader unloads with
/// the last instance (and between the queries before one is made); LeakSanitizer then reports those blocks, which
/// no pointer of ours can reach any more, as leaked: on some processors only, as the compiler's allocations follow
/// the processor's features. In leak-checked builds the driver is kept loaded for the whole process, before the
/// loader first opens it, so its globals stay reachable. Where lavapipe is not installed this does nothing.
void KeepDriverLoadedForLeakChecks() {
#ifdef __SANITIZE_ADDRESS__  // gcc and clang both define it for AddressSanitizer, which brings LeakSanitizer
    [[maybe_unused]] static void* const driver = dlopen("libvulkan_lvp.so", RTLD_NOW | RTLD_NODELETE);
#endif
}

bool Contains(std::vector<std::string> const& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool HasLayer(char const* name) {
    uint32_t count = 0;
    vkEnumerateInstanceLayerProperties(&count, nullptr);
    std::vector<VkLayerProperties> layers(count);
    vkEnumerateInstanceLayerProperties(&count, layers.data());
    return std::any_of(layers.begin(), layers.begin() + count,
        [&](VkLayerProperties const& layer) { return std::string_view(layer.layerName) == name; });
}

/// Those of the loader and implicit layers, plus those of `layer` when it is not null.
std::vector<std::string> InstanceExtensions(char const* layer) {
    std::vector<std::string> names;
    auto add = [&](char const* source) {
        uint32_t count = 0;
        vkEnumerateInstanceExtensionProperties(source, &count, nullptr);
        std::vector<VkExtensionProperties> extensions(count);
        vkEnumerateInstanceExtensionProperties(source, &count, extensions.data());
        for (uint32_t i = 0; i < count; ++i) {
            names.emplace_back(extensions[i].extensionName);
        }
    };
    add(nullptr);
    if (layer != nullptr) {
        add(layer);
    }
    return names;
}

std::vector<std::string> DeviceExtensions(VkPhysicalDevice device) {
    uint32_t count = 0;
    vkEnumerateDeviceExtensionProperties(device, nullptr, &count, nullptr);
    std::vector<VkExtensionProperties> extensions(count);
    vkEnumerateDeviceExtensionProperties(device, nullptr, &count, extensions.data());
    std::vector<std::string> names;
    for (uint32_t i = 0; i < count; ++i) {
        names.emplace_back(extensions[i].extensionName);
    }
    return names;
}

/// Index of the first family with graphics, or -1.
int GraphicsFamily(VkPhysicalDevice device) {
    uint32_t count = 0;
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, nullptr);
    std::vector<VkQueueFamilyProperties> families(count);
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, families.data());
    for (uint32_t i = 0; i < count; ++i) {
        if (families[i].queueFlags & VK_QUEUE_GRAPHICS_BIT) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

int Preference(VkPhysicalDeviceType type) {
    switch (type) {
    case VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU: return 4;
    case VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU: return 3;
    case VK_PHYSICAL_DEVICE_TYPE_VIRTUAL_GPU: return 2;
    case VK_PHYSICAL_DEVICE_TYPE_CPU: return 1;
    default: return 0;
    }
}

}

// ---- Construction ---------------------------------------------------------------------------------------------------

Device::Device(CreateInfo const& info) {
    KeepDriverLoadedForLeakChecks();
    try {
        CreateInstance(info);
        CreateDevice(info, ChoosePhysicalDevice());
    } catch (...) {
        Destroy();
        throw;
    }
}

Device::~Device() {
    Destroy();
}

void Device::CreateInstance(CreateInfo const& info) {
    bool validation = false;
    if (info.validation) {
        validation = HasLayer(validationLayer);
        if (!validation) {
            std::cerr << "Vulkan: validation asked for, but " << validationLayer << " is not installed\n";
        }
    }
    std::vector<char const*> layers;
    if (validation) {
        layers.push_back(validationLayer);
    }
    std::vector<char const*> extensions = info.instanceExtensions;
    debugNames = Contains(InstanceExtensions(validation ? validationLayer : nullptr),
        VK_EXT_DEBUG_UTILS_EXTENSION_NAME);
    if (debugNames) {
        extensions.push_back(VK_EXT_DEBUG_UTILS_EXTENSION_NAME);
    }

    VkApplicationInfo application{};
    application.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO;
    application.pApplicationName = info.applicationName;
    application.applicationVersion = info.applicationVersion;
    application.pEngineName = "quorl";
    application.apiVersion = VK_API_VERSION_1_3;

    VkDebugUtilsMessengerCreateInfoEXT messenger{};
    messenger.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_MESSENGER_CREATE_INFO_EXT;
    messenger.messageSeverity =
        VK_DEBUG_UTILS_MESSAGE_SEVERITY_WARNING_BIT_EXT | VK_DEBUG_UTILS_MESSAGE_SEVERITY_ERROR_BIT_EXT;
    // No performance hints: frames keep their image in the general layout through every stage on purpose, which
    // the hints would flag at each copy.
    messenger.messageType = VK_DEBUG_UTILS_MESSAGE_TYPE_GENERAL_BIT_EXT | VK_DEBUG_UTILS_MESSAGE_TYPE_VALIDATION_BIT_EXT;
    messenger.pfnUserCallback = &Device::OnValidationMessage;
    messenger.pUserData = this;
    bool listen = validation && debugNames;

    VkInstanceCreateInfo create{};
    create.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    // Chained, the messenger also hears what happens while the instance is made and destroyed.
    create.pNext = listen ? &messenger : nullptr;
    create.pApplicationInfo = &application;
    create.enabledLayerCount = static_cast<uint32_t>(layers.size());
    create.ppEnabledLayerNames = layers.data();
    create.enabledExtensionCount = static_cast<uint32_t>(extensions.size());
    create.ppEnabledExtensionNames = extensions.data();
    Check(vkCreateInstance(&create, nullptr, &instance), "vkCreateInstance");

    if (listen) {
        auto createMessenger = reinterpret_cast<PFN_vkCreateDebugUtilsMessengerEXT>(
            vkGetInstanceProcAddr(instance, "vkCreateDebugUtilsMessengerEXT"));
        Check(createMessenger(instance, &messenger, nullptr, &_messenger), "vkCreateDebugUtilsMessengerEXT");
    }
    if (debugNames) {
        _setObjectName = reinterpret_cast<PFN_vkSetDebugUtilsObjectNameEXT>(
            vkGetInstanceProcAddr(instance, "vkSetDebugUtilsObjectNameEXT"));
        debugNames = _setObjectName != nullptr;
    }
}

std::vector<std::string> Device::ChoosePhysicalDevice() {
    uint32_t count = 0;
    Check(vkEnumeratePhysicalDevices(instance, &count, nullptr), "vkEnumeratePhysicalDevices");
    std::vector<VkPhysicalDevice> devices(count);
    Check(vkEnumeratePhysicalDevices(instance, &count, devices.data()), "vkEnumeratePhysicalDevices");

    // The engine needs Vulkan 1.3 (dynamic rendering, synchronization2) and draws on a graphics queue; among those,
    // a discrete GPU beats an integrated one, which beats a virtual one and a software renderer.
    int best = -1;
    for (VkPhysicalDevice device : devices) {
        VkPhysicalDeviceProperties properties;
        vkGetPhysicalDeviceProperties(device, &properties);
        int family = GraphicsFamily(device);
        if (properties.apiVersion < VK_API_VERSION_1_3 || family < 0 || Preference(properties.deviceType) <= best) {
            continue;
        }
        best = Preference(properties.deviceType);
        physicalDevice.handle = device;
        physicalDevice.properties = properties;
        graphicsQueue.familyIndex = static_cast<uint32_t>(family);
    }
    if (physicalDevice.handle == VK_NULL_HANDLE) {
        throw std::runtime_error("Vulkan: choosing a physical device failed: none has Vulkan 1.3 and graphics");
    }
    vkGetPhysicalDeviceMemoryProperties(physicalDevice.handle, &physicalDevice.memoryProperties);

    std::vector<std::string> extensions = DeviceExtensions(physicalDevice.handle);
    PhysicalDevice::Features supported;
    vkGetPhysicalDeviceFeatures2(physicalDevice.handle, supported.ChainFor(extensions, false));
    physicalDevice.supported = supported;
    return extensions;
}

void Device::CreateDevice(CreateInfo const& info, std::vector<std::string> const& available) {
    // What the engine itself relies on, on top of what the game asks for.
    PhysicalDevice::Features wanted = info.features;
    wanted.features2.features.largePoints = VK_TRUE;
    wanted.features2.features.shaderInt64 = VK_TRUE;
    wanted.vulkan12.bufferDeviceAddress = VK_TRUE;
    wanted.vulkan12.timelineSemaphore = VK_TRUE;
    wanted.vulkan13.synchronization2 = VK_TRUE;
    wanted.vulkan13.dynamicRendering = VK_TRUE;
    wanted &= physicalDevice.supported;
    enabledFeatures = wanted;

    std::vector<char const*> extensions = enabledFeatures.RequiredExtensions();
    for (char const* extension : info.deviceExtensions) {
        bool listed = std::any_of(extensions.begin(), extensions.end(),
            [&](char const* name) { return std::string_view(name) == extension; });
        if (!listed) {
            extensions.push_back(extension);
        }
    }

    float priority = 1.0f;
    VkDeviceQueueCreateInfo queue{};
    queue.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queue.queueFamilyIndex = graphicsQueue.familyIndex;
    queue.queueCount = 1;
    queue.pQueuePriorities = &priority;

    VkDeviceCreateInfo create{};
    create.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    create.pNext = wanted.ChainFor(available, true);
    create.queueCreateInfoCount = 1;
    create.pQueueCreateInfos = &queue;
    create.enabledExtensionCount = static_cast<uint32_t>(extensions.size());
    create.ppEnabledExtensionNames = extensions.data();
    Check(vkCreateDevice(physicalDevice.handle, &create, nullptr, &handle), "vkCreateDevice");

    vkGetDeviceQueue(handle, graphicsQueue.familyIndex, 0, &graphicsQueue.handle);
    graphicsQueue.mutex = &_queueMutex;
    SetDebugName(VK_OBJECT_TYPE_QUEUE, reinterpret_cast<uint64_t>(graphicsQueue.handle), "graphics queue");

    VkCommandPoolCreateInfo pool{};
    pool.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    pool.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
    pool.queueFamilyIndex = graphicsQueue.familyIndex;
    Check(vkCreateCommandPool(handle, &pool, nullptr, &commandPool), "vkCreateCommandPool");

    _allocator = std::make_unique<MemoryAllocator>(
        physicalDevice.handle, handle, enabledFeatures.vulkan12.bufferDeviceAddress == VK_TRUE);
}

void Device::Destroy() {
    if (handle != VK_NULL_HANDLE) {
        vkDeviceWaitIdle(handle);
        _allocator.reset();
        if (commandPool != VK_NULL_HANDLE) {
            vkDestroyCommandPool(handle, commandPool, nullptr);
        }
        vkDestroyDevice(handle, nullptr);
    }
    if (_messenger != VK_NULL_HANDLE) {
        auto destroyMessenger = reinterpret_cast<PFN_vkDestroyDebugUtilsMessengerEXT>(
            vkGetInstanceProcAddr(instance, "vkDestroyDebugUtilsMessengerEXT"));
        destroyMessenger(instance, _messenger, nullptr);
    }
    if (instance != VK_NULL_HANDLE) {
        vkDestroyInstance(instance, nullptr);
    }
}

// ---- Names and messages ---------------------------------------------------------------------------------------------

void Device::SetDebugName(VmaAllocation allocation, char const* name) const {
    allocation->name = name;
    // Blocks hold many allocations; only dedicated memory belongs to one name.
    if (allocation->block == -1) {
        SetDebugName(VK_OBJECT_TYPE_DEVICE_MEMORY, reinterpret_cast<uint64_t>(allocation->memory), name);
    }
}

void Device::SetDebugName(VmaAllocation allocation, std::string const& name) const {
    SetDebugName(allocation, name.c_str());
}

void Device::SetDebugName(VkObjectType type, uint64_t object, char const* name) const {
    if (!debugNames) {
        return;
    }
    VkDebugUtilsObjectNameInfoEXT info{};
    info.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_OBJECT_NAME_INFO_EXT;
    info.objectType = type;
    info.objectHandle = object;
    info.pObjectName = name;
    _setObjectName(handle, &info);
}

VKAPI_ATTR VkBool32 VKAPI_CALL Device::OnValidationMessage(VkDebugUtilsMessageSeverityFlagBitsEXT,
    VkDebugUtilsMessageTypeFlagsEXT types, VkDebugUtilsMessengerCallbackDataEXT const* data, void* self) {
    std::cerr << "Vulkan validation: " << data->pMessage << '\n';
    // General messages come from the loader (a broken driver manifest, say), not from our use of the API.
    if (types & VK_DEBUG_UTILS_MESSAGE_TYPE_VALIDATION_BIT_EXT)
        ++static_cast<Device*>(self)->_validationMessages;
    return VK_FALSE;
}

// ---- Results --------------------------------------------------------------------------------------------------------

void Device::Check(VkResult result, char const* step) {
    if (result != VK_SUCCESS) {
        throw std::runtime_error(std::string("Vulkan: ") + step + " failed: " + ResultName(result));
    }
}

std::string Device::ResultName(VkResult result) {
    switch (result) {
#define QUORL_VK_RESULT(name) \
    case name: return #name;
        QUORL_VK_RESULT(VK_SUCCESS)
        QUORL_VK_RESULT(VK_NOT_READY)
        QUORL_VK_RESULT(VK_TIMEOUT)
        QUORL_VK_RESULT(VK_INCOMPLETE)
        QUORL_VK_RESULT(VK_SUBOPTIMAL_KHR)
        QUORL_VK_RESULT(VK_ERROR_OUT_OF_HOST_MEMORY)
        QUORL_VK_RESULT(VK_ERROR_OUT_OF_DEVICE_MEMORY)
        QUORL_VK_RESULT(VK_ERROR_INITIALIZATION_FAILED)
        QUORL_VK_RESULT(VK_ERROR_DEVICE_LOST)
        QUORL_VK_RESULT(VK_ERROR_MEMORY_MAP_FAILED)
        QUORL_VK_RESULT(VK_ERROR_LAYER_NOT_PRESENT)
        QUORL_VK_RESULT(VK_ERROR_EXTENSION_NOT_PRESENT)
        QUORL_VK_RESULT(VK_ERROR_FEATURE_NOT_PRESENT)
        QUORL_VK_RESULT(VK_ERROR_INCOMPATIBLE_DRIVER)
        QUORL_VK_RESULT(VK_ERROR_TOO_MANY_OBJECTS)
        QUORL_VK_RESULT(VK_ERROR_FORMAT_NOT_SUPPORTED)
        QUORL_VK_RESULT(VK_ERROR_FRAGMENTED_POOL)
        QUORL_VK_RESULT(VK_ERROR_OUT_OF_POOL_MEMORY)
        QUORL_VK_RESULT(VK_ERROR_SURFACE_LOST_KHR)
        QUORL_VK_RESULT(VK_ERROR_NATIVE_WINDOW_IN_USE_KHR)
        QUORL_VK_RESULT(VK_ERROR_OUT_OF_DATE_KHR)
#undef QUORL_VK_RESULT
    default: return std::to_string(static_cast<int>(result));
    }
}

}
