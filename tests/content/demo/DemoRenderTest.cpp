// The demo world as the player first sees it: the launcher's modules from the build's game tree, a new world played
// for a few seconds, and one frame from the spawn point drawn headless with validation on. Pixels are checked against
// what the rendering module's lighting model predicts for the scene; the frame is kept as output/demo_spawn.png.

#include "tests/content/demo/DemoGame.h"

#include "content/demo/Layout.h"
#include "content/render/Camera.h"
#include "content/render/Shading.h"
#include "game/entity/ClientSideEntity.h"
#include "tests/support/FramePicture.h"
#include "tests/support/GameRendererFixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <optional>

using game::entity::ClientSideEntity;
using game::graphics::RenderableInstance;

namespace {

// 8-bit channels and lavapipe's exp and pow, as in the rendering module's own test.
constexpr float kTolerance = 3.0f / 255.0f;

struct Material {
    glm::vec3 albedo;
    float metallic, roughness;
};

/// What geometry `index` of `instance` is drawn with: its own material under the instance's override records.
Material MaterialOf(RenderableInstance const& instance, size_t index) {
    auto const& geometry = *instance.geometries.at(index);
    Material material{glm::vec3(geometry.color), geometry.metallic, geometry.roughness};
    if (auto const* o = instance.records ? &instance.records[index] : nullptr) {
        material.albedo = glm::mix(material.albedo, glm::vec3(o->color), o->colorMix);
        material.metallic = glm::mix(material.metallic, o->metallic, o->pbrMix);
        material.roughness = glm::mix(material.roughness, o->roughness, o->pbrMix);
    }
    return material;
}

/// A box of what is drawn, in its instance's frame.
struct Box {
    glm::dmat4 placed;
    glm::dvec3 low, high;
    glm::dvec3 At(glm::dvec3 const& local) const { return glm::dvec3(placed * glm::dvec4(local, 1.0)); }
};

/// A crate as drawn is a 1 m cube standing on the origin of its "planks" renderable (crate.entity).
Box CrateBox(RenderableInstance const& planks) {
    return {planks.transform, {-0.5, 0.0, -0.5}, {0.5, 1.0, 0.5}};
}

/// Whether the segment from `from` to `to` passes through `box`.
bool Crosses(Box const& box, glm::dvec3 const& from, glm::dvec3 const& to) {
    glm::dmat4 const inverse = glm::inverse(box.placed);
    glm::dvec3 const a(inverse * glm::dvec4(from, 1.0)), along(inverse * glm::dvec4(to - from, 0.0));
    double enter = 0.0, leave = 1.0;
    for (int axis = 0; axis < 3; ++axis) {
        if (std::abs(along[axis]) < 1e-12) {
            if (a[axis] < box.low[axis] || a[axis] > box.high[axis])
                return false;
            continue;
        }
        double const t0 = (box.low[axis] - a[axis]) / along[axis], t1 = (box.high[axis] - a[axis]) / along[axis];
        enter = std::max(enter, std::min(t0, t1));
        leave = std::min(leave, std::max(t0, t1));
    }
    return enter <= leave;
}

class DemoRenderTest : public GameWithRendererTest {
protected:
    void SetUp() override {
        GameWithRendererTest::SetUp();
        ASSERT_NO_THROW(demo.emplace(MERIDON_GAME_MODULES, "demo-render-test"));
    }

    void TearDown() override {
        demo.reset();
        GameWithRendererTest::TearDown();
    }

    /// The frame's projection and view, from the planet's frame: its view matrix is relative to the world origin.
    glm::dmat4 ViewProjection() const {
        float const aspect = float(renderer->swapchain.width) / float(renderer->swapchain.height);
        return glm::dmat4(render::Projection(renderer->frame.fov, aspect)) * renderer->frame.viewMatrix *
            renderer->inverseWorldOrigin;
    }

    /// The pixel where a point lands; nothing when it lies behind the eye or outside the frame.
    std::optional<glm::ivec2> PixelOf(glm::dvec3 const& point) const {
        glm::dvec4 const clip = ViewProjection() * glm::dvec4(point, 1.0);
        glm::dvec2 const ndc = glm::dvec2(clip) / clip.w;
        if (clip.w <= 0.0 || glm::any(glm::greaterThan(glm::abs(ndc), glm::dvec2(1.0))))
            return std::nullopt;
        return glm::ivec2((ndc * 0.5 + 0.5) * glm::dvec2(renderer->swapchain.width, renderer->swapchain.height));
    }

    /// The ray from the eye through the centre of pixel `p`.
    glm::dvec3 RayThrough(glm::ivec2 p) const {
        glm::dvec2 const ndc =
            (glm::dvec2(p) + 0.5) / glm::dvec2(renderer->swapchain.width, renderer->swapchain.height) * 2.0 - 1.0;
        glm::dmat4 const inverse = glm::inverse(ViewProjection());
        glm::dvec4 const far = inverse * glm::dvec4(ndc, 1.0, 1.0), near = inverse * glm::dvec4(ndc, 0.0, 1.0);
        return glm::normalize(glm::dvec3(far) / far.w - glm::dvec3(near) / near.w);
    }

    std::optional<DemoGame> demo;
};

}

TEST_F(DemoRenderTest, FromTheSpawnPointTheCratePileStandsOnTheGroundUnderTheSkyOfThePlanetsAir) {
    DemoGame::LookFromSpawn(*renderer);
    DemoGame::Play(5.0);
    auto const patch = DemoGame::RenderUntilGroundShows(*renderer);
    ASSERT_TRUE(patch) << "no ground";
    FramePicture const picture = RenderAndKeep(*renderer, MERIDON_DEMO_OUTPUT "/demo_spawn.png");
    ASSERT_NE(picture.pixels, nullptr);
    glm::dvec3 const eye = renderer->frame.cameraPosition;
    // The air 1.7 m above sea level; near the top of the planet its local frame is the world's, sun included.
    render::Lighting lighting = render::LightingFor(planet::kAirDensity * std::exp(-1.7 / planet::kScaleHeight), 0.0,
        glm::normalize(glm::vec3(eye)), glm::normalize(render::kSunInLocalFrame));
    lighting.exposure = renderer->frame.brightness;

    // The crates where the client draws them, every one come through the link, and the lamps' glows, which add
    // their light to whatever lies behind them.
    std::vector<std::shared_ptr<RenderableInstance>> crates;
    std::vector<Box> obstacles;
    ClientSideEntity::ForEach([&](std::shared_ptr<ClientSideEntity> const& entity) {
        if (entity->type == "crate") {
            crates.push_back(entity->renderables.at("planks"));
            obstacles.push_back(CrateBox(*crates.back()));
        }
        if (entity->type == "light_box") {
            auto const& glow = *entity->renderables.at("glow");
            auto const boxes = std::dynamic_pointer_cast<RenderableInstance::AabbGeometry>(glow.geometries.at(0));
            obstacles.push_back({glow.transform, (*boxes->boxes)[0].min, (*boxes->boxes)[0].max});
        }
    });
    ASSERT_EQ(crates.size(),
        size_t(std::ranges::count(demo::kPlacements, std::string("crate"), &demo::Placement::type)));
    auto const clear = [&](glm::dvec3 const& from, glm::dvec3 const& to) {
        return std::ranges::none_of(obstacles, [&](Box const& box) { return Crosses(box, from, to); });
    };

    // Every face of a crate wholly in the frame that turns towards the eye enough to span pixels, with nothing before
    // its centre, shows the crate's material as lit there. Faces turned away from the sun take the sky's light alone;
    // one turned towards it must have no shadow near its centre (the map's texels are 6 cm; its edges blend two).
    size_t checked = 0, sunlit = 0;
    glm::dvec3 const toSun(lighting.sunDirection);
    glm::vec3 crateColour(0.0f);
    for (auto const& crate : crates) {
        Box const box = CrateBox(*crate);
        bool inFrame = true;
        for (int corner = 0; corner < 8; ++corner) {
            glm::dvec3 const which(corner & 1, corner >> 1 & 1, corner >> 2 & 1);
            inFrame &= PixelOf(box.At(glm::mix(box.low, box.high, which))).has_value();
        }
        for (int side = 0; inFrame && side < 6; ++side) {
            glm::dvec3 outward(0.0), across(0.0), along(0.0);
            outward[side / 2] = side % 2 ? 0.5 : -0.5;
            across[(side / 2 + 1) % 3] = 0.15;
            along[(side / 2 + 2) % 3] = 0.15;
            glm::dvec3 const middle = glm::mix(box.low, box.high, 0.5) + outward;
            glm::dvec3 const centre = box.At(middle), normal = glm::normalize(glm::dmat3(box.placed) * outward);
            glm::dvec3 const toEye = glm::normalize(eye - centre), off = normal * 0.01;
            bool const facesSun = glm::dot(normal, toSun) > 0.0;
            auto const sunReaches = [&](glm::dvec3 const& local) {
                return clear(box.At(local) + off, box.At(local) + off + toSun * 30.0);
            };
            bool const shaded = facesSun && !std::ranges::all_of(
                std::array{middle, middle + across, middle - across, middle + along, middle - along}, sunReaches);
            if (glm::dot(normal, toEye) < 0.3 || !clear(centre + off, eye) || shaded)
                continue;
            Material const wood = MaterialOf(*crate, 0);
            glm::ivec2 const pixel = *PixelOf(centre);
            crateColour = picture.At(pixel.x, pixel.y);
            EXPECT_TRUE(Near(crateColour, render::SunlitSurface(lighting, wood.albedo, wood.metallic, wood.roughness,
                glm::vec3(normal), glm::vec3(toEye)), kTolerance))
                << "crate face at pixel " << pixel.x << ", " << pixel.y;
            ++checked;
            sunlit += facesSun;
        }
    }
    std::cout << "crate faces checked: " << checked << ", " << sunlit << " of them in the sun" << std::endl;
    ASSERT_GT(checked, 0u) << "no crate face in full view";

    // The top rows look above the horizon: sky.
    for (int const x : {20, picture.width / 2, picture.width - 20}) {
        glm::ivec2 const pixel(x, 4);
        EXPECT_TRUE(Near(picture.At(pixel.x, pixel.y), render::Sky(lighting, glm::vec3(RayThrough(pixel))), kTolerance))
            << "sky at " << pixel.x;
    }

    // The bottom row looks at the level ground a few metres ahead, in full sun: the patch's grass.
    glm::ivec2 const below(picture.width / 2, picture.height - 4);
    glm::dvec3 const ray = RayThrough(below);
    glm::dvec3 const ground = eye + ray * (1.7 / -glm::dot(ray, glm::normalize(eye)));
    Material const grass = MaterialOf(*patch, patch->materials.at("ground").at(0));
    glm::vec3 const groundColour = picture.At(below.x, below.y);
    EXPECT_TRUE(Near(groundColour, render::SunlitSurface(lighting, grass.albedo, grass.metallic, grass.roughness,
        glm::vec3(glm::normalize(ground)), -glm::vec3(ray)), kTolerance)) << "ground";
    EXPECT_FALSE(Near(groundColour, picture.At(below.x, 4), 0.1f)) << "the ground looks like the sky";
    EXPECT_FALSE(Near(crateColour, groundColour, 0.05f)) << "the crate looks like the ground";
}
