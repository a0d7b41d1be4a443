#pragma once

#include <gtest/gtest.h>
#include <glm/glm.hpp>

#include <string>

// Entity configs keep their transforms in floats: what they give is compared to 1e-5, element by element.

inline void ExpectNear(glm::dvec3 const& actual, glm::dvec3 const& expected, std::string const& what = "") {
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(actual[axis], expected[axis], 1e-5) << what << " axis " << axis;
}

inline void ExpectNear(glm::dmat4 const& actual, glm::dmat4 const& expected, std::string const& what = "") {
    for (int column = 0; column < 4; ++column)
        for (int row = 0; row < 4; ++row)
            EXPECT_NEAR(actual[column][row], expected[column][row], 1e-5)
                << what << " column " << column << " row " << row;
}
