#pragma once

#include "game/Export.h"

#include <any>
#include <mutex>
#include <string>
#include <unordered_map>

class Game;

namespace game {

/// Named values of any type, process-wide: modules set tunables, the core reads them with a fallback. Game::Quit
/// clears them, so a module sets its options anew in each game it starts.
class MERIDON_EXPORT Options {
public:
    Options() = delete;

    /// The value stored under `name`, or `fallback` when there is none. A double is also read from a stored float.
    /// Throws std::bad_any_cast when the stored value has another type.
    template <class T>
    static T Get(std::string const& name, T const& fallback);

    /// Stores `value` under `name`, replacing what was there, whatever its type.
    template <class T>
    static void Set(std::string const& name, T value);

private:
    friend class ::Game;

    static std::unordered_map<std::string, std::any> _options;
    /// Guards _options.
    static std::mutex _mu;
};

}

#include "game/Options.inl"
