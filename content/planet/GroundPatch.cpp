#include "GroundPatch.h"

#include "Planet.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>
#include <utility>

using game::physics::EnvironmentFunction;

namespace planet::ground {

namespace {

constexpr int kSide = 2 * kHalfCells + 1;

/// Metres from the centre of the `k`-th grid line, k from -kHalfCells to kHalfCells.
double Offset(int k) {
    double const t = double(k) / kHalfCells;
    return kHalfWidth * t * std::abs(t);
}

uint32_t VertexAt(int i, int j) {
    return uint32_t(j * kSide + i);
}

/// The ground as the physics sees it, asked for a point of solid ground: a collider that ignores the water stands on
/// the sea floor.
game::physics::Collision GroundAt(EnvironmentFunction const& environment, glm::dvec3 const& position) {
    return environment(position, game::ENVIRONMENT_CONTACT_DRY, 0.0).surface;
}

bool InsideGround(EnvironmentFunction const& environment, glm::dvec3 const& position) {
    return GroundAt(environment, position).depth > 0.0;
}

/// Whether the sea lies under sea level in the outward direction `up`.
bool UnderWater(EnvironmentFunction const& environment, glm::dvec3 const& up) {
    glm::dvec3 const probe = up * (kRadius - kWaterProbeDepth);
    return environment(probe, game::ENVIRONMENT_BODY, 0.0).liquidDensity > 0.0;
}

/// Whether the ground the environment finds from `point` is the point itself.
bool OnGround(EnvironmentFunction const& environment, glm::dvec3 const& point) {
    return glm::distance(GroundAt(environment, point).point, point) <= kBisectionTolerance;
}

/// The ground along the line from the planet's centre through `probe`. The answer's ground point is the ground
/// almost everywhere. Near the shore's step the probe, high above, may lie on the other side of the step than the
/// ground under it, and then the ground point's own answer is the ground. On the step's face itself neither is: each
/// lies in or over ground of the other side, and the ground is the face between them.
glm::dvec3 GroundAlong(EnvironmentFunction const& environment, glm::dvec3 const& probe) {
    glm::dvec3 const first = GroundAt(environment, probe).point;
    glm::dvec3 const second = GroundAt(environment, first).point;
    if (glm::distance(first, second) <= kBisectionTolerance)
        return first;
    if (OnGround(environment, second))
        return second;
    glm::dvec3 inside = first;
    glm::dvec3 outside = second;
    if (!InsideGround(environment, inside))
        std::swap(inside, outside);
    // No step after all, but ground the environment answers for unsteadily: the first answer stands.
    if (!InsideGround(environment, inside) || InsideGround(environment, outside))
        return first;
    while (glm::distance(inside, outside) > kBisectionTolerance) {
        glm::dvec3 const middle = 0.5 * (inside + outside);
        (InsideGround(environment, middle) ? inside : outside) = middle;
    }
    return 0.5 * (inside + outside);
}

/// Where the water ends on the way from the wet `wet` to the dry `dry`, both outward directions: a point at sea level.
glm::dvec3 Shoreline(EnvironmentFunction const& environment, glm::dvec3 wet, glm::dvec3 dry) {
    while (glm::distance(wet, dry) * kRadius > kBisectionTolerance) {
        glm::dvec3 const middle = glm::normalize(wet + dry);
        (UnderWater(environment, middle) ? wet : dry) = middle;
    }
    return glm::normalize(wet + dry) * kRadius;
}

/// The two tangent axes of the patch, east and north, with east x north = up so that triangles listed east, then
/// north of it wind counter-clockwise seen from above.
std::pair<glm::dvec3, glm::dvec3> TangentAxes(glm::dvec3 const& up) {
    glm::dvec3 const helper = std::abs(up.z) < 0.9 ? glm::dvec3(0.0, 0.0, 1.0) : glm::dvec3(1.0, 0.0, 0.0);
    glm::dvec3 const east = glm::normalize(glm::cross(up, helper));
    return {east, glm::cross(up, east)};
}

/// The cell's two triangles as grid vertex numbers, counter-clockwise seen from above.
std::array<std::array<uint32_t, 3>, 2> CellTriangles(int i, int j) {
    uint32_t const a = VertexAt(i, j), b = VertexAt(i + 1, j), c = VertexAt(i + 1, j + 1), d = VertexAt(i, j + 1);
    return {{{a, b, c}, {a, c, d}}};
}

/// The water's triangles: whole where the three corners are wet, cut at the shoreline where some are, none where
/// none is. Corners and shoreline points are shared between the triangles that meet there.
class WaterBuilder {
public:
    WaterBuilder(EnvironmentFunction const& environment, glm::dvec3 const& centre, std::vector<glm::dvec3> const& ups)
        : _environment(environment)
        , _centre(centre)
        , _ups(ups)
        , _corners(ups.size(), kNone) {
        _wet.reserve(ups.size());
        for (glm::dvec3 const& up : ups)
            _wet.push_back(UnderWater(environment, up));
    }

    void AddTriangle(std::array<uint32_t, 3> const& corners) {
        // The triangle cut to its wet part keeps its winding: corners and crossings in the order met.
        std::array<uint32_t, 4> polygon{};
        size_t count = 0;
        for (size_t k = 0; k < 3; ++k) {
            uint32_t const from = corners[k], to = corners[(k + 1) % 3];
            if (_wet[from])
                polygon[count++] = Corner(from);
            if (_wet[from] != _wet[to])
                polygon[count++] = _wet[from] ? Crossing(from, to) : Crossing(to, from);
        }
        for (size_t k = 1; k + 1 < count; ++k)
            _surface.indices.insert(_surface.indices.end(), {polygon[0], polygon[k], polygon[k + 1]});
    }

    Surface Take() { return std::move(_surface); }

private:
    static constexpr uint32_t kNone = ~0u;

    uint32_t Add(glm::dvec3 const& point) {
        _surface.positions.emplace_back(point - _centre);
        _surface.normals.emplace_back(glm::normalize(point));
        return uint32_t(_surface.positions.size() - 1);
    }

    uint32_t Corner(uint32_t vertex) {
        if (_corners[vertex] == kNone)
            _corners[vertex] = Add(_ups[vertex] * kRadius);
        return _corners[vertex];
    }

    uint32_t Crossing(uint32_t wet, uint32_t dry) {
        auto const [found, added] = _crossings.try_emplace(uint64_t(wet) << 32 | dry, kNone);
        if (added)
            found->second = Add(Shoreline(_environment, _ups[wet], _ups[dry]));
        return found->second;
    }

    EnvironmentFunction const& _environment;
    glm::dvec3 const _centre;
    std::vector<glm::dvec3> const& _ups;
    std::vector<bool> _wet;
    /// The water's vertex of each grid vertex, once used.
    std::vector<uint32_t> _corners;
    /// The shoreline's vertex on each grid edge, by its wet and its dry end.
    std::unordered_map<uint64_t, uint32_t> _crossings;
    Surface _surface;
};

}

std::optional<GroundPoint> GroundUnder(EnvironmentFunction const& environment, glm::dvec3 const& position) {
    game::physics::Collision const ground = GroundAt(environment, position);
    double const length = glm::length(ground.normal);
    if (!(length > 0.0))
        return std::nullopt;
    return GroundPoint{ground.point, ground.normal / length};
}

std::optional<Patch> MakePatch(EnvironmentFunction const& environment, glm::dvec3 const& camera) {
    std::optional<GroundPoint> const under = GroundUnder(environment, camera);
    if (!under)
        return std::nullopt;
    Patch patch;
    patch.centre = under->point;
    auto const [east, north] = TangentAxes(under->up);

    // The ground along the line from the planet's centre through each point of a grid in the tangent plane.
    std::vector<glm::dvec3> points(kSide * kSide);
    std::vector<glm::dvec3> ups(kSide * kSide);
    for (int j = 0; j < kSide; ++j) {
        for (int i = 0; i < kSide; ++i) {
            glm::dvec3 const probe = patch.centre + Offset(i - kHalfCells) * east + Offset(j - kHalfCells) * north;
            points[VertexAt(i, j)] = GroundAlong(environment, probe);
            ups[VertexAt(i, j)] = glm::normalize(probe);
        }
    }

    Surface& ground = patch.ground;
    ground.positions.reserve(points.size());
    ground.normals.reserve(points.size());
    for (int j = 0; j < kSide; ++j) {
        for (int i = 0; i < kSide; ++i) {
            ground.positions.emplace_back(points[VertexAt(i, j)] - patch.centre);
            // Across the neighbours, one-sided at the edges: the normal of the surface as drawn, the step's slope
            // included.
            glm::dvec3 const alongEast = points[VertexAt(std::min(i + 1, kSide - 1), j)] -
                                         points[VertexAt(std::max(i - 1, 0), j)];
            glm::dvec3 const alongNorth = points[VertexAt(i, std::min(j + 1, kSide - 1))] -
                                          points[VertexAt(i, std::max(j - 1, 0))];
            ground.normals.emplace_back(glm::normalize(glm::cross(alongEast, alongNorth)));
        }
    }

    WaterBuilder water(environment, patch.centre, ups);
    ground.indices.reserve(size_t(kSide - 1) * (kSide - 1) * 6);
    for (int j = 0; j + 1 < kSide; ++j) {
        for (int i = 0; i + 1 < kSide; ++i) {
            for (auto const& triangle : CellTriangles(i, j)) {
                ground.indices.insert(ground.indices.end(), triangle.begin(), triangle.end());
                water.AddTriangle(triangle);
            }
        }
    }
    patch.water = water.Take();
    return patch;
}

}
