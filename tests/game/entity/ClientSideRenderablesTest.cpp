// What draws a client entity, on a real device: the instances of the bundled types' generated meshes and light
// boxes, and the plasma trail of fast flight.

#include "game/entity/ClientSideEntity.h"

#include "game/entity/EntityConfig.h"
#include "game/graphics/Mesh.h"
#include "game/graphics/PlasmaTrail.h"
#include "tests/support/GameRendererFixture.h"

#include <cmath>

using game::entity::ClientSideEntity;
using game::entity::EntityConfig;
using game::graphics::RenderableInstance;

namespace {

quorl::modular::ModuleID const kModule("TEST_drawn");

class ClientSideRenderablesTest : public GameWithRendererTest {
protected:
    void TearDown() override {
        ClientSideEntity::ClearAll();
        Game::parentEnvironmentId = 0;
        Game::_environmentFunctions.clear();
        GameWithRendererTest::TearDown();
    }

    /// An entity of a type the example module ships, read from the game tree where its mesh was generated.
    static std::shared_ptr<ClientSideEntity> Bundled(std::string const& type) {
        auto config = std::make_shared<EntityConfig>(MERIDON_EXAMPLE_ENTITIES "/" + type + ".entity");
        ClientSideEntity::_registered_interfaces[kModule.String()][type] = ClientSideEntity::EntityTypeDef{
            kModule, type, config, [] { return std::make_shared<ClientSideEntity::Interface>(); }};
        return ClientSideEntity::Create(game::entity::Id::Generate("ENTT"), kModule, type);
    }
};

}

TEST_F(ClientSideRenderablesTest, EveryBundledTypeDrawsEachMeshNodeWithItsMaterialsAndEachLightBoxAsItsBox) {
    for (char const* type :
        {"crate", "door", "light_box", "wheel_assembly", "rover_body", "wheel", "glider_wing", "buoy"}) {
        SCOPED_TRACE(type);
        auto const entity = Bundled(type);
        auto const mesh = entity->config->GetMesh();
        ASSERT_TRUE(mesh);
        EXPECT_EQ(mesh, entity->config->GetMesh()) << "one mesh per type";
        EXPECT_EQ(entity->renderables.size(), mesh->nodes.size() + entity->config->light_boxes.size());
        for (auto const& [name, geometries] : mesh->nodes) {
            SCOPED_TRACE(name);
            ASSERT_TRUE(entity->renderables.contains(name));
            auto& instance = *entity->renderables.at(name);
            EXPECT_EQ(instance.customIndex, 1u);
            EXPECT_EQ(instance.flags.visible + instance.flags.active, 2);
            ASSERT_EQ(instance.geometries.size(), geometries.size());
            for (unsigned index = 0; index < geometries.size(); ++index) {
                EXPECT_EQ(instance.geometries[index], geometries[index]);
                EXPECT_TRUE(instance.materials.at(geometries[index]->material).size() > 0);
            }
            EXPECT_NE(instance.renderableDataAddress, 0u);
        }
        for (auto const& [name, lightBox] : entity->config->light_boxes) {
            auto const& instance = *entity->renderables.at(name);
            EXPECT_EQ(instance.customIndex, 9u);
            EXPECT_EQ(instance.flags.visible, 1);
            EXPECT_EQ(instance.flags.active, 0);
            ASSERT_EQ(instance.geometries.size(), 1u);
            auto const& box = (*std::static_pointer_cast<RenderableInstance::AabbGeometry>(instance.geometries[0])
                                     ->boxes)[0];
            EXPECT_EQ(box.min, lightBox.box_min);
            EXPECT_EQ(box.max, lightBox.box_max);
        }
    }
}

TEST_F(ClientSideRenderablesTest, RenderablesFollowTheirNodesAndHideWithTheEntity) {
    auto const door = Bundled("door");
    door->position = {10.0, 0.0, 0.0};
    ClientSideEntity::PhysicsUpdate(1.0 / 60.0);
    for (auto const& [name, renderable] : door->renderables) {
        EXPECT_EQ(renderable->transform, door->GetTransform() * door->node_transforms.at(name)) << name;
        EXPECT_EQ(renderable->flags.moved, 1) << name;
    }
    ClientSideEntity::PhysicsUpdate(1.0 / 60.0);
    EXPECT_EQ(door->renderables.begin()->second->flags.moved, 0) << "nothing moved since";
    door->SetVisibility(false);
    for (auto const& [name, renderable] : door->renderables)
        EXPECT_EQ(renderable->flags.visible, 0) << name;
}

TEST_F(ClientSideRenderablesTest, PlasmaTrailGlowsOnlyAboveAHundredFreeInAnAtmosphere) {
    Game::_environmentFunctions[7] = [](glm::dvec3 const& position, game::EnvironmentInfoFlags, double) {
        game::physics::EnvironmentInfo medium;
        medium.density = 1.2;
        medium.liquidDensity = position.y < 0.0 ? 1000.0 : 0.0;
        return medium;
    };
    Game::parentEnvironmentId = 7;
    auto const body = Bundled("crate");
    body->dynamic = true;
    auto trailVisible = [&] {
        ClientSideEntity::PhysicsUpdate(1.0 / 60.0);
        auto const found = body->renderables.find("_plasma_trail");
        return found != body->renderables.end() && found->second->flags.visible;
    };

    body->linear_velocity = {0.0, 100.0, 0.0};
    EXPECT_FALSE(trailVisible()) << "exactly 100 is not above 100";
    EXPECT_FALSE(body->renderables.contains("_plasma_trail"));

    body->linear_velocity = {0.0, 0.0, 2000.0};
    ASSERT_TRUE(trailVisible());
    auto const trail = std::dynamic_pointer_cast<game::graphics::PlasmaTrail>(body->renderables.at("_plasma_trail"));
    EXPECT_FLOAT_EQ(trail->record->emission, float(2.0 * std::pow(1.2, 0.15) * 500.0));
    EXPECT_FLOAT_EQ(trail->record->halfWidth, float(1.1 * body->bounds_radius));
    EXPECT_NEAR(glm::dot(glm::dvec3(trail->transform[1]), glm::dvec3(0.0, 0.0, -1.0)), 1.0, 1e-12)
        << "the trail lies behind the body";

    body->position.y = -5.0;
    EXPECT_FALSE(trailVisible()) << "no plasma under water";
    body->position.y = 0.0;
    body->parent = game::entity::Id::Generate("ENTT");
    EXPECT_FALSE(trailVisible()) << "riding on a parent";
    body->parent = {};
    Game::parentEnvironmentId = 0;
    EXPECT_FALSE(trailVisible()) << "outside any environment";
}
