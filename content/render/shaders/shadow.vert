#version 460
// A mesh geometry's vertex as the sun sees it, for the shadow map.
#include "records.glsl"

void main() {
    Frame frame = Frame(push.frame);
    Draw draw = Draw(push.draw);
    Instance instance = Instances(frame.instances).v[gl_InstanceIndex];
    vec3 local = ReadVec3(draw.positions, VertexNumber(draw, uint(gl_VertexIndex)));
    gl_Position = frame.sunViewProjection * (instance.model * vec4(local, 1.0));
}
