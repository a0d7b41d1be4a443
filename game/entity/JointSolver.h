#pragma once

#include "game/Export.h"

#include <glm/mat4x4.hpp>

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace game::entity {

class BaseEntity;
class EntityConfig;

/// Poses an entity's nodes from its joints, for one entity type: the node tree of the type's config is split once
/// into rigid groups, one per joint and one for the root, so that a pose only multiplies fixed transforms.
class MERIDON_EXPORT JointSolver {
public:
    /// Nodes with their fixed transform from the frame they move with.
    using NodeList = std::vector<std::pair<std::string, glm::dmat4>>;

    struct Joint {
        /// The first joint above this one; empty when it hangs on the root.
        std::string parent;
        /// Parent joint (or root) to this joint's frame, at rest.
        glm::dmat4 transform{1.0};
        /// Parent joint (or root) to the frame the joint's pose is given in, that of the joint node's parent.
        glm::dmat4 offset{1.0};
        /// The non-joint nodes that move with this joint.
        NodeList nodes;
    };

    /// `config` must outlive the solver; it owns it.
    explicit JointSolver(EntityConfig* config);

    /// Rebuilds the groups from the config's nodes; called after each read of the config.
    void Init();
    /// Clamps the entity's joint values to the config's limits (writing them back) and sets node_transforms of
    /// every joint and of the nodes on it. Root nodes are left as they are; a joint the entity lacks is skipped
    /// with everything under it.
    void operator()(BaseEntity* entity) const;

    std::unordered_map<std::string, Joint> joints;
    /// Nodes with no joint above them, with their transforms in entity space.
    NodeList root_nodes;

private:
    void Pose(BaseEntity& entity, std::string const& name, Joint const& joint, glm::dmat4 const& parentAbsolute) const;

    EntityConfig* _config;
};

}
