#version 460
// One triangle that covers the screen.
#include "records.glsl"

layout(location = 0) out vec2 screen;

void main() {
    screen = vec2(float((gl_VertexIndex << 1) & 2), float(gl_VertexIndex & 2)) * 2.0 - 1.0;
    gl_Position = vec4(screen, 1.0, 1.0);
}
