#version 460
#extension GL_EXT_buffer_reference : require
#extension GL_EXT_buffer_reference_uvec2 : require
#extension GL_EXT_scalar_block_layout : require

// Collider triangles (TRIANGLE_LIST) and debug lines (LINE_LIST) from an indexed mesh that the shader reads through
// buffer device addresses. Addresses are uvec2 (low word first), which needs no shaderInt64.

// Tightly packed vec3 positions, 12 bytes each.
layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Positions {
    vec3 positions[];
};
// uint16 indices, two to a word (little-endian: the first in the low half). The buffer is read in whole words, so
// its size must be a multiple of 4 bytes.
layout(buffer_reference, std430, buffer_reference_align = 4) readonly buffer Indices {
    uint pairs[];
};

// 96 bytes of the 128-byte push constant range.
layout(push_constant, scalar) uniform Push {
    mat4 transform; // model to clip space
    vec4 colour;
    uvec2 positions;
    uvec2 indices;
} push;

void main() {
    uint vertex = uint(gl_VertexIndex);
    uint pair = Indices(push.indices).pairs[vertex >> 1];
    uint index = (pair >> ((vertex & 1u) * 16u)) & 0xffffu;
    gl_Position = push.transform * vec4(Positions(push.positions).positions[index], 1.0);
}
