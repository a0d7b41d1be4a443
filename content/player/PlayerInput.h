#pragma once

// What a player's client tells the server each game loop pass: how the player wants their avatar to move. The bytes
// travel like the link's (the client's Client_Send, the server's Server_Receive), so the same packet crosses a
// network unchanged; docs/player-input-format.md is the reference for each byte. Decode trusts nothing.

#include <cstdint>
#include <optional>
#include <vector>

namespace player {

inline constexpr uint16_t kInputVersion = 1;

/// The latest wish wins: the server keeps the last input it received and applies it every tick until the next.
struct Input {
    /// -1..1 each: backward to forward, left to right, in the avatar's own frame.
    float forward = 0.0f;
    float right = 0.0f;
    /// Radians about the local up from east (+x), counter-clockwise seen from above; the avatar turns to it.
    float heading = 0.0f;
    bool jump = false;
    bool sprint = false;
    bool crouch = false;
    bool jetpack = false;
    /// Count the player's requests to respawn and to use what is in front of them (open a door): a change asks
    /// once more, so a request survives lost or merged packets while a repeated packet asks nothing twice.
    uint8_t respawns = 0;
    uint8_t interactions = 0;

    bool operator==(Input const&) const = default;
};

std::vector<unsigned char> Encode(Input const& input);

/// The input of a packet of this format; nothing for bytes of any other format, which other modules may own. Throws
/// std::invalid_argument naming the problem for a packet that says it is ours but is malformed: a wrong length or
/// version, unknown flag bits, or numbers out of range.
std::optional<Input> Decode(unsigned char const* data, unsigned long size);

}
