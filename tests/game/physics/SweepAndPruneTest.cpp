#include "game/physics/SweepAndPrune.h"

#include <glm/geometric.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <random>
#include <vector>

using game::physics::SweepAndPrune;

namespace {

struct Sphere {
    glm::dvec3 center;
    double radius;
};

/// The test the physics step applies to what the sweep proposes.
bool Meet(Sphere const& a, Sphere const& b) {
    return a.radius + b.radius > glm::distance(a.center, b.center);
}

std::vector<uint32_t> Listed(std::span<uint32_t const> candidates) {
    return {candidates.begin(), candidates.end()};
}

/// Runs the sweep and checks it against all pairs: exactly the meeting pairs listed, each list strictly ascending (a
/// pair listed twice would be answered twice), movers only after the mover they are listed with.
void ExpectEveryMeetingPairProposed(SweepAndPrune& sweep, std::vector<Sphere> const& movers,
                                    std::vector<Sphere> const& obstacles) {
    sweep.Clear();
    for (auto const& sphere : movers)
        sweep.AddMover(sphere.center, sphere.radius);
    for (auto const& sphere : obstacles)
        sweep.AddObstacle(sphere.center, sphere.radius);
    sweep.Run();
    for (size_t i = 0; i < movers.size(); ++i) {
        auto later = Listed(sweep.LaterMovers(i));
        auto near = Listed(sweep.Obstacles(i));
        EXPECT_EQ(std::adjacent_find(later.begin(), later.end(), std::greater_equal<>()), later.end());
        EXPECT_EQ(std::adjacent_find(near.begin(), near.end(), std::greater_equal<>()), near.end());
        EXPECT_TRUE(std::all_of(later.begin(), later.end(), [&](uint32_t j) { return j > i && j < movers.size(); }));
        EXPECT_TRUE(std::all_of(near.begin(), near.end(), [&](uint32_t k) { return k < obstacles.size(); }));
        for (size_t j = i + 1; j < movers.size(); ++j)
            ASSERT_EQ(Meet(movers[i], movers[j]), std::binary_search(later.begin(), later.end(), j))
                << "movers " << i << " and " << j;
        for (size_t k = 0; k < obstacles.size(); ++k)
            ASSERT_EQ(Meet(movers[i], obstacles[k]), std::binary_search(near.begin(), near.end(), k))
                << "mover " << i << ", obstacle " << k;
    }
}

}

TEST(SweepAndPrune, FindsThePairsOfARandomCrowdThatMeet) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> coordinate(-20.0, 20.0), size(0.0, 3.0);
    SweepAndPrune sweep;
    // The same object twice: the storage of the first run must not leak into the second.
    for (size_t count : {400u, 150u}) {
        std::vector<Sphere> movers, obstacles;
        for (size_t i = 0; i < count; ++i)
            movers.push_back({{coordinate(random), coordinate(random) * 0.2, coordinate(random)}, size(random)});
        for (size_t i = 0; i < count / 4; ++i)
            obstacles.push_back({{coordinate(random), 0.0, coordinate(random)}, 2 * size(random)});
        // Spheres far larger than the rest, reaching across most of the crowd.
        movers.push_back({{0.0, 0.0, 0.0}, 15.0});
        obstacles.push_back({{5.0, 0.0, -5.0}, 12.0});
        ExpectEveryMeetingPairProposed(sweep, movers, obstacles);
    }
}

TEST(SweepAndPrune, FindsSpheresThatAllButTouchFarFromTheOrigin) {
    // Radii summing to a hair above the distance, where the rounding of a sweep without growth would lose them.
    std::vector<Sphere> movers;
    for (int i = 0; i < 50; ++i) {
        double const x = 6.0e6 + i * 1.000000000001;
        movers.push_back({{x, -6.0e6, 0.25 * i}, 0.5000000000006});
    }
    SweepAndPrune sweep;
    ExpectEveryMeetingPairProposed(sweep, movers, {});
}

TEST(SweepAndPrune, LeavesOutObstaclePairsSpheresThatAreNotNumbersAndEmptyGroups) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const infinity = std::numeric_limits<double>::infinity();
    // A centre and a radius that are not numbers meet nothing; an endless radius reaches everything.
    std::vector<Sphere> movers{{{0, 0, 0}, 1.0}, {{nan, 0, 0}, 1.0}, {{0.5, 0, 0}, nan}, {{100, 0, 0}, infinity},
                               {{1, 0, 0}, -0.5}};
    std::vector<Sphere> obstacles{{{0, 0, 0}, 1.0}, {{0.1, 0, 0}, 1.0}};
    SweepAndPrune sweep;
    ExpectEveryMeetingPairProposed(sweep, movers, obstacles);

    // Either group empty, on the same object: what an earlier run found must not stay behind.
    ExpectEveryMeetingPairProposed(sweep, {}, obstacles);
    ExpectEveryMeetingPairProposed(sweep, {{{0, 0, 0}, 1.0}}, {});
}
