#include "game/physics/SweepAndPrune.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace game::physics {

namespace {
// The growth of each extent, relative to the radius and to the centre's coordinates: far above the few units in the
// last place by which a computed distance or sum of radii can be off, far below anything that adds candidates.
constexpr double kGrowth = 1e-9;

// Extents compared two at a time: two doubles make one SSE2 or NEON register.
constexpr size_t kLanes = 2;
using Lanes = double __attribute__((vector_size(kLanes * sizeof(double))));
// Past the end, extents of not-a-number bounds, which meet nothing, not even an endless extent: the first block the
// sweep reaches past the last extent starts in them, and stops it, and a block that starts before the end may run
// into them.
constexpr size_t kPadding = 2 * kLanes - 1;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
// Enough slabs for any crowd that is spread out, few enough that their bookkeeping stays small.
constexpr double kMostSlabs = 1024.0;
// More slab entries than this per extent mean extents far deeper than the slabs.
constexpr size_t kMostEntriesPerExtent = 4;

Lanes Load(std::vector<double> const& values, size_t first) {
    Lanes lanes;
    std::memcpy(&lanes, values.data() + first, sizeof lanes);
    return lanes;
}

template <typename Mask>
bool Any(Mask const& mask) {
    return (mask[0] | mask[1]) != 0;
}

/// The distance test of the physics step, to the bit: a pair's order in it changes nothing.
bool Meet(auto const& a, auto const& b) {
    return a.radius + b.radius > glm::distance(a.center, b.center);
}

bool HasNaN(glm::dvec3 const& v) {
    return std::isnan(v.x) || std::isnan(v.y) || std::isnan(v.z);
}
}

void SweepAndPrune::Clear() {
    _movers = 0;
    _obstacles = 0;
    _extents.clear();
}

void SweepAndPrune::AddMover(glm::dvec3 const& center, double radius) {
    Add(center, radius, static_cast<uint32_t>(_movers++));
}

void SweepAndPrune::AddObstacle(glm::dvec3 const& center, double radius) {
    Add(center, radius, kObstacle | static_cast<uint32_t>(_obstacles++));
}

void SweepAndPrune::Add(glm::dvec3 const& center, double radius, uint32_t key) {
    // A negative radius reaches less far than none, so none keeps the answer a superset.
    glm::dvec3 const reach = glm::dvec3(std::max(radius, 0.0) * (1.0 + kGrowth)) + kGrowth * glm::abs(center);
    Extent extent{center - reach, center + reach, center, radius, key};
    // A sphere that is not a number somewhere meets nothing in a distance test either, and would break the sort.
    if (HasNaN(extent.low) || HasNaN(extent.high))
        return;
    _extents.push_back(extent);
}

void SweepAndPrune::Run() {
    SliceAcrossZ();
    // Each slab's extents in sweep order, by coordinate, so that the inner loop reads memory in sequence several at
    // a time; the slabs one after the other, each closed by padding.
    // Sorted along x once, then dealt into the slabs in that order, counted first so that each slab's entries are
    // contiguous.
    _byX.clear();
    for (size_t i = 0; i < _extents.size(); ++i)
        _byX.emplace_back(_extents[i].low.x, static_cast<uint32_t>(i));
    std::sort(_byX.begin(), _byX.end());
    _slabStarts.assign(_slabCount + 1, 0);
    for (Extent const& e : _extents)
        for (uint32_t slab = SlabOf(e.low.z), last = SlabOf(e.high.z); slab <= last; ++slab)
            ++_slabStarts[slab + 1];
    for (uint32_t slab = 0; slab < _slabCount; ++slab)
        _slabStarts[slab + 1] += _slabStarts[slab];
    _order.resize(_slabStarts[_slabCount]);
    for (auto const& [low_x, i] : _byX) {
        Extent const& e = _extents[i];
        for (uint32_t slab = SlabOf(e.low.z), last = SlabOf(e.high.z); slab <= last; ++slab)
            _order[_slabStarts[slab]++] = {slab, i};
    }
    size_t const count = _order.size() + _slabCount * kPadding;
    for (auto* bounds : {&_lowX, &_highX, &_lowY, &_highY, &_lowZ, &_highZ})
        bounds->resize(count);
    _keys.resize(count);
    _extentOf.resize(count);
    _firstSlabs.resize(count);
    _slabEnds.clear();
    size_t at = 0;
    for (size_t o = 0; o < _order.size(); ++o) {
        Extent const& e = _extents[_order[o].extent];
        _lowX[at] = e.low.x, _highX[at] = e.high.x;
        _lowY[at] = e.low.y, _highY[at] = e.high.y;
        _lowZ[at] = e.low.z, _highZ[at] = e.high.z;
        _keys[at] = e.key;
        _extentOf[at] = _order[o].extent;
        _firstSlabs[at] = SlabOf(e.low.z);
        ++at;
        if (o + 1 == _order.size() || _order[o + 1].slab != _order[o].slab) {
            _slabEnds.push_back({_order[o].slab, at});
            for (size_t pad = 0; pad < kPadding; ++pad, ++at)
                _lowX[at] = _highX[at] = _lowY[at] = _highY[at] = _lowZ[at] = _highZ[at] = kNaN;
        }
    }

    _moverPairs.clear();
    _obstaclePairs.clear();
    size_t begin = 0;
    for (auto const& [slab, end] : _slabEnds) {
        for (size_t s = begin; s < end; ++s) {
            uint32_t const key = _keys[s];
            Extent const& sphere = _extents[_extentOf[s]];
            uint32_t const first_slab = _firstSlabs[s];
            double const high_x = _highX[s];
            Lanes const low_y = Lanes{} + _lowY[s], high_y = Lanes{} + _highY[s];
            Lanes const low_z = Lanes{} + _lowZ[s], high_z = Lanes{} + _highZ[s];
            // The block's first extent starts within this one's reach, the others are checked lane by lane.
            for (size_t t = s + 1; _lowX[t] <= high_x; t += kLanes) {
                auto const meets = (Load(_lowX, t) <= high_x) & (Load(_lowY, t) <= high_y) &
                                   (Load(_highY, t) >= low_y) & (Load(_lowZ, t) <= high_z) &
                                   (Load(_highZ, t) >= low_z);
                if (!Any(meets))
                    continue;
                // A pair that shares several slabs is met in each, and kept in the first that both reach.
                for (size_t lane = 0; lane < kLanes; ++lane)
                    if (meets[lane] && std::max(first_slab, _firstSlabs[t + lane]) == slab &&
                        Meet(sphere, _extents[_extentOf[t + lane]]))
                        Pair(key, _keys[t + lane]);
            }
        }
        begin = end + kPadding;
    }
    _laterMovers.Fill(_movers, _moverPairs);
    _nearObstacles.Fill(_movers, _obstaclePairs);
}

void SweepAndPrune::SliceAcrossZ() {
    // Slabs about as deep as a typical extent, so that most extents reach one or two and a slab's sweep meets few
    // that are far off in z. Extents of endless reach join every slab.
    _slabLow = 0.0;
    _slabDepth = 0.0;
    _slabCount = 1;
    _depths.clear();
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (Extent const& e : _extents) {
        if (!std::isfinite(e.low.z) || !std::isfinite(e.high.z))
            continue;
        _depths.push_back(e.high.z - e.low.z);
        low = std::min(low, e.low.z);
        high = std::max(high, e.high.z);
    }
    if (_depths.empty())
        return;
    auto const middle = _depths.begin() + _depths.size() / 2;
    std::nth_element(_depths.begin(), middle, _depths.end());
    double const depth = std::max(*middle, (high - low) / kMostSlabs);
    if (!(depth > 0.0) || !std::isfinite(high - low))
        return;
    _slabLow = low;
    _slabDepth = depth;
    _slabCount = static_cast<uint32_t>(std::min((high - low) / depth, kMostSlabs - 1.0)) + 1;
    // Extents much deeper than the slabs would each be swept many times over: then one slab for all.
    size_t entries = 0;
    for (Extent const& e : _extents)
        entries += SlabOf(e.high.z) - SlabOf(e.low.z) + 1;
    if (entries > kMostEntriesPerExtent * _extents.size())
        _slabCount = 1;
}

uint32_t SweepAndPrune::SlabOf(double z) const {
    if (_slabCount == 1)
        return 0;
    // Clamped before the conversion, which endless and far coordinates would overflow.
    double const slab = std::floor((z - _slabLow) / _slabDepth);
    return static_cast<uint32_t>(std::clamp(slab, 0.0, double(_slabCount - 1)));
}

void SweepAndPrune::Pair(uint32_t a, uint32_t b) {
    bool const a_obstacle = a & kObstacle;
    bool const b_obstacle = b & kObstacle;
    if (a_obstacle && b_obstacle)
        return;
    if (a_obstacle)
        _obstaclePairs.emplace_back(b, a & ~kObstacle);
    else if (b_obstacle)
        _obstaclePairs.emplace_back(a, b & ~kObstacle);
    else
        _moverPairs.emplace_back(std::min(a, b), std::max(a, b));
}

std::span<uint32_t const> SweepAndPrune::LaterMovers(size_t mover) const {
    return _laterMovers.Of(mover);
}

std::span<uint32_t const> SweepAndPrune::Obstacles(size_t mover) const {
    return _nearObstacles.Of(mover);
}

void SweepAndPrune::Buckets::Fill(size_t movers, std::vector<std::pair<uint32_t, uint32_t>> const& pairs) {
    // Counting sort by mover: after placing, offsets[m] has moved on to where bucket m + 1 starts.
    offsets.assign(movers + 1, 0);
    for (auto const& [mover, other] : pairs)
        ++offsets[mover + 1];
    for (size_t m = 0; m < movers; ++m)
        offsets[m + 1] += offsets[m];
    candidates.resize(pairs.size());
    for (auto const& [mover, other] : pairs)
        candidates[offsets[mover]++] = other;
    for (size_t m = movers; m > 0; --m)
        offsets[m] = offsets[m - 1];
    offsets[0] = 0;
    for (size_t m = 0; m < movers; ++m)
        std::sort(candidates.begin() + offsets[m], candidates.begin() + offsets[m + 1]);
}

std::span<uint32_t const> SweepAndPrune::Buckets::Of(size_t mover) const {
    return std::span<uint32_t const>(candidates).subspan(offsets[mover], offsets[mover + 1] - offsets[mover]);
}

}
