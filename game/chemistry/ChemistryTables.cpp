// The chemistry tables, all in this one file: static data built at program load in a single initialisation, in the
// order of their definitions here. The order matters: the molecules are read through the symbol map, which points
// into the elements.
//
// Masses are standard atomic weights to three decimals (whole mass numbers for elements without stable isotopes);
// oxidation states are the common ones, the most common first; noble gases have none, and the superheavy elements
// from copernicium on carry the single state 0. "Berylium" is spelled as the game has always spelled it.

#include "game/chemistry/Element.h"
#include "game/chemistry/Molecule.h"

namespace game {

std::unordered_map<std::string, double> Molecule::gasMoleculesIndexOfRefraction{
    {"H", 1.000132},  {"He", 1.000035}, {"Ne", 1.000067}, {"F", 1.000195},    {"O", 1.000271},
    {"Ar", 1.000281}, {"N", 1.000298},  {"Kr", 1.000427}, {"Xe", 1.000702},   {"Cl", 1.000773},
    {"Se", 1.000895}, {"Hg", 1.000933}, {"Te", 1.000991}, {"S", 1.001111},    {"Br", 1.001132},
    {"P", 1.001212},  {"As", 1.001552}, {"Zn", 1.002},    {"CO", 1.000338},   {"CO2", 1.000449},
    {"CH4", 1.000444}, {"NH3", 1.000376}, {"C6H6", 1.001762}, {"CS2", 1.001481}, {"HCl", 1.000447},
    {"NO", 1.000297}, {"N2O", 1.000516}, {"C5H12", 1.000686}, {"SO2", 1.000686}, {"H2O", 1.000261},
};

std::unordered_map<std::string, double> Molecule::liquidMoleculesMaxDensity{
    {"H2", 100.0}, {"CH4", 400.0}, {"H2O", 1000.0}, {"O2", 1600.0}, {"CO2", 1600.0},
};

std::vector<Element> Element::elements{
    {0, "_", "", 0.0, {}},
    {1, "H", "Hydrogen", 1.008, {1}},
    {2, "He", "Helium", 4.003, {}},
    {3, "Li", "Lithium", 6.941, {1}},
    {4, "Be", "Berylium", 9.012, {2}},
    {5, "B", "Boron", 10.811, {3}},
    {6, "C", "Carbon", 12.011, {4, -4}},
    {7, "N", "Nitrogen", 14.007, {-3, 3, 5}},
    {8, "O", "Oxygen", 15.999, {-2}},
    {9, "F", "Fluorine", 18.998, {-1}},
    {10, "Ne", "Neon", 20.180, {}},
    {11, "Na", "Sodium", 22.990, {1}},
    {12, "Mg", "Magnesium", 24.305, {2}},
    {13, "Al", "Aluminum", 26.982, {3}},
    {14, "Si", "Silicon", 28.086, {4, -4}},
    {15, "P", "Phosphorus", 30.974, {-3}},
    {16, "S", "Sulfur", 32.065, {-2, 2, 4, 6}},
    {17, "Cl", "Chlorine", 35.453, {-1, 1, 3, 5, 7}},
    {18, "Ar", "Argon", 39.948, {}},
    {19, "K", "Potassium", 39.098, {1}},
    {20, "Ca", "Calcium", 40.078, {2}},
    {21, "Sc", "Scandium", 44.956, {3}},
    {22, "Ti", "Titanium", 47.867, {4, 3}},
    {23, "V", "Vanadium", 50.942, {5, 4, 3, 2}},
    {24, "Cr", "Chromium", 51.996, {3, 6, 2}},
    {25, "Mn", "Manganese", 54.938, {2, 4, 7, 3, 6}},
    {26, "Fe", "Iron", 55.845, {2, 3}},
    {27, "Co", "Cobalt", 58.933, {2, 3}},
    {28, "Ni", "Nickel", 58.693, {2}},
    {29, "Cu", "Copper", 63.546, {2, 1}},
    {30, "Zn", "Zinc", 65.380, {2}},
    {31, "Ga", "Gallium", 69.723, {3}},
    {32, "Ge", "Germanium", 72.630, {4, -4}},
    {33, "As", "Arsenic", 74.922, {3, 5, -3}},
    {34, "Se", "Selenium", 78.971, {-2, 4, 6}},
    {35, "Br", "Bromine", 79.904, {-1, 1, 5}},
    {36, "Kr", "Krypton", 83.798, {}},
    {37, "Rb", "Rubidium", 85.468, {1}},
    {38, "Sr", "Strontium", 87.620, {2}},
    {39, "Y", "Yttrium", 88.906, {3}},
    {40, "Zr", "Zirconium", 91.224, {4}},
    {41, "Nb", "Niobium", 92.906, {5, 3}},
    {42, "Mo", "Molybdenum", 95.950, {6, 4}},
    {43, "Tc", "Technetium", 98.0, {7, 4}},
    {44, "Ru", "Ruthenium", 101.070, {3, 4}},
    {45, "Rh", "Rhodium", 102.906, {3}},
    {46, "Pd", "Palladium", 106.420, {2, 4}},
    {47, "Ag", "Silver", 107.868, {1}},
    {48, "Cd", "Cadmium", 112.414, {2}},
    {49, "In", "Indium", 114.818, {3}},
    {50, "Sn", "Tin", 118.710, {4, 2}},
    {51, "Sb", "Antimony", 121.760, {3, 5, -3}},
    {52, "Te", "Tellurium", 127.600, {-2, 4, 6}},
    {53, "I", "Iodine", 126.904, {-1, 1, 5, 7}},
    {54, "Xe", "Xenon", 131.293, {}},
    {55, "Cs", "Cesium", 132.905, {1}},
    {56, "Ba", "Barium", 137.327, {2}},
    {57, "La", "Lanthanum", 138.905, {3}},
    {58, "Ce", "Cerium", 140.116, {3, 4}},
    {59, "Pr", "Praseodymium", 140.908, {3}},
    {60, "Nd", "Neodymium", 144.242, {3}},
    {61, "Pm", "Promethium", 145.0, {3}},
    {62, "Sm", "Samarium", 150.360, {3, 2}},
    {63, "Eu", "Europium", 151.964, {3, 2}},
    {64, "Gd", "Gadolinium", 157.250, {3}},
    {65, "Tb", "Terbium", 158.925, {3}},
    {66, "Dy", "Dysprosium", 162.500, {3}},
    {67, "Ho", "Holmium", 164.930, {3}},
    {68, "Er", "Erbium", 167.259, {3}},
    {69, "Tm", "Thulium", 168.934, {3}},
    {70, "Yb", "Ytterbium", 173.045, {3, 2}},
    {71, "Lu", "Lutetium", 174.967, {3}},
    {72, "Hf", "Hafnium", 178.490, {4}},
    {73, "Ta", "Tantalum", 180.948, {5}},
    {74, "W", "Tungsten", 183.840, {6, 4}},
    {75, "Re", "Rhenium", 186.207, {7, 4}},
    {76, "Os", "Osmium", 190.230, {4, 8}},
    {77, "Ir", "Iridium", 192.217, {4, 3}},
    {78, "Pt", "Platinum", 195.084, {4, 2}},
    {79, "Au", "Gold", 196.967, {3}},
    {80, "Hg", "Mercury", 200.590, {2, 1}},
    {81, "Tl", "Thallium", 204.383, {1, 3}},
    {82, "Pb", "Lead", 207.200, {2, 4}},
    {83, "Bi", "Bismuth", 208.980, {3}},
    {84, "Po", "Polonium", 209.0, {4, 2}},
    {85, "At", "Astatine", 210.0, {-1}},
    {86, "Rn", "Radon", 222.0, {}},
    {87, "Fr", "Francium", 223.0, {1}},
    {88, "Ra", "Radium", 226.0, {2}},
    {89, "Ac", "Actinium", 227.0, {3}},
    {90, "Th", "Thorium", 232.038, {4}},
    {91, "Pa", "Protactinium", 231.036, {5}},
    {92, "U", "Uranium", 238.029, {6}},
    {93, "Np", "Neptunium", 237.0, {5}},
    {94, "Pu", "Plutonium", 244.0, {4}},
    {95, "Am", "Americium", 243.0, {3}},
    {96, "Cm", "Curium", 247.0, {3}},
    {97, "Bk", "Berkelium", 247.0, {3}},
    {98, "Cf", "Californium", 251.0, {3}},
    {99, "Es", "Einsteinium", 252.0, {3}},
    {100, "Fm", "Fermium", 257.0, {3}},
    {101, "Md", "Mendelevium", 258.0, {3}},
    {102, "No", "Nobelium", 259.0, {2}},
    {103, "Lr", "Lawrencium", 262.0, {3}},
    {104, "Rf", "Rutherfordium", 267.0, {4}},
    {105, "Db", "Dubnium", 268.0, {5}},
    {106, "Sg", "Seaborgium", 269.0, {6}},
    {107, "Bh", "Bohrium", 270.0, {7}},
    {108, "Hs", "Hassium", 269.0, {8}},
    {109, "Mt", "Meitnerium", 278.0, {3}},
    {110, "Ds", "Darmstadtium", 281.0, {4}},
    {111, "Rg", "Roentgenium", 282.0, {3}},
    {112, "Cn", "Copernicium", 285.0, {0}},
    {113, "Uut", "Ununtrium", 286.0, {0}},
    {114, "Fl", "Flerovium", 289.0, {0}},
    {115, "Uup", "Ununpentium", 290.0, {0}},
    {116, "Lv", "Livermorium", 298.0, {0}},
    {117, "Uus", "Ununseptium", 294.0, {0}},
    {118, "Uuo", "Ununoctium", 294.0, {0}},
};

std::unordered_map<std::string, Element const*> Element::elementsBySymbol = [] {
    std::unordered_map<std::string, Element const*> bySymbol;
    for (Element const& element : elements)
        bySymbol.emplace(element.symbol, &element);
    return bySymbol;
}();

std::unordered_map<std::string, Molecule> Molecule::molecules;

namespace {
// Filled once the table exists: each name is read as any new one would be, and kept under its own formula.
bool const kMoleculesKnown = [] {
    for (char const* formula : {"H2",  "N",   "He",   "Ne",  "F",   "Ar",  "Xe",  "Cl",   "Se",  "O2",  "CO2",
                                "H2O", "Si",  "Al",   "Fe",  "Ca",  "Na",  "NaCl", "K",   "Mg",  "Ti",  "CO",
                                "CH4", "NH3", "C6H6", "CS2", "HCl", "NO",  "N2O",  "C5H12", "SO2"})
        Molecule::molecules.emplace(formula, Molecule(formula));
    return true;
}();
}

}
