#pragma once

#include "modules/ModuleClass.h"

#include <cstdint>

/// Server-side modules: the world's update and the traffic with players. Players are numbered by the module that
/// carries the network; the library gives the numbers no meaning.
#define MERIDON_SERVER_MOD_HOOKS(HOOK)                                                                                 \
    HOOK(Server_Load, void, (char const* world),                                                                       \
         "Once, after the world's saved entities are loaded, before Game::Ready and the first tick. The argument is "  \
         "the world's name. Modules are called in no set order: none may count on another's Server_Load having run",   \
         "main", "")                                                                                                   \
    HOOK(Server_PlayerConnected, void, (uint32_t player),                                                              \
         "Not called by `meridon`, which has no network. For a launcher with one: a player joined",                    \
         "-", "")                                                                                                      \
    HOOK(Server_PlayerDisconnected, void, (uint32_t player),                                                           \
         "Not called by `meridon`. For a launcher with a network: a player left",                                      \
         "-", "")                                                                                                      \
    HOOK(Server_Send, void, (uint32_t player, unsigned char const* data, unsigned long size),                          \
         "Not called by `meridon`. For a launcher with a network: bytes for the module to send to a player",           \
         "-", "")                                                                                                      \
    HOOK(Server_Receive, void, (uint32_t player, unsigned char const* data, unsigned long size),                       \
         "Not called by `meridon`. For a launcher with a network: bytes that came from a player",                      \
         "-", "")                                                                                                      \
    HOOK(Server_BeforeUpdate, void, (double deltaSeconds),                                                             \
         "First thing in each server tick, before any entity updates",                                                 \
         "server", "")                                                                                                 \
    HOOK(Server_GameUpdate, void, (double deltaSeconds),                                                               \
         "Last thing in each server tick, after physics and the entities' AfterUpdate; an autosave that is due "       \
         "follows it",                                                                                                 \
         "server", "")

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
