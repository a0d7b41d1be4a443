#include "Recorder.h"

extern "C" uint32_t const _MERIDON_Mod_VERSION = MERIDON_MOD_VERSION;
extern "C" void Load() { Record("Load"); }
extern "C" void Unload() { Record("Unload"); }
