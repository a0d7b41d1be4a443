#pragma once

#include "game/Export.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <span>
#include <vector>

namespace game::physics {

/// Which spheres of a group overlap, found by cutting space into slabs across z and, in each slab, sorting the
/// extents along x and sweeping, so that a group of n bodies costs about n log n rather than n squared, and a crowd
/// spread over a plane is not swept as if it stood in a line. Spheres overlap where their radii sum to more than the
/// distance of their centres, computed as the physics step computes it, so the answer is that of a test of all
/// pairs: each extent is grown by a hair more than the rounding of that test can take away, so that the sweep
/// loses none, and the test itself is applied to what the extents let through.
///
/// Movers are tested against movers and obstacles, obstacles against nothing. Each mover's pairs come in ascending
/// index order, so that lists built from them keep the order of the group's vectors. The storage is kept from one
/// run to the next.
class MERIDON_EXPORT SweepAndPrune {
public:
    /// Forgets all spheres, keeping the storage.
    void Clear();
    void AddMover(glm::dvec3 const& center, double radius);
    void AddObstacle(glm::dvec3 const& center, double radius);

    /// Finds the pairs of every mover.
    void Run();

    /// Movers after `mover` whose sphere meets its own, ascending.
    std::span<uint32_t const> LaterMovers(size_t mover) const;
    /// Obstacles whose sphere meets the mover's, ascending.
    std::span<uint32_t const> Obstacles(size_t mover) const;

private:
    struct Extent {
        glm::dvec3 low;
        glm::dvec3 high;
        /// The sphere as it was added.
        glm::dvec3 center;
        double radius;
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
    /// Chooses the slabs for the extents added.
    void SliceAcrossZ();
    uint32_t SlabOf(double z) const;
    /// Records that the extents of keys a and b meet.
    void Pair(uint32_t a, uint32_t b);

    size_t _movers = 0;
    size_t _obstacles = 0;
    std::vector<Extent> _extents;
    /// An extent's entry in one slab.
    struct Entry {
        uint32_t slab;
        uint32_t extent;
    };
    /// Low x and extent, sorted.
    std::vector<std::pair<double, uint32_t>> _byX;
    /// Where each slab's entries start, while they are dealt.
    std::vector<size_t> _slabStarts;
    /// The entries by slab, and in each slab by low x.
    std::vector<Entry> _order;
    std::vector<double> _depths;
    double _slabLow = 0.0;
    double _slabDepth = 0.0;
    uint32_t _slabCount = 1;
    /// Per slab met, where its entries end.
    std::vector<std::pair<uint32_t, size_t>> _slabEnds;
    /// The entries by slab, and in each slab by low x, one vector per bound, each slab padded at its end.
    std::vector<double> _lowX, _highX, _lowY, _highY, _lowZ, _highZ;
    std::vector<uint32_t> _keys;
    std::vector<uint32_t> _extentOf;
    /// The first slab that each entry's extent reaches.
    std::vector<uint32_t> _firstSlabs;
    /// (mover, later mover) and (mover, obstacle) pairs as the sweep meets them.
    std::vector<std::pair<uint32_t, uint32_t>> _moverPairs;
    std::vector<std::pair<uint32_t, uint32_t>> _obstaclePairs;
    Buckets _laterMovers;
    Buckets _nearObstacles;
};

}
