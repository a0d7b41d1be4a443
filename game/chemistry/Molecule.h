#pragma once

#include "game/Export.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace game {

/// A chemical formula as (element number, count) pairs, in the order written: "CH3OH" is four pairs. Made from a name
/// or a formula; what cannot be read gives an empty molecule, never an error.
///
/// The tables are static, built at program load. `molecules` and `liquidMoleculesMaxDensity` grow as new names and
/// formulas are met, without locks: make new molecules and ask new densities from one thread only.
class MERIDON_EXPORT Molecule {
public:
    /// A molecule of `molecules`, or a single element by its symbol, or else the formula read and remembered under
    /// this name, even when nothing could be read.
    explicit Molecule(std::string const& nameOrFormula);

    /// Mass of one molecule in kilograms; elements past the table weigh nothing.
    double Mass() const;
    double HeatCapacity() const { return 1.0; }
    double LiquidIndexOfRefraction() const { return 1.33; }
    double SolidIndexOfRefraction() const { return 1.45; }
    /// From `gasMoleculesIndexOfRefraction` by formula, or for X2 and X3 by the plain element X, or else 1.001.
    double GaseousIndexOfRefraction() const;
    /// From `liquidMoleculesMaxDensity` by formula, or else computed from the atoms' volume and remembered there.
    double GetMaximumLiquidDensity() const;
    /// Symbols with their counts above 1, in order; an element past the table ends the text.
    std::string Formula() const;

    std::vector<std::pair<uint8_t, uint8_t>> elements;

    static std::unordered_map<std::string, Molecule> molecules;
    static std::unordered_map<std::string, double> gasMoleculesIndexOfRefraction;
    /// Kilograms per cubic metre.
    static std::unordered_map<std::string, double> liquidMoleculesMaxDensity;
};

}
