// Solids fitted to boxes. Each is laid out in a unit cube of its own, every coordinate from -1 to 1 with z along the
// main direction, and then placed: stretched to the box, turned so that its z points the main way, and moved.
//
// Index:
//   Placing    from the unit cube into the box and the surface; triangles turned to face their normals
//   Shapes     box, cylinder, cone, wing profile

#include "content/meshes/Shapes.h"

#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>
#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>
#include <glm/vector_relational.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace content::meshes {

namespace {

// Enough sides that a wheel looks round at the sizes of our entities, and still few vertices.
constexpr int kRoundSides = 24;
// Chord stations of the wing section, spaced closer at the rounded leading edge.
constexpr int kProfileStations = 16;
// 16-bit indices stop one short of 65535, which glTF keeps for primitive restart.
constexpr size_t kMaxVertices = 65535;

// ---- Placing -------------------------------------------------------------------------------------------------------

/// Maps a shape's unit cube into the box and on into the surface. The cube's x, y and z go to the box axes a, b and
/// main, with a x b = main: a turn, not a mirror.
class Placer {
public:
    /// `thinFirst` puts the cube's x on the thinner of the two axes across the main direction.
    Placer(Surface& surface, Toward toward, bool thinFirst, glm::vec3 const& min, glm::vec3 const& max,
           glm::mat4 const& transform)
        : _surface(surface), _centre((min + max) * 0.5f), _transform(transform) {
        glm::vec3 const half = (max - min) * 0.5f;
        if (glm::any(glm::lessThanEqual(half, glm::vec3(0.0f))))
            throw std::invalid_argument("a shape needs a box with room along every axis");
        int const axis = static_cast<int>(toward) / 2;
        float const sign = static_cast<int>(toward) % 2 == 0 ? 1.0f : -1.0f;
        glm::vec3 main(0.0f), a(0.0f), b(0.0f);
        main[axis] = sign;
        a[(axis + 1) % 3] = 1.0f;
        b[(axis + 2) % 3] = sign;
        auto along = [&](glm::vec3 const& direction) { return glm::dot(glm::abs(direction), half); };
        if (thinFirst && along(b) < along(a)) {
            glm::vec3 const first = a;
            a = b;
            b = -first;
        }
        _axes = glm::mat3(a * along(a), b * along(b), main * along(main));
        // Normals stretch the other way: the inverse transpose of a turn times a scale.
        _normalAxes = glm::mat3(a / along(a), b / along(b), main / along(main));
    }

    /// A vertex at `p` of the unit cube, where the shape's normal is `n`.
    uint16_t Vertex(glm::vec3 const& p, glm::vec3 const& n) {
        if (_surface.positions.size() >= kMaxVertices)
            throw std::length_error("a surface has more vertices than 16-bit indices reach");
        _surface.positions.push_back(glm::vec3(_transform * glm::vec4(_centre + _axes * p, 1.0f)));
        _surface.normals.push_back(glm::normalize(glm::mat3(_transform) * glm::normalize(_normalAxes * n)));
        return static_cast<uint16_t>(_surface.positions.size() - 1);
    }

    /// Adds the triangle turned to face the way its normals point, so that shapes need not care for winding. One
    /// without area, where a station of the wing closes to a point, is left out.
    void Triangle(uint16_t i, uint16_t j, uint16_t k) {
        auto const& p = _surface.positions;
        auto const& n = _surface.normals;
        glm::vec3 const facing = glm::cross(p[j] - p[i], p[k] - p[i]);
        if (facing == glm::vec3(0.0f))
            return;
        if (glm::dot(facing, n[i] + n[j] + n[k]) < 0.0f)
            std::swap(j, k);
        _surface.indices.insert(_surface.indices.end(), {i, j, k});
    }

    /// Corners in order round the edge.
    void Quad(uint16_t i, uint16_t j, uint16_t k, uint16_t l) {
        Triangle(i, j, k);
        Triangle(i, k, l);
    }

private:
    Surface& _surface;
    glm::vec3 _centre;
    glm::mat4 _transform;
    glm::mat3 _axes{1.0f};
    glm::mat3 _normalAxes{1.0f};
};

// ---- Shapes --------------------------------------------------------------------------------------------------------

/// The unit circle across the main direction, `side` counted in sides of the round.
glm::vec3 Round(float side) {
    float const angle = glm::two_pi<float>() * side / kRoundSides;
    return {std::cos(angle), std::sin(angle), 0.0f};
}

void Box(Placer& place) {
    for (int axis = 0; axis < 3; ++axis) {
        for (float side : {-1.0f, 1.0f}) {
            glm::vec3 normal(0.0f), u(0.0f), v(0.0f);
            normal[axis] = side;
            u[(axis + 1) % 3] = 1.0f;
            v[(axis + 2) % 3] = 1.0f;
            place.Quad(place.Vertex(normal - u - v, normal), place.Vertex(normal + u - v, normal),
                       place.Vertex(normal + u + v, normal), place.Vertex(normal - u + v, normal));
        }
    }
}

/// A flat round end at `z`, -1 or 1.
void Cap(Placer& place, float z) {
    glm::vec3 const normal(0.0f, 0.0f, z);
    uint16_t const centre = place.Vertex(normal, normal);
    std::array<uint16_t, kRoundSides> rim;
    for (int side = 0; side < kRoundSides; ++side)
        rim[side] = place.Vertex(Round(side) + normal, normal);
    for (int side = 0; side < kRoundSides; ++side)
        place.Triangle(centre, rim[side], rim[(side + 1) % kRoundSides]);
}

void Cylinder(Placer& place) {
    std::array<uint16_t, kRoundSides> back, front;
    for (int side = 0; side < kRoundSides; ++side) {
        glm::vec3 const radial = Round(side);
        back[side] = place.Vertex(radial - glm::vec3(0.0f, 0.0f, 1.0f), radial);
        front[side] = place.Vertex(radial + glm::vec3(0.0f, 0.0f, 1.0f), radial);
    }
    for (int side = 0; side < kRoundSides; ++side) {
        int const next = (side + 1) % kRoundSides;
        place.Quad(back[side], back[next], front[next], front[side]);
    }
    Cap(place, -1.0f);
    Cap(place, 1.0f);
}

void Cone(Placer& place) {
    // The radius shrinks from 1 to 0 over a length of 2: the side's normals lean forward by a half.
    auto slope = [](float side) { return glm::normalize(Round(side) + glm::vec3(0.0f, 0.0f, 0.5f)); };
    std::array<uint16_t, kRoundSides> base, apex;
    for (int side = 0; side < kRoundSides; ++side) {
        base[side] = place.Vertex(Round(side) - glm::vec3(0.0f, 0.0f, 1.0f), slope(side));
        // One apex per side, with the normal of the side's middle, keeps the point smoothly shaded.
        apex[side] = place.Vertex({0.0f, 0.0f, 1.0f}, slope(side + 0.5f));
    }
    for (int side = 0; side < kRoundSides; ++side)
        place.Triangle(base[side], base[(side + 1) % kRoundSides], apex[side]);
    Cap(place, -1.0f);
}

/// Half the thickness of the NACA 0012 section, in chords, at `c` chords behind the leading edge, with the trailing
/// edge closed. The section is symmetric, so that one wing serves either side of a glider, turned half round.
float HalfThickness(float c) {
    return 0.6f * (0.2969f * std::sqrt(c) - 0.1260f * c - 0.3516f * c * c + 0.2843f * c * c * c -
                   0.1036f * c * c * c * c);
}

void Profile(Placer& place) {
    // Stations along the chord, as points (thickness, chord) of the cube's x and z: the section is stretched to fill
    // the box's thickness, the leading edge at z = 1.
    std::array<float, kProfileStations + 1> chord, half;
    for (int i = 0; i <= kProfileStations; ++i) {
        float const c = 0.5f * (1.0f - std::cos(glm::pi<float>() * static_cast<float>(i) / kProfileStations));
        chord[i] = 1.0f - 2.0f * c;
        half[i] = HalfThickness(c);
    }
    float const thickest = *std::max_element(half.begin(), half.end());
    std::array<glm::vec2, kProfileStations + 1> upper, lower;
    for (int i = 0; i <= kProfileStations; ++i) {
        upper[i] = {half[i] / thickest, chord[i]};
        lower[i] = {-half[i] / thickest, chord[i]};
    }

    // The outline from the trailing edge over the top to the leading edge and back underneath. It runs clockwise
    // in (chord, thickness), so the outward normal of a tangent t is (-t.thickness, t.chord) there.
    std::vector<glm::vec2> outline(upper.rbegin(), upper.rend());
    outline.insert(outline.end(), lower.begin() + 1, lower.end());
    size_t const last = outline.size() - 1;
    std::vector<std::array<uint16_t, 2>> span(outline.size());
    for (size_t k = 0; k <= last; ++k) {
        glm::vec2 const tangent = outline[std::min(k + 1, last)] - outline[k == 0 ? 0 : k - 1];
        glm::vec3 const normal(tangent.y, 0.0f, -tangent.x);
        for (int end = 0; end < 2; ++end)
            span[k][end] = place.Vertex({outline[k].x, end == 0 ? -1.0f : 1.0f, outline[k].y}, normal);
    }
    for (size_t k = 0; k < last; ++k)
        place.Quad(span[k][0], span[k + 1][0], span[k + 1][1], span[k][1]);

    // The two flat ends, strips between the surfaces station by station. The leading and trailing edges are one
    // vertex each, and the triangles that close to them there drop out.
    for (float end : {-1.0f, 1.0f}) {
        glm::vec3 const normal(0.0f, end, 0.0f);
        std::array<uint16_t, kProfileStations + 1> top, bottom;
        for (int i = 0; i <= kProfileStations; ++i) {
            top[i] = place.Vertex({upper[i].x, end, upper[i].y}, normal);
            bool const edge = i == 0 || i == kProfileStations;
            bottom[i] = edge ? top[i] : place.Vertex({lower[i].x, end, lower[i].y}, normal);
        }
        for (int i = 0; i < kProfileStations; ++i)
            place.Quad(top[i], top[i + 1], bottom[i + 1], bottom[i]);
    }
}

}

void AddShape(Surface& surface, Shape shape, Toward toward, glm::vec3 const& min, glm::vec3 const& max,
              glm::mat4 const& transform) {
    Placer place(surface, toward, shape == Shape::Profile, min, max, transform);
    switch (shape) {
    case Shape::Box: Box(place); break;
    case Shape::Cylinder: Cylinder(place); break;
    case Shape::Cone: Cone(place); break;
    case Shape::Profile: Profile(place); break;
    }
}

}
