#pragma once

#include "engine/filesystem/ConfigFile.h"
#include "game/Export.h"
#include "game/entity/JointSolver.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace game::graphics { class Mesh; }

namespace game::entity {

/// One entity type as its file describes it (docs/entity-config-format.md), shared by all entities of the type.
/// The file is Z-up; everything here is already turned to the game's Y-up axes.
class MERIDON_EXPORT EntityConfig : private quorl::filesystem::ConfigFile {
public:
    /// A named section of the file, as a node of the type's tree.
    struct Node {
        /// Node to parent node (or entity space).
        glm::mat4 transform{1.0f};
        std::string parent;
        /// The section keyword as written: "JOINT", "COLLIDER", ...
        std::string type;
    };
    struct Camera {
        std::string parent;
        glm::vec3 position{0.0f};
        /// Degrees.
        glm::vec3 rotation{0.0f};
        float znear = 0.001f;
        glm::mat4 transform{1.0f};
    };
    struct Target {
        std::string parent;
        glm::vec3 position{0.0f};
        glm::vec3 rotation{0.0f};
        glm::mat4 transform{1.0f};
    };
    struct Renderable {
        std::string parent;
        glm::vec3 position{0.0f};
        glm::vec3 rotation{0.0f};
        glm::mat4 transform{1.0f};
    };
    /// Position and rotation are the rest pose. Each axis has two limits (either order) and a start value; an axis
    /// the file leaves out is pinned to the rest pose.
    struct Joint {
        std::string parent;
        glm::vec3 position{0.0f};
        glm::vec3 rotation{0.0f};
        glm::mat4 transform{1.0f};
        glm::vec3 linear_limit1{0.0f};
        glm::vec3 linear_start{0.0f};
        glm::vec3 linear_limit2{0.0f};
        /// Degrees, as the two below.
        glm::vec3 angular_limit1{0.0f};
        glm::vec3 angular_start{0.0f};
        glm::vec3 angular_limit2{0.0f};
        bool has_linear_x = false;
        bool has_linear_y = false;
        bool has_linear_z = false;
        bool has_angular_x = false;
        bool has_angular_y = false;
        bool has_angular_z = false;
    };
    struct Adapter {
        std::string type;
        std::string parent;
        glm::vec3 position{0.0f};
        glm::vec3 rotation{0.0f};
        glm::mat4 transform{1.0f};
    };
    struct LightBox {
        std::string parent;
        glm::vec3 position{0.0f};
        glm::vec3 rotation{0.0f};
        glm::vec3 box_min{0.0f};
        glm::vec3 box_max{0.0f};
        glm::mat4 transform{1.0f};
    };
    /// Box and mesh are in the collider's own frame.
    struct Collider {
        std::string parent;
        glm::vec3 position{0.0f};
        glm::vec3 rotation{0.0f};
        bool is_build_block = false;
        glm::vec3 box_min{0.0f};
        glm::vec3 box_max{0.0f};
        uint16_t vertices_count = 0;
        uint16_t normals_count = 0;
        uint16_t triangles_count = 0;
        std::array<glm::vec3, 8> vertices{};
        std::array<glm::vec3, 12> faces_normal{};
        std::array<std::array<uint16_t, 3>, 12> triangles{};
        glm::mat4 transform{1.0f};
    };

    /// Reads nothing yet: the first entity of the type calls ReadOnce.
    explicit EntityConfig(std::string const& path);

    /// Reads the file the first time any entity of the type asks, on whichever side, under `mutex`.
    void ReadOnce();

    /// Reads the file. Cameras, joints, targets and renderables are replaced; colliders, adapters, light boxes and
    /// nodes are only added to or overwritten, so those gone from the file stay. A file that cannot be opened is
    /// reported on stderr with its path and read as an empty one. Takes no lock.
    void ReadConfig() override;

    /// The type's mesh, the ".gltf" of the config's stem beside it, loaded by the first caller and shared by every
    /// entity of the type. Null without such a file (asked again next time), without a renderer, or when the file
    /// is malformed (reported once on stderr with its path; not asked again).
    std::shared_ptr<game::graphics::Mesh> GetMesh() const;

    /// The node in entity space. Throws std::out_of_range for an unknown node; a parent that names no node counts
    /// as the root.
    glm::dmat4 GetAbsoluteTransform(std::string const& node) const;
    /// The node in the frame of the first joint above it, whose name goes to `joint`; a joint node gives identity
    /// and its own name, a node without a joint above it its entity-space transform and an empty `joint`.
    glm::dmat4 GetTransformRelativeToFirstParentJointOrRoot(std::string const& node, std::string& joint) const;

    /// Node to parent transform from a Z-up position and Euler angles in degrees.
    static glm::mat4 TransformFromBlender(glm::vec3 const& position, glm::vec3 const& rotation);

    double mass = 0.0;
    /// The faces the entity may be set down on, as signed file axes ("-Z"); "-Z" and "-Y" when the file names none.
    std::vector<std::string> base_planes;
    std::unordered_map<std::string, Camera> cameras;
    std::unordered_map<std::string, Joint> joints;
    std::unordered_map<std::string, Target> targets;
    std::unordered_map<std::string, Renderable> renderables;
    std::unordered_map<std::string, Collider> colliders;
    std::unordered_map<std::string, Adapter> adapters;
    std::unordered_map<std::string, LightBox> light_boxes;
    std::unordered_map<std::string, Node> nodes;
    mutable std::shared_ptr<game::graphics::Mesh> mesh;

    /// Guards the one lazy ReadConfig of ReadOnce; `loaded` tells whether it happened.
    std::mutex mutex;
    bool loaded = false;
    /// Guards GetMesh's load; the mesh failed to load and is not asked for again.
    mutable std::mutex meshMutex;
    mutable bool meshFailed = false;

    JointSolver solver{this};

private:
    void ReadSection(std::stringstream& header, std::vector<ConfLineStream>& lines);
    void ReadEntity(std::vector<ConfLineStream>& lines);
    /// Stores the section in `sections` and as a node.
    template <typename Section>
    void Place(std::unordered_map<std::string, Section>& sections, std::string const& name,
               std::string const& keyword, Section const& section);
};

}
