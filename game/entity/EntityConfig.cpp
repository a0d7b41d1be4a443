// An entity type's config file, read into nodes, joints, colliders and light boxes (docs/entity-config-format.md).
//
// Index:
//   Reading values    axes from Z up to Y up, numbers, vectors and triples of a line
//   Sections          the placement every section has, joint axes and limits, colliders, light boxes
//   Loading           ReadConfig, ReadOnce, the mesh beside the file
//   The node tree     absolute transforms, the transform to the first joint, the Blender rotation
//   Parsing           sections placed by name, the ENTITY section

#include "game/entity/EntityConfig.h"

#include "engine/String.h"
#include "game/Game.h"
#include "game/graphics/Mesh.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace game::entity {

namespace {

using Lines = std::vector<quorl::filesystem::ConfigFile::ConfLineStream>;
using Joint = EntityConfig::Joint;

// ---- Reading values ------------------------------------------------------------------------------------------------

/// File axes (Z up) to game axes (Y up).
glm::vec3 FromZUp(glm::vec3 const& v) {
    return {v.x, v.z, -v.y};
}

glm::vec3 NormalFromZUp(float x, float y, float z) {
    static glm::quat const turn(glm::vec3(-1.5707964f, 0.0f, 0.0f));
    glm::vec3 normal = turn * glm::vec3(x, y, z);
    // An empty entry stays zero instead of turning into NaN.
    return normal == glm::vec3(0.0f) ? normal : glm::normalize(normal);
}

/// Both corners to game axes, then ordered again: the turn swaps which of them is smaller along Z.
void BoxFromZUp(glm::vec3& min, glm::vec3& max) {
    glm::vec3 a = FromZUp(min);
    glm::vec3 b = FromZUp(max);
    min = glm::min(a, b);
    max = glm::max(a, b);
}

/// Sets `target` only when the whole value parses; otherwise the stream is left failed.
template <typename T>
void Read(std::istream& in, T& target) {
    T value{};
    if (in >> value) {
        target = value;
    }
}

void Read(std::istream& in, glm::vec3& target) {
    glm::vec3 value;
    if (in >> value.x >> value.y >> value.z) {
        target = value;
    }
}

/// Reads triples up to the end of the line, never past the end of `items`, and returns how many. The end test
/// follows each triple, so trailing blanks give one more, zero entry, as exported files have always been read.
template <typename Item, size_t N, typename Convert>
uint16_t ReadTriples(std::istream& in, std::array<Item, N>& items, Convert convert) {
    if (in.peek() == std::char_traits<char>::eof()) {
        return 0;
    }
    uint16_t count = 0;
    do {
        typename Item::value_type a{}, b{}, c{};
        in >> a >> b >> c;
        items[count++] = convert(a, b, c);
    } while (count < N && in && !in.eof());
    return count;
}

// ---- Sections ------------------------------------------------------------------------------------------------------

/// Reads the placement keys every section has and hands the others to `readKey`.
template <typename Section, typename ReadKey>
Section ReadPlaced(Lines& lines, ReadKey readKey) {
    Section section;
    for (auto& line : lines) {
        std::string key;
        line.key >> key;
        if (key == "parent") {
            Read(line.rest, section.parent);
        } else if (key == "position") {
            Read(line.rest, section.position);
        } else if (key == "rotation") {
            Read(line.rest, section.rotation);
        } else {
            readKey(key, line.rest, section);
        }
    }
    section.transform = EntityConfig::TransformFromBlender(section.position, section.rotation);
    return section;
}

constexpr auto kNoOtherKeys = [](std::string const&, std::istream&, auto&) {};

struct JointAxis {
    char const* key;
    int axis;
    bool Joint::*has;
    /// Where a missing axis takes its pinned value from.
    glm::vec3 Joint::*rest;
    glm::vec3 Joint::*limit1;
    glm::vec3 Joint::*start;
    glm::vec3 Joint::*limit2;
};

constexpr JointAxis kJointAxes[] = {
    {"linear_x", 0, &Joint::has_linear_x, &Joint::position, &Joint::linear_limit1, &Joint::linear_start,
     &Joint::linear_limit2},
    {"linear_y", 1, &Joint::has_linear_y, &Joint::position, &Joint::linear_limit1, &Joint::linear_start,
     &Joint::linear_limit2},
    {"linear_z", 2, &Joint::has_linear_z, &Joint::position, &Joint::linear_limit1, &Joint::linear_start,
     &Joint::linear_limit2},
    {"angular_x", 0, &Joint::has_angular_x, &Joint::rotation, &Joint::angular_limit1, &Joint::angular_start,
     &Joint::angular_limit2},
    {"angular_y", 1, &Joint::has_angular_y, &Joint::rotation, &Joint::angular_limit1, &Joint::angular_start,
     &Joint::angular_limit2},
    {"angular_z", 2, &Joint::has_angular_z, &Joint::rotation, &Joint::angular_limit1, &Joint::angular_start,
     &Joint::angular_limit2},
};

void SetAxis(Joint& joint, JointAxis const& axis, float limit1, float start, float limit2) {
    (joint.*axis.limit1)[axis.axis] = limit1;
    (joint.*axis.start)[axis.axis] = start;
    (joint.*axis.limit2)[axis.axis] = limit2;
}

Joint ReadJoint(Lines& lines) {
    auto joint = ReadPlaced<Joint>(lines, [](std::string const& key, std::istream& in, Joint& joint) {
        for (auto const& axis : kJointAxes) {
            glm::vec3 values;
            if (key == axis.key && in >> values.x >> values.y >> values.z) {
                SetAxis(joint, axis, values.x, values.y, values.z);
                joint.*axis.has = true;
            }
        }
    });
    // After all lines, so that a pinned axis sees the final rest pose.
    for (auto const& axis : kJointAxes) {
        if (!(joint.*axis.has)) {
            float rest = (joint.*axis.rest)[axis.axis];
            SetAxis(joint, axis, rest, rest, rest);
        }
    }
    return joint;
}

EntityConfig::Collider ReadCollider(Lines& lines) {
    using Collider = EntityConfig::Collider;
    auto collider = ReadPlaced<Collider>(lines, [](std::string const& key, std::istream& in, Collider& collider) {
        if (key == "is_build_block") {
            std::string word;
            if (in >> word) {
                for (auto& c : word) {
                    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                }
                collider.is_build_block = word == "true" || word == "yes" || word == "1";
            }
        } else if (key == "box_min") {
            Read(in, collider.box_min);
        } else if (key == "box_max") {
            Read(in, collider.box_max);
        } else if (key == "vertices") {
            collider.vertices_count = ReadTriples(in, collider.vertices, [](float x, float y, float z) {
                return FromZUp({x, y, z});
            });
        } else if (key == "faces_normal") {
            collider.normals_count = ReadTriples(in, collider.faces_normal, NormalFromZUp);
        } else if (key == "triangles") {
            collider.triangles_count = ReadTriples(in, collider.triangles, [](uint16_t a, uint16_t b, uint16_t c) {
                return std::array<uint16_t, 3>{a, b, c};
            });
        }
    });
    BoxFromZUp(collider.box_min, collider.box_max);
    return collider;
}

EntityConfig::LightBox ReadLightBox(Lines& lines) {
    using LightBox = EntityConfig::LightBox;
    auto box = ReadPlaced<LightBox>(lines, [](std::string const& key, std::istream& in, LightBox& box) {
        if (key == "box_min") {
            Read(in, box.box_min);
        } else if (key == "box_max") {
            Read(in, box.box_max);
        }
    });
    BoxFromZUp(box.box_min, box.box_max);
    return box;
}

}

// ---- Loading -------------------------------------------------------------------------------------------------------

EntityConfig::EntityConfig(std::string const& path) : ConfigFile(path) {}

void EntityConfig::ReadConfig() {
    cameras.clear();
    joints.clear();
    targets.clear();
    renderables.clear();
    // The INI reader takes a missing file for an empty one, but a type without its file is a broken module.
    if (std::ifstream probe(Path()); !probe) {
        std::cerr << "Entity config \"" << Path() << "\" cannot be read: " << std::strerror(errno) << std::endl;
    } else {
        ReadFromINI([this](std::stringstream& header, Lines& lines) { ReadSection(header, lines); });
    }
    if (base_planes.empty()) {
        base_planes = {"-Z", "-Y"};
    }
    solver.Init();
}

void EntityConfig::ReadOnce() {
    std::lock_guard lock(mutex);
    if (loaded)
        return;
    ReadConfig();
    loaded = true;
}

std::shared_ptr<game::graphics::Mesh> EntityConfig::GetMesh() const {
    std::lock_guard lock(meshMutex);
    if (mesh || meshFailed || !Game::renderer)
        return mesh;
    std::filesystem::path path(static_cast<std::string const&>(*this));
    path.replace_extension(".gltf");
    if (!std::filesystem::exists(path))
        return nullptr;
    try {
        mesh = std::make_shared<game::graphics::Mesh>(path.string());
    } catch (std::exception const& error) {
        // Entities of the type still work; they are only not drawn.
        std::cerr << path.string() << ": " << error.what() << std::endl;
        meshFailed = true;
    }
    return mesh;
}

// ---- The node tree -------------------------------------------------------------------------------------------------

glm::dmat4 EntityConfig::GetAbsoluteTransform(std::string const& node) const {
    Node const* current = &nodes.at(node);
    glm::dmat4 transform(current->transform);
    // A parent cycle in a bad file would otherwise never reach the root.
    for (size_t step = 1; step < nodes.size(); ++step) {
        auto parent = nodes.find(current->parent);
        if (parent == nodes.end()) {
            break;
        }
        current = &parent->second;
        transform = glm::dmat4(current->transform) * transform;
    }
    return transform;
}

glm::dmat4 EntityConfig::GetTransformRelativeToFirstParentJointOrRoot(std::string const& node,
                                                                        std::string& joint) const {
    joint.clear();
    std::string const* name = &node;
    Node const* current = &nodes.at(node);
    glm::dmat4 transform(1.0);
    for (size_t step = 1;; ++step) {
        if (current->type == "JOINT") {
            joint = *name;
            break;
        }
        transform = glm::dmat4(current->transform) * transform;
        auto parent = nodes.find(current->parent);
        if (parent == nodes.end() || step >= nodes.size()) {
            break;
        }
        name = &parent->first;
        current = &parent->second;
    }
    return transform;
}

glm::mat4 EntityConfig::TransformFromBlender(glm::vec3 const& position, glm::vec3 const& rotation) {
    // A quarter turn about X: (x, y, z) to (x, z, -y).
    glm::quat const zUpToYUp(0.70710677f, -0.70710677f, 0.0f, 0.0f);
    glm::vec3 angles = zUpToYUp * (rotation * 0.017453292f);
    // glm's Euler constructor: Z times Y times X, so X turns first.
    return glm::translate(glm::mat4(1.0f), zUpToYUp * position) * glm::mat4_cast(glm::quat(angles));
}

// ---- Parsing -------------------------------------------------------------------------------------------------------

template <typename Section>
void EntityConfig::Place(std::unordered_map<std::string, Section>& sections, std::string const& name,
                         std::string const& keyword, Section const& section) {
    sections[name] = section;
    nodes[name] = Node{section.transform, section.parent, keyword};
}

void EntityConfig::ReadSection(std::stringstream& header, Lines& lines) {
    std::string keyword;
    header >> keyword;
    if (header.eof()) {
        return;
    }
    std::string name;
    std::getline(header, name);
    quorl::String::Trim(name, " \f\n\r\t\v");
    if (name.empty()) {
        return;
    }

    if (keyword == "ENTITY") {
        ReadEntity(lines);
    } else if (keyword == "JOINT") {
        Place(joints, name, keyword, ReadJoint(lines));
    } else if (keyword == "COLLIDER") {
        Place(colliders, name, keyword, ReadCollider(lines));
    } else if (keyword == "LIGHT_BOX") {
        Place(light_boxes, name, keyword, ReadLightBox(lines));
    } else if (keyword == "CAMERA") {
        Place(cameras, name, keyword, ReadPlaced<Camera>(lines, [](auto const& key, auto& in, Camera& camera) {
            if (key == "znear") {
                Read(in, camera.znear);
            }
        }));
    } else if (keyword == "ADAPTER") {
        Place(adapters, name, keyword, ReadPlaced<Adapter>(lines, [](auto const& key, auto& in, Adapter& adapter) {
            if (key == "type") {
                Read(in, adapter.type);
            }
        }));
    } else if (keyword == "TARGET") {
        Place(targets, name, keyword, ReadPlaced<Target>(lines, kNoOtherKeys));
    } else if (keyword == "RENDERABLE") {
        Place(renderables, name, keyword, ReadPlaced<Renderable>(lines, kNoOtherKeys));
    } else {
        // Keywords this version does not know still give the tree their nodes.
        auto node = ReadPlaced<Target>(lines, kNoOtherKeys);
        nodes[name] = Node{node.transform, node.parent, keyword};
    }
}

void EntityConfig::ReadEntity(Lines& lines) {
    for (auto& line : lines) {
        std::string key;
        line.key >> key;
        if (key == "mass") {
            Read(line.rest, mass);
        } else if (key == "base_planes") {
            base_planes.clear();
            for (std::string plane; line.rest >> plane;) {
                base_planes.push_back(plane);
            }
        }
    }
}

}
