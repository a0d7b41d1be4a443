#pragma once

#include "modules/ModuleClass.h"

#include <vulkan/vulkan_core.h>

/// Start-up modules, run before the game: Vulkan device choice and the splash screen. Loaded by the launcher, except
/// in a dedicated server.
#define MERIDON_GAME_INIT_HOOKS(HOOK)                                                                                  \
    HOOK(Vulkan_Init, void, (VkInstance instance, VkPhysicalDevice gpu, VkDevice device),                              \
         "Not called by `meridon`, which makes its device without asking modules. For a launcher that does: once "     \
         "the device exists",                                                                                          \
         "-", "")                                                                                                      \
    HOOK(Vulkan_ScoreGPU, int, (VkPhysicalDevice gpu, char const* gpuName),                                            \
         "Not called by `meridon`. For a launcher that scores GPUs: the answer is added to its own score of each "     \
         "candidate, and the highest total wins",                                                                      \
         "-", "")                                                                                                      \
    HOOK(SplashBegin, void, (),                                                                                        \
         "Once, after the modules are loaded and the GAME_Mod lists sorted, before the window and the renderer open",  \
         "main", "")                                                                                                   \
    HOOK(SplashEnd, void, (), "Once, after Game::Ready, right before the loops start", "main", "")

struct MERIDON_EXPORT GameInitHooks {
    static constexpr char const* CLASS = "GAME_Init";
    MERIDON_GAME_INIT_HOOKS(MERIDON_HOOK_FIELD)
    template <class Fetch> void FetchHooks(Fetch&& fetch) { MERIDON_GAME_INIT_HOOKS(MERIDON_HOOK_FETCH) }
};

class MERIDON_EXPORT GAME_Init final : public modules::ModuleClass<GAME_Init, GameInitHooks> {
public:
    using ModuleClass::ModuleClass;
};

extern template class modules::ModuleClass<GAME_Init, GameInitHooks>;
