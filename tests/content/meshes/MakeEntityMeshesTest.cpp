// The meshes that the build made beside the bundled entity types in the game tree, as the game reads them: a mesh
// node for each RENDERABLE section and for nothing else, named materials, 16-bit indices, one buffer beside the file,
// and geometry that stays within the type's colliders.

#include "game/entity/EntityConfig.h"

#include <glm/geometric.hpp>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <limits>
#include <memory>
#include <set>
#include <string>

namespace {

using game::entity::EntityConfig;

class MakeEntityMeshesTest : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        std::string const stem = MERIDON_EXAMPLE_ENTITIES "/" + GetParam();
        config = std::make_unique<EntityConfig>(stem + ".entity");
        config->ReadConfig();
        std::ifstream file(stem + ".gltf");
        ASSERT_TRUE(file) << stem << ".gltf was not made";
        gltf = nlohmann::json::parse(file);
    }

    std::unique_ptr<EntityConfig> config;
    nlohmann::json gltf;
};

TEST_P(MakeEntityMeshesTest, MeshNodesAreTheRenderableSections) {
    std::set<std::string> renderables, meshNodes;
    for (auto const& [name, renderable] : config->renderables)
        renderables.insert(name);
    for (auto const& node : gltf.at("nodes")) {
        if (node.contains("mesh"))
            meshNodes.insert(node.at("name").get<std::string>());
    }
    EXPECT_FALSE(renderables.empty()) << "every bundled type is drawn";
    EXPECT_EQ(meshNodes, renderables);

    for (auto const& material : gltf.at("materials"))
        EXPECT_FALSE(material.value("name", "").empty()) << "the game finds geometry by its material's name";
    for (auto const& mesh : gltf.at("meshes")) {
        for (auto const& primitive : mesh.at("primitives")) {
            EXPECT_TRUE(primitive.contains("material"));
            EXPECT_EQ(gltf.at("accessors").at(primitive.at("indices").get<size_t>()).at("componentType"), 5123);
        }
    }
    ASSERT_EQ(gltf.at("buffers").size(), 1u);
    EXPECT_EQ(gltf.at("buffers")[0].at("uri"), GetParam() + ".bin");
}

TEST_P(MakeEntityMeshesTest, MeshesStayWithinTheColliders) {
    // Every node's geometry, placed where the game places the node, against the extent of all colliders at rest.
    auto corners = [](glm::dvec3 const& min, glm::dvec3 const& max, glm::dmat4 const& transform, auto&& each) {
        for (int corner = 0; corner < 8; ++corner) {
            glm::dvec3 const point(corner & 1 ? max.x : min.x, corner & 2 ? max.y : min.y, corner & 4 ? max.z : min.z);
            each(glm::dvec3(transform * glm::dvec4(point, 1.0)));
        }
    };
    glm::dvec3 low(std::numeric_limits<double>::max()), high(-std::numeric_limits<double>::max());
    for (auto const& [name, collider] : config->colliders) {
        corners(collider.box_min, collider.box_max, config->GetAbsoluteTransform(name), [&](glm::dvec3 const& point) {
            low = glm::min(low, point);
            high = glm::max(high, point);
        });
    }
    auto vector = [](nlohmann::json const& json) { return glm::dvec3(json[0], json[1], json[2]); };
    for (auto const& node : gltf.at("nodes")) {
        std::string const name = node.at("name");
        for (auto const& primitive : gltf.at("meshes").at(node.at("mesh").get<size_t>()).at("primitives")) {
            auto const& positions = gltf.at("accessors").at(primitive.at("attributes").at("POSITION").get<size_t>());
            corners(vector(positions.at("min")), vector(positions.at("max")), config->GetAbsoluteTransform(name),
                    [&](glm::dvec3 const& point) {
                        EXPECT_TRUE(glm::all(glm::greaterThanEqual(point, low - 1e-5)) &&
                                    glm::all(glm::lessThanEqual(point, high + 1e-5)))
                            << name << " reaches out to (" << point.x << ", " << point.y << ", " << point.z << ")";
                    });
        }
    }
}

INSTANTIATE_TEST_SUITE_P(BundledTypes, MakeEntityMeshesTest,
                         testing::Values("crate", "door", "light_box", "wheel_assembly", "rover_body", "wheel",
                                         "glider_wing", "glider", "buoy", "avatar"));

}
