// The planet's ground as MERIDON_planet's client library makes it on a headless renderer, read back from the GPU
// buffers a rendering module draws, and checked against the planet's own environment function.

#include "content/planet/GroundPatch.h"
#include "content/planet/Planet.h"
#include "game/graphics/RenderableInstance.h"
#include "tests/support/GameRendererFixture.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <chrono>
#include <shared_mutex>
#include <thread>

using game::graphics::RenderableInstance;

namespace {

/// Bisection leaves a vertex within 1 mm of where the environment's answer flips, and single-precision positions
/// within 3 km of the patch's centre are off by at most 0.2 mm: a centimetre leaves room for both.
constexpr double kTolerance = 0.01;

/// One surface of a patch in the environment's world.
struct Surface {
    std::vector<glm::dvec3> positions;
    std::vector<glm::dvec3> normals;
    std::vector<uint32_t> indices;
};

Surface Read(RenderableInstance const& patch, std::string const& material) {
    auto const geometry = std::dynamic_pointer_cast<RenderableInstance::TriangleGeometry>(
        patch.geometries.at(patch.materials.at(material).at(0)));
    if (!geometry || !geometry->indices16 || !geometry->vertexNormals) {
        ADD_FAILURE() << material << ": no 16-bit indexed triangles with normals";
        return {};
    }
    EXPECT_EQ(geometry->normals, geometry->vertexNormals->address) << material << ": a normal per vertex";
    glm::dvec3 const centre(patch.transform[3]);
    Surface surface;
    for (unsigned long i = 0; i < geometry->vertices->count; ++i) {
        surface.positions.push_back(centre + glm::dvec3(geometry->vertices->data[i]));
        surface.normals.emplace_back(geometry->vertexNormals->data[i]);
    }
    surface.indices.assign(geometry->indices16->begin(), geometry->indices16->end());
    return surface;
}

/// Whether (x, z) lies in a triangle of `surface` seen from above: near the top of the planet up is y.
bool Covers(Surface const& surface, double x, double z) {
    auto const side = [&](glm::dvec3 const& a, glm::dvec3 const& b) {
        return (b.x - a.x) * (z - a.z) - (b.z - a.z) * (x - a.x);
    };
    for (size_t t = 0; t < surface.indices.size(); t += 3) {
        glm::dvec3 const& a = surface.positions[surface.indices[t]];
        glm::dvec3 const& b = surface.positions[surface.indices[t + 1]];
        glm::dvec3 const& c = surface.positions[surface.indices[t + 2]];
        double const ab = side(a, b), bc = side(b, c), ca = side(c, a);
        if ((ab >= 0 && bc >= 0 && ca >= 0) || (ab <= 0 && bc <= 0 && ca <= 0))
            return true;
    }
    return false;
}

class PlanetGroundTest : public GameWithRendererTest {
protected:
    void SetUp() override {
        GameWithRendererTest::SetUp();
        content = MERIDON_Mod::LoadModule("MERIDON_planet", true);
        ASSERT_TRUE(content && content->Load && content->Unload);
        content->Load();
        environment = Game::_environmentFunctions.at(planet::kEnvironmentId);
        client = GAME_Mod::LoadModule("MERIDON_planet", true);
        ASSERT_TRUE(client && client->Renderer_FrameBeforeUpdate && client->Renderer_StopRendering);
        SortAllLists();
    }

    void TearDown() override {
        // As Game::Stop does it: the patch and the worker go before the environment function, and what the module
        // trashed goes before the module.
        if (client)
            client->Renderer_StopRendering();
        renderer->CollectAllTrash();
        if (content)
            content->Unload();
        environment = nullptr;
        GameWithRendererTest::TearDown();
    }

    /// The patch on show: the visible instance with a "ground" material.
    static std::shared_ptr<RenderableInstance> Shown() {
        std::shared_lock lock(RenderableInstance::_sharedObjectsMutex);
        for (auto const& slot : RenderableInstance::_sharedObjects)
            if (auto instance = slot.lock(); instance && instance->flags.visible && instance->materials.count("ground"))
                return instance;
        return nullptr;
    }

    /// Runs frames with the camera at `camera` until a patch other than `before` is on show.
    std::shared_ptr<RenderableInstance> NextPatch(glm::dvec3 const& camera,
        std::shared_ptr<RenderableInstance> const& before = nullptr) {
        renderer->frame.cameraPosition = camera;
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (std::chrono::steady_clock::now() < deadline) {
            renderer->FrameBeforeUpdate();
            if (auto shown = Shown(); shown && shown != before)
                return shown;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ADD_FAILURE() << "no new patch within a minute";
        return nullptr;
    }

    double Depth(glm::dvec3 const& point) const {
        return environment(point, game::ENVIRONMENT_CONTACT_DRY, 0.0).surface.depth;
    }

    MERIDON_Mod::Ptr content;
    GAME_Mod::Ptr client;
    game::physics::EnvironmentFunction environment;
};

/// The land under `camera`, straight towards the planet's centre.
glm::dvec3 GroundUnder(glm::dvec3 const& camera) {
    return glm::normalize(camera) * planet::kRadius;
}

/// 20 m inland of the shore, eye height: land, the shore's 20 m step and the ocean all in one patch.
glm::dvec3 const kOnTheShore = planet::AtAltitude(planet::kOceanStartX - 20.0, 0.0, 1.7);

}

TEST_F(PlanetGroundTest, EveryGroundVertexLiesOnTheGroundThePhysicsTouchesAndEveryTriangleFacesUp) {
    auto const patch = NextPatch(kOnTheShore);
    ASSERT_TRUE(patch);
    Surface const ground = Read(*patch, "ground");
    glm::dvec3 const centre(patch->transform[3]);
    EXPECT_LT(glm::distance(centre, GroundUnder(kOnTheShore)), kTolerance);

    double nearest = 1e9, farthest = 0.0;
    for (size_t i = 0; i < ground.positions.size(); ++i) {
        glm::dvec3 const& vertex = ground.positions[i];
        // The ground passes within the tolerance of the vertex, on flat ground and on the step's face alike: of the
        // points that far from it along the axes, some are in the ground and some are not.
        int inside = 0;
        for (int axis = 0; axis < 3; ++axis)
            for (double sign : {-1.0, 1.0}) {
                glm::dvec3 probe = vertex;
                probe[axis] += sign * kTolerance;
                inside += Depth(probe) > 0.0;
            }
        ASSERT_TRUE(inside > 0 && inside < 6) << "vertex " << i << " at " << vertex.x << ", " << vertex.y << ", "
                                              << vertex.z << " is off the ground";
        ASSERT_GT(glm::dot(ground.normals[i], glm::normalize(vertex)), 0.0) << "vertex " << i << "'s normal";
        double const distance = glm::distance(vertex, centre);
        if (distance > 0.0)
            nearest = std::min(nearest, distance);
        farthest = std::max(farthest, distance);
    }
    EXPECT_LT(nearest, 1.0) << "fine under the camera";
    EXPECT_GT(farthest, 1500.0) << "kilometres to the horizon";
    bool sawTheStep = false;
    for (size_t t = 0; t < ground.indices.size(); t += 3) {
        glm::dvec3 const& a = ground.positions[ground.indices[t]];
        glm::dvec3 const& b = ground.positions[ground.indices[t + 1]];
        glm::dvec3 const& c = ground.positions[ground.indices[t + 2]];
        ASSERT_GT(glm::dot(glm::cross(b - a, c - a), glm::normalize(a)), 0.0) << "triangle " << t / 3;
        sawTheStep = sawTheStep || std::abs(glm::length(a) - glm::length(c)) > 10.0;
    }
    EXPECT_TRUE(sawTheStep) << "the shore's step is in the ground";
}

TEST_F(PlanetGroundTest, WaterLiesAtSeaLevelOverTheWholeOceanAndNowhereElse) {
    auto const patch = NextPatch(kOnTheShore);
    ASSERT_TRUE(patch);
    Surface const water = Read(*patch, "water");
    ASSERT_FALSE(water.indices.empty());
    for (size_t i = 0; i < water.positions.size(); ++i) {
        glm::dvec3 const& vertex = water.positions[i];
        ASSERT_NEAR(glm::length(vertex), planet::kRadius, kTolerance);
        ASSERT_GT(vertex.x, planet::kOceanStartX - kTolerance) << "water over land";
        ASSERT_GT(glm::dot(water.normals[i], glm::normalize(vertex)), 0.9999) << "level water faces straight up";
    }
    // Every 25 m over a square kilometre around the camera, 5 m and more from the shore.
    for (double x = kOnTheShore.x - 500.0; x <= kOnTheShore.x + 500.0; x += 25.0)
        for (double z = -500.0; z <= 500.0; z += 25.0)
            ASSERT_EQ(Covers(water, x, z), x > planet::kOceanStartX) << "at x " << x << ", z " << z;

    // The materials a renderer shades them with: grass and smooth water.
    auto const& records = patch->records;
    auto const& ground = records[patch->materials.at("ground").at(0)];
    auto const& sea = records[patch->materials.at("water").at(0)];
    EXPECT_EQ(ground.colorMix, 1.0f);
    EXPECT_GT(ground.color.g, std::max(ground.color.r, ground.color.b));
    EXPECT_EQ(sea.colorMix, 1.0f);
    EXPECT_GT(sea.color.b, std::max(sea.color.r, sea.color.g));
    EXPECT_EQ(sea.pbrMix, 1.0f);
    EXPECT_LT(sea.roughness, ground.roughness);

    // Far inland the ocean is out of sight: no water at all.
    auto const inland = NextPatch(planet::AtAltitude(-3000.0, 0.0, 1.7), patch);
    ASSERT_TRUE(inland);
    EXPECT_EQ(inland->materials.count("water"), 0u);
    EXPECT_EQ(inland->geometries.size(), 1u);
}

TEST_F(PlanetGroundTest, ThePatchFollowsTheCameraOncePastTheRebuildDistanceAndTheOldOneLeavesThroughTheTrash) {
    constexpr double x = -500.0;
    auto first = NextPatch(planet::AtAltitude(x, 0.0, 1.7));
    ASSERT_TRUE(first);
    EXPECT_LT(glm::distance(glm::dvec3(first->transform[3]), GroundUnder(planet::AtAltitude(x, 0.0, 1.7))),
        kTolerance);

    // Short of the distance: nothing is made. Had a patch been started here, it would be the next one shown.
    double const shortOf = x + planet::ground::kRebuildDistance - 2.0;
    renderer->frame.cameraPosition = planet::AtAltitude(shortOf, 0.0, 1.7);
    for (int frame = 0; frame < 10; ++frame)
        renderer->FrameBeforeUpdate();
    EXPECT_EQ(Shown(), first);

    double const past = x + planet::ground::kRebuildDistance + 2.0;
    auto const second = NextPatch(planet::AtAltitude(past, 0.0, 1.7), first);
    ASSERT_TRUE(second);
    EXPECT_LT(glm::distance(glm::dvec3(second->transform[3]), GroundUnder(planet::AtAltitude(past, 0.0, 1.7))),
        kTolerance);

    std::weak_ptr<RenderableInstance> const old = first;
    first.reset();
    EXPECT_FALSE(old.expired()) << "the GPU may still read the old patch";
    EXPECT_EQ(old.lock()->flags.visible, 0);
    renderer->CollectTrash();
    renderer->CollectTrash();
    EXPECT_TRUE(old.expired()) << "gone after the trash's two collections";
}
