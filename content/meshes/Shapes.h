#pragma once

// The solids that entity meshes are made of, each stretched to fill a collider's box so that the picture and the
// physics agree.

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <vector>

namespace content::meshes {

/// Triangles of one material with a normal per vertex; every triangle is counter-clockwise seen from the side its
/// normals point to, as glTF wants front faces.
struct Surface {
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<uint16_t> indices;
};

enum class Shape {
    Box,
    /// Round about the main direction, an ellipse where the box's cross-section is not square.
    Cylinder,
    /// Base at the back of the box, apex at the front, both along the main direction.
    Cone,
    /// A wing section with its leading edge at the front along the main direction, its thickness along
    /// the thinner of the other two axes, drawn out along the remaining one.
    Profile,
};

/// The main direction of a shape: along one axis of the box's frame.
enum class Toward { PlusX, MinusX, PlusY, MinusY, PlusZ, MinusZ };

/// Adds `shape` filling the box from `min` to `max`, then moved by the rigid `transform`, to `surface`. Throws
/// std::invalid_argument for a box that is flat along some axis, and std::length_error when the surface would need
/// more vertices than 16-bit indices reach.
void AddShape(Surface& surface, Shape shape, Toward toward, glm::vec3 const& min, glm::vec3 const& max,
              glm::mat4 const& transform);

}
