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
         "A player joined: called not by `meridon` but by the module that carries the players' link. "                 \
         "MERIDON_link calls it for player 0 in its Game_Ready when this process hosts the server, and its "           \
         "replication then sends that player every entity anew",                                                       \
         "main", "")                                                                                                   \
    HOOK(Server_PlayerDisconnected, void, (uint32_t player),                                                           \
         "A player left: called by the module that carries the link, not by `meridon`. MERIDON_link calls it for "     \
         "player 0 in its Game_Stop",                                                                                  \
         "main", "")                                                                                                   \
    HOOK(Server_Send, void, (uint32_t player, unsigned char const* data, unsigned long size),                          \
         "Bytes for a player, handed to every module; the one that carries the link to that player sends them "        \
         "(MERIDON_link for the local player 0). MERIDON_link's replication calls it in its Server_GameUpdate, "       \
         "once per player with news, with a packet of docs/link-format.md",                                            \
         "server", "")                                                                                                 \
    HOOK(Server_Receive, void, (uint32_t player, unsigned char const* data, unsigned long size),                       \
         "Bytes that came from a player, handed to every module by the module that carries the link. "                 \
         "MERIDON_link calls it for the local player 0 in its Server_BeforeUpdate, with what the client sent "         \
         "since the previous tick",                                                                                    \
         "server", "")                                                                                                 \
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
