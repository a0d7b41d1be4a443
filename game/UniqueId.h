#pragma once

#include "game/Export.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace game {

/// Identity of every persistent object: a 4-character type prefix, the 32-bit owner (the instance that made it), a
/// microsecond clock and a random number, 16 bytes in that order. Made without asking anyone; an id is null unless
/// both of its 64-bit halves are non-zero.
class MERIDON_EXPORT UniqueId {
public:
    /// The instance number stamped into every new id; set once by the host process before it makes any.
    static uint32_t _this_owner;

    /// A fresh id with this prefix ("ENTT", "NODE"), the current owner and time, and a random number in 1..16383.
    static UniqueId Generate(char const (&prefix)[5]);

    /// The null id.
    UniqueId() = default;
    /// Parses the 28-character form; "" gives the null id. Throws std::runtime_error "UniqueId string length should
    /// be 28" for other lengths and std::invalid_argument "not a hex digit" for a character outside "0-9A-F".
    explicit UniqueId(std::string const& text);

    /// Prefix, then bytes 4..7 and 8..15 as upper-case hex in memory order: 28 characters; "" for a null id.
    std::string String() const;
    explicit operator std::string() const { return String(); }

    bool IsNull() const { return low == 0 || high == 0; }
    explicit operator bool() const { return !IsNull(); }
    bool operator==(UniqueId const& other) const { return low == other.low && high == other.high; }

    /// Bytes 0..7: prefix and owner.
    uint64_t low = 0;
    /// Bytes 8..15: time in microseconds in the low 50 bits, the random number above them.
    uint64_t high = 0;
};

static_assert(sizeof(UniqueId) == 16, "ids are written to disk as their 16 bytes");

}

namespace game::entity {
/// An entity's id: a UniqueId with the prefix "ENTT".
using Id = game::UniqueId;
}

/// The high half as it stands: ids of one process share the low half, while time and chance spread the high one.
template <>
struct std::hash<game::UniqueId> {
    size_t operator()(game::UniqueId const& id) const noexcept { return static_cast<size_t>(id.high); }
};
