#pragma once

#include "content/link/LinkMessages.h"

#include <functional>
#include <map>
#include <mutex>
#include <unordered_map>

namespace entitylink {

/// Replication, server side: what each connected player has been told of the server's entities, and the packet
/// that brings it up to date. Whoever carries the bytes is not its concern: Tick hands each packet to `send`.
/// Players connect and disconnect from any thread; Tick runs on the server thread, outside any entity walk.
class ServerReplication {
public:
    using Send = std::function<void(uint32_t player, std::vector<unsigned char> const& packet)>;

    /// From the next tick on, `player` gets packets, the first of which creates every entity: a player that
    /// connects again starts over the same way.
    void Connect(uint32_t player);
    void Disconnect(uint32_t player);
    /// Reads every server entity once and sends each connected player one packet: create for an entity it has not
    /// seen or whose parent or environment changed, update for one whose state differs from what it was last sent,
    /// destroy for one that is gone. A player with nothing new gets no packet. An entity whose state is not finite
    /// is left out until it is again: the player keeps the last good state.
    void Tick(Send const& send);

private:
    /// What a player was last sent of one entity, and the tick that last saw the entity.
    struct Sent {
        Create create;
        Update update;
        uint64_t seenAtTick = 0;
    };

    std::mutex _mutex;
    uint64_t _tick = 0;
    std::map<uint32_t, std::unordered_map<game::entity::Id, Sent>> _players;
};

}
