// The example module, client side: MERIDON_example.GAME_Mod.so.
//
// A module is a folder <name>/ holding up to one library per class: <name>.GAME_Init.so (start-up),
// <name>.GAME_Mod.so (client game, input, renderer stages), <name>.SERVER_Mod.so (server tick, player traffic) and
// <name>.MERIDON_Mod.so (content). The launcher looks for each in the game folder's modules/ first, then in the
// folders of `--module-path` (or module_path in launcher.ini), so a module can run from its own build folder. The
// name is "VENDOR_module": it becomes the module's ModuleID, which tags everything the module owns, so pick a vendor
// word of your own.
//
// The game finds each hook by its symbol name. Include modules/ModuleApi.h and define the hooks you need with
// C linkage; the header holds every hook's declaration, so a wrong signature is a compile error. Every hook is
// optional. Server and content libraries include modules/ServerModuleApi.h instead, which needs no Vulkan or ImGui
// (ExampleServer.cpp, ExampleContent.cpp).

#include "modules/ImGuiHost.h"
#include "modules/ModuleApi.h"

#include "game/Game.h"
#include "game/graphics/GameRenderer.h"

#include <atomic>
#include <cstdio>

namespace {
std::atomic<long> framesSeen = 0;
}

// Called once when the library opens. The registry of this class is locked meanwhile: set up your own state here
// and leave other modules alone.
extern "C" void ModuleLoad() {
    framesSeen = 0;
}

// Where this module runs in each sorted list: lower first, 0 by default. The launcher sorts "update", "render",
// "post", "overlay" and "ui" once, after loading.
extern "C" int ModuleSort(char const* listName) {
    (void)listName;
    return 0;
}

extern "C" void Game_Start() {}

// The world is about to run: enter play mode, which captures the mouse (when the window has focus) and shows the
// crosshair.
extern "C" void Game_Ready() {
    Game::Play();
}

// The renderer's frame, on the render thread, for modules of the "render" list. The frame image is in the general
// layout for every command stage; all world drawing is the modules' own. This one paints deep space.
extern "C" void Renderer_FrameRenderCommands(VkCommandBuffer commands) {
    auto* renderer = Game::renderer;
    VkClearColorValue const space{{0.01f, 0.015f, 0.04f, 1.0f}};
    VkImageSubresourceRange const whole{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    renderer->vkCmdClearColorImage(commands, renderer->CurrentImage(), VK_IMAGE_LAYOUT_GENERAL, &space, 1, &whole);
}

// The interface, on the render thread inside the game's ImGui frame, for modules of the "ui" list. ImGui keeps its
// context and allocators in globals of whichever copy of ImGui a library was linked with, so every hook that calls
// ImGui first points this library's copy at the game's (modules/ImGuiHost.h); false means no renderer has made one.
extern "C" void Renderer_FrameUpdateUi() {
    if (!Game::uiVisible || !modules::UseHostImGui())
        return;
    // Drawn over the frame rather than in a window: a window may hold the interface's focus, and while one does the
    // avatar's keys don't reach the game.
    char line[64];
    std::snprintf(line, sizeof line, "MERIDON_example: %ld game loop passes", framesSeen.load());
    ImGui::GetForegroundDrawList()->AddText(ImVec2(10.0f, 10.0f), IM_COL32(255, 255, 255, 255), line);
}

// The game loop, once per pass, for modules of the "update" list. The argument is the smoothed frame time in
// seconds. Runs on the game loop thread; other threads hand work to it with Game::Synchronize.
extern "C" void Game_Update(double smoothedFrameSeconds) {
    (void)smoothedFrameSeconds;
    ++framesSeen;
}

// The input loop in play mode (Game::_inputMode 1).
extern "C" void Input_Update_Play(double deltaSeconds) {
    (void)deltaSeconds;
}

extern "C" void Game_Stop() {}
