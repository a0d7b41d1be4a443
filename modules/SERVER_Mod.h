#pragma once

#include "modules/ModuleClass.h"

#include <cstdint>

/// Server-side modules: the world's update and the traffic with players. Players are numbered by the module that
/// carries the network; the library gives the numbers no meaning.
#define MERIDON_SERVER_MOD_HOOKS(HOOK)                                                                      \
    /* launcher: once the world is chosen, before the first tick */                                         \
    HOOK(Server_Load, void, (char const* world))                                                            \
    HOOK(Server_PlayerConnected, void, (uint32_t player))                                                   \
    HOOK(Server_PlayerDisconnected, void, (uint32_t player))                                                \
    HOOK(Server_Send, void, (uint32_t player, unsigned char const* data, unsigned long size))                \
    HOOK(Server_Receive, void, (uint32_t player, unsigned char const* data, unsigned long size))             \
    HOOK(Server_BeforeUpdate, void, (double deltaSeconds)) /* first thing in a tick */                      \
    HOOK(Server_GameUpdate, void, (double deltaSeconds))   /* last thing in a tick */

struct MERIDON_EXPORT ServerModHooks {
    static constexpr char const* CLASS = "SERVER_Mod";
    MERIDON_SERVER_MOD_HOOKS(MERIDON_HOOK_FIELD)
    template <class Fetch> void FetchHooks(Fetch&& fetch) { MERIDON_SERVER_MOD_HOOKS(MERIDON_HOOK_FETCH) }
};

class MERIDON_EXPORT SERVER_Mod final : public modules::ModuleClass<SERVER_Mod, ServerModHooks> {
public:
    using ModuleClass::ModuleClass;
};

extern template class modules::ModuleClass<SERVER_Mod, ServerModHooks>;
