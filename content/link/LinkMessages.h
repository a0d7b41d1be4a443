#pragma once

// The messages that carry entity state from a server to its clients, and their byte form: one packet holds a header
// and a list of messages, every number little-endian. docs/link-format.md is the reference for each byte. The same
// bytes travel through the local link of a single-player game and over a network, so Decode trusts nothing: every
// length and count is checked against the bytes that remain before anything is read or allocated.

#include "game/UniqueId.h"
#include "game/entity/EnvironmentId.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace entitylink {

/// The format version this build writes and the only one it reads.
inline constexpr uint16_t kVersion = 1;
/// Longest module, type or joint name, in bytes: its length is one byte.
inline constexpr size_t kMaxNameBytes = 255;

/// The kind byte in front of every message. Kinds the next versions add (a player's input requests, inventory)
/// take the numbers after these; a version 1 reader refuses them.
enum class Kind : uint8_t { Create = 1, Update = 2, Destroy = 3 };

/// An entity the client has not seen yet, or whose parent or environment changed: which type to make, and where.
struct Create {
    game::entity::Id id;
    /// "VENDOR_module" of the type's module, as ModuleID::String gives it; "" for an entity of no module.
    std::string module;
    std::string type;
    game::entity::Id parent;
    game::entity::EnvironmentId environment = 0;
    /// In the frame of the parent or environment.
    glm::dvec3 position{0.0};
    /// A unit quaternion; w first on the wire, as everywhere in the game.
    glm::dquat orientation{1.0, 0.0, 0.0, 0.0};

    bool operator==(Create const&) const = default;
};

/// One joint's values, as the server's joint solver left them.
struct JointValue {
    std::string name;
    glm::vec3 linear{0.0f};
    /// Degrees.
    glm::vec3 angular{0.0f};

    bool operator==(JointValue const&) const = default;
};

/// The state a client entity moves towards.
struct Update {
    game::entity::Id id;
    /// Simulated as a moving body: the client glides to the target instead of jumping.
    bool dynamic = false;
    glm::dvec3 position{0.0};
    glm::dquat orientation{1.0, 0.0, 0.0, 0.0};
    glm::dvec3 linear_velocity{0.0};
    /// World axes, radians per second.
    glm::dvec3 angular_velocity{0.0};
    /// By name; the server sends them sorted, so that one state always gives the same bytes.
    std::vector<JointValue> joints;

    bool operator==(Update const&) const = default;
};

/// The entity is gone from the server.
struct Destroy {
    game::entity::Id id;

    bool operator==(Destroy const&) const = default;
};

using Message = std::variant<Create, Update, Destroy>;

/// Why a packet was refused, or a message could not be written: the message says which and where.
class FormatError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One packet of `messages`, in order. Throws FormatError for what Decode would refuse: a null id, a name longer
/// than kMaxNameBytes, a number that is not finite or an orientation that is no unit quaternion.
std::vector<unsigned char> Encode(std::span<Message const> messages);

/// The messages of one packet, in order. Throws FormatError naming the offset and the problem for anything but a
/// well-formed packet of this version; it never reads outside [data, data + size).
std::vector<Message> Decode(unsigned char const* data, size_t size);

/// Whether Encode accepts the message: a state that went non-finite cannot be sent.
bool IsSendable(Message const& message);

}
