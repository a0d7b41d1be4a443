#include "modules/GAME_Init.h"

#include "modules/ModuleClass.inl"

template class modules::ModuleClass<GAME_Init, GameInitHooks>;
