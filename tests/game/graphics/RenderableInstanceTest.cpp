// The GPU-facing records of the world on a real device, read back byte by byte where shaders read them.

#include "game/graphics/LightSourceInstance.h"
#include "game/graphics/PlasmaTrail.h"
#include "game/graphics/RenderableInstance.h"
#include "tests/support/GameRendererFixture.h"

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

using game::graphics::LightSourceInstance;
using game::graphics::PlasmaTrail;
using game::graphics::RenderableInstance;
using game::graphics::GameRenderer;
using game::graphics::LightSourceInstanceData;
using Geometry = RenderableInstance::GeometryInterface;

namespace {

/// The float a shader reads at `offset` bytes into `record`.
template<class T = float>
T At(void const* record, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<char const*>(record) + offset, sizeof value);
    return value;
}

}

TEST_F(GameWithRendererTest, TriangleGeometryTakesTheNarrowestIndexThatFitsEveryVertex) {
    struct Case {
        unsigned long vertices, indices;
        uint32_t type;
        uint64_t indexStride;
    } const cases[] = {
        {65536, 3, Geometry::kTriangles16, 2},
        {65537, 3, Geometry::kTriangles32, 4},
        {0, 3, Geometry::kTriangles32, 4},
        {1, 3, Geometry::kTriangles16, 2},
        {4, 0, Geometry::kTriangles, 0},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(std::to_string(c.vertices) + " vertices, " + std::to_string(c.indices) + " indices");
        RenderableInstance::TriangleGeometry const geometry(c.vertices, c.indices);
        EXPECT_EQ(geometry.type, c.type);
        EXPECT_EQ(geometry.GetIndexStride(), c.indexStride);
        EXPECT_EQ(geometry.GetIndexCount(), c.indices);
        EXPECT_EQ(geometry.GetIndicesAddr() != 0, c.indices != 0);
        EXPECT_EQ(geometry.GetPrimitiveCount(), c.vertices);
        EXPECT_EQ(geometry.GetPrimitivesAddr() != 0, c.vertices != 0);
        EXPECT_EQ(geometry.GetPrimitiveStride(), 12u);
    }
}

TEST_F(GameWithRendererTest, SettersWriteTheRecordsOfTheirMaterialAtTheOffsetsShadersRead) {
    auto instance = RenderableInstance::Make<RenderableInstance>(1);
    EXPECT_FALSE(instance->SetEmission("paint", glm::vec3(1.0f))) << "no records yet";
    for (int i = 0; i < 3; ++i)
        instance->geometries.push_back(std::make_shared<RenderableInstance::AabbGeometry>(1));
    instance->materials = {{"paint", {0, 2}}, {"unused", {}}};
    instance->CreateRenderableData();
    ASSERT_NE(instance->renderableDataAddress, 0u);

    EXPECT_TRUE(instance->SetColor("paint", {0.1f, 0.2f, 0.3f, 0.4f}, 0.5f));
    EXPECT_TRUE(instance->SetPbrMetallicRoughness("paint", 0.6f, 0.7f, 0.8f));
    EXPECT_TRUE(instance->SetMonitorTexture("paint", 7, {0.9f, 1.0f, 1.1f}));
    EXPECT_TRUE(instance->SetEmission("unused", glm::vec3(9.0f))) << "a material with no geometries";
    std::vector<char> const before(reinterpret_cast<char*>(instance->records),
        reinterpret_cast<char*>(instance->records + 3));
    for (auto const& setter : {+[](RenderableInstance& i) { return i.SetEmission("rust", glm::vec3(1.0f)); },
             +[](RenderableInstance& i) { return i.SetColor("rust", glm::vec4(1.0f), 1.0f); },
             +[](RenderableInstance& i) { return i.SetPbrMetallicRoughness("rust", 1.0f, 1.0f, 1.0f); },
             +[](RenderableInstance& i) { return i.SetMonitorTexture("rust", 1, glm::vec3(1.0f)); }})
        EXPECT_FALSE(setter(*instance));
    EXPECT_EQ(std::memcmp(before.data(), instance->records, before.size()), 0) << "an unknown material wrote";

    std::pair<size_t, float> const floats[] = {
        {0, 0.9f}, {8, 1.1f}, {12, 0.5f}, {16, 0.1f}, {28, 0.4f}, {32, 0.8f}, {36, 0.6f}, {40, 0.7f}};
    for (int index : {0, 2}) {
        auto const* record = &instance->records[index];
        for (auto [offset, value] : floats)
            EXPECT_EQ(At(record, offset), value) << "record " << index << ", byte " << offset;
        EXPECT_EQ(At<uint32_t>(record, 44), 7u);
    }
    std::vector<char> const zero(64, 0);
    EXPECT_EQ(std::memcmp(&instance->records[1], zero.data(), 64), 0) << "a geometry of no material was written";
}

TEST_F(GameWithRendererTest, InstancesTakeTheSlotOfTheFirstDeadOneAndClonesShareGeometry) {
    auto first = RenderableInstance::Make<RenderableInstance>(1);
    auto second = RenderableInstance::Make<RenderableInstance>(1);
    auto const firstId = first->_id;
    first.reset();
    std::vector<RenderableInstance*> walked;
    RenderableInstance::ForEach([&](RenderableInstance& instance) { walked.push_back(&instance); });
    EXPECT_EQ(walked, std::vector<RenderableInstance*>{second.get()}) << "a walk skips the dead";
    auto third = RenderableInstance::Make<PlasmaTrail>();
    EXPECT_EQ(third->_id, firstId);
    EXPECT_EQ(RenderableInstance::_sharedObjects.size(), 2u);

    glm::dmat4 const placed = glm::translate(glm::dmat4(1.0), glm::dvec3(1.0, 2.0, 3.0));
    RenderableInstance const clone(third, placed);
    EXPECT_TRUE(clone.isClone);
    EXPECT_EQ(clone.customIndex, 8u);
    EXPECT_EQ(clone.transform, placed);
    EXPECT_EQ(clone.geometries, third->geometries);
    EXPECT_EQ(clone.firstGeometry, third->geometries.front()) << "the source had none: its first geometry stands in";
    EXPECT_FALSE(clone.renderableData);

    GameRenderer::Cleanup();
    EXPECT_TRUE(RenderableInstance::_sharedObjects.empty());
}

TEST_F(GameWithRendererTest, LightBoxesGrowWithPowerAndColourAloneTouchesNothingElse) {
    glm::vec3 const position{1.0f, 2.0f, 3.0f};
    auto light = LightSourceInstance::Make(position, 0.5f, glm::vec3(0.0f), 0.0f, glm::vec3(1.0f), 1.0f);
    float const R = std::sqrt((1.0f / 0.05f - 1.0f) / 12.566371f) + 0.5f;
    EXPECT_TRUE(light->active);
    EXPECT_FLOAT_EQ(light->record->radius, R);
    EXPECT_EQ(light->record->boxMin, position - R);
    EXPECT_EQ(light->record->boxMax, position + R);

    light->dirty = false;
    auto const box = light->record->boxMin;
    light->SetPower(1.0f, {0.0f, 1.0f, 0.0f}, 0.0f);
    EXPECT_EQ(light->record->color, glm::vec3(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(light->record->boxMin, box);
    EXPECT_FALSE(light->dirty) << "the same power keeps the box";

    LightSourceInstanceData const kept = *light->record;
    light->SetPower(0.0f, glm::vec3(5.0f), 2.0f);
    EXPECT_FALSE(light->active);
    EXPECT_EQ(std::memcmp(&kept, light->record, sizeof kept), 0) << "switching off leaves the record";

    light->SetPower(0.05f, glm::vec3(1.0f), 0.0f);
    EXPECT_FLOAT_EQ(light->record->radius, 0.5f) << "the least visible power reaches the inner radius only";

    // A spot's box lies ahead of it, along its direction.
    auto spot = LightSourceInstance::Make(glm::vec3(0.0f), 0.0f, glm::vec3(0.0f, 0.0f, 1.0f), 1.0f, glm::vec3(1.0f),
        1.0f);
    float const r = std::sqrt(19.0f / 2.0f);
    EXPECT_EQ(spot->record->boxMin, glm::vec3(-r, -r, 0.0f));
    EXPECT_EQ(spot->record->boxMax, glm::vec3(r, r, 2.0f * r));
    EXPECT_EQ(spot->record->spotFactor, 1.0f);
}

TEST_F(GameWithRendererTest, PlasmaTrailGlowsFromGreyTowardsOrangeOnlyFastAndOutOfWater) {
    auto trail = RenderableInstance::Make<PlasmaTrail>();
    EXPECT_FALSE(trail->Set({200.0f, 0.0f, 0.0f, 1.1f}, 1.0, 0.0005)) << "no plasma under water";
    EXPECT_FALSE(trail->Set({9.0f, 0.0f, 0.0f, 1.1f}, 1.0, 0.0)) << "too slow: glow 0.009";
    EXPECT_FALSE(trail->texture);

    ASSERT_TRUE(trail->Set({200.0f, 0.0f, 0.0f, 1.1f}, 1.0, 0.0));  // heat 0.0004, glow 0.2
    auto const& box = (*std::static_pointer_cast<RenderableInstance::AabbGeometry>(trail->geometries[0])->boxes)[0];
    EXPECT_EQ(box.min, glm::vec3(-1.1f, 0.0f, -1.1f));
    EXPECT_EQ(box.max, glm::vec3(1.1f, 16.0f * 1.1f, 1.1f));
    EXPECT_EQ(box.payload, trail->plasmaData->address);
    auto const* record = trail->record;
    std::pair<size_t, float> const floats[] = {
        {0, 16.0f * 1.1f}, {4, 1.1f}, {8, 100.0f}, {16, 0.6f}, {20, 0.45f}, {24, 0.41f}, {28, 0.04f}};
    for (auto [offset, value] : floats)
        EXPECT_FLOAT_EQ(At(record, offset), value) << "byte " << offset;
    ASSERT_TRUE(trail->texture);
    EXPECT_EQ(At<uint16_t>(record, 12), 1u) << "the first texture after the font atlas";
    EXPECT_EQ(At<uint16_t>(record, 14), 0u);

    ASSERT_TRUE(trail->Set({1e5f, 0.0f, 0.0f, 1.0f}, 10.0, 0.0));
    EXPECT_EQ(glm::vec3(record->red, record->green, record->blue), glm::vec3(1.0f, 0.25f, 0.05f));
    EXPECT_EQ(record->density, 500.0f);
    EXPECT_EQ(record->emission, 2500.0f);
}
