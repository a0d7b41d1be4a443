#include "game/entity/BaseEntity.h"
#include "game/entity/EntityConfig.h"

#include "tests/support/EntityTransformNear.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

using game::entity::BaseEntity;
using game::entity::EntityConfig;

/// An arm: a turned base on the root, a hinge on it, a leaf on the hinge, a wrist on the leaf and a tip on the wrist.
class JointSolverTest : public testing::Test {
protected:
    void SetUp() override {
        WriteFile(path, "[COLLIDER base]\nposition 0 0 1\nrotation 0 0 30\n"
                        "[JOINT hinge]\nparent base\nposition 1 0 0\nrotation 0 0 20\nangular_z -90 20 90\n"
                        "[COLLIDER leaf]\nparent hinge\nposition 0.5 0 0\n"
                        "[JOINT wrist]\nparent leaf\nposition 0.5 0 0.2\nrotation 10 0 0\nangular_x 10 0 -10\n"
                        "[TARGET tip]\nparent wrist\nposition 0 0 0.3\n");
        config->ReadConfig();
        entity.config = config;
        entity.joints["hinge"] = {{1, 0, 0}, {0, 0, 20}};
        entity.joints["wrist"] = {{0.5, 0, 0.2}, {10, 0, 0}};
    }

    glm::dmat4 Node(std::string const& name) const { return glm::dmat4(config->nodes.at(name).transform); }
    void Solve() { config->solver(&entity); }

    TempDirectory directory;
    std::string path = directory.File("arm.entity");
    std::shared_ptr<EntityConfig> config = std::make_shared<EntityConfig>(path);
    BaseEntity entity;
};

TEST_F(JointSolverTest, AtRestEveryNodeIsWhereTheConfigPutsIt) {
    Solve();
    EXPECT_EQ(entity.node_transforms.size(), 4u) << "root nodes are not the solver's";
    for (auto const* name : {"hinge", "leaf", "wrist", "tip"}) {
        ExpectNear(entity.node_transforms.at(name), config->GetAbsoluteTransform(name), name);
    }
}

TEST_F(JointSolverTest, MovedJointsCarryTheirSubtreeAndAreClampedInPlace) {
    entity.joints["hinge"] = {{5, 9, 9}, {0, 0, 120}};
    entity.joints["wrist"].angular = {-20, 0, 0};
    Solve();

    // Axes without a key are pinned to the rest pose; limits given high first still bound both ways.
    EXPECT_EQ(entity.joints["hinge"].linear, glm::vec3(1, 0, 0));
    EXPECT_EQ(entity.joints["hinge"].angular, glm::vec3(0, 0, 90));
    EXPECT_EQ(entity.joints["wrist"].angular, glm::vec3(-10, 0, 0));

    glm::dmat4 hinge = Node("base") * glm::dmat4(EntityConfig::TransformFromBlender({1, 0, 0}, {0, 0, 90}));
    glm::dmat4 wrist = hinge * Node("leaf") *
                       glm::dmat4(EntityConfig::TransformFromBlender({0.5, 0, 0.2}, {-10, 0, 0}));
    ExpectNear(entity.node_transforms.at("hinge"), hinge, "hinge");
    ExpectNear(entity.node_transforms.at("leaf"), hinge * Node("leaf"), "leaf");
    ExpectNear(entity.node_transforms.at("tip"), wrist * Node("tip"), "tip");

    entity.joints["wrist"].angular = {5, 0, 0};
    Solve();
    EXPECT_EQ(entity.joints["wrist"].angular, glm::vec3(5, 0, 0));
}

TEST_F(JointSolverTest, JointsTheEntityLacksLeaveTheirNodesAlone) {
    glm::dmat4 marker(2.0);
    entity.node_transforms = {{"leaf", marker}, {"tip", marker}};

    entity.joints.erase("hinge");
    Solve();
    EXPECT_EQ(entity.node_transforms.size(), 2u) << "the wrist hangs under the missing hinge";
    EXPECT_EQ(entity.node_transforms.at("tip"), marker);

    entity.joints.clear();
    Solve();
    EXPECT_EQ(entity.node_transforms.at("leaf"), marker);
}
