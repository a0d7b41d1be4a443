#include "game/chemistry/Molecule.h"

#include "game/chemistry/Element.h"

#include <cstdlib>
#include <regex>

namespace game {

namespace {
// Unified atomic mass unit, in kilograms.
constexpr double kAtomicMassUnit = 1.6605402e-27;
// Four thirds of pi, for the volume of a ball.
constexpr double kBallVolumeFactor = 4.1887902047863905;
// The radius taken for every atom alike, in metres.
constexpr double kAtomRadius = 9.2e-11;
constexpr double kUnknownGasIndex = 1.001;
}

/// The (element number, count) pairs of a formula such as "C6H12O6": a symbol, then an optional count in decimal,
/// kept in eight bits, again and again. Anything else, an unknown symbol included, gives no pairs at all.
std::vector<std::pair<uint8_t, uint8_t>> GetElementsFromFormula(std::string const& text) {
    static std::regex const kPart("^([A-Z][a-z]{0,2})([0-9]*)([A-Z].*$|$)");
    std::vector<std::pair<uint8_t, uint8_t>> pairs;
    std::string rest = text;
    while (true) {
        std::smatch part;
        if (!std::regex_match(rest, part, kPart))
            return {};
        auto const element = Element::elementsBySymbol.find(part[1].str());
        if (element == Element::elementsBySymbol.end())
            return {};
        std::string const count = part[2].length() > 0 ? part[2].str() : "1";
        pairs.emplace_back(element->second->number, static_cast<uint8_t>(std::strtol(count.c_str(), nullptr, 10)));
        if (part[3].length() == 0)
            return pairs;
        rest = part[3].str();
    }
}

Molecule::Molecule(std::string const& nameOrFormula) {
    if (auto const known = molecules.find(nameOrFormula); known != molecules.end()) {
        elements = known->second.elements;
    } else if (auto const element = Element::elementsBySymbol.find(nameOrFormula);
               element != Element::elementsBySymbol.end()) {
        elements = {{element->second->number, 1}};
    } else {
        elements = GetElementsFromFormula(nameOrFormula);
        molecules.emplace(nameOrFormula, *this);
    }
}

double Molecule::Mass() const {
    double mass = 0.0;
    for (auto const& [number, count] : elements)
        if (number < Element::elements.size())
            mass += kAtomicMassUnit * Element::elements[number].atomicMass * count;
    return mass;
}

double Molecule::GaseousIndexOfRefraction() const {
    std::string const formula = Formula();
    if (auto const known = gasMoleculesIndexOfRefraction.find(formula); known != gasMoleculesIndexOfRefraction.end())
        return known->second;
    // A molecule of two or three atoms of one element takes that element's index: "O2" and "O3" that of "O".
    if (elements.size() == 1 && (elements[0].second == 2 || elements[0].second == 3) &&
        elements[0].first < Element::elements.size() && formula.size() >= 2) {
        auto const plain = gasMoleculesIndexOfRefraction.find(Element::elements[elements[0].first].symbol);
        if (plain != gasMoleculesIndexOfRefraction.end())
            return plain->second;
    }
    return kUnknownGasIndex;
}

double Molecule::GetMaximumLiquidDensity() const {
    std::string const formula = Formula();
    if (auto const known = liquidMoleculesMaxDensity.find(formula); known != liquidMoleculesMaxDensity.end())
        return known->second;
    // Every atom a ball of the same radius, the radius times the count: many atoms of one element are overstated,
    // as the game has always had it.
    double volume = 0.0;
    for (auto const& [number, count] : elements) {
        if (number >= Element::elements.size())
            continue;
        double const radius = count * kAtomRadius;
        volume += kBallVolumeFactor * (radius * radius * radius);
    }
    double const density = Mass() / volume;
    liquidMoleculesMaxDensity.emplace(formula, density);
    return density;
}

std::string Molecule::Formula() const {
    std::string text;
    for (auto const& [number, count] : elements) {
        if (number >= Element::elements.size())
            break;
        text += Element::elements[number].symbol;
        if (count > 1)
            text += std::to_string(count);
    }
    return text;
}

}
