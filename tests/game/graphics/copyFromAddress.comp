#version 460
// Copies `count` floats from any device address into the output: how a test sees what a shader reads there.
#extension GL_EXT_buffer_reference : require

layout(local_size_x = 64) in;

layout(buffer_reference, std430, buffer_reference_align = 4) readonly buffer Floats { float values[]; };
layout(buffer_reference, std430, buffer_reference_align = 4) writeonly buffer Output { float values[]; };

layout(push_constant) uniform Push {
    Floats source;
    Output target;
    uint count;
} push;

void main() {
    uint i = gl_GlobalInvocationID.x;
    if (i < push.count) {
        push.target.values[i] = push.source.values[i];
    }
}
