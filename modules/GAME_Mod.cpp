#include "modules/GAME_Mod.h"

#include "modules/ModuleClass.inl"

template class modules::ModuleClass<GAME_Mod, GameModHooks>;
