#include "game/physics/BoxEdgeBound.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace game::physics {

namespace {

// Larger boxes and offsets are left to the exact test, far from where single precision could overflow.
constexpr double kLargestSize = 1e15;
// Directions this close to parallel, in squared sine, make axes left to the lanes; the others' axes stray from across
// u by less than 1e-12 of the sizes, which the tolerance covers many times over with the rounding.
constexpr double kNearlyParallel = 1e-6;
constexpr double kRowTolerance = 1e-11;

// Four lanes everywhere; eight where the processor has AVX2, chosen when the program runs.
using Float4 = float __attribute__((vector_size(4 * sizeof(float))));
using Float8 = float __attribute__((vector_size(8 * sizeof(float))));

// The helpers of the lane code are always folded in: the eight-lane copy runs with AVX2, and a call that passed
// its vectors to a helper built without it would pass them differently from how the helper takes them.
template <typename Floats>
[[gnu::always_inline]] inline Floats Load(float const* from) {
    Floats floats;
    std::memcpy(&floats, from, sizeof floats);
    return floats;
}

template <typename Floats>
[[gnu::always_inline]] inline Floats Spread(float value) {
    return Floats{} + value;
}

/// Clears the sign bits: one instruction, where a comparison and a choice take several.
template <typename Floats>
[[gnu::always_inline]] inline Floats Abs(Floats const& a) {
    using Bits = decltype(a < a);
    return reinterpret_cast<Floats>(reinterpret_cast<Bits>(a) & (Bits{} + 0x7fffffff));
}

template <typename Floats>
[[gnu::always_inline]] inline Floats Min(Floats const& a, Floats const& b) {
    return a < b ? a : b;
}

template <typename Floats>
[[gnu::always_inline]] inline Floats Dot(std::array<Floats, 3> const& w, Floats const& x, Floats const& y,
                                         Floats const& z) {
    return w[0] * x + w[1] * y + w[2] * z;
}

/// A bit per lane of a comparison's result, lane 0 lowest.
unsigned LaneBits(decltype(Float4{} < Float4{}) const& mask) {
#if defined(__x86_64__)
    return unsigned(_mm_movemask_ps(reinterpret_cast<__m128>(mask)));
#else
    unsigned bits = 0;
    for (size_t lane = 0; lane < 4; ++lane)
        bits |= unsigned(mask[lane] & 1) << lane;
    return bits;
#endif
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) unsigned LaneBits(decltype(Float8{} < Float8{}) const& mask) {
    return unsigned(_mm256_movemask_ps(reinterpret_cast<__m256>(mask)));
}
#endif

/// BoxEdgeBound::Passed, as many directions v at a time as `Floats` has lanes.
template <typename Floats>
[[gnu::always_inline]] inline unsigned PassedIn(BoxEdgeBound::Lanes const& lanes, glm::dvec3 const& u, double limit) {
    constexpr size_t kWidth = sizeof(Floats) / sizeof(float);
    float const ux = float(u.x);
    float const uy = float(u.y);
    float const uz = float(u.z);
    // Per crossed vector w, w×u, each coordinate in all lanes.
    std::array<std::array<Floats, 3>, BoxEdgeBound::kWidest> rows;
#pragma GCC unroll 2
    for (size_t first = 0; first < BoxEdgeBound::kCrossed; first += kWidth) {
        Floats const wx = Load<Floats>(&lanes.crossed[0][first]);
        Floats const wy = Load<Floats>(&lanes.crossed[1][first]);
        Floats const wz = Load<Floats>(&lanes.crossed[2][first]);
        Floats const cx = wy * uz - wz * uy;
        Floats const cy = wz * ux - wx * uz;
        Floats const cz = wx * uy - wy * ux;
#pragma GCC unroll 8
        for (size_t lane = 0; lane < kWidth; ++lane)
            rows[first + lane] = {Spread<Floats>(cx[lane]), Spread<Floats>(cy[lane]), Spread<Floats>(cz[lane])};
    }
    double const u2 = glm::dot(u, u);
    // Single precision makes each dot product below wrong by at most some tens of units in the last place of the
    // lengths that went into it; 2^-16 of them is several times more.
    Floats const error = Spread<Floats>(float(0x1p-16 * lanes.size * std::sqrt(u2) * lanes.longest));
    // And the squared length of the cross product, found from |u|²|v|² - (u·v)², by at most 2^-20 of |u|²|v|².
    Floats const parallel = Spread<Floats>(float(0x1p-18 * u2 * lanes.longest * lanes.longest));
    // The limit squared, raised past the rounding of the squares compared.
    Floats const limit2 = Spread<Floats>(float(limit * limit * (1.0 + 0x1p-18)));

    unsigned bits = 0;
#pragma GCC unroll 4
    for (size_t first = 0; first < BoxEdgeBound::kPaddedDirections; first += kWidth) {
        Floats const vx = Load<Floats>(&lanes.directions[0][first]);
        Floats const vy = Load<Floats>(&lanes.directions[1][first]);
        Floats const vz = Load<Floats>(&lanes.directions[2][first]);
        Floats const ra =
            Abs(Dot(rows[0], vx, vy, vz)) + Abs(Dot(rows[1], vx, vy, vz)) + Abs(Dot(rows[2], vx, vy, vz));
        Floats const rb =
            Abs(Dot(rows[3], vx, vy, vz)) + Abs(Dot(rows[4], vx, vy, vz)) + Abs(Dot(rows[5], vx, vy, vz));
        Floats const lower = Min(Min(ra + ra, rb + rb), ra + rb - Abs(Dot(rows[6], vx, vy, vz))) - error;
        Floats const uv = ux * vx + uy * vy + uz * vz;
        Floats const length2 = float(u2) * Load<Floats>(&lanes.length2[first]) - uv * uv + parallel;
        bits |= LaneBits((lower > 0.0f) & (lower * lower > limit2 * length2)) << first;
    }
    return bits;
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) unsigned PassedInAvx2(BoxEdgeBound::Lanes const& lanes, glm::dvec3 const& u,
                                                      double limit) {
    return PassedIn<Float8>(lanes, u, limit);
}

bool HasAvx2() {
    // Our own check may run among the library's constructors, before the runtime has looked at the processor.
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
}

bool const kHasAvx2 = HasAvx2();
#endif

/// The radius of the largest ball in the box: its volume over its largest face.
double Inradius(BoxEdgeBound::Box const& box) {
    auto const& [h0, h1, h2] = box.half_axes;
    glm::dvec3 const face = glm::cross(h1, h2);
    auto const length2 = [](glm::dvec3 const& v) { return glm::dot(v, v); };
    double const largest_face2 =
        std::max({length2(face), length2(glm::cross(h2, h0)), length2(glm::cross(h0, h1))});
    return std::abs(glm::dot(h0, face)) / std::sqrt(largest_face2);
}

}

BoxEdgeBound::BoxEdgeBound(Box const& a, Box const& b, std::array<glm::dvec3, kDirections> const& directions_b)
    : _between(a.center - b.center), _between2(glm::dot(_between, _between)), _inradiusA(Inradius(a)),
      _inradiusB(Inradius(b)) {
    std::array<glm::dvec3, kCrossed> const crossed{a.half_axes[0], a.half_axes[1], a.half_axes[2], b.half_axes[0],
                                                   b.half_axes[1], b.half_axes[2], _between};
    _lanes.size = 0.0;
    for (size_t k = 0; k < kWidest; ++k) {
        for (int coordinate = 0; coordinate < 3; ++coordinate) {
            double const value = k < kCrossed ? crossed[k][coordinate] : 0.0;
            _lanes.size += std::abs(value);
            _lanes.crossed[coordinate][k] = float(value);
        }
    }
    _usable = _lanes.size < kLargestSize;
    if (!_usable)
        return;
    double longest2 = 0.0;
    for (size_t k = 0; k < kPaddedDirections; ++k) {
        glm::dvec3 const& v = directions_b[std::min(k, kDirections - 1)];
        for (int coordinate = 0; coordinate < 3; ++coordinate)
            _lanes.directions[coordinate][k] = float(v[coordinate]);
        _lanes.length2[k] = float(glm::dot(v, v));
        longest2 = std::max(longest2, glm::dot(v, v));
    }
    _lanes.longest = std::sqrt(longest2);
}

bool BoxEdgeBound::RowClear(glm::dvec3 const& u, double limit) const {
    // A box holds the ball of its inradius, so its radius on any unit axis is at least that, and on an axis across u
    // the centres' offset shows no more than its part across u. Axes of nearly parallel directions are left to the
    // lanes: they stray from across u by their rounding, and those of exactly parallel ones are not numbers and
    // separate.
    double const tolerance = kRowTolerance * _lanes.size;
    if (!(_inradiusA + _inradiusA - tolerance > limit && _inradiusB + _inradiusB - tolerance > limit))
        return false;
    // The offset across u must then be shorter than what the inradii leave: compared squared and times |u|², as
    // |d|²|u|² - (d·u)², whose rounding, some units in the last place of |d|²|u|², is added to it.
    double const reach = _inradiusA + _inradiusB - tolerance - limit;
    double const u2 = glm::dot(u, u);
    double const along = glm::dot(_between, u);
    double const across2 = (_between2 * u2 - along * along) + 0x1p-46 * _between2 * u2;
    if (!(reach > 0.0 && across2 < reach * reach * u2))
        return false;
    float const ux = float(u.x);
    float const uy = float(u.y);
    float const uz = float(u.z);
    // |u×v|² against |u|²|v|², found as |u|²|v|² - (u·v)² with the error that Passed allows for.
    Float4 const threshold = Spread<Float4>(float(u2 * (kNearlyParallel + 0x1p-18)));
    auto clear = ~decltype(Float4{} < Float4{}){};
    for (size_t first = 0; first < kPaddedDirections; first += 4) {
        Float4 const length2 = Load<Float4>(&_lanes.length2[first]);
        Float4 const uv = ux * Load<Float4>(&_lanes.directions[0][first]) +
                          uy * Load<Float4>(&_lanes.directions[1][first]) +
                          uz * Load<Float4>(&_lanes.directions[2][first]);
        clear &= float(u2) * length2 - uv * uv > threshold * length2;
    }
    return LaneBits(clear) == 0xfu;
}

unsigned BoxEdgeBound::Passed(glm::dvec3 const& u, double limit) const {
#if defined(__x86_64__)
    if (kHasAvx2)
        return PassedInAvx2(_lanes, u, limit);
#endif
    return PassedIn<Float4>(_lanes, u, limit);
}

}
