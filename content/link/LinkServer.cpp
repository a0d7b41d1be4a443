// MERIDON_link, server side: MERIDON_link.SERVER_Mod.so. It tells the players what the server's entities do
// (replication) and, in a game that hosts its own server, carries the bytes to the client in the same process (the
// local link). The two meet only at the hooks: replication hands its packets to every module's Server_Send, and a
// network module can carry them to remote players beside the local link, or instead of it.

#include "modules/ServerModuleApi.h"

#include "content/link/LocalLink.h"
#include "content/link/ServerReplication.h"

using entitylink::LocalLink;

namespace {
/// Reached by the client side through ModuleGetCustomPtr.
LocalLink localLink;
entitylink::ServerReplication replication;
}

// ---- Replication ---------------------------------------------------------------------------------------------------

extern "C" void Server_PlayerConnected(uint32_t player) {
    replication.Connect(player);
}

extern "C" void Server_PlayerDisconnected(uint32_t player) {
    replication.Disconnect(player);
}

// After physics, so that each packet holds the state the tick ended with.
extern "C" void Server_GameUpdate(double) {
    replication.Tick([](uint32_t player, std::vector<unsigned char> const& packet) {
        SERVER_Mod::CallHooks(&SERVER_Mod::Server_Send, player, packet.data(),
                              static_cast<unsigned long>(packet.size()));
    });
}

// ---- Local link ----------------------------------------------------------------------------------------------------

extern "C" void Server_Send(uint32_t player, unsigned char const* data, unsigned long size) {
    if (player == LocalLink::kLocalPlayer && localLink.clientAttached)
        localLink.toClient.Push(data, size);
}

// What the client sent since the last tick, before any entity moves: requests act within the tick they arrive in.
extern "C" void Server_BeforeUpdate(double) {
    for (auto const& packet : localLink.toServer.TakeAll())
        SERVER_Mod::CallHooks(&SERVER_Mod::Server_Receive, LocalLink::kLocalPlayer, packet.data(),
                              static_cast<unsigned long>(packet.size()));
}

extern "C" void* ModuleGetCustomPtr() {
    return &localLink;
}
