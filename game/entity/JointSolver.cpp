#include "game/entity/JointSolver.h"

#include "game/entity/BaseEntity.h"
#include "game/entity/EntityConfig.h"

#include <glm/common.hpp>

namespace game::entity {

JointSolver::JointSolver(EntityConfig* config) : _config(config) {}

void JointSolver::Init() {
    joints.clear();
    root_nodes.clear();
    auto const& nodes = _config->nodes;
    // Joints first: every other node may land in one's list.
    for (auto const& [name, node] : nodes) {
        if (node.type != "JOINT") {
            continue;
        }
        Joint& joint = joints[name];
        if (nodes.contains(node.parent)) {
            joint.offset = _config->GetTransformRelativeToFirstParentJointOrRoot(node.parent, joint.parent);
        }
        joint.transform = joint.offset * glm::dmat4(node.transform);
    }
    for (auto const& [name, node] : nodes) {
        if (node.type == "JOINT") {
            continue;
        }
        std::string joint;
        glm::dmat4 fixed = _config->GetTransformRelativeToFirstParentJointOrRoot(name, joint);
        (joint.empty() ? root_nodes : joints[joint].nodes).emplace_back(name, fixed);
    }
}

void JointSolver::operator()(BaseEntity* entity) const {
    if (joints.empty() || entity->joints.empty()) {
        return;
    }
    for (auto const& [name, joint] : joints) {
        if (joint.parent.empty()) {
            Pose(*entity, name, joint, glm::dmat4(1.0));
        }
    }
}

void JointSolver::Pose(BaseEntity& entity, std::string const& name, Joint const& joint,
                       glm::dmat4 const& parentAbsolute) const {
    auto pose = entity.joints.find(name);
    // A joint node left over from an earlier read of the file has no limits any more.
    auto limits = _config->joints.find(name);
    if (pose == entity.joints.end() || limits == _config->joints.end()) {
        return;
    }
    auto const& config = limits->second;
    auto& value = pose->second;
    value.linear = glm::clamp(value.linear, glm::min(config.linear_limit1, config.linear_limit2),
                              glm::max(config.linear_limit1, config.linear_limit2));
    value.angular = glm::clamp(value.angular, glm::min(config.angular_limit1, config.angular_limit2),
                               glm::max(config.angular_limit1, config.angular_limit2));

    glm::dmat4 absolute =
        parentAbsolute * joint.offset * glm::dmat4(EntityConfig::TransformFromBlender(value.linear, value.angular));
    entity.node_transforms[name] = absolute;
    for (auto const& [node, fixed] : joint.nodes) {
        entity.node_transforms[node] = absolute * fixed;
    }
    // Joint trees are a handful of nodes deep, so a scan per joint beats keeping child lists.
    for (auto const& [childName, child] : joints) {
        if (child.parent == name) {
            Pose(entity, childName, child, absolute);
        }
    }
}

}
