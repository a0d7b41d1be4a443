// The rendering module, MERIDON_render.GAME_Mod.so: draws the world that the library keeps in its registries (the
// instances, their override records, the lights) into each frame, with the sky of the camera's environment. Its
// shaders lie in shaders/ beside this library, which finds them from its own path, so the module runs from any
// game folder.

#include "modules/ModuleApi.h"

#include "RenderStats.h"
#include "WorldRenderer.h"

#include "game/Game.h"
#include "game/graphics/GameRenderer.h"

#include <dlfcn.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

namespace {

std::unique_ptr<render::WorldRenderer> world;

/// Past every module that paints a background (the example's deep space): the sky covers the whole frame.
constexpr int kRenderPlace = 100;

std::string ShaderFolder() {
    Dl_info info{};
    // Any address inside this library names its file.
    dladdr(&world, &info);
    return std::filesystem::path(info.dli_fname).parent_path().string() + "/shaders/";
}

}

extern "C" int ModuleSort(char const* listName) {
    return std::strcmp(listName, "render") == 0 ? kRenderPlace : 0;
}

extern "C" void Renderer_StartRendering() {
    world = std::make_unique<render::WorldRenderer>(*Game::renderer, ShaderFolder());
}

extern "C" void Renderer_StopRendering() {
    world.reset();
}

extern "C" void Renderer_RefreshViewport() {
    if (world)
        world->RefreshViewport();
}

extern "C" void Renderer_FrameRenderCommands(VkCommandBuffer commands) {
    if (world)
        world->Record(commands);
}

/// The last frame's figures; null before the first StartRendering.
extern "C" __attribute__((visibility("default"))) render::RenderStats const* MERIDON_render_Stats() {
    return world ? &world->stats : nullptr;
}
