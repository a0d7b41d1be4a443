#pragma once

#include <type_traits>
#include <utility>

namespace game {

template <class T>
T Options::Get(std::string const& name, T const& fallback) {
    std::lock_guard lock(_mu);
    auto found = _options.find(name);
    if (found == _options.end()) {
        return fallback;
    }
    if constexpr (std::is_same_v<T, double>) {
        // Modules often hold their tunables as float; the core reads double.
        if (auto const* value = std::any_cast<float>(&found->second)) {
            return *value;
        }
    }
    return std::any_cast<T>(found->second);
}

template <class T>
void Options::Set(std::string const& name, T value) {
    std::lock_guard lock(_mu);
    _options[name] = std::move(value);
}

}
