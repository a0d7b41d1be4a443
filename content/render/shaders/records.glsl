// The records the module writes each frame (FrameRecords.h holds their C++ side, byte for byte) and the world's own
// records, all reached through buffer device addresses passed as uvec2: the renderer enables no 64-bit integers.
#extension GL_EXT_buffer_reference : require
#extension GL_EXT_buffer_reference_uvec2 : require
#extension GL_EXT_scalar_block_layout : require

layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Floats { float v[]; };
layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Uints { uint v[]; };

struct Light {
    vec3 position;
    float radius;
    vec3 color;
    float power;
    vec3 direction;
    float spotFactor;
    float innerRadius;
    float pad0;
    float pad1;
    float pad2;
};
layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Lights { Light v[]; };

struct Instance {
    mat4 model;
    uvec2 overrides;
    uvec2 pad;
};
layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Instances { Instance v[]; };

layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Frame {
    mat4 viewProjection;
    mat4 inverseViewProjection;
    mat4 sunViewProjection;
    vec3 camera;
    float exposure;
    vec3 sunDirection;
    uint shadowSize;
    vec3 sunColor;
    uint lightCount;
    vec3 skyZenith;
    float pad1;
    vec3 skyHorizon;
    float pad2;
    vec3 ground;
    float pad3;
    vec3 up;
    float pad4;
    uvec2 lights;
    uvec2 instances;
    uvec2 shadowMap;
    uvec2 pad5;
};

const uint kDrawMesh = 0u;
const uint kDrawLightBox = 1u;
const uint kDrawPlasma = 2u;

layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Draw {
    uvec2 positions;
    uvec2 indices;
    uvec2 normals;
    uvec2 colors8;
    uvec2 colorsFloat;
    uvec2 texCoords;
    uint indexStride;
    uint kind;
    vec4 color;
    vec3 emission;
    float metallic;
    float roughness;
    uint monitorTexture;
};

// RenderableData: a geometry's overrides; zero means "no override".
layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Overrides {
    vec3 emission;
    float colorMix;
    vec4 color;
    float pbrMix;
    float metallic;
    float roughness;
    uint monitorTexture;
};

// PlasmaData: the trail's glow.
layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Plasma {
    float trailLength;
    float halfWidth;
    float emission;
    uint textures;
    vec3 color;
    float density;
};

layout(push_constant, scalar) uniform Push {
    uvec2 frame;
    uvec2 draw;
} push;

bool IsNull(uvec2 address) {
    return address.x == 0u && address.y == 0u;
}

// `address` plus `bytes`, carrying into the high word.
uvec2 Offset(uvec2 address, uint bytes) {
    uint carry;
    uint low = uaddCarry(address.x, bytes, carry);
    return uvec2(low, address.y + carry);
}

vec3 ReadVec3(uvec2 address, uint index) {
    Floats f = Floats(address);
    return vec3(f.v[3u * index], f.v[3u * index + 1u], f.v[3u * index + 2u]);
}

// The vertex number of draw vertex `n`: indices of 16 or 32 bits, or none. A 16-bit index stream may start on any
// even address, so it is read as the 32-bit word that holds it.
uint VertexNumber(Draw draw, uint n) {
    if (draw.indexStride == 4u)
        return Uints(draw.indices).v[n];
    if (draw.indexStride == 2u) {
        uint byteOffset = (draw.indices.x & 3u) + 2u * n;
        uvec2 aligned = uvec2(draw.indices.x & ~3u, draw.indices.y);
        return (Uints(aligned).v[byteOffset >> 2u] >> ((byteOffset & 2u) * 8u)) & 0xffffu;
    }
    return n;
}

// The corner `n` (0..35) of a box as 12 triangles: a unit cube from 0 to 1.
vec3 BoxCorner(uint n) {
    const uint faces[36] = uint[36](0u, 2u, 1u, 1u, 2u, 3u, 4u, 5u, 6u, 5u, 7u, 6u, 0u, 1u, 4u, 1u, 5u, 4u,
        2u, 6u, 3u, 3u, 6u, 7u, 0u, 4u, 2u, 2u, 4u, 6u, 1u, 3u, 5u, 3u, 7u, 5u);
    uint corner = faces[n];
    return vec3(float(corner & 1u), float((corner >> 1u) & 1u), float((corner >> 2u) & 1u));
}
