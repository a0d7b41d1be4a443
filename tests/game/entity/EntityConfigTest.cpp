#include "game/entity/EntityConfig.h"

#include "tests/support/Capture.h"
#include "tests/support/EntityTransformNear.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <glm/gtc/constants.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <memory>

using game::entity::EntityConfig;
using testing::ElementsAre;
using testing::HasSubstr;

class EntityConfigTest : public testing::Test {
protected:
    EntityConfig& Load(std::string const& text) {
        WriteFile(path, text);
        config = std::make_unique<EntityConfig>(path);
        config->ReadConfig();
        return *config;
    }

    TempDirectory directory;
    std::string path = directory.File("type.entity");
    std::unique_ptr<EntityConfig> config;
};

TEST_F(EntityConfigTest, ColliderMeshesTurnFromZUpToYUpStopAtTheirArraysAndMayBeEmpty) {
    auto& config = Load("[COLLIDER c]\nbox_min 0 0 0\nbox_max 1 2 3\nvertices 1 2 3  4 5 6\n"
                        "faces_normal 0 0 2  0 1 0\ntriangles 0 1 2  3 4 65535\n"
                        "[COLLIDER full]\nvertices 0 0 0 1 0 0 2 0 0 3 0 0 4 0 0 5 0 0 6 0 0 7 0 0 8 0 0\n"
                        "[COLLIDER empty]\nvertices 1 2 3\nvertices\ntriangles =\n");
    auto const& collider = config.colliders.at("c");
    ExpectNear(collider.box_min, {0, 0, -2});
    ExpectNear(collider.box_max, {1, 3, 0});
    ASSERT_EQ(collider.vertices_count, 2);
    ExpectNear(collider.vertices[0], {1, 3, -2});
    ExpectNear(collider.vertices[1], {4, 6, -5});
    ASSERT_EQ(collider.normals_count, 2);
    ExpectNear(collider.faces_normal[0], {0, 1, 0});
    ExpectNear(collider.faces_normal[1], {0, 0, -1});
    ASSERT_EQ(collider.triangles_count, 2);
    EXPECT_EQ(collider.triangles[1], (std::array<uint16_t, 3>{3, 4, 65535}));

    // One reader fills the three lists, so one of them shows where it stops.
    EXPECT_EQ(config.colliders.at("full").vertices_count, 8) << "the ninth vertex is past the array";
    ExpectNear(config.colliders.at("full").vertices[7], {7, 0, 0});

    auto const& empty = config.colliders.at("empty");
    EXPECT_EQ(empty.vertices_count, 0);
    EXPECT_EQ(empty.triangles_count, 0);
}

TEST_F(EntityConfigTest, ValuesKeepTheirEarlierStateWhenALineDoesNotParse) {
    auto& config = Load("[ENTITY e]\nmass 3\nmass heavy\n"
                        "[CAMERA eye]\nznear 0.5\nznear near\nposition 1 2 3\nposition 4 x 6\nunknown 7\n"
                        "[COLLIDER yes]\nis_build_block YES\n[COLLIDER one]\nis_build_block 1\n"
                        "[COLLIDER on]\nis_build_block true\nis_build_block on\n[COLLIDER kept]\nis_build_block true\n"
                        "is_build_block\n");
    EXPECT_EQ(config.mass, 3.0);
    EXPECT_EQ(config.cameras.at("eye").znear, 0.5f);
    ExpectNear(config.cameras.at("eye").position, {1, 2, 3});
    EXPECT_TRUE(config.colliders.at("yes").is_build_block);
    EXPECT_TRUE(config.colliders.at("one").is_build_block);
    EXPECT_FALSE(config.colliders.at("on").is_build_block);
    EXPECT_TRUE(config.colliders.at("kept").is_build_block);
}

TEST_F(EntityConfigTest, SectionsWithoutNameAreSkippedWithTheirLinesAndBasePlanesDefaultWhenMissingOrEmpty) {
    auto& config = Load("[ENTITY]\nmass 9\n[JOINT]\nposition 1 1 1\n[TARGET t]\nposition 1 2 3\n"
                        "[MARKER m]\nparent t\n[ENTITY e]\nmass 2\n[ENTITY f]\nbase_planes +X -Z\n");
    EXPECT_EQ(config.mass, 2.0) << "a second ENTITY overwrites value by value";
    EXPECT_THAT(config.base_planes, ElementsAre("+X", "-Z"));
    EXPECT_TRUE(config.joints.empty());
    ASSERT_EQ(config.nodes.size(), 2u) << "unknown keywords still make nodes; ENTITY never does";
    EXPECT_EQ(config.nodes.at("m").type, "MARKER");
    EXPECT_EQ(config.nodes.at("m").parent, "t");
    ExpectNear(glm::dvec3(config.nodes.at("t").transform[3]), {1, 3, -2});

    auto const& defaults = Load("[TARGET t]\n");
    EXPECT_THAT(defaults.base_planes, ElementsAre("-Z", "-Y"));
    EXPECT_EQ(defaults.mass, 0.0);
    EXPECT_THAT(Load("[ENTITY e]\nbase_planes +X\nbase_planes\n").base_planes, ElementsAre("-Z", "-Y"));
}

TEST_F(EntityConfigTest, MissingJointAxesArePinnedToTheFinalRestPose) {
    auto const& joint = Load("[JOINT j]\nlinear_x -1 0 1\nposition 1 2 3\nangular_z 90 0 -90\nangular_y 1 2\n"
                             "rotation 10 20 30\nposition 4 5 6\n")
                            .joints.at("j");
    EXPECT_TRUE(joint.has_linear_x);
    EXPECT_FALSE(joint.has_linear_y);
    EXPECT_FALSE(joint.has_angular_y) << "an axis line that does not parse counts as missing";
    EXPECT_TRUE(joint.has_angular_z);
    ExpectNear(joint.linear_limit1, {-1, 5, 6});
    ExpectNear(joint.linear_start, {0, 5, 6});
    ExpectNear(joint.linear_limit2, {1, 5, 6});
    ExpectNear(joint.angular_limit1, {10, 20, 90});
    ExpectNear(joint.angular_start, {10, 20, 0});
    ExpectNear(joint.angular_limit2, {10, 20, -90});
}

TEST_F(EntityConfigTest, RereadReplacesJointsButKeepsVanishedColliders) {
    Load("[COLLIDER c]\nposition 1 0 0\n[JOINT j]\n[CAMERA eye]\n");
    WriteFile(path, "[TARGET t]\n");
    config->ReadConfig();
    EXPECT_TRUE(config->joints.empty());
    EXPECT_TRUE(config->cameras.empty());
    EXPECT_EQ(config->colliders.count("c"), 1u);
    EXPECT_EQ(config->nodes.size(), 4u);
}

TEST_F(EntityConfigTest, AnUnreadableFileIsReportedWithItsPath) {
    EntityConfig missing(directory.File("missing.entity"));
    std::string const output = StderrOf([&] { missing.ReadConfig(); });
    EXPECT_THAT(output, HasSubstr(directory.File("missing.entity")));
    EXPECT_THAT(output, HasSubstr("No such file or directory"));
    EXPECT_TRUE(missing.nodes.empty());
}

TEST_F(EntityConfigTest, TransformFromBlenderTurnsAxesAndAppliesXThenZThenY) {
    glm::vec3 degrees(30, -50, 70);
    // The same rotation built in file axes, then turned to game axes.
    glm::dmat4 zUpToYUp = glm::rotate(glm::dmat4(1.0), -glm::half_pi<double>(), glm::dvec3(1, 0, 0));
    glm::dvec3 radians = glm::radians(glm::dvec3(degrees));
    glm::dmat4 inFile = glm::translate(glm::dmat4(1.0), glm::dvec3(1, 2, 3)) *
                        glm::rotate(glm::dmat4(1.0), radians.y, glm::dvec3(0, 1, 0)) *
                        glm::rotate(glm::dmat4(1.0), radians.z, glm::dvec3(0, 0, 1)) *
                        glm::rotate(glm::dmat4(1.0), radians.x, glm::dvec3(1, 0, 0));
    ExpectNear(glm::dmat4(EntityConfig::TransformFromBlender({1, 2, 3}, degrees)),
               zUpToYUp * inFile * glm::inverse(zUpToYUp));
}

// That a parent cycle in a bad file ends both walks is the entity config fuzzer's, from its seeds.
TEST_F(EntityConfigTest, TransformWalksStopAtTheFirstJointAbove) {
    auto& config = Load("[COLLIDER base]\nposition 0 0 1\n"
                        "[JOINT hinge]\nparent base\nposition 1 0 0\nrotation 0 0 90\n"
                        "[COLLIDER leaf]\nparent hinge\nposition 2 0 0\n"
                        "[TARGET tip]\nparent leaf\nposition 0 0 3\n"
                        "[TARGET loose]\nparent nowhere\nposition 0 0 1\n");
    auto transform = [&config](char const* name) { return glm::dmat4(config.nodes.at(name).transform); };

    ExpectNear(glm::dvec3(config.GetAbsoluteTransform("tip")[3]), {1, 4, -2});
    ExpectNear(glm::dvec3(config.GetAbsoluteTransform("loose")[3]), {0, 1, 0});

    std::string joint = "stale";
    ExpectNear(config.GetTransformRelativeToFirstParentJointOrRoot("tip", joint), transform("leaf") * transform("tip"));
    EXPECT_EQ(joint, "hinge");
    ExpectNear(config.GetTransformRelativeToFirstParentJointOrRoot("hinge", joint), glm::dmat4(1.0));
    EXPECT_EQ(joint, "hinge");
    ExpectNear(config.GetTransformRelativeToFirstParentJointOrRoot("base", joint), transform("base"));
    EXPECT_EQ(joint, "");
    EXPECT_THROW(config.GetAbsoluteTransform("nothing"), std::out_of_range);
}

TEST_F(EntityConfigTest, ContentTypesLoadCleanly) {
    auto load = [](std::string const& type) {
        auto config = std::make_unique<EntityConfig>(MERIDON_CONTENT_DIR "/entities/" + type + ".entity");
        EXPECT_EQ(StderrOf([&] { config->ReadConfig(); }), "") << type;
        for (auto const& [node, _] : config->nodes) {
            EXPECT_NO_THROW(config->GetAbsoluteTransform(node)) << type << " " << node;
        }
        return config;
    };
    // The crate and the door are the test module's types too: their behaviour is tested through entities.
    for (char const* type : {"crate", "door", "rover_body", "wheel", "glider_wing", "buoy"})
        load(type);

    // Sections that only the bundled files have.
    EXPECT_EQ(load("wheel_assembly")->adapters.at("hub").type, "wheel_hub");
    auto lamp = load("light_box");
    EXPECT_EQ(lamp->light_boxes.at("glow").parent, "housing");
    ExpectNear(lamp->light_boxes.at("glow").box_min, {-2, -1.4, -2});
}
