#pragma once

#include <glm/vec3.hpp>

#include <array>
#include <cstddef>

// A cheap and safe judge of the edge axes of two boxes, for the narrow phase. Between two boxes every direction u of
// one is crossed with every direction v of the other, 169 axes; nearly all of them overlap far more than the best
// axis found, and this tells which, so that only the rest are projected.

namespace game::physics {

/// Between two boxes a and b, a lower bound of the overlap on each axis cross(u, v) of a direction u of a and a
/// direction v of b, made in single precision from the triple products w·(u×v) = (w×u)·v: the crosses of u with the
/// half axes and the centres' offset are made once per u, and each axis then costs seven dot products and no root.
/// The bound is lowered by more than single precision can get wrong, so an axis it passes over is surely one that
/// the exact projections neither separate on nor take, as long as `limit` holds the slack of their rounding.
class BoxEdgeBound {
public:
    /// The 13 directions of a box's vertex pairs.
    static constexpr size_t kDirections = 13;

    struct Box {
        glm::dvec3 center;
        std::array<glm::dvec3, 3> half_axes;
    };

    BoxEdgeBound(Box const& a, Box const& b, std::array<glm::dvec3, kDirections> const& directions_b);

    /// False for boxes too large for single precision to judge: then nothing passes.
    bool Usable() const { return _usable; }

    /// Whether every axis cross(u, v) surely overlaps by more than `limit`, judged for all of them at once.
    bool RowClear(glm::dvec3 const& u, double limit) const;

    /// One bit per direction v of b, set where the overlap on cross(u, v) is surely above zero and above `limit`.
    unsigned Passed(glm::dvec3 const& u, double limit) const;

    /// The lanes of the widest registers used: directions and crossed vectors are stored padded to whole blocks.
    static constexpr size_t kWidest = 8;
    static constexpr size_t kCrossed = 7;
    static constexpr size_t kPaddedDirections = (kDirections + kWidest - 1) / kWidest * kWidest;

    /// What the lanes read, by coordinate, in plain arrays that loads of any width can take.
    struct Lanes {
        /// a's half axes, b's, and the offset of a's centre from b's; the last lane is zero.
        alignas(32) std::array<std::array<float, kWidest>, 3> crossed;
        /// b's directions, the lanes past the last repeating it, and their squared lengths.
        alignas(32) std::array<std::array<float, kPaddedDirections>, 3> directions;
        alignas(32) std::array<float, kPaddedDirections> length2;
        /// The sum of the absolute coordinates of the crossed vectors: at least the sum of their lengths.
        double size;
        /// The longest of b's directions.
        double longest;
    };

private:
    bool _usable = false;
    glm::dvec3 _between{0.0};
    double _between2 = 0.0;
    double _inradiusA = 0.0;
    double _inradiusB = 0.0;
    Lanes _lanes;
};

}
