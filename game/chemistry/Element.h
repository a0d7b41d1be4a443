#pragma once

#include "game/Export.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace game {

/// One row of the periodic table, as the game knows it. The table is static data, built at program load and never
/// changed.
struct MERIDON_EXPORT Element {
    /// Atomic number, and the row's place in `elements`.
    uint8_t number;
    std::string symbol;
    std::string name;
    /// Standard atomic weight in unified atomic mass units.
    double atomicMass;
    std::vector<int8_t> oxidationStates;

    /// Rows 0 to 118: a placeholder "_" of no mass, then the elements by atomic number.
    static std::vector<Element> elements;
    /// Each symbol's row in `elements`.
    static std::unordered_map<std::string, Element const*> elementsBySymbol;
};

}
