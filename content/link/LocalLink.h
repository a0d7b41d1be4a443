#pragma once

// The local link: in a game that hosts its own server, the bytes that server and client send each other cross the
// process through two queues instead of a network. The server side of MERIDON_link owns the one LocalLink and hands
// its address to the client side through ModuleGetCustomPtr: the two sides are separate libraries, each compiled
// from this header, so everything here stays inline.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

namespace entitylink {

/// Packets from one loop's thread to another's, kept whole and in order.
class PacketQueue {
public:
    void Push(unsigned char const* data, unsigned long size) {
        std::lock_guard lock(_mutex);
        _packets.emplace_back(data, data + size);
    }
    /// Everything pushed so far, oldest first; the queue is left empty.
    std::vector<std::vector<unsigned char>> TakeAll() {
        std::lock_guard lock(_mutex);
        return std::exchange(_packets, {});
    }

private:
    std::mutex _mutex;
    std::vector<std::vector<unsigned char>> _packets;
};

struct LocalLink {
    /// The player number of the one client a local link carries.
    static constexpr uint32_t kLocalPlayer = 0;

    PacketQueue toClient;
    PacketQueue toServer;
    /// Set while a client side drains toClient: without one (a dedicated server) nothing is queued, so that the
    /// queue cannot grow without bound.
    std::atomic<bool> clientAttached = false;
};

}
