#include "modules/ImGuiHost.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

int allocations = 0;

void* CountingAlloc(size_t size, void*) {
    ++allocations;
    return std::malloc(size);
}

void Free(void* pointer, void*) {
    std::free(pointer);
}

}

TEST(ImGuiHostTest, HandsOutTheContextAndAllocatorsTheGameRunsOn) {
    ASSERT_EQ(ImGui::GetCurrentContext(), nullptr);
    EXPECT_FALSE(modules::UseHostImGui()) << "no renderer has made a context yet";

    int user = 0;
    ImGui::SetAllocatorFunctions(CountingAlloc, Free, &user);
    ImGuiContext* context = ImGui::CreateContext();
    modules::ImGuiHost const host = modules::GetImGuiHost();
    EXPECT_EQ(host.context, context);
    EXPECT_EQ(host.alloc, &CountingAlloc);
    EXPECT_EQ(host.free, &Free);
    EXPECT_EQ(host.userData, &user);
    EXPECT_GT(allocations, 0) << "the context itself comes from the game's allocator";

    EXPECT_TRUE(modules::UseHostImGui());
    EXPECT_EQ(ImGui::GetCurrentContext(), context);
    ImGui::DestroyContext(context);
}
