#pragma once

// The one header a module includes. It declares every hook of every module class with C linkage and default
// visibility, so a module that defines a hook with the wrong arguments fails to compile instead of misbehaving at
// run time. Define only the hooks the module needs, in the library of the class that calls them:
//
//     #include "modules/ModuleApi.h"
//     extern "C" void Game_Update(double smoothedFrameSeconds) { ... }   // in <name>.GAME_Mod.so
//
// Every module class also fetches these, all optional:
//     ModuleLoad()      right after the library is opened, with the registry of its class locked: do not load,
//                       unload or iterate modules of that class from here.
//     ModuleUnload()    right before the library is closed.
//     ModuleSort(list)  the module's place in the sorted list `list`; lower runs first, 0 when absent.
//     ModuleSetCustomPtr(pointer) / ModuleGetCustomPtr()  a pointer the launcher or other modules may exchange.
//
// Hooks run on the launcher's threads, under the shared side of their class's registry lock. When each hook runs,
// on which thread and in which order is in docs/modules.md, written from the hook tables themselves.
//
// ImGui: every library that calls ImGui must draw in the game's context with the game's allocators, since ImGui
// keeps both in globals of the copy of it that a library was linked with. Include modules/ImGuiHost.h and call
// modules::UseHostImGui() at the top of each hook that calls ImGui; draw only from Renderer_FrameUpdateUi, where the
// game's ImGui frame is open.
//
// A hook may throw. The call passes it on as a modules::HookError whose message names the module and the hook
// ("module VENDOR_name, hook Game_Update: " and what was thrown), and the launcher then stops the game the ordinary
// way and exits with status 1. A ModuleLoad that throws fails the load; what ModuleUnload throws is reported on
// standard error, as the library closes all the same.
//
// The libraries of a server or content module (SERVER_Mod, MERIDON_Mod) may include modules/ServerModuleApi.h
// instead: the same without the client classes, whose hooks take Vulkan's types, so they build against
// Meridon::server without Vulkan's or ImGui's headers.

#include "modules/GAME_Init.h"
#include "modules/GAME_Mod.h"
#include "modules/ServerModuleApi.h"

MERIDON_GAME_INIT_HOOKS(MERIDON_HOOK_EXPORT)
MERIDON_GAME_MOD_HOOKS(MERIDON_HOOK_EXPORT)
