// TEST_version: a content module built for another module version than the game's, which the launcher must refuse
// before the game starts. Its Load says so if it ever runs.

#include "modules/ModuleApi.h"

#include <cstdio>

extern "C" uint32_t const _MERIDON_Mod_VERSION = MERIDON_MOD_VERSION + 1;
extern "C" void Load() { std::puts("TEST_version loaded"); }
