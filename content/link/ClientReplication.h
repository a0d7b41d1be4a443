#pragma once

#include "content/link/LinkMessages.h"

#include <set>
#include <string>

namespace entitylink {

/// Replication, client side: makes, moves and removes the client entities as a server's packets say. Runs on the
/// game thread, where the client entities update.
class ClientReplication {
public:
    /// Share of the remaining way to the target covered per second (ClientSideEntity::interpolation_rate). With the
    /// game loop at 60 passes a second each pass covers half the way, so three quarters of a 30 Hz tick's move is
    /// made before the next tick arrives and the rest fades within three ticks; a loop of 30 passes or fewer lands
    /// on every state as it comes. Slower would trail a moving body further, faster would jump.
    static constexpr float kInterpolationRate = 30.0f;

    /// Decodes one packet and applies its messages in order. A packet that fails to decode changes nothing: the
    /// FormatError goes to the caller.
    void Receive(unsigned char const* data, unsigned long size);

    void Apply(Create const& create);
    void Apply(Update const& update);
    void Apply(Destroy const& destroy);

private:
    void Report(Create const& create, std::string const& why);

    /// "module/type" of the types this client has been told to make and cannot, each reported once.
    std::set<std::string> _reported;
};

}
