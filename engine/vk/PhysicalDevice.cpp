#include "engine/vk/PhysicalDevice.h"

#include "engine/vk/FeatureFields.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

namespace quorl::vk {

namespace {

using Features = PhysicalDevice::Features;

// ---- Field lists, checked against the structs' layout -------------------------------------------------------------

// Every block is {sType, pNext, VkBool32...}: the walks below treat the fields as one array, which holds only if
// they follow each other without gaps.
template<std::size_t N>
constexpr bool Consecutive(std::size_t const (&offsets)[N]) {
    for (std::size_t i = 0; i < N; ++i) {
        if (offsets[i] != offsets[0] + i * sizeof(VkBool32)) {
            return false;
        }
    }
    return true;
}

#define QUORL_VK_FIELD_NAME(field) #field,
#define QUORL_VK_FIELD_OFFSET(field) offsetof(FieldsOf, field),
#define QUORL_VK_FIELD_TABLE(table, Struct, LIST) \
    namespace table { \
    using FieldsOf = Struct; \
    constexpr char const* names[] = {LIST(QUORL_VK_FIELD_NAME)}; \
    constexpr std::size_t offsets[] = {LIST(QUORL_VK_FIELD_OFFSET)}; \
    static_assert(Consecutive(offsets), #Struct " has gaps between its feature fields"); \
    static_assert(offsets[std::size(offsets) - 1] + sizeof(VkBool32) <= sizeof(Struct)); \
    }

QUORL_VK_FIELD_TABLE(features, VkPhysicalDeviceFeatures, QUORL_VK_FEATURES_FIELDS)
QUORL_VK_FIELD_TABLE(shaderClock, VkPhysicalDeviceShaderClockFeaturesKHR, QUORL_VK_SHADER_CLOCK_FIELDS)
QUORL_VK_FIELD_TABLE(storage16Bit, VkPhysicalDevice16BitStorageFeatures, QUORL_VK_STORAGE_16BIT_FIELDS)
QUORL_VK_FIELD_TABLE(vulkan12, VkPhysicalDeviceVulkan12Features, QUORL_VK_VULKAN12_FIELDS)
QUORL_VK_FIELD_TABLE(rayTracingPipeline, VkPhysicalDeviceRayTracingPipelineFeaturesKHR,
    QUORL_VK_RAY_TRACING_PIPELINE_FIELDS)
QUORL_VK_FIELD_TABLE(accelerationStructure, VkPhysicalDeviceAccelerationStructureFeaturesKHR,
    QUORL_VK_ACCELERATION_STRUCTURE_FIELDS)
QUORL_VK_FIELD_TABLE(rayQuery, VkPhysicalDeviceRayQueryFeaturesKHR, QUORL_VK_RAY_QUERY_FIELDS)
QUORL_VK_FIELD_TABLE(shaderAtomicFloat, VkPhysicalDeviceShaderAtomicFloatFeaturesEXT, QUORL_VK_SHADER_ATOMIC_FLOAT_FIELDS)
QUORL_VK_FIELD_TABLE(shaderAtomicFloat2, VkPhysicalDeviceShaderAtomicFloat2FeaturesEXT,
    QUORL_VK_SHADER_ATOMIC_FLOAT2_FIELDS)
QUORL_VK_FIELD_TABLE(vulkan13, VkPhysicalDeviceVulkan13Features, QUORL_VK_VULKAN13_FIELDS)

#undef QUORL_VK_FIELD_TABLE
#undef QUORL_VK_FIELD_OFFSET
#undef QUORL_VK_FIELD_NAME

static_assert(std::is_standard_layout_v<Features>, "the blocks are found by their offsets in Features");

// ---- Blocks ---------------------------------------------------------------------------------------------------------

constexpr char const* shaderClockExtensions[] = {VK_KHR_SHADER_CLOCK_EXTENSION_NAME};
// Ray tracing pipelines and ray queries trace through acceleration structures, which build on deferred operations.
constexpr char const* rayTracingPipelineExtensions[] = {VK_KHR_RAY_TRACING_PIPELINE_EXTENSION_NAME,
    VK_KHR_ACCELERATION_STRUCTURE_EXTENSION_NAME, VK_KHR_DEFERRED_HOST_OPERATIONS_EXTENSION_NAME};
constexpr char const* accelerationStructureExtensions[] = {VK_KHR_ACCELERATION_STRUCTURE_EXTENSION_NAME,
    VK_KHR_DEFERRED_HOST_OPERATIONS_EXTENSION_NAME};
constexpr char const* rayQueryExtensions[] = {VK_KHR_RAY_QUERY_EXTENSION_NAME,
    VK_KHR_ACCELERATION_STRUCTURE_EXTENSION_NAME, VK_KHR_DEFERRED_HOST_OPERATIONS_EXTENSION_NAME};
constexpr char const* shaderAtomicFloatExtensions[] = {VK_EXT_SHADER_ATOMIC_FLOAT_EXTENSION_NAME};
constexpr char const* shaderAtomicFloat2Extensions[] = {VK_EXT_SHADER_ATOMIC_FLOAT_2_EXTENSION_NAME};

struct Block {
    char const* name;
    VkStructureType sType;
    /// Of the block's struct within Features.
    std::size_t offset;
    /// Of the block's first VkBool32 within Features.
    std::size_t firstField;
    std::span<char const* const> fields;
    /// The device extensions that turning on one of its fields needs; the first one defines the block. None for core.
    std::span<char const* const> extensions;
};

#define QUORL_VK_BLOCK(member, sType, extensions) \
    Block{#member, sType, offsetof(Features, member), offsetof(Features, member) + member::offsets[0], member::names, \
        extensions}

// In member order, which is the order of the chain.
constexpr Block blocks[] = {
    Block{"features2", VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2, offsetof(Features, features2),
        offsetof(Features, features2) + offsetof(VkPhysicalDeviceFeatures2, features) + features::offsets[0],
        features::names, {}},
    QUORL_VK_BLOCK(shaderClock, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SHADER_CLOCK_FEATURES_KHR, shaderClockExtensions),
    QUORL_VK_BLOCK(storage16Bit, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_16BIT_STORAGE_FEATURES, {}),
    QUORL_VK_BLOCK(vulkan12, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_2_FEATURES, {}),
    QUORL_VK_BLOCK(rayTracingPipeline, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_RAY_TRACING_PIPELINE_FEATURES_KHR,
        rayTracingPipelineExtensions),
    QUORL_VK_BLOCK(accelerationStructure, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_ACCELERATION_STRUCTURE_FEATURES_KHR,
        accelerationStructureExtensions),
    QUORL_VK_BLOCK(rayQuery, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_RAY_QUERY_FEATURES_KHR, rayQueryExtensions),
    QUORL_VK_BLOCK(shaderAtomicFloat, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SHADER_ATOMIC_FLOAT_FEATURES_EXT,
        shaderAtomicFloatExtensions),
    QUORL_VK_BLOCK(shaderAtomicFloat2, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SHADER_ATOMIC_FLOAT_2_FEATURES_EXT,
        shaderAtomicFloat2Extensions),
    QUORL_VK_BLOCK(vulkan13, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES, {}),
};

#undef QUORL_VK_BLOCK

VkBaseOutStructure* Header(Features& features, Block const& block) {
    return reinterpret_cast<VkBaseOutStructure*>(reinterpret_cast<std::byte*>(&features) + block.offset);
}

std::span<VkBool32> Fields(Features& features, Block const& block) {
    return {reinterpret_cast<VkBool32*>(reinterpret_cast<std::byte*>(&features) + block.firstField),
        block.fields.size()};
}

std::span<VkBool32 const> Fields(Features const& features, Block const& block) {
    return {reinterpret_cast<VkBool32 const*>(reinterpret_cast<std::byte const*>(&features) + block.firstField),
        block.fields.size()};
}

bool AnyOn(Features const& features, Block const& block) {
    auto fields = Fields(features, block);
    return std::any_of(fields.begin(), fields.end(), [](VkBool32 field) { return field != VK_FALSE; });
}

template<typename Keep>
void Link(Features& features, Keep keep) {
    VkBaseOutStructure* last = Header(features, blocks[0]);
    for (Block const& block : std::span(blocks).subspan(1)) {
        if (keep(block)) {
            last->pNext = Header(features, block);
            last = last->pNext;
        }
    }
    last->pNext = nullptr;
}

void LinkAll(Features& features) {
    Link(features, [](Block const&) { return true; });
}

template<typename Combine>
void CombineFields(Features& features, Features const& other, Combine combine) {
    for (Block const& block : blocks) {
        auto to = Fields(features, block);
        auto from = Fields(other, block);
        std::transform(to.begin(), to.end(), from.begin(), to.begin(),
            [&](VkBool32 a, VkBool32 b) { return combine(a != VK_FALSE, b != VK_FALSE) ? VK_TRUE : VK_FALSE; });
    }
}

}

PhysicalDevice::Features::Features() {
    for (Block const& block : blocks) {
        Header(*this, block)->sType = block.sType;
    }
    LinkAll(*this);
}

PhysicalDevice::Features::Features(Features const& other) : Features() {
    *this = other;
}

PhysicalDevice::Features& PhysicalDevice::Features::operator=(Features const& other) {
    CombineFields(*this, other, [](bool, bool b) { return b; });
    LinkAll(*this);
    return *this;
}

PhysicalDevice::Features& PhysicalDevice::Features::operator|=(Features const& other) {
    CombineFields(*this, other, [](bool a, bool b) { return a || b; });
    return *this;
}

PhysicalDevice::Features& PhysicalDevice::Features::operator&=(Features const& other) {
    CombineFields(*this, other, [](bool a, bool b) { return a && b; });
    return *this;
}

VkPhysicalDeviceFeatures2* PhysicalDevice::Features::ChainFor(std::vector<std::string> const& deviceExtensions,
    bool skipEmpty) {
    Link(*this, [&](Block const& block) {
        bool present = block.extensions.empty()
            || std::find(deviceExtensions.begin(), deviceExtensions.end(), block.extensions[0])
                != deviceExtensions.end();
        return present && (!skipEmpty || AnyOn(*this, block));
    });
    return &features2;
}

std::vector<char const*> PhysicalDevice::Features::RequiredExtensions() const {
    std::vector<char const*> extensions;
    for (Block const& block : blocks) {
        if (!AnyOn(*this, block)) {
            continue;
        }
        for (char const* extension : block.extensions) {
            bool listed = std::any_of(extensions.begin(), extensions.end(),
                [&](char const* name) { return std::string_view(name) == extension; });
            if (!listed) {
                extensions.push_back(extension);
            }
        }
    }
    return extensions;
}

std::vector<std::string> PhysicalDevice::Features::EnabledNames() const {
    std::vector<std::string> names;
    for (Block const& block : blocks) {
        auto fields = Fields(*this, block);
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (fields[i] != VK_FALSE) {
                names.push_back(std::string(block.name) + "." + block.fields[i]);
            }
        }
    }
    return names;
}

}
