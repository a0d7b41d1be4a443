// Makes the mesh of each bundled entity type: <stem>.gltf and <stem>.bin beside each .entity file given, one mesh
// node for each RENDERABLE section, made of the parts that MeshTable lists for the type. The file is read as the game
// reads it, so the boxes are the ones the physics uses. A file and a table that disagree stop the build with a
// message naming the type.
//
//   MakeEntityMeshes <type.entity>...

#include "content/meshes/Gltf.h"
#include "content/meshes/MeshTable.h"
#include "game/entity/EntityConfig.h"

#include <glm/matrix.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <stdexcept>

namespace {

using game::entity::EntityConfig;
using namespace content::meshes;

/// The collider's frame in the renderable's. Both must hang below the same joint: a part whose collider moves
/// without its node would be left behind.
glm::mat4 ColliderInRenderable(EntityConfig const& config, Part const& part) {
    std::string renderableJoint, colliderJoint;
    glm::dmat4 const renderable = config.GetTransformRelativeToFirstParentJointOrRoot(part.renderable, renderableJoint);
    glm::dmat4 const collider = config.GetTransformRelativeToFirstParentJointOrRoot(part.collider, colliderJoint);
    auto joint = [](std::string const& name) { return name.empty() ? "no joint" : "the joint \"" + name + "\""; };
    if (renderableJoint != colliderJoint)
        throw std::runtime_error("the collider moves with " + joint(colliderJoint) + ", the node with " +
                                 joint(renderableJoint));
    return glm::mat4(glm::inverse(renderable) * collider);
}

void AddPart(EntityConfig const& config, Part const& part, MeshNode& node) {
    auto collider = config.colliders.find(part.collider);
    if (collider == config.colliders.end())
        throw std::runtime_error("the file has no COLLIDER section of that name");
    Material const& material = MaterialNamed(part.material);
    // One primitive per material and node: parts of one material are drawn together.
    auto primitive = std::find_if(node.primitives.begin(), node.primitives.end(),
                                  [&](Primitive const& each) { return each.material == &material; });
    if (primitive == node.primitives.end())
        primitive = node.primitives.insert(primitive, {&material, {}});
    glm::vec3 const min = collider->second.box_min;
    glm::vec3 const size = collider->second.box_max - min;
    AddShape(primitive->surface, part.shape, part.toward, min + size * part.region.from, min + size * part.region.to,
             ColliderInRenderable(config, part));
}

std::vector<MeshNode> Nodes(EntityConfig const& config, std::string const& type) {
    // By name, so that the files come out the same at every build.
    std::map<std::string, MeshNode> nodes;
    for (auto const& [name, renderable] : config.renderables) {
        if (config.nodes.at(name).type != "RENDERABLE")
            throw std::runtime_error("the RENDERABLE section \"" + name + "\" shares its name with another section");
        nodes[name] = {name, config.GetAbsoluteTransform(name), {}};
    }
    for (Part const& part : PartsOf(type)) {
        std::string const where = std::string("the part of \"") + part.renderable + "\" on \"" + part.collider + "\": ";
        auto node = nodes.find(part.renderable);
        if (node == nodes.end())
            throw std::runtime_error(where + "the file has no RENDERABLE section of that name");
        try {
            AddPart(config, part, node->second);
        } catch (std::exception const& error) {
            throw std::runtime_error(where + error.what());
        }
    }
    std::vector<MeshNode> list;
    for (auto& [name, node] : nodes) {
        if (node.primitives.empty())
            throw std::runtime_error("the RENDERABLE section \"" + name + "\" has no parts");
        list.push_back(std::move(node));
    }
    return list;
}

}

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: MakeEntityMeshes <type.entity>...\n";
        return 2;
    }
    for (int i = 1; i < argc; ++i) {
        std::filesystem::path path = argv[i];
        std::string const type = path.stem().string();
        try {
            EntityConfig config(path.string());
            config.ReadConfig();
            WriteGltf(path.replace_extension(".gltf"), Nodes(config, type));
        } catch (std::exception const& error) {
            std::cerr << "MakeEntityMeshes: entity type \"" << type << "\": " << error.what() << "\n";
            return 1;
        }
    }
    return 0;
}
