// MERIDON_render on a headless renderer with validation on: small scenes drawn as the game draws them, and pixels
// checked against what the module's lighting model predicts for them.

#include "content/render/Camera.h"
#include "content/render/Shading.h"

#include "game/graphics/LightSourceInstance.h"
#include "game/graphics/Mesh.h"
#include "game/graphics/PlasmaTrail.h"
#include "game/graphics/RenderableInstance.h"
#include "tests/support/FramePicture.h"
#include "tests/support/GameRendererFixture.h"

#include <glm/ext/matrix_transform.hpp>
#include <glm/matrix.hpp>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <vector>

using game::graphics::LightSourceInstance;
using game::graphics::Mesh;
using game::graphics::PlasmaTrail;
using game::graphics::RenderableInstance;

namespace {

constexpr game::entity::EnvironmentId kAir = 42;

class RenderModuleTest : public GameWithRendererTest {
protected:
    void SetUp() override {
        GameWithRendererTest::SetUp();
        // Sea-level air with the world's y up: a blue sky, and the sun where the module puts it in a local frame.
        Game::_environmentFunctions[kAir] = [](glm::dvec3 const&, game::EnvironmentInfoFlags, double) {
            game::physics::EnvironmentInfo info;
            info.density = render::kSeaLevelAirDensity;
            return info;
        };
        Game::parentEnvironmentId = kAir;
        ASSERT_NE(GAME_Mod::LoadModuleLib("MERIDON_render", "GAME_Mod", true, MERIDON_RENDER_MODULE), nullptr);
        SortAllLists();
        renderer->StartRendering();
    }

    void TearDown() override {
        renderer->StopRendering();
        scene.clear();
        lights.clear();
        Game::parentEnvironmentId = 0;
        Game::_environmentFunctions.clear();
        GameWithRendererTest::TearDown();
    }

    /// The camera at `eye` looking at `target`, with `up` up the screen.
    void Look(glm::dvec3 eye, glm::dvec3 target, glm::dvec3 up = {0.0, 1.0, 0.0}) {
        glm::dmat4 camera = glm::inverse(glm::lookAtRH(eye, target, up));
        renderer->frame.cameraMatrix = camera;
        renderer->frame.cameraPosition = eye;
    }

    /// An instance of every primitive of a mesh node, as a client entity makes it, at `position`.
    std::shared_ptr<RenderableInstance> Place(std::shared_ptr<Mesh> const& mesh, std::string const& node,
        glm::dvec3 position) {
        auto instance = RenderableInstance::Make<RenderableInstance>(1);
        for (auto const& geometry : mesh->nodes.at(node)) {
            instance->materials[geometry->material].push_back(unsigned(instance->geometries.size()));
            instance->geometries.push_back(geometry);
        }
        instance->CreateRenderableData();
        instance->flags.visible = 1;
        instance->transform = glm::translate(glm::dmat4(1.0), position);
        scene.push_back(instance);
        return instance;
    }

    /// Renders one frame and keeps it as output/<name>.png.
    FramePicture Frame(std::string const& name) {
        return RenderAndKeep(*renderer, MERIDON_RENDER_OUTPUT "/" + name + ".png");
    }

    /// The view and projection the frame was drawn with.
    glm::dmat4 ViewProjection() const {
        float const aspect = float(renderer->swapchain.width) / float(renderer->swapchain.height);
        return glm::dmat4(render::Projection(renderer->frame.fov, aspect)) * renderer->frame.viewMatrix;
    }

    /// The pixel where a point relative to the world origin lands.
    glm::ivec2 PixelOf(glm::dvec3 point) const {
        glm::dvec4 const clip = ViewProjection() * glm::dvec4(point, 1.0);
        glm::dvec2 const ndc = glm::dvec2(clip) / clip.w;
        return glm::ivec2((ndc * 0.5 + 0.5) * glm::dvec2(renderer->swapchain.width, renderer->swapchain.height));
    }

    /// The ray from the eye through the centre of pixel `p`.
    glm::vec3 RayThrough(glm::ivec2 p) const {
        glm::dvec2 const ndc = (glm::dvec2(p) + 0.5) / glm::dvec2(renderer->swapchain.width, renderer->swapchain.height)
            * 2.0 - 1.0;
        glm::dmat4 const inverse = glm::inverse(ViewProjection());
        glm::dvec4 const far = inverse * glm::dvec4(ndc, 1.0, 1.0), near = inverse * glm::dvec4(ndc, 0.0, 1.0);
        return glm::vec3(glm::normalize(glm::dvec3(far) / far.w - glm::dvec3(near) / near.w));
    }

    render::Lighting SceneLighting() const {
        render::Lighting lighting =
            render::LightingFor(render::kSeaLevelAirDensity, 0.0, {0, 1, 0}, glm::normalize(render::kSunInLocalFrame));
        lighting.exposure = renderer->frame.brightness;
        return lighting;
    }

    std::vector<std::shared_ptr<RenderableInstance>> scene;
    std::vector<std::shared_ptr<LightSourceInstance>> lights;
};

// The module's quantities reach the pixel through 8-bit channels (half a level) and lavapipe's approximations of
// exp and pow (well under a level); 3 levels leave room for both and still tell a lit face from its neighbours,
// which differ by tens of levels.
constexpr float kTolerance = 3.0f / 255.0f;

}

TEST_F(RenderModuleTest, CratesInSunlightShowTheirMaterialUnderTheSkyOfTheAir) {
    auto const crate = std::make_shared<Mesh>(MERIDON_EXAMPLE_ENTITIES "/crate.gltf");
    // The known crate; a painted one beside it; a pile behind, a lamp with its light box and a light, all far enough
    // that neither light nor shadow reaches the first two.
    Place(crate, "planks", {0, 0, 0});
    auto painted = Place(crate, "planks", {1.5, 0, 0});
    ASSERT_TRUE(painted->SetColor("wood", {0.1f, 0.6f, 0.2f, 1.0f}, 1.0f));
    for (glm::dvec3 at : {glm::dvec3(-4, 0, -4), glm::dvec3(-3, 0, -4), glm::dvec3(-3.5, 1, -4)})
        Place(crate, "planks", at);
    auto lightBox = RenderableInstance::Make<RenderableInstance>(9);
    auto box = std::make_shared<RenderableInstance::AabbGeometry>(1);
    (*box->boxes)[0] = {{-1, 0, -1}, {1, 2.8f, 1}, 0};
    lightBox->geometries.push_back(box);
    lightBox->flags.visible = 1;
    lightBox->transform = glm::translate(glm::dmat4(1.0), {4, 0, -4});
    scene.push_back(lightBox);
    lights.push_back(LightSourceInstance::Make(glm::vec3(4, 2.5f, -4), 0.1f, glm::vec3(0, -1, 0), 0.0f,
        glm::vec3(1.0f, 0.8f, 0.5f), 20.0f));
    // A body of 0.1 m rising at 300 m/s through the air: a trail 1.6 m long above it.
    auto trail = RenderableInstance::Make<PlasmaTrail>();
    ASSERT_TRUE(trail->Set({0.0f, 300.0f, 0.0f, 0.1f}, render::kSeaLevelAirDensity, 0.0));
    trail->flags.visible = 1;
    trail->transform = glm::translate(glm::dmat4(1.0), {-1.5, 0, 1});
    scene.push_back(trail);
    glm::dvec3 const eye(0.5, 3.0, 5.0);
    Look(eye, {0.5, 0.5, 0.0});

    FramePicture const picture = Frame("crates");
    ASSERT_NE(picture.pixels, nullptr);
    ASSERT_EQ(picture.width, int(renderer->swapchain.width));
    render::Lighting const lighting = SceneLighting();

    // The eye sees the crates' fronts (+z) from above and in front: the ray to each centre enters there.
    for (auto [centre, albedo] : {std::pair{glm::dvec3(0, 0.5, 0.5), glm::vec3(0.45f, 0.3f, 0.16f)},
             std::pair{glm::dvec3(1.5, 0.5, 0.5), glm::vec3(0.1f, 0.6f, 0.2f)}}) {
        glm::ivec2 const pixel = PixelOf(centre);
        glm::vec3 const toEye = glm::normalize(glm::vec3(eye - centre));
        EXPECT_TRUE(Near(picture.At(pixel.x, pixel.y),
            render::SunlitSurface(lighting, albedo, 0.0f, 0.85f, {0, 0, 1}, toEye), kTolerance))
            << "crate front at " << centre.x;
    }
    // The top rows look above the horizon: only sky.
    for (glm::ivec2 const pixel : {glm::ivec2(20, 4), glm::ivec2(picture.width / 2, 4)}) {
        EXPECT_TRUE(Near(picture.At(pixel.x, pixel.y), render::Sky(lighting, RayThrough(pixel)), kTolerance))
            << "sky at " << pixel.x;
    }
    // The trail only adds light to the sky behind it.
    glm::ivec2 const glow = PixelOf({-1.5, 0.4, 1});
    glm::vec3 const behind = render::Sky(lighting, RayThrough(glow));
    EXPECT_TRUE(glm::all(glm::greaterThan(picture.At(glow.x, glow.y), behind + 0.02f)))
        << "no plasma glow over the sky's " << behind.r * 255 << ", " << behind.g * 255 << ", " << behind.b * 255;
    std::set<std::array<int, 3>> colours;
    for (int y = 0; y < picture.height; y += 7)
        for (int x = 0; x < picture.width; x += 7) {
            glm::ivec3 const c(picture.At(x, y) * 255.0f + 0.5f);
            colours.insert({c.r, c.g, c.b});
        }
    EXPECT_GT(colours.size(), 50u) << "the frame is nearly uniform";
}

TEST_F(RenderModuleTest, EveryIndexKindAndOddlyPlacedSixteenBitIndicesPullTheRightVertices) {
    // Three glowing triangles side by side: 16-bit indices starting 2 bytes into their buffer, 32-bit indices, and
    // none. Black metal shows its emission alone.
    struct Shifted16 : RenderableInstance::TriangleGeometry {
        Shifted16() : TriangleGeometry(4, 4) {}
        uint64_t GetIndicesAddr() const override { return TriangleGeometry::GetIndicesAddr() + 2; }
        uint64_t GetIndexCount() const override { return 3; }
    };
    auto shifted = std::make_shared<Shifted16>();
    auto wide = std::make_shared<RenderableInstance::TriangleGeometry>(65537, 3);
    auto plain = std::make_shared<RenderableInstance::TriangleGeometry>(3, 0);
    // Vertex 0 of the 32-bit geometry lies past 65535, where 16 bits could not reach it.
    glm::vec3 const corners[3] = {{-0.5f, -0.5f, 0}, {0.5f, -0.5f, 0}, {0, 0.5f, 0}};
    for (int i = 0; i < 3; ++i) {
        (*shifted->vertices)[i] = corners[i];
        (*plain->vertices)[i] = corners[i];
        (*shifted->indices16)[i + 1] = uint16_t(i);
        (*wide->vertices)[65534 + i] = corners[i];
        (*wide->indices32)[i] = 65534u + i;
    }
    // A decoy that a read from the aligned word would take: a vertex far below the triangle.
    (*shifted->vertices)[3] = {0.0f, -3.0f, 0.0f};
    (*shifted->indices16)[0] = 3;
    glm::vec3 const glows[3] = {{3, 0, 0}, {0, 3, 0}, {0, 0, 3}};
    std::shared_ptr<RenderableInstance::GeometryInterface> const geometries[3] = {shifted, wide, plain};
    for (int i = 0; i < 3; ++i) {
        geometries[i]->color = {0, 0, 0, 1};
        geometries[i]->metallic = 1.0f;
        geometries[i]->emission = glows[i];
        auto instance = RenderableInstance::Make<RenderableInstance>(1);
        instance->geometries.push_back(geometries[i]);
        instance->flags.visible = 1;
        instance->transform = glm::translate(glm::dmat4(1.0), {1.5 * (i - 1), 0, 0});
        scene.push_back(instance);
    }
    Look({0, 0, 3}, {0, 0, 0});

    FramePicture const picture = Frame("index_kinds");
    ASSERT_NE(picture.pixels, nullptr);
    render::Lighting const lighting = SceneLighting();
    for (int i = 0; i < 3; ++i) {
        glm::ivec2 const centre = PixelOf({1.5 * (i - 1), -0.1, 0});
        EXPECT_TRUE(Near(picture.At(centre.x, centre.y), render::ToDisplay(glows[i], lighting.exposure), kTolerance))
            << "triangle " << i;
        // Below the first two vertices the triangle ends: the decoy would have drawn there.
        glm::ivec2 const below = PixelOf({1.5 * (i - 1), -0.6, 0});
        EXPECT_TRUE(Near(picture.At(below.x, below.y), render::Sky(lighting, RayThrough(below)), kTolerance))
            << "below triangle " << i;
    }
}

TEST_F(RenderModuleTest, ANewSwapchainKeepsTheWorldDrawn) {
    auto const crate = std::make_shared<Mesh>(MERIDON_EXAMPLE_ENTITIES "/crate.gltf");
    Place(crate, "planks", {0, 0, 0});
    Look({0, 0.5, 3}, {0, 0.5, 0});
    renderer->RenderFrame();
    renderer->ReCreateSwapchain();
    FramePicture const picture = Frame("recreated");
    ASSERT_NE(picture.pixels, nullptr);
    glm::ivec2 const centre = PixelOf({0, 0.5, 0.5});
    EXPECT_FALSE(Near(picture.At(centre.x, centre.y), render::Sky(SceneLighting(), RayThrough(centre)), 0.1f))
        << "the crate is gone";
}

TEST_F(RenderModuleTest, ACrateShadowsTheGroundAwayFromTheSunAndALampLightsOnlyItsSurroundings) {
    // A grey floor of two triangles with upward normals, a crate on it, seen from straight above.
    auto floor = std::make_shared<RenderableInstance::TriangleGeometry>(4, 6);
    floor->CreateNormals();
    glm::vec3 const corners[4] = {{-5, 0, -5}, {5, 0, -5}, {5, 0, 5}, {-5, 0, 5}};
    unsigned short const indices[6] = {0, 1, 2, 0, 2, 3};
    for (int i = 0; i < 4; ++i) {
        (*floor->vertices)[i] = corners[i];
        (*floor->vertexNormals)[i] = {0, 1, 0};
    }
    for (int i = 0; i < 6; ++i)
        (*floor->indices16)[i] = indices[i];
    glm::vec3 const grey(0.5f);
    floor->color = glm::vec4(grey, 1.0f);
    floor->roughness = 1.0f;
    auto ground = RenderableInstance::Make<RenderableInstance>(1);
    ground->geometries.push_back(floor);
    ground->flags.visible = 1;
    scene.push_back(ground);
    Place(std::make_shared<Mesh>(MERIDON_EXAMPLE_ENTITIES "/crate.gltf"), "planks", {0, 0, 0});
    // Power 5 reaches 2.9 m: the floor below it, not the crate's surroundings.
    lights.push_back(LightSourceInstance::Make(glm::vec3(3.0f, 0.5f, -3.0f), 0.1f, glm::vec3(0, -1, 0), 0.0f,
        glm::vec3(1.0f), 5.0f));
    glm::dvec3 const eye(0, 8, 0);
    Look(eye, {0, 0, 0}, {0, 0, -1});

    FramePicture const picture = Frame("shadow");
    ASSERT_NE(picture.pixels, nullptr);
    render::Lighting const lighting = SceneLighting();
    glm::vec3 const up(0, 1, 0);
    // The sun stands high over +x, +z: the crate's shadow falls towards -x, -z, and the ground beyond it is lit.
    glm::dvec3 const shaded(-0.7, 0, -0.7), lit(0.7, 0, 0.7);
    glm::ivec2 const inShadow = PixelOf(shaded), inSun = PixelOf(lit);
    EXPECT_TRUE(Near(picture.At(inShadow.x, inShadow.y),
        render::ToDisplay(grey * render::Ambient(lighting, up), lighting.exposure), kTolerance))
        << "in the shadow";
    EXPECT_TRUE(Near(picture.At(inSun.x, inSun.y),
        render::SunlitSurface(lighting, grey, 0.0f, 1.0f, up, glm::normalize(glm::vec3(eye - lit))), kTolerance))
        << "in the sun";
    glm::dvec3 const lamp(3, 0, -3);
    glm::ivec2 const underLamp = PixelOf(lamp);
    glm::vec3 const sunlit =
        render::SunlitSurface(lighting, grey, 0.0f, 1.0f, up, glm::normalize(glm::vec3(eye - lamp)));
    EXPECT_TRUE(glm::all(glm::greaterThan(picture.At(underLamp.x, underLamp.y), sunlit + 0.05f))) << "under the lamp";
}
