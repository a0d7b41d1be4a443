#pragma once

// What each bundled entity type looks like: the parts of its mesh nodes and the materials they are made of. A part
// fills a collider's box, or a share of it, so that what is drawn is what collides.

#include "content/meshes/Gltf.h"
#include "content/meshes/Shapes.h"

#include <glm/vec3.hpp>

#include <string>
#include <vector>

namespace content::meshes {

/// A share of a collider's box: a fraction along each axis, 0 at box_min and 1 at box_max.
struct Region {
    glm::vec3 from{0.0f};
    glm::vec3 to{1.0f};
};

/// One shape of a mesh node, drawn in the node of the RENDERABLE section `renderable`. Directions and regions are
/// in the collider's frame in the game's axes, Y up: the file's Y is -Z there and its Z is Y.
struct Part {
    char const* renderable;
    char const* collider;
    Shape shape;
    /// Matters to round shapes and wing sections only.
    Toward toward = Toward::PlusY;
    char const* material;
    Region region{};
};

/// The parts of an entity type's mesh, by the stem of its file. Throws std::out_of_range for a type the table lacks.
std::vector<Part> const& PartsOf(std::string const& type);

/// Throws std::out_of_range for a material the table lacks.
Material const& MaterialNamed(std::string const& name);

}
