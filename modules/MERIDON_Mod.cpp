#include "modules/MERIDON_Mod.h"

#include "modules/ModuleClass.inl"

template class modules::ModuleClass<MERIDON_Mod, MeridonModHooks>;
