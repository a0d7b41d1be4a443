// The demo planet, client side: MERIDON_planet.GAME_Mod.so. It keeps the planet's ground around the camera as one
// renderable instance (GroundPatch.h), which any rendering module draws like every other: a geometry of the land and
// sea floor under the material "ground" and one of the water under "water".
//
// A patch takes some milliseconds to make, too long for a frame, so it is made on a worker of its own while the old
// one stays on screen; the render thread only copies the finished one into GPU buffers and swaps it in. The
// environment function is the content module's (MERIDON_planet.MERIDON_Mod.so), so there is ground only while that
// one is loaded, and the worker is done before the game unloads it: Game::Stop stops rendering first.

#include "GroundPatch.h"
#include "Planet.h"

#include "game/Game.h"
#include "game/graphics/GameRenderer.h"
#include "game/graphics/RenderableInstance.h"
#include "modules/ModuleApi.h"

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <optional>

using game::graphics::RenderableInstance;

namespace {

struct Material {
    char const* name;
    glm::vec4 color;
    float metallic;
    float roughness;
};
constexpr Material kGround{"ground", {0.30f, 0.42f, 0.18f, 1.0f}, 0.0f, 0.9f};
constexpr Material kWater{"water", {0.05f, 0.22f, 0.42f, 1.0f}, 0.0f, 0.05f};
/// Custom index of the patch: meshes' hit group, as the ground is triangles like theirs.
constexpr uint32_t kMeshHitGroup = 1;

/// The geometry of one surface, its material's fields set on it too for a renderer that reads no overrides.
std::shared_ptr<RenderableInstance::TriangleGeometry> MakeGeometry(planet::ground::Surface const& surface,
    Material const& material) {
    auto geometry = std::make_shared<RenderableInstance::TriangleGeometry>(surface.positions.size(),
        surface.indices.size());
    std::copy(surface.positions.begin(), surface.positions.end(), geometry->vertices->data);
    geometry->CreateNormals();
    std::copy(surface.normals.begin(), surface.normals.end(), geometry->vertexNormals->data);
    if (geometry->indices16)
        std::copy(surface.indices.begin(), surface.indices.end(), geometry->indices16->data);
    else
        std::copy(surface.indices.begin(), surface.indices.end(), geometry->indices32->data);
    geometry->color = material.color;
    geometry->metallic = material.metallic;
    geometry->roughness = material.roughness;
    return geometry;
}

/// The patch as an instance placed at its centre, on the screen from the next frame on. An ocean out of sight
/// gives no water geometry: Vulkan has no empty buffers.
std::shared_ptr<RenderableInstance> MakeInstance(planet::ground::Patch const& patch) {
    auto instance = RenderableInstance::Make<RenderableInstance>(kMeshHitGroup);
    instance->flags.cloneSource = 0;
    instance->transform = glm::translate(glm::dmat4(1.0), patch.centre);
    std::vector<Material> materials;
    for (auto const& [surface, material] : {std::pair{&patch.ground, kGround}, std::pair{&patch.water, kWater}}) {
        if (surface->indices.empty())
            continue;
        instance->materials[material.name].push_back(unsigned(instance->geometries.size()));
        instance->geometries.push_back(MakeGeometry(*surface, material));
        materials.push_back(material);
    }
    instance->firstGeometry = instance->geometries.front();
    instance->CreateRenderableData();
    for (Material const& material : materials) {
        instance->SetColor(material.name, material.color, 1.0f);
        instance->SetPbrMetallicRoughness(material.name, material.metallic, material.roughness, 1.0f);
    }
    instance->flags.visible = 1;
    instance->flags.active = 1;
    instance->flags.moved = 1;
    return instance;
}

/// Render thread only.
struct Ground {
    std::shared_ptr<RenderableInstance> shown;
    glm::dvec3 shownCentre{0.0};
    std::future<std::optional<planet::ground::Patch>> next;
};
Ground ground;

/// Takes the new patch's place on the screen; the old one leaves through the renderer's trash, as the GPU may be
/// reading it still.
void Show(planet::ground::Patch const& patch) {
    auto instance = MakeInstance(patch);
    if (ground.shown) {
        ground.shown->flags.visible = 0;
        ground.shown->flags.active = 0;
        Game::renderer->Trash(std::move(ground.shown));
    }
    ground.shown = std::move(instance);
    ground.shownCentre = patch.centre;
}

/// Waits for the worker and drops the patch: the environment function and this library are about to go.
void Forget() {
    if (ground.next.valid())
        ground.next.wait();
    ground = Ground{};
}

}

// Before any module's FrameUpdate, so that a renderer collecting instances there sees this frame's patch.
extern "C" void Renderer_FrameBeforeUpdate() {
    auto* renderer = Game::renderer;
    if (ground.next.valid()) {
        if (ground.next.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return;
        if (auto patch = ground.next.get())
            Show(*patch);
    }
    auto const found = Game::_environmentFunctions.find(planet::kEnvironmentId);
    if (found == Game::_environmentFunctions.end() || !found->second)
        return;
    glm::dvec3 const camera = renderer->frame.cameraPosition;
    auto const under = planet::ground::GroundUnder(found->second, camera);
    if (!under ||
        (ground.shown && glm::distance(under->point, ground.shownCentre) <= planet::ground::kRebuildDistance))
        return;
    ground.next = std::async(std::launch::async,
        [environment = found->second, camera] { return planet::ground::MakePatch(environment, camera); });
}

// The device is idle here, and Game::Stop unloads the content module right after.
extern "C" void Renderer_StopRendering() {
    Forget();
}

extern "C" void ModuleUnload() {
    Forget();
}
