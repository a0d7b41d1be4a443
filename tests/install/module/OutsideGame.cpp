// TEST_outside, client side: counts the frames it was part of and draws a line of interface in them, which takes
// the client's headers, Vulkan's and ImGui's.

#include "modules/ImGuiHost.h"
#include "modules/ModuleApi.h"

#include "game/Game.h"

#include <atomic>
#include <iostream>

namespace {
std::atomic<long> frames = 0;
}

extern "C" void Renderer_FrameRenderCommands(VkCommandBuffer) {
    ++frames;
}

extern "C" void Renderer_FrameUpdateUi() {
    if (!Game::uiVisible || !modules::UseHostImGui())
        return;
    ImGui::Begin("TEST_outside", nullptr, ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoSavedSettings);
    ImGui::Text("Frames: %ld", frames.load());
    ImGui::End();
}

extern "C" void ModuleUnload() {
    std::cout << "TEST_outside: " << frames << " frames" << std::endl;
}
