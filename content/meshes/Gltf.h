#pragma once

// Entity meshes as glTF 2.0 files: one external binary buffer beside the .gltf, 32-bit float positions and normals,
// 16-bit indices and named materials, the subset the game's mesh loader reads.

#include "content/meshes/Shapes.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace content::meshes {

/// A material of the metallic-roughness model. The game finds geometry by the material's name.
struct Material {
    char const* name;
    /// Linear base colour; an alpha below 1 lets light through.
    glm::dvec4 color;
    double metallic;
    double roughness;
    /// Light given off, each channel 0 to 1; zero for what does not glow.
    glm::dvec3 emission{0.0};
};

struct Primitive {
    Material const* material;
    Surface surface;
};

/// A node of the mesh: its geometry lies in the node's own frame, which `transform` places in the entity.
struct MeshNode {
    std::string name;
    glm::dmat4 transform{1.0};
    std::vector<Primitive> primitives;
};

/// Writes `gltf` and the buffer beside it, of the same stem with ".bin". Throws std::runtime_error naming a file
/// that cannot be written.
void WriteGltf(std::filesystem::path const& gltf, std::vector<MeshNode> const& nodes);

}
