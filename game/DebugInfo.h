#pragma once

#include "game/Export.h"

#include <map>
#include <mutex>

namespace game {

/// Counters the settings panel lists under "Debug Info", in key order. Modules add and update rows directly,
/// holding infosMutex. Nothing clears the table.
class MERIDON_EXPORT DebugInfo {
public:
    DebugInfo() = delete;

    /// Key: a printf format with one conversion for an unsigned long (e.g. "Chunks loaded: %lu"), the row's label.
    /// Keys compare by address: two equal texts at different addresses are two rows, so keep each key in one
    /// static string.
    static std::map<char const*, unsigned long> infos;
    static std::mutex infosMutex;
};

}
