// The narrow phase: whether two convex colliders touch, and where, by separating axes.
//
// Index:
//   Shapes            the vertex counts, box corners by bits, hulls by coordinate and by lane
//   Box shapes        the 13 pair directions of a box, and the last two box shapes met
//   Edge directions   the vertex-pair directions of any shape, repeats left out
//   Bounds            the best axis so far, and the cheap lower bound of two boxes' overlap
//   Axes              face normals, then crosses of edges, several at a time
//   Contact           the nearest vertex clamped into the other box, and the sphere fallback
//   Entry points      ProjectOntoAxis, PotentialBoxBoxIntersection, ConvexCollision

#include "game/physics/ConvexCollision.h"

#include "game/physics/BoxEdgeBound.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/mat3x3.hpp>
#include <glm/matrix.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

// The narrow phase is built twice, all its helpers folded in, and the copy for processors with AVX2 chosen when the
// library loads: its double lanes then take three-operand instructions and wider registers. Only GCC folds
// helpers into such copies, and only optimised builds gain from them.
#if defined(__x86_64__) && defined(__OPTIMIZE__) && !defined(__clang__)
#define NARROW_PHASE_CLONES __attribute__((target_clones("avx2", "default"), flatten))
#else
#define NARROW_PHASE_CLONES
#endif

namespace game::physics {

using game::entity::ConvexMeshCollider;

namespace {

constexpr size_t kMaxVertices = ConvexMeshCollider::kMaxVertices;
constexpr size_t kMaxEdges = kMaxVertices * (kMaxVertices - 1) / 2;
constexpr double kLargest = std::numeric_limits<double>::max();
// The contact search starts from the largest float.
constexpr double kFarthest = 3.4028234663852886e38;
// A vertex closer than this to the other box is the contact point itself.
constexpr double kTouching = 0.001;
// Shorter cross products are no axis of the sphere test.
constexpr double kShortestSphereAxis = 1e-06;

// Edge axes are tested this many at a time, one per lane: two doubles make one SSE2 or NEON register, in which the
// comparisons of the projections are single min and max instructions.
constexpr size_t kLanes = 2;
using Lanes = double __attribute__((vector_size(kLanes * sizeof(double))));
constexpr size_t kEdgeBlocks = (kMaxEdges + kLanes - 1) / kLanes;

// ---- Shapes --------------------------------------------------------------------------------------------------------

size_t VertexCount(ConvexMeshCollider const& collider) {
    return std::min<size_t>(collider.vertices_count, kMaxVertices);
}

size_t NormalCount(ConvexMeshCollider const& collider) {
    return std::min<size_t>(collider.normals_count, ConvexMeshCollider::kMaxNormals);
}

glm::dvec3 BoxCenter(PlacedCollider const& placed) {
    glm::dvec3 const local = (glm::dvec3(placed.collider.box_min) + glm::dvec3(placed.collider.box_max)) * 0.5;
    return glm::dvec3(placed.transform * glm::dvec4(local, 1.0));
}

/// Whether the vertices are the corners of a box numbered by bits, bit 0 taking x from the maximum, bit 1 y and bit 2
/// z, as the game makes boxes.
bool HasBoxCorners(ConvexMeshCollider const& collider) {
    if (VertexCount(collider) != 8)
        return false;
    glm::vec3 const low = collider.vertices[0];
    glm::vec3 const high = collider.vertices[7];
    // All comparisons, folded without a branch each: most shapes asked are boxes.
    bool same = true;
    for (int corner = 0; corner < 8; ++corner) {
        glm::vec3 const& vertex = collider.vertices[corner];
        same &= (vertex.x == (corner & 1 ? high.x : low.x)) & (vertex.y == (corner & 2 ? high.y : low.y)) &
                (vertex.z == (corner & 4 ? high.z : low.z));
    }
    return same;
}

/// A shape's vertices in world space, made once per test and kept by coordinate so that the projections onto an
/// axis run over plain arrays.
struct Hull {
    explicit Hull(PlacedCollider const& placed) : count(VertexCount(placed.collider)) {
        for (size_t i = 0; i < count; ++i) {
            glm::dvec3 const world(placed.transform * glm::dvec4(glm::dvec3(placed.collider.vertices[i]), 1.0));
            x[i] = world.x;
            y[i] = world.y;
            z[i] = world.z;
        }
    }

    glm::dvec3 Vertex(size_t i) const { return {x[i], y[i], z[i]}; }

    /// (min, max) of the dot products with `axis`, visiting the vertices in order from the empty interval, so that
    /// a not-a-number axis leaves the interval empty.
    std::pair<double, double> Interval(glm::dvec3 const& axis) const {
        double low = kLargest;
        double high = -kLargest;
        for (size_t i = 0; i < count; ++i) {
            // The order of glm::dot.
            double const d = x[i] * axis.x + y[i] * axis.y + z[i] * axis.z;
            low = std::min(low, d);
            high = std::max(high, d);
        }
        return {low, high};
    }

    std::array<double, kMaxVertices> x{};
    std::array<double, kMaxVertices> y{};
    std::array<double, kMaxVertices> z{};
    size_t count;
};

/// A hull of at least one vertex, every coordinate filled into all lanes, and padded to the full vertex count with
/// copies of its first vertex, which change no interval: the edge loop then projects it without a variable count.
struct LaneHull {
    explicit LaneHull(Hull const& hull) {
        for (size_t i = 0; i < kMaxVertices; ++i) {
            size_t const from = i < hull.count ? i : 0;
            x[i] = Lanes{} + hull.x[from];
            y[i] = Lanes{} + hull.y[from];
            z[i] = Lanes{} + hull.z[from];
        }
    }

    /// Lane by lane, the lowest and highest of the dot products with the lanes' axes, each dot product in the order
    /// of glm::dot. Which of a set of numbers is least doesn't depend on the order of the comparisons, so they are
    /// reduced as a tree, which keeps the chains of dependent comparisons short.
    void Project(Lanes const& ax, Lanes const& ay, Lanes const& az, Lanes& low, Lanes& high) const {
        std::array<Lanes, kMaxVertices> lows;
        std::array<Lanes, kMaxVertices> highs;
#pragma GCC unroll 8
        for (size_t i = 0; i < kMaxVertices; ++i) {
            lows[i] = x[i] * ax + y[i] * ay + z[i] * az;
            highs[i] = lows[i];
        }
#pragma GCC unroll 3
        for (size_t width = kMaxVertices / 2; width > 0; width /= 2) {
#pragma GCC unroll 4
            for (size_t i = 0; i < width; ++i) {
                lows[i] = lows[i + width] < lows[i] ? lows[i + width] : lows[i];
                highs[i] = highs[i + width] > highs[i] ? highs[i + width] : highs[i];
            }
        }
        low = lows[0];
        high = highs[0];
    }

    std::array<Lanes, kMaxVertices> x;
    std::array<Lanes, kMaxVertices> y;
    std::array<Lanes, kMaxVertices> z;
};

// ---- Box shapes ----------------------------------------------------------------------------------------------------

// For corners numbered by bits, the first pair i < j of each direction up to sign, in pair order: of a box's 28 pairs
// these 13 are all that the search for repeated differences below keeps, so a box needn't search.
constexpr auto kBoxEdgePairs = [] {
    using Step = std::array<int, 3>;
    std::array<Step, 13> steps{};
    std::array<std::pair<size_t, size_t>, 13> pairs{};
    size_t count = 0;
    for (size_t i = 0; i < 8; ++i) {
        for (size_t j = i + 1; j < 8; ++j) {
            Step const step{int(j & 1) - int(i & 1), int(j >> 1 & 1) - int(i >> 1 & 1),
                            int(j >> 2 & 1) - int(i >> 2 & 1)};
            Step const opposite{-step[0], -step[1], -step[2]};
            auto const end = steps.begin() + count;
            if (std::find(steps.begin(), end, step) == end && std::find(steps.begin(), end, opposite) == end) {
                steps[count] = step;
                pairs[count++] = {i, j};
            }
        }
    }
    return pairs;
}();

/// What a box's corners alone decide: the directions of its 13 vertex pairs, normalised in float, in its own space.
struct BoxShape {
    std::array<glm::vec3, 8> corners;
    std::array<glm::dvec3, kBoxEdgePairs.size()> directions;
};

/// The shape of a collider whose vertices are a box's corners numbered by bits, or null for any other. Most bodies
/// of a scene are boxes of a few sizes, so the last two shapes met are kept, per thread: a shape returned stays valid
/// through the next call.
BoxShape const* KnownBox(ConvexMeshCollider const& collider) {
    thread_local std::array<std::optional<BoxShape>, 2> kept;
    thread_local size_t older = 0;
    if (VertexCount(collider) != 8)
        return nullptr;
    // Compared by their bits: corners equal but for the sign of a zero give differences that differ in it.
    for (size_t k = 0; k < kept.size(); ++k) {
        if (kept[k] && std::memcmp(kept[k]->corners.data(), collider.vertices.data(), sizeof kept[k]->corners) == 0) {
            older = 1 - k;
            return &*kept[k];
        }
    }
    if (!HasBoxCorners(collider))
        return nullptr;
    BoxShape& shape = kept[older].emplace();
    older = 1 - older;
    std::memcpy(shape.corners.data(), collider.vertices.data(), sizeof shape.corners);
    for (size_t k = 0; k < kBoxEdgePairs.size(); ++k) {
        auto const [i, j] = kBoxEdgePairs[k];
        shape.directions[k] = glm::dvec3(glm::normalize(collider.vertices[j] - collider.vertices[i]));
    }
    return &shape;
}

// ---- Edge directions -----------------------------------------------------------------------------------------------

/// The directions of a shape's vertex pairs i < j, each normalised in float from the collider's own vertices and
/// then turned into world space, in pair order. A pair whose difference equals an earlier one's, or its opposite, is
/// left out: its axes would repeat the earlier ones to the bit, up to sign, and an axis tried twice can neither
/// separate nor win the second time.
struct EdgeDirections {
    explicit EdgeDirections(PlacedCollider const& placed, BoxShape const* box) {
        ConvexMeshCollider const& collider = placed.collider;
        glm::dmat3 const rotation(placed.transform);
        auto const place = [&](glm::dvec3 const& local) {
            glm::dvec3 const world = rotation * local;
            x[count / kLanes][count % kLanes] = world.x;
            y[count / kLanes][count % kLanes] = world.y;
            z[count / kLanes][count % kLanes] = world.z;
            ++count;
        };
        if (box) {
            for (glm::dvec3 const& direction : box->directions)
                place(direction);
        } else {
            // Differences compared by their bits, with zeros made positive so that opposites match too.
            struct Key {
                uint64_t xy;
                uint32_t z;
                bool operator==(Key const&) const = default;
            };
            auto const key_of = [](glm::vec3 const& v) {
                return Key{std::bit_cast<uint32_t>(v.x + 0.0f) | uint64_t{std::bit_cast<uint32_t>(v.y + 0.0f)} << 32,
                           std::bit_cast<uint32_t>(v.z + 0.0f)};
            };
            std::array<Key, kMaxEdges> kept;
            size_t const vertices = VertexCount(collider);
            for (size_t i = 0; i < vertices; ++i) {
                for (size_t j = i + 1; j < vertices; ++j) {
                    glm::vec3 const difference = collider.vertices[j] - collider.vertices[i];
                    Key const key = key_of(difference);
                    Key const opposite = key_of(-difference);
                    if (std::any_of(kept.begin(), kept.begin() + count,
                                    [&](Key const& other) { return other == key || other == opposite; }))
                        continue;
                    kept[count] = key;
                    place(glm::dvec3(glm::normalize(difference)));
                }
            }
        }
        // The lanes past the last direction repeat it, so that a whole block may be tested.
        for (size_t pad = count; count > 0 && pad % kLanes != 0; ++pad) {
            x[pad / kLanes][pad % kLanes] = x[(count - 1) / kLanes][(count - 1) % kLanes];
            y[pad / kLanes][pad % kLanes] = y[(count - 1) / kLanes][(count - 1) % kLanes];
            z[pad / kLanes][pad % kLanes] = z[(count - 1) / kLanes][(count - 1) % kLanes];
        }
    }

    size_t Blocks() const { return (count + kLanes - 1) / kLanes; }

    std::array<Lanes, kEdgeBlocks> x;
    std::array<Lanes, kEdgeBlocks> y;
    std::array<Lanes, kEdgeBlocks> z;
    size_t count = 0;
};

// ---- Bounds --------------------------------------------------------------------------------------------------------

/// The smallest overlap met so far and its axis; the first of equal overlaps stays.
struct BestAxis {
    /// False when the overlap separates the shapes: then there is no contact at all.
    bool Take(double overlap, glm::dvec3 const& candidate) {
        if (!(overlap > 0.0))
            return false;
        if (overlap < depth) {
            depth = overlap;
            axis = candidate;
        }
        return true;
    }

    double depth = kLargest;
    glm::dvec3 axis{0.0};
};

double Overlap(std::pair<double, double> const& a, std::pair<double, double> const& b) {
    return std::min(a.second, b.second) - std::max(a.first, b.first);
}

/// Whether every lane of a comparison holds, folded without a branch per lane.
template <typename Mask>
bool All(Mask const& mask) {
    auto folded = mask[0];
    for (size_t lane = 1; lane < kLanes; ++lane)
        folded &= mask[lane];
    return folded != 0;
}

Lanes Min(Lanes const& a, Lanes const& b) {
    return a < b ? a : b;
}

/// A box with corners numbered by bits, in world space as a centre and three half axes. On an axis, two of them give a
/// lower bound of the overlap of their projections for the price of seven dot products instead of sixteen, which lets
/// the tests pass over the many axes that neither separate nor come near the best overlap.
struct BoxBound {
    BoxBound(PlacedCollider const& placed, bool box_corners) {
        if (!box_corners)
            return;
        glm::vec3 const low = placed.collider.vertices[0];
        glm::vec3 const high = placed.collider.vertices[7];
        glm::dmat4 const& transform = placed.transform;
        glm::dvec3 const half = (glm::dvec3(high) - glm::dvec3(low)) * 0.5;
        center = glm::dvec3(transform * glm::dvec4((glm::dvec3(low) + glm::dvec3(high)) * 0.5, 1.0));
        double rotation_size = 0.0;
        for (int j = 0; j < 3; ++j) {
            half_axes[j] = glm::dvec3(transform[j]) * half[j];
            rotation_size += std::abs(transform[j].x) + std::abs(transform[j].y) + std::abs(transform[j].z);
        }
        glm::dvec3 const reach = glm::max(glm::abs(glm::dvec3(low)), glm::abs(glm::dvec3(high)));
        magnitude = std::abs(transform[3].x) + std::abs(transform[3].y) + std::abs(transform[3].z) +
                    rotation_size * std::max({reach.x, reach.y, reach.z});
        usable = true;
    }

    /// Half the width of the box's projection onto `axis`.
    double Radius(glm::dvec3 const& axis) const {
        return std::abs(glm::dot(half_axes[0], axis)) + std::abs(glm::dot(half_axes[1], axis)) +
               std::abs(glm::dot(half_axes[2], axis));
    }

    bool usable = false;
    glm::dvec3 center{0.0};
    std::array<glm::dvec3, 3> half_axes{};
    /// At least the sum of the absolute coordinates of any world vertex, of the centre, and of the three half axes
    /// together, and so at least any projection onto a unit axis: the rounding errors of the bound and of the
    /// projections stay below some tens of units in its last place.
    double magnitude = 0.0;
};

// What the bound is lowered by, per unit of the boxes' magnitudes: about 450 units in the last place, where the
// rounding of the bound and of the projections together can take away some tens at most.
constexpr double kBoundSlack = 1e-13;

/// Whether two boxes are surely apart along the line of their centres. Then the distance between them, at least
/// that gap, shows on one of the axes of the test too, as for any two convex solids: one face normal or one cross
/// of their edges, all of which the test tries. It finds no contact then, whichever axis it meets first, and this
/// line is cheaper to try than the faces.
bool ApartAlongCentres(BoxBound const& a, BoxBound const& b) {
    if (!a.usable || !b.usable)
        return false;
    glm::dvec3 const between = a.center - b.center;
    double const length = glm::length(between);
    glm::dvec3 const line = between / length;
    double const slack = kBoundSlack * (a.magnitude + b.magnitude);
    return a.Radius(line) + b.Radius(line) - length + slack + slack < 0.0;
}

// ---- Axes ----------------------------------------------------------------------------------------------------------

/// The face normals of a, then those of b, turned into the world and normalised. Between two boxes each one is
/// first bounded, and only those whose overlap may separate the shapes or be the least are projected: the result is
/// that of projecting them all in order.
struct FaceAxes {
    FaceAxes(PlacedCollider const& a, PlacedCollider const& b, BoxBound const& box_a, BoxBound const& box_b)
        : bounded(box_a.usable && box_b.usable), slack(kBoundSlack * (box_a.magnitude + box_b.magnitude)) {
        for (PlacedCollider const* owner : {&a, &b}) {
            glm::dmat3 const rotation(owner->transform);
            for (size_t i = 0; i < NormalCount(owner->collider); ++i)
                axes[count++] = glm::normalize(rotation * glm::dvec3(owner->collider.normals[i]));
        }
        if (!bounded)
            return;
        // A box's projection is its centre's plus or minus its radius, so the bound is the overlap itself but for
        // the rounding, which the slack covers on either side.
        glm::dvec3 const between = box_a.center - box_b.center;
        for (size_t k = 0; k < count; ++k) {
            double const ra = box_a.Radius(axes[k]);
            double const rb = box_b.Radius(axes[k]);
            bounds[k] = std::min(std::min(ra + ra, rb + rb), ra + rb - std::abs(glm::dot(between, axes[k])));
            least = std::min(least, bounds[k]);
        }
    }

    /// An overlap sure to be none separates the shapes, whichever axis the projections would have met first: then
    /// the shapes' vertices needn't even be placed.
    bool SurelyApart() const { return bounded && !(least + slack > 0.0); }

    bool Take(Hull const& hull_a, Hull const& hull_b, BestAxis& best) const {
        for (size_t k = 0; k < count; ++k) {
            // Sure to be above the least overlap, and so above zero: this axis neither separates nor wins.
            if (bounded && bounds[k] - slack > least + slack)
                continue;
            if (!best.Take(Overlap(hull_a.Interval(axes[k]), hull_b.Interval(axes[k])), axes[k]))
                return false;
        }
        return true;
    }

    bool bounded;
    double slack;
    std::array<glm::dvec3, 2 * ConvexMeshCollider::kMaxNormals> axes;
    std::array<double, 2 * ConvexMeshCollider::kMaxNormals> bounds;
    size_t count = 0;
    double least = kLargest;
};

/// Every axis cross(u, v) of a direction u of a and a direction v of b, in that nesting, several v at a time.
bool TakeEdgeAxes(EdgeDirections const& edges_a, EdgeDirections const& edges_b, LaneHull const& a, LaneHull const& b,
                  BoxBound const& box_a, BoxBound const& box_b, BestAxis& best) {
    constexpr unsigned kBlockBits = (1u << kLanes) - 1;
    std::optional<BoxEdgeBound> bound;
    if (box_a.usable && box_b.usable && edges_b.count == BoxEdgeBound::kDirections) {
        std::array<glm::dvec3, BoxEdgeBound::kDirections> directions;
        for (size_t k = 0; k < directions.size(); ++k)
            directions[k] = {edges_b.x[k / kLanes][k % kLanes], edges_b.y[k / kLanes][k % kLanes],
                             edges_b.z[k / kLanes][k % kLanes]};
        bound.emplace(BoxEdgeBound::Box{box_a.center, box_a.half_axes},
                      BoxEdgeBound::Box{box_b.center, box_b.half_axes}, directions);
        if (!bound->Usable())
            bound.reset();
    }
    // Twice the slack of the faces: the projections' rounding on either side.
    double const margin = 2 * kBoundSlack * (box_a.magnitude + box_b.magnitude);
    size_t const blocks = edges_b.Blocks();
    unsigned const all_passed = (1u << blocks * kLanes) - 1;
    for (size_t i = 0; i < edges_a.count; ++i) {
        double const ux = edges_a.x[i / kLanes][i % kLanes];
        double const uy = edges_a.y[i / kLanes][i % kLanes];
        double const uz = edges_a.z[i / kLanes][i % kLanes];
        // Axes whose overlap is sure to be above zero and no less than the best can neither separate nor win. The
        // lanes past b's last direction repeat it and pass with it. Parallel directions give a cross product of
        // length zero, no surety, and a not-a-number axis below, whose projections and overlap are not numbers, so
        // the pair separates, as it does through the empty projections that such an axis gives one at a time.
        unsigned passed = 0;
        if (bound) {
            if (bound->RowClear({ux, uy, uz}, margin + best.depth))
                continue;
            passed = bound->Passed({ux, uy, uz}, margin + best.depth) & all_passed;
            if (passed == all_passed)
                continue;
        }
        for (size_t block = 0; block < blocks; ++block, passed >>= kLanes) {
            if ((passed & kBlockBits) == kBlockBits)
                continue;
            Lanes const& vx = edges_b.x[block];
            Lanes const& vy = edges_b.y[block];
            Lanes const& vz = edges_b.z[block];
            // glm::normalize(glm::cross(u, v)), with the same operations in the same order.
            Lanes const cx = uy * vz - vy * uz;
            Lanes const cy = uz * vx - vz * ux;
            Lanes const cz = ux * vy - vx * uy;
            Lanes const length2 = cx * cx + cy * cy + cz * cz;
            Lanes root;
            for (size_t lane = 0; lane < kLanes; ++lane)
                root[lane] = std::sqrt(length2[lane]);
            Lanes const inverse = 1.0 / root;
            Lanes const ax = cx * inverse;
            Lanes const ay = cy * inverse;
            Lanes const az = cz * inverse;
            Lanes low_a, high_a, low_b, high_b;
            a.Project(ax, ay, az, low_a, high_a);
            b.Project(ax, ay, az, low_b, high_b);
            Lanes const overlap = Min(high_a, high_b) - (low_a > low_b ? low_a : low_b);
            if (!All(overlap > 0.0))
                return false;
            size_t const lanes = std::min(kLanes, edges_b.count - block * kLanes);
            for (size_t lane = 0; lane < lanes; ++lane) {
                if (overlap[lane] < best.depth) {
                    best.depth = overlap[lane];
                    best.axis = {ax[lane], ay[lane], az[lane]};
                }
            }
        }
    }
    return true;
}

// ---- Contact -------------------------------------------------------------------------------------------------------

/// A collider's box with its transform and the inverse, which the contact search uses for many points: the
/// arithmetic of ConvexMeshCollider::GetPositionClamped with a margin of zero.
struct Box {
    explicit Box(PlacedCollider const& placed)
        : to_world(placed.transform), to_local(glm::inverse(placed.transform)), low(placed.collider.box_min),
          high(placed.collider.box_max) {}

    glm::dvec3 Clamp(glm::dvec3 const& position) const {
        glm::dvec3 const local(to_local * glm::dvec4(position, 1.0));
        return glm::dvec3(to_world * glm::dvec4(glm::clamp(local, low, high), 1.0));
    }

    glm::dmat4 to_world;
    glm::dmat4 to_local;
    glm::dvec3 low;
    glm::dvec3 high;
};

struct Nearest {
    glm::dvec3 point{0.0};
    /// The vertex lies on or in the box, near enough to be the contact point itself.
    bool touching = false;
};

/// Of the vertices clamped into `box`, the first one all but unmoved, or else the one that moved least.
Nearest NearestClamped(Hull const& hull, Box const& box) {
    Nearest nearest;
    double shortest = kFarthest;
    for (size_t i = 0; i < hull.count; ++i) {
        glm::dvec3 const vertex = hull.Vertex(i);
        glm::dvec3 const clamped = box.Clamp(vertex);
        double const distance = glm::distance(vertex, clamped);
        if (distance < kTouching)
            return {clamped, true};
        if (distance < shortest) {
            shortest = distance;
            nearest.point = clamped;
        }
    }
    return nearest;
}

Collision SphereCollision(PlacedCollider const& a, glm::dvec3 const& center_a, PlacedCollider const& b,
                          glm::dvec3 const& center_b) {
    double const radius = a.collider.radius;
    glm::dvec3 const origin(a.transform[3]);
    Hull const hull(b);
    BoxBound const box(b, KnownBox(b.collider) != nullptr);
    // Twice the length bounds the sum of the centre's absolute coordinates, as the box's magnitude does its own.
    double const slack = kBoundSlack * (box.magnitude + glm::length(center_a) * 2 + std::abs(radius));
    BestAxis best;
    // Intervals that are apart overlap by less than zero, so the overlap alone decides.
    auto const take = [&](glm::dvec3 const& axis) {
        double const middle = glm::dot(center_a, axis);
        double const sphere_low = middle - radius;
        double const sphere_high = middle + radius;
        if (box.usable) {
            // As for the edge axes of two boxes: one that can neither separate nor win needn't be projected.
            double const box_middle = glm::dot(box.center, axis);
            double const box_radius = box.Radius(axis);
            double const lower = std::min(box_middle + box_radius, sphere_high) -
                                 std::max(box_middle - box_radius, sphere_low) - slack;
            if (lower > 0.0 && lower >= best.depth)
                return true;
        }
        auto const [low, high] = hull.Interval(axis);
        return best.Take(std::min(high, sphere_high) - std::max(low, sphere_low), axis);
    };

    glm::dmat3 const rotation(b.transform);
    for (size_t i = 0; i < NormalCount(b.collider); ++i) {
        if (!take(glm::normalize(rotation * glm::dvec3(b.collider.normals[i]))))
            return {};
    }
    std::array<glm::dvec3, kMaxVertices> toward;
    for (size_t i = 0; i < hull.count; ++i) {
        toward[i] = glm::normalize(hull.Vertex(i) - origin);
        if (!take(toward[i]))
            return {};
    }
    // All of these axes first, so that the square roots and divisions of many overlap. Pairs of a vertex with itself
    // have no direction and give no axis, so they are skipped.
    std::array<glm::dvec3, kMaxVertices * (kMaxVertices - 1)> axes;
    size_t count = 0;
    for (size_t p = 0; p < hull.count; ++p) {
        for (size_t q = 0; q < hull.count; ++q) {
            if (p == q)
                continue;
            glm::dvec3 const axis = glm::cross(toward[p], glm::normalize(hull.Vertex(q) - hull.Vertex(p)));
            double const length = glm::length(axis);
            if (length >= kShortestSphereAxis)
                axes[count++] = axis * (1.0 / length);
        }
    }
    for (size_t i = 0; i < count; ++i) {
        if (!take(axes[i]))
            return {};
    }

    Collision result;
    result.normal = glm::sign(glm::dot(glm::normalize(center_a - center_b), best.axis)) * best.axis;
    result.depth = best.depth;
    result.point = center_a - result.normal * radius;
    return result;
}

}

// ---- Entry points --------------------------------------------------------------------------------------------------

std::pair<double, double> ProjectOntoAxis(ConvexMeshCollider const& collider, glm::dvec3 const& axis) {
    return Hull({collider, collider.transform}).Interval(axis);
}

bool PotentialBoxBoxIntersection(glm::dmat4 const& a, glm::dmat4 const& b, glm::dvec3 const& a_min,
                                 glm::dvec3 const& a_max, glm::dvec3 const& b_min, glm::dvec3 const& b_max,
                                 bool test_spheres, bool test_boxes) {
    if (test_spheres) {
        glm::dvec3 const center_a(a * glm::dvec4((a_min + a_max) * 0.5, 1.0));
        glm::dvec3 const center_b(b * glm::dvec4((b_min + b_max) * 0.5, 1.0));
        double const radius_a = glm::length((a_max - a_min) * 0.5);
        double const radius_b = glm::length((b_max - b_min) * 0.5);
        if (glm::distance(center_a, center_b) > radius_a + radius_b)
            return false;
    }
    if (test_boxes) {
        glm::dmat4 const b_in_a = glm::inverse(a) * b;
        glm::dvec3 low(kLargest);
        glm::dvec3 high(-kLargest);
        for (int corner = 0; corner < 8; ++corner) {
            glm::dvec3 const local(corner & 1 ? b_max.x : b_min.x, corner & 2 ? b_max.y : b_min.y,
                                   corner & 4 ? b_max.z : b_min.z);
            glm::dvec3 const p(b_in_a * glm::dvec4(local, 1.0));
            low = glm::min(low, p);
            high = glm::max(high, p);
        }
        for (int axis = 0; axis < 3; ++axis) {
            if (high[axis] < a_min[axis] || low[axis] > a_max[axis])
                return false;
        }
    }
    return true;
}

bool PotentialBoxBoxIntersection(ConvexMeshCollider const& a, ConvexMeshCollider const& b) {
    if (!(glm::distance(BoxCenter({a, a.transform}), BoxCenter({b, b.transform})) < a.radius + b.radius))
        return false;
    return PotentialBoxBoxIntersection(a.transform, b.transform, a.box_min, a.box_max, b.box_min, b.box_max, false,
                                       true);
}

Collision ConvexCollision(ConvexMeshCollider const& a, ConvexMeshCollider const& b) {
    return ConvexCollision(PlacedCollider{a, a.transform}, PlacedCollider{b, b.transform});
}

NARROW_PHASE_CLONES Collision ConvexCollision(PlacedCollider const& a, PlacedCollider const& b) {
    glm::dvec3 const center_a = BoxCenter(a);
    glm::dvec3 const center_b = BoxCenter(b);
    if (glm::distance(center_a, center_b) > a.collider.radius + b.collider.radius)
        return {};
    if (a.collider.is_sphere)
        return SphereCollision(a, center_a, b, center_b);

    BoxShape const* const shape_a = KnownBox(a.collider);
    BoxShape const* const shape_b = KnownBox(b.collider);
    BoxBound const bound_a(a, shape_a != nullptr);
    BoxBound const bound_b(b, shape_b != nullptr);
    if (ApartAlongCentres(bound_a, bound_b))
        return {};
    FaceAxes const faces(a, b, bound_a, bound_b);
    if (faces.SurelyApart())
        return {};
    Hull const hull_a(a);
    Hull const hull_b(b);
    BestAxis best;
    if (!faces.Take(hull_a, hull_b, best))
        return {};
    EdgeDirections const edges_a(a, shape_a);
    EdgeDirections const edges_b(b, shape_b);
    // Edge axes need two vertices on each side, so both hulls have a first vertex to pad with.
    if (edges_a.count > 0 && edges_b.count > 0 &&
        !TakeEdgeAxes(edges_a, edges_b, LaneHull(hull_a), LaneHull(hull_b), bound_a, bound_b, best))
        return {};

    Collision result;
    result.normal = glm::sign(glm::dot(glm::normalize(center_a - center_b), best.axis)) * best.axis;
    result.depth = best.depth;

    Box const box_b(b);
    Nearest const from_a = NearestClamped(hull_a, box_b);
    if (from_a.touching) {
        result.point = from_a.point;
        return result;
    }
    Box const box_a(a);
    glm::dvec3 const pa = box_a.Clamp(from_a.point);
    Nearest const from_b = NearestClamped(hull_b, box_a);
    if (from_b.touching) {
        result.point = from_b.point;
        return result;
    }
    glm::dvec3 const pb = box_b.Clamp(from_b.point);
    result.point = (a.collider.radius <= b.collider.radius ? box_a : box_b).Clamp((pa + pb) * 0.5);
    return result;
}

}
