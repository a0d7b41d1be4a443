#pragma once

#include "game/Export.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <span>
#include <vector>

namespace game::physics {

/// Which spheres of a group may overlap, found by sorting their extents along x and sweeping, so that a group of n
/// bodies costs about n log n rather than n squared. The answer is a superset of the overlapping pairs: each extent
/// is grown by a hair more than the rounding of a distance test can take away, so that a caller that applies its
/// exact test to the candidates finds every pair that a test of all pairs would.
///
/// Movers are tested against movers and obstacles, obstacles against nothing. Each mover's candidates come in
/// ascending index order, so that lists built from them keep the order of the group's vectors. The storage is kept
/// from one run to the next.
class MERIDON_EXPORT SweepAndPrune {
public:
    /// Forgets all spheres, keeping the storage.
    void Clear();
    void AddMover(glm::dvec3 const& center, double radius);
    void AddObstacle(glm::dvec3 const& center, double radius);

    /// Finds the candidates of every mover.
    void Run();

    /// Movers after `mover` whose sphere may meet its own, ascending.
    std::span<uint32_t const> LaterMovers(size_t mover) const;
    /// Obstacles whose sphere may meet the mover's, ascending.
    std::span<uint32_t const> Obstacles(size_t mover) const;

private:
    struct Extent {
        glm::dvec3 low;
        glm::dvec3 high;
        /// Movers count from 0, obstacles from kObstacle.
        uint32_t key;
    };
    static constexpr uint32_t kObstacle = 1u << 31;

    /// Candidates grouped by mover: `offsets[m]` to `offsets[m + 1]` in `candidates`.
    struct Buckets {
        void Fill(size_t movers, std::vector<std::pair<uint32_t, uint32_t>> const& pairs);
        std::span<uint32_t const> Of(size_t mover) const;

        std::vector<uint32_t> offsets;
        std::vector<uint32_t> candidates;
    };

    void Add(glm::dvec3 const& center, double radius, uint32_t key);
    /// Records that the extents of keys a and b meet.
    void Pair(uint32_t a, uint32_t b);

    size_t _movers = 0;
    size_t _obstacles = 0;
    std::vector<Extent> _extents;
    std::vector<std::pair<double, uint32_t>> _order;
    /// The extents sorted by low x, one vector per bound, padded at the end.
    std::vector<double> _lowX, _highX, _lowY, _highY, _lowZ, _highZ;
    std::vector<uint32_t> _keys;
    /// (mover, later mover) and (mover, obstacle) pairs as the sweep meets them.
    std::vector<std::pair<uint32_t, uint32_t>> _moverPairs;
    std::vector<std::pair<uint32_t, uint32_t>> _obstaclePairs;
    Buckets _laterMovers;
    Buckets _nearObstacles;
};

}
