#pragma once

// What the module writes for the GPU each frame, byte for byte as shaders/records.glsl reads it (scalar layout).
// Device addresses are 64-bit here and uvec2 there.

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstddef>
#include <cstdint>

namespace render {

/// The camera, the sun, the sky and where the frame's other records lie. Positions are relative to the world origin.
struct FrameRecord {
    glm::mat4 viewProjection;
    glm::mat4 inverseViewProjection;
    glm::mat4 sunViewProjection;
    glm::vec3 camera;
    float exposure;
    /// Towards the sun.
    glm::vec3 sunDirection;
    /// Texels a side of the shadow map.
    uint32_t shadowSize;
    glm::vec3 sunColor;
    uint32_t lightCount;
    glm::vec3 skyZenith;
    float pad1;
    glm::vec3 skyHorizon;
    float pad2;
    glm::vec3 ground;
    float pad3;
    glm::vec3 up;
    float pad4;
    uint64_t lights;
    uint64_t instances;
    /// The shadow map's depths, row by row, 0 nearest the sun.
    uint64_t shadowMap;
    uint64_t pad5;
};
static_assert(sizeof(FrameRecord) == 336 && offsetof(FrameRecord, camera) == 192 && offsetof(FrameRecord, up) == 288
    && offsetof(FrameRecord, lights) == 304);

/// A light as the shaders shade it: where it is, relative to the world origin, and how it shines.
struct LightRecord {
    glm::vec3 position;
    float radius;
    glm::vec3 color;
    float power;
    glm::vec3 direction;
    float spotFactor;
    float innerRadius;
    float pad[3];
};
static_assert(sizeof(LightRecord) == 64);

/// One instance of a draw: its transform relative to the world origin, and the address of its geometry's override
/// record (0 for none).
struct InstanceRecord {
    glm::mat4 model;
    uint64_t overrides;
    uint64_t pad;
};
static_assert(sizeof(InstanceRecord) == 80 && offsetof(InstanceRecord, overrides) == 64);

/// How a draw's pixels are made.
enum class DrawKind : uint32_t { kMesh = 0, kLightBox = 1, kPlasma = 2 };

/// One geometry, drawn once for all the instances that show it: its streams and its material.
struct DrawRecord {
    uint64_t positions;
    uint64_t indices;
    uint64_t normals;
    uint64_t colors8;
    uint64_t colorsFloat;
    uint64_t texCoords;
    /// 2 or 4; 0 without indices.
    uint32_t indexStride;
    DrawKind kind;
    glm::vec4 color;
    glm::vec3 emission;
    float metallic;
    float roughness;
    uint32_t monitorTexture;
};
static_assert(sizeof(DrawRecord) == 96 && offsetof(DrawRecord, indexStride) == 48
    && offsetof(DrawRecord, color) == 56 && offsetof(DrawRecord, monitorTexture) == 92);

/// The push constants of every pipeline: the frame's record and the draw's.
struct PushConstants {
    uint64_t frame;
    uint64_t draw;
};

}
