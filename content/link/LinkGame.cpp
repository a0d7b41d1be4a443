// MERIDON_link, client side: MERIDON_link.GAME_Mod.so. In a game that hosts its own server it attaches to the local
// link of the server side (LinkServer.cpp) and announces the local player; every game loop pass it hands what the
// server sent to every module's Client_Receive, its own among them, which applies the entity messages.

#include "modules/ModuleApi.h"

#include "content/link/ClientReplication.h"
#include "content/link/LocalLink.h"
#include "game/Game.h"

#include <iostream>

using entitylink::LocalLink;

namespace {
char const* const kModule = "MERIDON_link";
/// The server side's link, while this client is attached to it.
LocalLink* localLink = nullptr;
entitylink::ClientReplication replication;
}

// ---- Local link ----------------------------------------------------------------------------------------------------

// The world is loaded and no loop runs yet. A client of another process's server gets its bytes from a network
// module instead.
extern "C" void Game_Ready() {
    if (!Game::_is_server)
        return;
    auto server = SERVER_Mod::GetModule(kModule);
    if (!server || !server->ModuleGetCustomPtr)
        return;
    localLink = static_cast<LocalLink*>(server->ModuleGetCustomPtr());
    localLink->toClient.TakeAll();  // left from an earlier session: the connection below starts afresh
    localLink->clientAttached = true;
    SERVER_Mod::CallHooks(&SERVER_Mod::Server_PlayerConnected, LocalLink::kLocalPlayer);
}

// After the entities' Update: what arrives now sets the targets that the next pass moves towards.
extern "C" void Game_ClientUpdate() {
    if (!localLink)
        return;
    for (auto const& packet : localLink->toClient.TakeAll())
        GAME_Mod::CallHooks(&GAME_Mod::Client_Receive, packet.data(), static_cast<unsigned long>(packet.size()));
}

extern "C" void Client_Send(unsigned char const* data, unsigned long size) {
    if (localLink)
        localLink->toServer.Push(data, size);
}

extern "C" void Game_Stop() {
    if (!localLink)
        return;
    localLink->clientAttached = false;
    SERVER_Mod::CallHooks(&SERVER_Mod::Server_PlayerDisconnected, LocalLink::kLocalPlayer);
    localLink = nullptr;
}

// ---- Replication ---------------------------------------------------------------------------------------------------

// A packet that does not decode is dropped whole: from a network it may be anything, and the next one may be fine.
extern "C" void Client_Receive(unsigned char const* data, unsigned long size) {
    try {
        replication.Receive(data, size);
    } catch (entitylink::FormatError const& error) {
        std::cerr << "MERIDON_link: " << error.what() << std::endl;
    }
}
