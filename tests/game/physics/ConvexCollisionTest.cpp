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

/// A rotation about an axis that lies along no edge or diagonal of a box, so that no vertex pair of one box turned
/// by it is exactly parallel to one of another box.
glm::dquat Tilt(double angle) { return glm::angleAxis(angle, glm::normalize(glm::dvec3(1, 2, 3))); }

double Overlap(ConvexMeshCollider const& a, ConvexMeshCollider const& b, glm::dvec3 const& axis) {
    auto const [a_min, a_max] = ProjectOntoAxis(a, axis);
    auto const [b_min, b_max] = ProjectOntoAxis(b, axis);
    return std::min(a_max, b_max) - std::max(a_min, b_min);
}

glm::dvec3 WorldVertex(ConvexMeshCollider const& collider, size_t i) {
    return glm::dvec3(collider.transform * glm::dvec4(glm::dvec3(collider.vertices[i]), 1.0));
}

void ExpectNoContact(Collision const& collision) {
    EXPECT_EQ(collision.depth, 0.0);
    EXPECT_EQ(collision.normal, glm::dvec3(0.0));
    EXPECT_EQ(collision.point, glm::dvec3(0.0));
}

/// A unit box turned so that one corner points down into the top face of a wide slab, 0.05 deep.
struct CornerOnSlab {
    CornerOnSlab() {
        auto const [lowest, highest] = ProjectOntoAxis(corner, {0, 1, 0});
        corner.transform[3].y = 0.5 - 0.05 - lowest;
        for (size_t i = 1; i < 8; ++i) {
            if (WorldVertex(corner, i).y < WorldVertex(corner, tip).y)
                tip = i;
        }
    }

    ConvexMeshCollider corner = Box(glm::vec3(0.5f), {0.2, 0, -0.1}, Tilt(0.7));
    ConvexMeshCollider slab = Box({2.0f, 0.5f, 2.0f}, {0, 0, 0});
    size_t tip = 0;
};

}

TEST(ConvexCollision, SphereOverABoxTopIsPushedUpByItsPenetration) {
    ConvexMeshCollider sphere = Box(glm::vec3(1.0f), {0, 0, 0});
    sphere.is_sphere = true;
    sphere.radius = 1.0;
    ConvexMeshCollider const box = Box(glm::vec3(0.5f), {0, -1, 0});

    Collision const collision = ConvexCollision(sphere, box);
    EXPECT_EQ(collision.normal, glm::dvec3(0, 1, 0));
    EXPECT_DOUBLE_EQ(collision.depth, 0.5);
    EXPECT_EQ(collision.point, glm::dvec3(0, -1, 0));
}

TEST(ConvexCollision, BoxesOverlappingAlongXPushTheFirstOutwards) {
    ConvexMeshCollider const a = Box(glm::vec3(0.5f), {0.9, 0, 0}, Tilt(0.02));
    ConvexMeshCollider const b = Box(glm::vec3(0.5f), {0, 0, 0}, Tilt(-0.01));

    Collision const collision = ConvexCollision(a, b);
    EXPECT_NEAR(collision.depth, 0.1, 0.02);
    EXPECT_GT(collision.normal.x, 0.999);
    EXPECT_NEAR(glm::length(collision.normal), 1.0, 1e-12);
    EXPECT_GT(collision.point.x, 0.35);
    EXPECT_LT(collision.point.x, 0.55);

    Collision const swapped = ConvexCollision(b, a);
    EXPECT_EQ(swapped.depth, collision.depth);
    EXPECT_EQ(swapped.normal, -collision.normal);
}

TEST(ConvexCollision, BoundingSpheresApartGiveNoContactBeforeAnyAxis) {
    // The boxes overlap, but their radii say they can't meet.
    ConvexMeshCollider a = Box(glm::vec3(0.5f), {0.5, 0, 0}, Tilt(0.3));
    ConvexMeshCollider b = Box(glm::vec3(0.5f), {0, 0, 0});
    ASSERT_GT(ConvexCollision(a, b).depth, 0.0);
    a.radius = 0.2;
    b.radius = 0.2;
    ExpectNoContact(ConvexCollision(a, b));
}

TEST(ConvexCollision, ExactlyParallelEdgesReportNoContact) {
    // A cross product of length zero gives an axis with empty projections, which separates: boxes turned alike
    // never touch through this test, however deep they are in each other.
    ExpectNoContact(ConvexCollision(Box(glm::vec3(0.5f), {0.3, 0.2, 0}), Box(glm::vec3(0.5f), {0, 0, 0})));
    ExpectNoContact(
        ConvexCollision(Box(glm::vec3(0.5f), {0.3, 0.2, 0}, Tilt(0.4)), Box({1.0f, 0.2f, 0.3f}, {0, 0, 0}, Tilt(0.4))));
}

TEST(ConvexCollision, AVertexInsideTheOtherBoxIsTheContactPoint) {
    CornerOnSlab const scene;
    Collision const collision = ConvexCollision(scene.corner, scene.slab);
    EXPECT_EQ(collision.normal, glm::dvec3(0, 1, 0));
    EXPECT_NEAR(collision.depth, 0.05, 1e-12);
    EXPECT_EQ(collision.point, scene.slab.GetPositionClamped(WorldVertex(scene.corner, scene.tip), 0.0));
    EXPECT_LT(glm::distance(collision.point, WorldVertex(scene.corner, scene.tip)), 1e-12);
}

TEST(ConvexCollision, AColliderWithoutNormalsIsTestedOnTheOtherAxesOnly) {
    CornerOnSlab scene;
    double const with_normals = ConvexCollision(scene.corner, scene.slab).depth;
    scene.slab.normals_count = 0;
    Collision const collision = ConvexCollision(scene.corner, scene.slab);
    // The slab's face was the shallowest way out; the other axes all lie deeper.
    EXPECT_GT(collision.depth, with_normals + 1e-3);
    EXPECT_LT(collision.normal.y, 0.999);
    scene.corner.normals_count = 0;
    EXPECT_GT(ConvexCollision(scene.corner, scene.slab).depth, 0.0) << "edge axes alone still find the contact";
}

TEST(ConvexCollision, ProjectOntoAxisSpansTheWorldVertices) {
    ConvexMeshCollider box = Box(glm::vec3(0.5f), {3, 0, 0});
    EXPECT_EQ(ProjectOntoAxis(box, {1, 0, 0}), std::make_pair(2.5, 3.5));

    box.vertices_count = 1;
    auto const [low, high] = ProjectOntoAxis(box, glm::normalize(glm::dvec3(1, 1, 0)));
    EXPECT_EQ(low, high);
    EXPECT_DOUBLE_EQ(low, 2.5 / std::sqrt(2.0) - 0.5 / std::sqrt(2.0));

    box.vertices_count = 0;
    double const largest = std::numeric_limits<double>::max();
    EXPECT_EQ(ProjectOntoAxis(box, {1, 0, 0}), std::make_pair(largest, -largest));
}

TEST(ConvexCollision, PotentialBoxBoxIntersectionFiltersOnlyWhatCannotMeet) {
    ConvexMeshCollider const a = Box(glm::vec3(0.5f), {0, 0, 0}, Tilt(0.3));
    ConvexMeshCollider const far = Box(glm::vec3(0.5f), {3, 0, 0});
    ConvexMeshCollider const near = Box(glm::vec3(0.5f), {0.9, 0, 0});
    glm::dvec3 const low(-0.5), high(0.5);
    EXPECT_FALSE(PotentialBoxBoxIntersection(a.transform, far.transform, low, high, low, high, true, false));
    EXPECT_FALSE(PotentialBoxBoxIntersection(a.transform, far.transform, low, high, low, high, false, true));
    EXPECT_TRUE(PotentialBoxBoxIntersection(a.transform, near.transform, low, high, low, high, true, true));
    EXPECT_TRUE(PotentialBoxBoxIntersection(a, near));
    EXPECT_TRUE(PotentialBoxBoxIntersection(a.transform, far.transform, low, high, low, high, false, false));

    // Centres exactly as far apart as the radii add up to don't pass.
    ConvexMeshCollider touching = Box(glm::vec3(0.5f), {2 * a.radius, 0, 0});
    EXPECT_FALSE(PotentialBoxBoxIntersection(a, touching));
}

TEST(ConvexCollision, ColliderIsEmptyWithNoShapeAtAll) {
    ConvexMeshCollider box = ConvexMeshCollider::Box(glm::vec3(-0.5f), glm::vec3(0.5f));
    EXPECT_FALSE(box.IsEmpty());

    ConvexMeshCollider tiny = box;
    tiny.radius = 0.0001;
    EXPECT_TRUE(tiny.IsEmpty());
    ConvexMeshCollider flat = box;
    flat.box_max.x = flat.box_min.x;
    EXPECT_TRUE(flat.IsEmpty());

    ConvexMeshCollider group = box;
    group.vertices_count = 0;
    EXPECT_TRUE(group.IsEmpty());
    group.sub_colliders = std::make_shared<std::vector<ConvexMeshCollider>>(1, box);
    EXPECT_FALSE(group.IsEmpty()) << "a collider tree without vertices of its own";
}

TEST(ConvexCollision, GetPositionClampedKeepsPointsInTheGrownBox) {
    ConvexMeshCollider const box =
        Box(glm::vec3(0.5f), {10, 0, 0}, glm::angleAxis(glm::radians(90.0), glm::dvec3(0, 0, 1)));
    glm::dvec3 const outside = box.GetPositionClamped({20, 0.2, 0}, 0.1);
    EXPECT_NEAR(outside.x, 10.6, 1e-12);
    EXPECT_NEAR(outside.y, 0.2, 1e-12);
    EXPECT_NEAR(outside.z, 0.0, 1e-12);
    glm::dvec3 const inside = box.GetPositionClamped({10.2, -0.3, 0.1}, 0.0);
    EXPECT_NEAR(glm::distance(inside, glm::dvec3(10.2, -0.3, 0.1)), 0.0, 1e-12);
}

/// Pairs of randomly sized and turned boxes that touch a little, from a fixed seed: the second box is moved along a
/// random direction to where the two just meet, found by halving, then pushed in by up to 0.02, so that the contact
/// is shallow next to the boxes' smallest half extent of 0.1.
class ConvexCollisionOfRandomBoxes : public testing::Test {
protected:
    void SetUp() override {
        std::mt19937_64 random(20240611);
        std::uniform_real_distribution<double> unit(-1.0, 1.0);
        std::uniform_real_distribution<float> extent(0.1f, 1.0f);
        auto const direction = [&] {
            glm::dvec3 v;
            do {
                v = {unit(random), unit(random), unit(random)};
            } while (glm::length(v) < 0.1 || glm::length(v) > 1.0);
            return glm::normalize(v);
        };
        auto const rotation = [&] {
            return glm::normalize(glm::dquat(unit(random), unit(random), unit(random), unit(random)));
        };
        while (pairs.size() < 300) {
            glm::dvec3 const center(unit(random) * 5, unit(random) * 5, unit(random) * 5);
            ConvexMeshCollider a = Box({extent(random), extent(random), extent(random)}, center, rotation());
            ConvexMeshCollider const b = Box({extent(random), extent(random), extent(random)}, center, rotation());
            glm::dvec3 const away = direction();
            double inside = 0.0;
            double outside = a.radius + b.radius;
            for (int step = 0; step < 50; ++step) {
                double const middle = (inside + outside) / 2;
                a.transform[3] = glm::dvec4(center + away * middle, 1.0);
                (ConvexCollision(a, b).depth > 0.0 ? inside : outside) = middle;
            }
            a.transform[3] = glm::dvec4(center + away * (outside - 0.02 * (unit(random) + 1) / 2 - 1e-4), 1.0);
            if (ConvexCollision(a, b).depth > 0.0)
                pairs.push_back({a, b});
        }
    }

    std::vector<std::pair<ConvexMeshCollider, ConvexMeshCollider>> pairs;
};

TEST_F(ConvexCollisionOfRandomBoxes, MovingTheFirstAlongTheNormalByTheDepthSeparatesThem) {
    for (auto [a, b] : pairs) {
        Collision const collision = ConvexCollision(a, b);
        ASSERT_LT(collision.depth, 0.1);
        EXPECT_NEAR(glm::length(collision.normal), 1.0, 1e-12);
        a.transform[3] += glm::dvec4(collision.normal * (collision.depth + 1e-6), 0.0);
        EXPECT_EQ(ConvexCollision(a, b).depth, 0.0);
    }
}

TEST_F(ConvexCollisionOfRandomBoxes, TheDepthIsTheSmallestOverlapOfTheFaceAndEdgeAxes) {
    auto const world_axes = [](ConvexMeshCollider const& box) {
        std::vector<glm::dvec3> normals, edges;
        for (size_t i = 0; i < box.normals_count; ++i)
            normals.push_back(glm::normalize(glm::dmat3(box.transform) * glm::dvec3(box.normals[i])));
        for (size_t i = 0; i < box.vertices_count; ++i) {
            for (size_t j = i + 1; j < box.vertices_count; ++j)
                edges.push_back(glm::normalize(WorldVertex(box, j) - WorldVertex(box, i)));
        }
        return std::make_pair(normals, edges);
    };
    int edge_contacts = 0;
    std::vector<std::pair<ConvexMeshCollider, ConvexMeshCollider>> shapes = pairs;
    for (auto [a, b] : pairs) {
        // A box with a corner cut, which no longer has its corners numbered by bits.
        a.vertices[7] *= 0.6f;
        shapes.push_back({a, b});
    }
    for (auto const& [a, b] : shapes) {
        Collision const collision = ConvexCollision(a, b);
        if (collision.depth == 0.0)
            continue;
        EXPECT_EQ(Overlap(a, b, collision.normal), collision.depth);
        auto const [normals_a, edges_a] = world_axes(a);
        auto const [normals_b, edges_b] = world_axes(b);
        bool on_a_face = false;
        for (auto const& normals : {normals_a, normals_b}) {
            for (glm::dvec3 const& normal : normals) {
                EXPECT_GE(Overlap(a, b, normal), collision.depth);
                on_a_face = on_a_face || std::abs(glm::dot(normal, collision.normal)) > 1 - 1e-12;
            }
        }
        // The test makes its edge directions in float: overlaps on these double ones differ by some 1e-7.
        for (glm::dvec3 const& u : edges_a) {
            for (glm::dvec3 const& v : edges_b)
                EXPECT_GT(Overlap(a, b, glm::normalize(glm::cross(u, v))), collision.depth - 1e-6);
        }
        edge_contacts += on_a_face ? 0 : 1;
    }
    EXPECT_GT(edge_contacts, 30) << "edge against edge is among the contacts";
}

TEST_F(ConvexCollisionOfRandomBoxes, SwappingTheArgumentsKeepsTheDepthAndReversesTheNormal) {
    for (auto const& [a, b] : pairs) {
        Collision const forward = ConvexCollision(a, b);
        Collision const backward = ConvexCollision(b, a);
        // Both sides test the same axes, in another order, with the same overlaps to the bit.
        EXPECT_EQ(backward.depth, forward.depth);
        if (backward.normal != -forward.normal) {
            // Only another axis of exactly the same overlap, met first in the other order, may win instead.
            EXPECT_EQ(Overlap(a, b, backward.normal), forward.depth);
        }
    }
}

TEST_F(ConvexCollisionOfRandomBoxes, PotentialBoxBoxIntersectionPassesEveryContact) {
    for (auto const& [a, b] : pairs) {
        EXPECT_TRUE(PotentialBoxBoxIntersection(a, b));
        EXPECT_TRUE(PotentialBoxBoxIntersection(b, a));
        EXPECT_TRUE(PotentialBoxBoxIntersection(a.transform, b.transform, a.box_min, a.box_max, b.box_min, b.box_max,
                                                true, true));
    }
}
