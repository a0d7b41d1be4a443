#version 460
// The sky behind everything: the ray through each pixel, coloured by the air at the camera.
#include "records.glsl"
#include "shading.glsl"

layout(location = 0) in vec2 screen;
layout(location = 0) out vec4 colour;

void main() {
    Frame frame = Frame(push.frame);
    vec4 far = frame.inverseViewProjection * vec4(screen, 1.0, 1.0);
    vec4 near = frame.inverseViewProjection * vec4(screen, 0.0, 1.0);
    vec3 ray = normalize(far.xyz / far.w - near.xyz / near.w);
    colour = vec4(ToDisplay(Sky(frame, ray), frame.exposure), 1.0);
}
