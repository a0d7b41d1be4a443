#include "game/chemistry/Element.h"
#include "game/chemistry/Molecule.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

using game::Element;
using game::Molecule;

namespace {

using Pairs = std::vector<std::pair<uint8_t, uint8_t>>;

constexpr double kAtomicMassUnit = 1.6605402e-27;

}

TEST(Element, TableHoldsEveryElementInOrderAfterAPlaceholderAndMoleculesReadThroughItsSymbols) {
    ASSERT_EQ(Element::elements.size(), 119u);
    EXPECT_EQ(Element::elements[0].symbol, "_");
    EXPECT_EQ(Element::elements[0].atomicMass, 0.0);
    for (size_t i = 1; i < Element::elements.size(); ++i) {
        Element const& element = Element::elements[i];
        EXPECT_EQ(element.number, i);
        EXPECT_GT(element.atomicMass, 0.0) << element.symbol;
        EXPECT_EQ(Molecule(element.symbol).elements, (Pairs{{element.number, 1}})) << element.symbol;
    }
    EXPECT_FALSE(Molecule::molecules.contains("Cu")) << "read through the symbols, not remembered as a molecule";
    // The known molecules are read at load, after the symbols they need.
    EXPECT_EQ(Molecule::molecules.at("NaCl").elements, (Pairs{{11, 1}, {17, 1}}));
}

TEST(Molecule, ReadsFormulasPairByPairInTheirOrder) {
    EXPECT_EQ(Molecule("H2O").elements, (Pairs{{1, 2}, {8, 1}}));
    EXPECT_EQ(Molecule("H2O").Formula(), "H2O");
    // A repeated symbol stays two pairs.
    EXPECT_EQ(Molecule("CH3OH").elements, (Pairs{{6, 1}, {1, 3}, {8, 1}, {1, 1}}));
    EXPECT_EQ(Molecule("CH3OH").Formula(), "CH3OH");
    EXPECT_EQ(Molecule("C6H12O6").elements, (Pairs{{6, 6}, {1, 12}, {8, 6}}));
    // Counts are kept in eight bits; a count of one is not written back.
    EXPECT_EQ(Molecule("C300").elements, (Pairs{{6, 44}}));
    EXPECT_EQ(Molecule("Na1Cl1").Formula(), "NaCl");
    EXPECT_EQ(Molecule("Uuo2").elements, (Pairs{{118, 2}}));
}

TEST(Molecule, WhatCannotBeReadIsEmptyAndRemembered) {
    for (std::string const text : {"h2o", "H2(O)", "Qq", "H2Q", "", "H 2", "2H"}) {
        Molecule const molecule(text);
        EXPECT_TRUE(molecule.elements.empty()) << text;
        EXPECT_EQ(molecule.Formula(), "");
        EXPECT_EQ(molecule.Mass(), 0.0);
        EXPECT_EQ(molecule.GaseousIndexOfRefraction(), 1.001);
        EXPECT_TRUE(Molecule::molecules.contains(text)) << text;
    }
}

TEST(Molecule, MassesMatchPublishedMolarMasses) {
    // Grams per mole, as published.
    for (auto const& [formula, molar] : std::vector<std::pair<char const*, double>>{
             {"H2O", 18.015}, {"CO2", 44.009}, {"CH4", 16.043}, {"NaCl", 58.443}, {"NH3", 17.031},
             {"C6H6", 78.114}, {"C6H12O6", 180.156}, {"H2SO4", 98.079}, {"Fe2O3", 159.688}})
        EXPECT_NEAR(Molecule(formula).Mass() / kAtomicMassUnit, molar, 0.01) << formula;
    // Elements past the table weigh nothing and end the written formula.
    Molecule beyond("H2O");
    beyond.elements.insert(beyond.elements.begin() + 1, {200, 3});
    EXPECT_EQ(beyond.Mass(), Molecule("H2O").Mass());
    EXPECT_EQ(beyond.Formula(), "H2");
}

TEST(Molecule, GasesOfTwoOrThreeAtomsOfOneElementTakeTheElementsIndexOfRefraction) {
    EXPECT_EQ(Molecule("O2").GaseousIndexOfRefraction(), 1.000271);
    EXPECT_EQ(Molecule("O3").GaseousIndexOfRefraction(), 1.000271);
    EXPECT_EQ(Molecule("CO2").GaseousIndexOfRefraction(), 1.000449);
    EXPECT_EQ(Molecule("Fe2").GaseousIndexOfRefraction(), 1.001);
    EXPECT_EQ(Molecule("O4").GaseousIndexOfRefraction(), 1.001);
}

TEST(Molecule, LiquidDensityIsReadOrComputedOnceAndRemembered) {
    ASSERT_FALSE(Molecule::liquidMoleculesMaxDensity.contains("NaCl"));
    // Every atom a ball of 92 pm, its radius times its count.
    double const radius = 9.2e-11;
    double const volume = 2 * 4.1887902047863905 * radius * radius * radius;
    double const density = Molecule("NaCl").GetMaximumLiquidDensity();
    EXPECT_NEAR(density, Molecule("NaCl").Mass() / volume, density * 1e-12);
    EXPECT_EQ(Molecule::liquidMoleculesMaxDensity.at("NaCl"), density);
    // Read back, not computed again.
    Molecule::liquidMoleculesMaxDensity["NaCl"] = 1234.0;
    EXPECT_EQ(Molecule("NaCl").GetMaximumLiquidDensity(), 1234.0);
    // An empty molecule stores 0 / 0 as it is.
    EXPECT_TRUE(std::isnan(Molecule("nothing").GetMaximumLiquidDensity()));
    EXPECT_TRUE(std::isnan(Molecule::liquidMoleculesMaxDensity.at("")));
}
