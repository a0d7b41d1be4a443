// The solids of the entity meshes: each fills its box exactly, whichever way it points, and faces outwards with its
// triangles wound counter-clockwise, as glTF reads front faces.

#include "content/meshes/Shapes.h"

#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>

namespace {

using content::meshes::AddShape;
using content::meshes::Shape;
using content::meshes::Surface;
using content::meshes::Toward;

class ShapesTest : public testing::TestWithParam<std::tuple<Shape, Toward>> {};

std::string CaseName(testing::TestParamInfo<std::tuple<Shape, Toward>> const& info) {
    char const* const shapes[] = {"Box", "Cylinder", "Cone", "Profile"};
    char const* const ways[] = {"PlusX", "MinusX", "PlusY", "MinusY", "PlusZ", "MinusZ"};
    return std::string(shapes[static_cast<int>(std::get<0>(info.param))]) +
           ways[static_cast<int>(std::get<1>(info.param))];
}

TEST_P(ShapesTest, FillsItsBoxFacingOutwards) {
    auto const [shape, toward] = GetParam();
    // Three different sides, so that a wing's thickness, chord and span each have an axis of their own; the shape is
    // turned and moved afterwards, and looked at back in the box's frame.
    glm::vec3 const min(-0.4f, 0.1f, -1.5f), max(0.2f, 0.35f, 1.5f);
    glm::mat4 const transform =
        glm::rotate(glm::translate(glm::mat4(1.0f), {3.0f, -2.0f, 1.0f}), glm::radians(90.0f), {0.0f, 1.0f, 0.0f});
    Surface surface;
    AddShape(surface, shape, toward, min, max, transform);
    ASSERT_EQ(surface.normals.size(), surface.positions.size());
    ASSERT_EQ(surface.indices.size() % 3, 0u);

    glm::mat4 const back = glm::inverse(transform);
    glm::vec3 low(std::numeric_limits<float>::max()), high(-std::numeric_limits<float>::max());
    for (glm::vec3 const& position : surface.positions) {
        glm::vec3 const inBox(back * glm::vec4(position, 1.0f));
        low = glm::min(low, inBox);
        high = glm::max(high, inBox);
    }
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(low[axis], min[axis], 1e-5f) << "axis " << axis;
        EXPECT_NEAR(high[axis], max[axis], 1e-5f) << "axis " << axis;
    }

    // Every vertex's normal on the front side of its triangles; the volume they enclose then comes out positive
    // only if the fronts face outwards.
    glm::vec3 const centre(transform * glm::vec4((min + max) * 0.5f, 1.0f));
    double volume = 0.0;
    for (size_t i = 0; i < surface.indices.size(); i += 3) {
        glm::vec3 const a = surface.positions.at(surface.indices[i]) - centre;
        glm::vec3 const b = surface.positions.at(surface.indices[i + 1]) - centre;
        glm::vec3 const c = surface.positions.at(surface.indices[i + 2]) - centre;
        glm::vec3 const front = glm::cross(b - a, c - a);
        for (size_t corner = i; corner < i + 3; ++corner)
            EXPECT_GT(glm::dot(front, surface.normals[surface.indices[corner]]), 0.0f) << "triangle " << i / 3;
        volume += glm::dot(a, glm::cross(b, c)) / 6.0;
    }
    for (glm::vec3 const& normal : surface.normals)
        EXPECT_NEAR(glm::length(normal), 1.0f, 1e-5f);
    glm::vec3 const size = max - min;
    double const boxVolume = size.x * size.y * size.z;
    // The thinnest of them, the cone, holds a quarter of its box.
    EXPECT_GT(volume, 0.25 * boxVolume);
    EXPECT_LT(volume, 1.0001 * boxVolume);
}

INSTANTIATE_TEST_SUITE_P(EveryShapeEveryWay, ShapesTest,
                         testing::Combine(testing::Values(Shape::Box, Shape::Cylinder, Shape::Cone, Shape::Profile),
                                          testing::Values(Toward::PlusX, Toward::MinusX, Toward::PlusY, Toward::MinusY,
                                                          Toward::PlusZ, Toward::MinusZ)),
                         CaseName);

TEST(ShapesLimitsTest, RefusesWhatItCannotDraw) {
    Surface surface;
    EXPECT_THROW(AddShape(surface, Shape::Box, Toward::PlusY, {0.0f, 0.0f, 0.0f}, {1.0f, 0.0f, 1.0f}, glm::mat4(1.0f)),
                 std::invalid_argument);
    // Shapes pile up in one surface until 16-bit indices would run out; 65535 itself means primitive restart.
    auto pileUp = [&] {
        for (int i = 0; i < 1000; ++i)
            AddShape(surface, Shape::Cylinder, Toward::PlusY, glm::vec3(0.0f), glm::vec3(1.0f), glm::mat4(1.0f));
    };
    EXPECT_THROW(pileUp(), std::length_error);
    EXPECT_EQ(surface.positions.size(), 65535u);
}

}
