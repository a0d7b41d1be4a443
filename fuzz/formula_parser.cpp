// The reading of chemical formulas, as they arrive from module configs and from players' text: any text gives a
// molecule, empty when it cannot be read, and what a molecule writes back reads as itself.

#include "game/chemistry/Molecule.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    std::string const text(reinterpret_cast<char const*>(data), size);
    game::Molecule const molecule(text);
    double const mass = molecule.Mass();
    if (!(mass >= 0.0) || !std::isfinite(mass))
        std::abort();
    std::string const formula = molecule.Formula();
    if (game::Molecule(formula).Formula() != formula)
        std::abort();
    // Every input stays in the table of names; forget it, or a long run grows without end.
    game::Molecule::molecules.erase(text);
    return 0;
}
