#version 460
// The boxes of light boxes and plasma trails, 36 vertices a box, in the instance's space.
#include "records.glsl"

// AabbData: a box and the address of what its glow reads.
struct Box {
    vec3 lo;
    vec3 hi;
    uvec2 payload;
};
layout(buffer_reference, scalar, buffer_reference_align = 4) readonly buffer Boxes { Box v[]; };

layout(location = 0) out vec3 worldPosition;
layout(location = 1) flat out vec3 boxMin;
layout(location = 2) flat out vec3 boxMax;
layout(location = 3) flat out uint instanceIndex;
layout(location = 4) flat out uvec2 payload;

void main() {
    Frame frame = Frame(push.frame);
    Draw draw = Draw(push.draw);
    Instance instance = Instances(frame.instances).v[gl_InstanceIndex];
    Box box = Boxes(draw.positions).v[uint(gl_VertexIndex) / 36u];
    vec3 local = mix(box.lo, box.hi, BoxCorner(uint(gl_VertexIndex) % 36u));
    vec4 world = instance.model * vec4(local, 1.0);
    worldPosition = world.xyz;
    boxMin = box.lo;
    boxMax = box.hi;
    instanceIndex = gl_InstanceIndex;
    payload = box.payload;
    gl_Position = frame.viewProjection * world;
}
