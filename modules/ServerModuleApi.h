#pragma once

// The part of modules/ModuleApi.h for server and content modules (SERVER_Mod, MERIDON_Mod): their hooks, the five
// that every class fetches and `_MERIDON_Mod_VERSION`, declared the same way. It reaches neither Vulkan's nor ImGui's
// headers, so a module built against Meridon::server compiles where neither is installed. What the hooks mean and
// when they run is in modules/ModuleApi.h and docs/modules.md.

#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

MERIDON_SERVER_MOD_HOOKS(MERIDON_HOOK_EXPORT)
MERIDON_MERIDON_MOD_HOOKS(MERIDON_HOOK_EXPORT)
MERIDON_MODULE_HOOKS(MERIDON_HOOK_EXPORT)
extern "C" __attribute__((visibility("default"))) uint32_t const _MERIDON_Mod_VERSION;
