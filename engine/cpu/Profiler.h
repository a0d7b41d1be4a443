#pragma once

#include "engine/Export.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace quorl::cpu {

/// Named timers for the performance panel. Constructing a Profiler starts a timer; its destruction adds the elapsed
/// time to the profile of that name. The table may be read from any thread under profilesMutex.
class QUORL_EXPORT Profiler {
public:
    struct Profile {
        double lastMs = 0.0;
        double maxMs = 0.0;
        double totalMs = 0.0;
        uint64_t count = 0;
        double AverageMs() const { return count ? totalMs / static_cast<double>(count) : 0.0; }
    };

    static std::map<std::string, Profile, std::less<>> profiles;
    static std::mutex profilesMutex;

    /// Adds one measurement to the named profile, creating it on first use.
    static void Record(std::string_view name, double milliseconds);
    /// Forgets every measurement; the names stay so that the panel keeps its rows.
    static void ResetAll();

    /// `name` must outlive the timer (a literal in practice).
    explicit Profiler(std::string_view name) : _name(name), _start(std::chrono::steady_clock::now()) {}
    ~Profiler();
    Profiler(Profiler const&) = delete;
    Profiler& operator=(Profiler const&) = delete;

private:
    std::string_view _name;
    std::chrono::steady_clock::time_point _start;
};

}
