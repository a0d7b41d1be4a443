#pragma once

#include "modules/ModuleClass.h"

#include <cstdint>

/// The version a content module was written against, exported by it as `_MERIDON_Mod_VERSION`. The game only
/// stores the symbol's address; the launcher refuses a content module that exports another version, while a module
/// without the symbol loads all the same.
#define MERIDON_MOD_VERSION 1u

/// Content modules, named in Game::_mods: loaded by Game::Start, unloaded by Game::Stop.
#define MERIDON_MERIDON_MOD_HOOKS(HOOK)                                                                                \
    HOOK(Load, void, (),                                                                                               \
         "Once, in Game::Start after the content modules are opened, before the world's saved entities load: the "     \
         "place to register entity types. Modules are called in no set order",                                         \
         "main", "")                                                                                                   \
    HOOK(Unload, void, (),                                                                                             \
         "Once, in Game::Stop after the world is saved and its entities dropped, right before the library closes: "    \
         "remove what Load registered",                                                                                \
         "main", "")

struct MERIDON_EXPORT MeridonModHooks {
    static constexpr char const* CLASS = "MERIDON_Mod";
    /// Address of the module's `_MERIDON_Mod_VERSION` (a uint32_t), or null.
    void const* _MERIDON_Mod_VERSION = nullptr;
    MERIDON_MERIDON_MOD_HOOKS(MERIDON_HOOK_FIELD)
    template <class Fetch> void FetchHooks(Fetch&& fetch) {
        fetch(_MERIDON_Mod_VERSION, "_MERIDON_Mod_VERSION");
        MERIDON_MERIDON_MOD_HOOKS(MERIDON_HOOK_FETCH)
    }
};

class MERIDON_EXPORT MERIDON_Mod final : public modules::ModuleClass<MERIDON_Mod, MeridonModHooks> {
public:
    using ModuleClass::ModuleClass;
};

extern template class modules::ModuleClass<MERIDON_Mod, MeridonModHooks>;
