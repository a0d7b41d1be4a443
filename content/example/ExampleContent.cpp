// The example module, content side: MERIDON_example.MERIDON_Mod.so. Content modules are listed in Game::_mods
// (the launcher's "mods"); Game::Start loads them, calls Load, and Game::Stop calls Unload before closing them.

#include "modules/ModuleApi.h"

// Tells a future game which module interface this was written for. The game keeps the address only.
extern "C" uint32_t const _MERIDON_Mod_VERSION = MERIDON_MOD_VERSION;

extern "C" void Load() {}

extern "C" void Unload() {}
