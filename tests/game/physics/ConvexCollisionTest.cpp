#include "game/physics/ConvexCollision.h"

#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <random>
#include <vector>

using game::entity::ConvexMeshCollider;
using game::physics::Collision;
using game::physics::ConvexCollision;
using game::physics::PotentialBoxBoxIntersection;
using game::physics::ProjectOntoAxis;

namespace {

/// A box as the game makes them, centred on its origin, with transform = translation * rotation.
ConvexMeshCollider Box(glm::vec3 const& half, glm::dvec3 const& position, glm::dquat const& rotation = {1, 0, 0, 0}) {
    ConvexMeshCollider box = ConvexMeshCollider::Box(-half, half);
    box.transform = glm::translate(glm::dmat4(1.0), position) * glm::mat4_cast(rotation);
    return box;
}

/// A rotation about an axis along no edge or diagonal of a box: no vertex pair of a box turned by it is exactly
/// parallel to one of another box.
glm::dquat Tilt(double angle) { return glm::angleAxis(angle, glm::normalize(glm::dvec3(1, 2, 3))); }

double Overlap(ConvexMeshCollider const& a, ConvexMeshCollider const& b, glm::dvec3 const& axis) {
    auto const [a_min, a_max] = ProjectOntoAxis(a, axis);
    auto const [b_min, b_max] = ProjectOntoAxis(b, axis);
    return std::min(a_max, b_max) - std::max(a_min, b_min);
}

glm::dvec3 WorldVertex(ConvexMeshCollider const& collider, size_t i) {
    return glm::dvec3(collider.transform * glm::dvec4(glm::dvec3(collider.vertices[i]), 1.0));
}

/// The separating-axis test with nothing passed over: the bounding spheres, then every axis projected in the order of
/// the rules, the face normals of a, then those of b, then cross(u, v) for every vertex pair of a and every vertex
/// pair of b, directions normalised in float. Gives the depth and the normal the narrow phase must find to the bit,
/// and in `by_edges` whether an edge axis won.
Collision EveryAxisProjected(ConvexMeshCollider const& a, ConvexMeshCollider const& b, bool& by_edges) {
    auto const center = [](ConvexMeshCollider const& shape) {
        glm::dvec3 const local = (glm::dvec3(shape.box_min) + glm::dvec3(shape.box_max)) * 0.5;
        return glm::dvec3(shape.transform * glm::dvec4(local, 1.0));
    };
    if (glm::distance(center(a), center(b)) > a.radius + b.radius)
        return {};
    Collision result;
    result.depth = std::numeric_limits<double>::max();
    auto const take = [&](glm::dvec3 const& axis, bool edge = false) {
        double const overlap = Overlap(a, b, axis);
        if (overlap < result.depth) {
            result.depth = overlap;
            result.normal = axis;
            by_edges = edge;
        }
        return overlap > 0.0;
    };
    for (auto const* shape : {&a, &b})
        for (size_t i = 0; i < shape->normals_count; ++i)
            if (!take(glm::normalize(glm::dmat3(shape->transform) * glm::dvec3(shape->normals[i]))))
                return {};
    auto const direction = [](ConvexMeshCollider const& shape, size_t i, size_t j) {
        return glm::dmat3(shape.transform) * glm::dvec3(glm::normalize(shape.vertices[j] - shape.vertices[i]));
    };
    for (size_t i = 0; i < a.vertices_count; ++i)
        for (size_t j = i + 1; j < a.vertices_count; ++j)
            for (size_t k = 0; k < b.vertices_count; ++k)
                for (size_t l = k + 1; l < b.vertices_count; ++l)
                    if (!take(glm::normalize(glm::cross(direction(a, i, j), direction(b, k, l))), true))
                        return {};
    result.normal *= glm::sign(glm::dot(glm::normalize(center(a) - center(b)), result.normal));
    return result;
}

void ExpectNoContact(Collision const& collision) {
    EXPECT_EQ(collision.depth, 0.0);
    EXPECT_EQ(collision.normal, glm::dvec3(0.0));
    EXPECT_EQ(collision.point, glm::dvec3(0.0));
}

}

TEST(ConvexCollision, SphereOverABoxTopIsPushedUpByItsPenetration) {
    ConvexMeshCollider sphere = Box(glm::vec3(1.0f), {0, 0, 0});
    sphere.is_sphere = true;
    sphere.radius = 1.0;
    Collision const collision = ConvexCollision(sphere, Box(glm::vec3(0.5f), {0, -1, 0}));
    EXPECT_EQ(collision.normal, glm::dvec3(0, 1, 0));
    EXPECT_DOUBLE_EQ(collision.depth, 0.5);
    EXPECT_EQ(collision.point, glm::dvec3(0, -1, 0));
}

TEST(ConvexCollision, NoContactWithoutAxisWhenBoundingSpheresAreApartOrEdgesExactlyParallel) {
    // Overlapping boxes whose radii say that they can't meet.
    ConvexMeshCollider a = Box(glm::vec3(0.5f), {0.5, 0, 0}, Tilt(0.3));
    ConvexMeshCollider b = Box(glm::vec3(0.5f), {0, 0, 0});
    ASSERT_GT(ConvexCollision(a, b).depth, 0.0);
    a.radius = b.radius = 0.2;
    ExpectNoContact(ConvexCollision(a, b));

    // A cross product of length zero gives an axis with empty projections, which separates, however deep the boxes
    // are in each other. Boxes turned alike are among the random pairs below; one pair of parallel edges is enough:
    // a box turned about the vertical, sunk into the one below it.
    glm::dquat const yaw = glm::angleAxis(0.4, glm::dvec3(0, 1, 0));
    ExpectNoContact(ConvexCollision(Box(glm::vec3(0.5f), {0, 0.9, 0}, yaw), Box(glm::vec3(0.5f), {0, 0, 0})));
}

TEST(ConvexCollision, CornerSunkIntoASlab) {
    // A turned unit box with its lowest corner 0.05 below the top of a wide slab.
    ConvexMeshCollider corner = Box(glm::vec3(0.5f), {0.2, 0, -0.1}, Tilt(0.7));
    corner.transform[3].y = 0.45 - ProjectOntoAxis(corner, {0, 1, 0}).first;
    size_t tip = 0;
    for (size_t i = 1; i < 8; ++i)
        tip = WorldVertex(corner, i).y < WorldVertex(corner, tip).y ? i : tip;
    ConvexMeshCollider slab = Box({2.0f, 0.5f, 2.0f}, {0, 0, 0});

    Collision const collision = ConvexCollision(corner, slab);
    EXPECT_EQ(collision.normal, glm::dvec3(0, 1, 0));
    EXPECT_NEAR(collision.depth, 0.05, 1e-12);
    // The corner lies in the slab's box: it is the contact point, clamped, with no averaging.
    EXPECT_EQ(collision.point, slab.GetPositionClamped(WorldVertex(corner, tip), 0.0));

    // Without the slab's normals only the corner's normals and the edge axes are tried, all deeper.
    slab.normals_count = 0;
    EXPECT_GT(ConvexCollision(corner, slab).depth, collision.depth + 1e-3);
    corner.normals_count = 0;
    double const edges_only = ConvexCollision(corner, slab).depth;
    EXPECT_GT(edges_only, 0.0);
    EXPECT_LT(edges_only, 1.0) << "edge axes alone find the contact";
}

TEST(ConvexCollision, ProjectOntoAxisSpansTheWorldVertices) {
    ConvexMeshCollider box = Box(glm::vec3(0.5f), {3, 0, 0});
    EXPECT_EQ(ProjectOntoAxis(box, {1, 0, 0}), std::make_pair(2.5, 3.5));
    box.vertices_count = 1;
    auto const [low, high] = ProjectOntoAxis(box, glm::normalize(glm::dvec3(1, 1, 0)));
    EXPECT_EQ(low, high);
    EXPECT_DOUBLE_EQ(low, std::sqrt(2.0));
    box.vertices_count = 0;
    double const largest = std::numeric_limits<double>::max();
    EXPECT_EQ(ProjectOntoAxis(box, {1, 0, 0}), std::make_pair(largest, -largest));
}

TEST(ConvexCollision, PotentialBoxBoxIntersectionFiltersWhatCannotMeet) {
    ConvexMeshCollider const a = Box(glm::vec3(0.5f), {0, 0, 0}, Tilt(0.3));
    glm::dmat4 const far = glm::translate(glm::dmat4(1.0), glm::dvec3(3, 0, 0));
    glm::dvec3 const low(-0.5), high(0.5);
    EXPECT_FALSE(PotentialBoxBoxIntersection(a.transform, far, low, high, low, high, true, false));
    EXPECT_FALSE(PotentialBoxBoxIntersection(a.transform, far, low, high, low, high, false, true));
    EXPECT_TRUE(PotentialBoxBoxIntersection(a.transform, far, low, high, low, high, false, false));
    // On colliders, centres exactly as far apart as the radii add up to don't pass.
    EXPECT_FALSE(PotentialBoxBoxIntersection(a, Box(glm::vec3(0.5f), {2 * a.radius, 0, 0})));
}

TEST(ConvexCollision, ColliderIsEmptyWithNoShapeAtAll) {
    ConvexMeshCollider const box = ConvexMeshCollider::Box(glm::vec3(-0.5f), glm::vec3(0.5f));
    EXPECT_FALSE(box.IsEmpty());
    ConvexMeshCollider changed = box;
    changed.radius = 0.0001;
    EXPECT_TRUE(changed.IsEmpty());
    changed = box;
    changed.box_max.x = changed.box_min.x;
    EXPECT_TRUE(changed.IsEmpty());
    changed = box;
    changed.vertices_count = 0;
    EXPECT_TRUE(changed.IsEmpty());
    changed.sub_colliders = std::make_shared<std::vector<ConvexMeshCollider>>(1, box);
    EXPECT_FALSE(changed.IsEmpty()) << "a tree without vertices of its own";
}

TEST(ConvexCollision, GetPositionClampedKeepsPointsInTheGrownBox) {
    ConvexMeshCollider const box =
        Box(glm::vec3(0.5f), {10, 0, 0}, glm::angleAxis(glm::radians(90.0), glm::dvec3(0, 0, 1)));
    glm::dvec3 const outside = box.GetPositionClamped({20, 0.2, 0}, 0.1);
    EXPECT_LT(glm::distance(outside, glm::dvec3(10.6, 0.2, 0)), 1e-12);
    glm::dvec3 const inside = box.GetPositionClamped({10.2, -0.3, 0.1}, 0.0);
    EXPECT_LT(glm::distance(inside, glm::dvec3(10.2, -0.3, 0.1)), 1e-12);
}

/// Pairs of randomly sized and turned boxes that touch a little, from a fixed seed: the first is moved along a
/// random direction to where the two just meet, found by halving, then pushed in by up to 0.02, shallow next to
/// the smallest half extent of 0.1.
class ConvexCollisionOfRandomBoxes : public testing::Test {
protected:
    void SetUp() override {
        std::mt19937_64 random(20240611);
        std::uniform_real_distribution<double> unit(-1.0, 1.0);
        std::uniform_real_distribution<float> extent(0.1f, 1.0f);
        auto const box = [&](glm::dvec3 const& center) {
            glm::dquat const rotation(unit(random), unit(random), unit(random), unit(random));
            return Box({extent(random), extent(random), extent(random)}, center, glm::normalize(rotation));
        };
        for (int attempt = 0; attempt < 1000 && pairs.size() < 300; ++attempt) {
            glm::dvec3 const center(unit(random) * 5, unit(random) * 5, unit(random) * 5);
            ConvexMeshCollider a = box(center);
            ConvexMeshCollider const b = box(center);
            glm::dvec3 const away = glm::normalize(glm::dvec3(unit(random), unit(random), unit(random)));
            double inside = 0.0;
            double outside = a.radius + b.radius;
            for (int step = 0; step < 50; ++step) {
                double const middle = (inside + outside) / 2;
                a.transform[3] = glm::dvec4(center + away * middle, 1.0);
                (ConvexCollision(a, b).depth > 0.0 ? inside : outside) = middle;
            }
            a.transform[3] = glm::dvec4(center + away * (outside - 0.01 * (unit(random) + 1) - 1e-4), 1.0);
            if (ConvexCollision(a, b).depth > 0.0)
                pairs.push_back({a, b});
        }
        ASSERT_EQ(pairs.size(), 300u);
    }

    std::vector<std::pair<ConvexMeshCollider, ConvexMeshCollider>> pairs;
};

TEST_F(ConvexCollisionOfRandomBoxes, FindsWhatProjectingEveryAxisFindsToTheBitEitherWayRound) {
    std::mt19937_64 random(77);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::vector<std::pair<ConvexMeshCollider, ConvexMeshCollider>> cases;
    for (auto const& [a, b] : pairs) {
        EXPECT_TRUE(PotentialBoxBoxIntersection(a, b));
        EXPECT_TRUE(PotentialBoxBoxIntersection(b, a));
        EXPECT_TRUE(PotentialBoxBoxIntersection(a.transform, b.transform, a.box_min, a.box_max, b.box_min, b.box_max,
                                                true, true));
        Collision const collision = ConvexCollision(a, b);
        // A vertex clamped into the other box, or the two boxes' nearest points met in the smaller one.
        EXPECT_LT(std::min(glm::distance(collision.point, a.GetPositionClamped(collision.point, 0.0)),
                           glm::distance(collision.point, b.GetPositionClamped(collision.point, 0.0))),
                  1e-9);

        // Both orders try the same axes, with the same overlaps to the bit.
        cases.push_back({b, a});
        cases.push_back({a, b});
        // Far out, where the projections' rounding is some micrometres.
        glm::dvec4 const far(6.0e6, -6.0e6 * unit(random), 6.0e6 * unit(random), 0.0);
        auto [far_a, far_b] = cases.back();
        far_a.transform[3] += far;
        far_b.transform[3] += far;
        cases.push_back({far_a, far_b});
        // A corner cut: vertices no longer numbered as a box's.
        cases.push_back({a, b});
        cases.back().first.vertices[7] *= 0.6f;
        // Turned to b's rotation, and to it but for a hair: parallel edges, whose axes are not numbers, and nearly
        // parallel ones, whose axes are the least precise.
        for (double hair : {0.0, 1e-7 * unit(random)}) {
            ConvexMeshCollider aligned = a;
            aligned.transform = b.transform * glm::mat4_cast(Tilt(hair));
            aligned.transform[3] = a.transform[3];
            cases.push_back({aligned, b});
        }
        // Just apart, and just touching, along the axis found; then apart by more than any rounding.
        for (double gap : {1e-9, -1e-9, 1e-6}) {
            ConvexMeshCollider moved = a;
            moved.transform[3] += glm::dvec4(collision.normal * (collision.depth + gap), 0.0);
            cases.push_back({moved, b});
        }
        EXPECT_EQ(ConvexCollision(cases.back().first, b).depth, 0.0) << "moving a along the normal parts the boxes";
    }
    int contacts = 0, edge_contacts = 0;
    for (size_t i = 0; i < cases.size(); ++i) {
        auto const& [a, b] = cases[i];
        bool by_edges = false;
        Collision const expected = EveryAxisProjected(a, b, by_edges);
        Collision const found = ConvexCollision(a, b);
        ASSERT_EQ(found.depth, expected.depth) << "case " << i;
        ASSERT_EQ(found.normal, expected.normal) << "case " << i;
        contacts += found.depth > 0.0 ? 1 : 0;
        edge_contacts += found.depth > 0.0 && by_edges ? 1 : 0;
    }
    EXPECT_GT(contacts, int(cases.size()) / 2);
    EXPECT_GT(edge_contacts, 100) << "edge against edge is among the contacts";
}
