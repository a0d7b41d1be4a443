#include "DrawList.h"

#include "game/graphics/LightSourceInstance.h"
#include "game/graphics/RenderableInstance.h"

#include <glm/geometric.hpp>

#include <algorithm>

namespace render {

using game::graphics::LightSourceInstance;
using game::graphics::RenderableInstance;

namespace {

/// The plasma trail's hit group: its box glows in the trail's own colours. Every other box (a light box, index 9)
/// glows evenly.
constexpr uint32_t kPlasmaTrailIndex = 8;
constexpr uint32_t kBoxVertices = 36;

DrawRecord RecordOf(RenderableInstance::GeometryInterface const& geometry, uint32_t customIndex) {
    DrawRecord record{};
    record.positions = geometry.GetPrimitivesAddr();
    record.indices = geometry.GetIndicesAddr();
    record.indexStride = record.indices != 0 ? uint32_t(geometry.GetIndexStride()) : 0;
    record.normals = geometry.normals;
    record.colors8 = geometry.colors8;
    record.colorsFloat = geometry.colorsFloat;
    record.texCoords = geometry.texCoords0;
    record.color = geometry.color;
    record.emission = geometry.emission;
    record.metallic = geometry.metallic;
    record.roughness = geometry.roughness;
    record.monitorTexture = geometry.monitorTexture;
    if (geometry.type == RenderableInstance::GeometryInterface::kBoxes)
        record.kind = customIndex == kPlasmaTrailIndex ? DrawKind::kPlasma : DrawKind::kLightBox;
    return record;
}

uint32_t VertexCountOf(RenderableInstance::GeometryInterface const& geometry) {
    if (geometry.type == RenderableInstance::GeometryInterface::kBoxes)
        return uint32_t(geometry.GetPrimitiveCount()) * kBoxVertices;
    if (geometry.GetIndicesAddr() != 0 && geometry.GetIndexStride() != 0)
        return uint32_t(geometry.GetIndexCount());
    return uint32_t(geometry.GetPrimitiveCount());
}

/// The light's own position: its record's box is centred `radius` ahead of it along its direction.
LightRecord LightOf(LightSourceInstance const& light, glm::dmat4 const& toOrigin) {
    auto const& data = *light.record;
    glm::vec3 const centre = (data.boxMin + data.boxMax) * 0.5f;
    glm::dmat4 const transform = toOrigin * light.transform;
    LightRecord record{};
    record.position = glm::vec3(transform * glm::dvec4(glm::dvec3(centre - data.direction * data.radius), 1.0));
    glm::dvec3 const direction = glm::dmat3(transform) * glm::dvec3(data.direction);
    record.direction = glm::length(direction) > 0.0 ? glm::vec3(glm::normalize(direction)) : glm::vec3(0.0f);
    record.radius = data.radius;
    record.color = data.color;
    record.power = data.power;
    record.spotFactor = data.spotFactor;
    record.innerRadius = data.innerRadius;
    return record;
}

}

void DrawList::Gather(glm::dmat4 const& toOrigin, glm::vec3 eye, float reach) {
    for (auto& list : _instancesOf)
        list.clear();
    draws.clear();
    _drawOf.clear();
    RenderableInstance::ForEach([&](RenderableInstance& instance) { Add(instance, toOrigin); });

    // Nearest first, so that the depth test rejects what lies behind before it is shaded: a field of crates would
    // otherwise shade each pixel several times over.
    auto const distanceSquared = [eye](InstanceRecord const& instance) {
        glm::vec3 const d = glm::vec3(instance.model[3]) - eye;
        return glm::dot(d, d);
    };
    auto const nearer = [&](InstanceRecord const& a, InstanceRecord const& b) {
        return distanceSquared(a) < distanceSquared(b);
    };
    instances.clear();
    for (size_t i = 0; i < draws.size(); ++i) {
        std::sort(_instancesOf[i].begin(), _instancesOf[i].end(), nearer);
        draws[i].firstInstance = uint32_t(instances.size());
        draws[i].instanceCount = uint32_t(_instancesOf[i].size());
        draws[i].nearCount = uint32_t(std::partition_point(_instancesOf[i].begin(), _instancesOf[i].end(),
            [&](InstanceRecord const& instance) { return distanceSquared(instance) < reach * reach; })
            - _instancesOf[i].begin());
        instances.insert(instances.end(), _instancesOf[i].begin(), _instancesOf[i].end());
    }

    lights.clear();
    LightSourceInstance::ForEach([&](LightSourceInstance& light) {
        if (light.active && light.record != nullptr)
            lights.push_back(LightOf(light, toOrigin));
    });
}

void DrawList::Add(RenderableInstance& instance, glm::dmat4 const& toOrigin) {
    if (!instance.flags.visible)
        return;
    // Composed in double, where the world lives; only what is relative to the origin is cut to float.
    glm::mat4 const model(toOrigin * instance.transform);
    for (size_t g = 0; g < instance.geometries.size(); ++g) {
        auto const& geometry = instance.geometries[g];
        if (!geometry || geometry->GetPrimitivesAddr() == 0)
            continue;
        uint32_t const vertexCount = VertexCountOf(*geometry);
        if (vertexCount == 0)
            continue;
        auto [found, added] = _drawOf.try_emplace(geometry.get(), uint32_t(draws.size()));
        if (added) {
            draws.push_back({RecordOf(*geometry, instance.customIndex), vertexCount, 0, 0, 0});
            if (_instancesOf.size() < draws.size())
                _instancesOf.emplace_back();
        }
        // Clones carry no records of their own, and a record list may be shorter than a grown geometry list.
        bool const hasRecord = instance.renderableData && instance.renderableDataAddress != 0
            && g < instance.renderableData->count;
        uint64_t const overrides =
            hasRecord ? instance.renderableDataAddress + g * sizeof(game::graphics::RenderableData) : 0;
        _instancesOf[found->second].push_back({model, overrides, 0});
    }
}

}
