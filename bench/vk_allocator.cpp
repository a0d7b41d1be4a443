// What 10,000 small buffers cost through the memory allocator, on the machine's Vulkan device (lavapipe in CI):
// whole buffers (create, allocate, bind, destroy, free in shuffled order), and the allocator alone on the same sizes.

#include "JsonLineReporter.h"

#include "engine/vk/Buffer.h"
#include "engine/vk/Device.h"
#include "engine/vk/MemoryAllocator.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

namespace {

constexpr int bufferCount = 10'000;

/// Without validation, which would cost more than the allocator.
quorl::vk::Device::CreateInfo DeviceInfo() {
    quorl::vk::Device::CreateInfo info;
    info.features.vulkan12.bufferDeviceAddress = VK_TRUE;
    return info;
}

quorl::vk::Device& TheDevice() {
    static quorl::vk::Device device(DeviceInfo());
    return device;
}

/// Sizes from 16 to 4096 bytes, spread over the range.
unsigned long SizeOf(int i) {
    return 16 + (i * 977ul) % (4096 - 16 + 1);
}

/// A fixed shuffled freeing order, the same for every run.
std::vector<int> FreeOrder() {
    std::vector<int> order(bufferCount);
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    return order;
}

void SmallBuffers(benchmark::State& state) {
    auto& device = TheDevice();
    std::vector<int> const order = FreeOrder();
    std::vector<std::unique_ptr<quorl::vk::Buffer>> buffers(bufferCount);
    for (auto _ : state) {
        for (int i = 0; i < bufferCount; ++i) {
            buffers[i] = std::make_unique<quorl::vk::Buffer>(&device, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE,
                VK_BUFFER_USAGE_STORAGE_BUFFER_BIT | VK_BUFFER_USAGE_VERTEX_BUFFER_BIT, SizeOf(i));
        }
        for (int i : order) {
            buffers[i].reset();
        }
    }
    state.counters["buffers"] = bufferCount;
    // Since the device was made: the first run's block stays for the later ones.
    state.counters["device_allocations"] = static_cast<double>(device.Allocator().DeviceAllocationCount());
}

void AllocatorAlone(benchmark::State& state) {
    auto& allocator = TheDevice().Allocator();
    std::vector<int> const order = FreeOrder();
    std::vector<VmaAllocation> allocations(bufferCount);
    for (auto _ : state) {
        for (int i = 0; i < bufferCount; ++i) {
            allocations[i] = allocator.Allocate({SizeOf(i), 64, ~0u}, {0, VMA_MEMORY_USAGE_AUTO_PREFER_DEVICE});
        }
        for (int i : order) {
            allocator.Free(allocations[i]);
        }
    }
    state.counters["allocations"] = bufferCount;
}

}

BENCHMARK(SmallBuffers);
BENCHMARK(AllocatorAlone);

int main(int argc, char** argv) {
    RunBenchmarks(argc, argv);
    return 0;
}
