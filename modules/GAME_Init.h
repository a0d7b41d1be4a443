#pragma once

#include "modules/ModuleClass.h"

#include <vulkan/vulkan_core.h>

/// Start-up modules, run before the game: Vulkan device choice and the splash screen. The launcher calls them all.
#define MERIDON_GAME_INIT_HOOKS(HOOK)                                                        \
    /* after the device exists */                                                            \
    HOOK(Vulkan_Init, void, (VkInstance instance, VkPhysicalDevice gpu, VkDevice device))    \
    /* added to the launcher's score of each candidate GPU; the highest total wins */        \
    HOOK(Vulkan_ScoreGPU, int, (VkPhysicalDevice gpu, char const* gpuName))                  \
    HOOK(SplashBegin, void, ())                                                              \
    HOOK(SplashEnd, void, ())

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
