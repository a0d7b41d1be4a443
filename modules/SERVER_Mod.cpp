#include "modules/SERVER_Mod.h"

#include "modules/ModuleClass.inl"

template class modules::ModuleClass<SERVER_Mod, ServerModHooks>;
