#version 460
// A mesh geometry's vertex, pulled from its streams by device address; one instance of the draw per instance record.
#include "records.glsl"

layout(location = 0) out vec3 worldPosition;
layout(location = 1) out vec3 worldNormal;
layout(location = 2) out vec4 vertexColour;
layout(location = 3) out vec2 texCoord;
layout(location = 4) flat out uint instanceIndex;

void main() {
    Frame frame = Frame(push.frame);
    Draw draw = Draw(push.draw);
    Instance instance = Instances(frame.instances).v[gl_InstanceIndex];
    uint vertex = VertexNumber(draw, uint(gl_VertexIndex));

    vec4 world = instance.model * vec4(ReadVec3(draw.positions, vertex), 1.0);
    worldPosition = world.xyz;
    // The cofactor matrix keeps normals perpendicular under any scale, and costs three cross products.
    mat3 m = mat3(instance.model);
    mat3 cofactor = mat3(cross(m[1], m[2]), cross(m[2], m[0]), cross(m[0], m[1]));
    worldNormal = IsNull(draw.normals) ? vec3(0.0) : cofactor * ReadVec3(draw.normals, vertex);

    vertexColour = vec4(1.0);
    if (!IsNull(draw.colorsFloat)) {
        Floats f = Floats(draw.colorsFloat);
        vertexColour = vec4(f.v[4u * vertex], f.v[4u * vertex + 1u], f.v[4u * vertex + 2u], f.v[4u * vertex + 3u]);
    } else if (!IsNull(draw.colors8)) {
        vertexColour = unpackUnorm4x8(Uints(draw.colors8).v[vertex]);
    }
    texCoord = vec2(0.0);
    if (!IsNull(draw.texCoords)) {
        Floats f = Floats(draw.texCoords);
        texCoord = vec2(f.v[2u * vertex], f.v[2u * vertex + 1u]);
    }
    instanceIndex = gl_InstanceIndex;
    gl_Position = frame.viewProjection * world;
}
