#include "engine/vk/PhysicalDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using quorl::vk::PhysicalDevice;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;
using Features = PhysicalDevice::Features;

namespace {

/// The blocks a chain passes through, by their structure types.
std::vector<VkStructureType> ChainTypes(Features& features, VkPhysicalDeviceFeatures2* head) {
    std::vector<VkStructureType> types;
    for (auto* block = reinterpret_cast<VkBaseOutStructure*>(head); block != nullptr; block = block->pNext) {
        types.push_back(block->sType);
        auto const* at = reinterpret_cast<char const*>(block);
        EXPECT_TRUE(at >= reinterpret_cast<char const*>(&features)
            && at < reinterpret_cast<char const*>(&features + 1))
            << "the chain leaves its own object at block " << types.size();
    }
    return types;
}

std::vector<VkStructureType> const fullChain = {
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SHADER_CLOCK_FEATURES_KHR,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_16BIT_STORAGE_FEATURES,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_2_FEATURES,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_RAY_TRACING_PIPELINE_FEATURES_KHR,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_ACCELERATION_STRUCTURE_FEATURES_KHR,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_RAY_QUERY_FEATURES_KHR,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SHADER_ATOMIC_FLOAT_FEATURES_EXT,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SHADER_ATOMIC_FLOAT_2_FEATURES_EXT,
    VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES,
};

// First and last fields of the longest blocks, so that the walks over them are seen to reach both ends.
Features Graphics() {
    Features features;
    features.features2.features.robustBufferAccess = VK_TRUE;
    features.vulkan12.timelineSemaphore = VK_TRUE;
    features.vulkan13.maintenance4 = VK_TRUE;
    return features;
}

Features Tracing() {
    Features features;
    features.features2.features.inheritedQueries = VK_TRUE;
    features.vulkan13.maintenance4 = VK_TRUE;
    features.rayQuery.rayQuery = VK_TRUE;
    return features;
}

TEST(PhysicalDeviceFeaturesTest, StartEmptyAndCopiesKeepTheFieldsAndChainEveryBlockThroughThemselvesInMemberOrder) {
    Features empty;
    EXPECT_EQ(ChainTypes(empty, empty.Chain()), fullChain);
    EXPECT_TRUE(empty.EnabledNames().empty());

    Features original = Tracing();
    original.ChainFor({}, true);

    Features copy(original);
    EXPECT_EQ(ChainTypes(copy, copy.Chain()), fullChain);
    EXPECT_EQ(copy.EnabledNames(), original.EnabledNames());

    Features assigned = Graphics();
    assigned = original;
    EXPECT_EQ(ChainTypes(assigned, assigned.Chain()), fullChain);
    EXPECT_EQ(assigned.EnabledNames(), original.EnabledNames());
}

TEST(PhysicalDeviceFeaturesTest, MergesAndCutsFieldByField) {
    Features merged = Graphics();
    merged |= Tracing();
    EXPECT_THAT(merged.EnabledNames(),
        UnorderedElementsAre("features2.robustBufferAccess", "features2.inheritedQueries",
            "vulkan12.timelineSemaphore", "vulkan13.maintenance4", "rayQuery.rayQuery"));

    Features cut = Graphics();
    cut &= Tracing();
    EXPECT_THAT(cut.EnabledNames(), ElementsAre("vulkan13.maintenance4"));
    EXPECT_EQ(ChainTypes(cut, cut.Chain()), fullChain);
}

// The clock stands for every block that needs one extension of its own.
TEST(PhysicalDeviceFeaturesTest, RequiresTheExtensionsOfTheBlocksInUse) {
    struct Case {
        char const* what;
        void (*enable)(Features&);
        std::vector<std::string> extensions;
    };
    std::vector<Case> const cases = {
        {"core only", [](Features& f) { f.vulkan12.bufferDeviceAddress = VK_TRUE; }, {}},
        {"clock", [](Features& f) { f.shaderClock.shaderDeviceClock = VK_TRUE; }, {"VK_KHR_shader_clock"}},
        {"ray query",
            [](Features& f) { f.rayQuery.rayQuery = VK_TRUE; },
            {"VK_KHR_ray_query", "VK_KHR_acceleration_structure", "VK_KHR_deferred_host_operations"}},
        {"ray tracing",
            [](Features& f) {
                f.rayTracingPipeline.rayTracingPipeline = VK_TRUE;
                f.accelerationStructure.accelerationStructure = VK_TRUE;
            },
            {"VK_KHR_ray_tracing_pipeline", "VK_KHR_acceleration_structure", "VK_KHR_deferred_host_operations"}},
    };
    for (Case const& c : cases) {
        Features features;
        c.enable(features);
        auto const required = features.RequiredExtensions();
        std::vector<std::string> const extensions(required.begin(), required.end());
        EXPECT_THAT(extensions, UnorderedElementsAreArray(c.extensions)) << c.what;
    }
}

TEST(PhysicalDeviceFeaturesTest, ChainsForADeviceOnlyTheBlocksItCanTake) {
    Features features;
    EXPECT_THAT(ChainTypes(features, features.ChainFor({}, false)),
        ElementsAre(VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2, VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_16BIT_STORAGE_FEATURES,
            VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_2_FEATURES,
            VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES));

    features.vulkan13.dynamicRendering = VK_TRUE;
    features.shaderClock.shaderSubgroupClock = VK_TRUE;
    features.rayQuery.rayQuery = VK_TRUE;
    EXPECT_THAT(ChainTypes(features, features.ChainFor({"VK_KHR_shader_clock"}, true)),
        ElementsAre(VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2,
            VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SHADER_CLOCK_FEATURES_KHR,
            VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES));
}

}
