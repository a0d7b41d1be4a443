#include "engine/cpu/Profiler.h"

#include <algorithm>

namespace quorl::cpu {

std::map<std::string, Profiler::Profile, std::less<>> Profiler::profiles;
std::mutex Profiler::profilesMutex;

void Profiler::Record(std::string_view name, double milliseconds) {
    std::lock_guard guard(profilesMutex);
    auto it = profiles.find(name);
    if (it == profiles.end())
        it = profiles.emplace(std::string(name), Profile{}).first;
    Profile& profile = it->second;
    profile.lastMs = milliseconds;
    profile.maxMs = std::max(profile.maxMs, milliseconds);
    profile.totalMs += milliseconds;
    ++profile.count;
}

void Profiler::ResetAll() {
    std::lock_guard guard(profilesMutex);
    for (auto& [name, profile] : profiles)
        profile = Profile{};
}

Profiler::~Profiler() {
    Record(_name, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - _start).count());
}

}
