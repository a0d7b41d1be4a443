#version 460
// Light that a box of glowing air adds: as much as the eye's ray crosses of it. Light boxes glow evenly and softly;
// a plasma trail glows from its hot end along its length, in its own colour and strength.
#include "records.glsl"
#include "shading.glsl"

layout(location = 0) in vec3 worldPosition;
layout(location = 1) flat in vec3 boxMin;
layout(location = 2) flat in vec3 boxMax;
layout(location = 3) flat in uint instanceIndex;
layout(location = 4) flat in uvec2 payload;
layout(location = 0) out vec4 colour;

// Warm lamp light, faint: a light box marks the room a lamp fills, and must not hide what stands in it.
const vec3 kLightBoxGlow = vec3(1.0, 0.85, 0.6) * 0.04;

void main() {
    Frame frame = Frame(push.frame);
    Draw draw = Draw(push.draw);
    mat4 model = Instances(frame.instances).v[instanceIndex].model;
    mat4 toLocal = inverse(model);
    vec3 eye = (toLocal * vec4(frame.camera, 1.0)).xyz;
    vec3 here = (toLocal * vec4(worldPosition, 1.0)).xyz;
    vec3 ray = here - eye;
    float reach = length(ray);
    ray /= reach;

    // Where the ray enters and leaves the box; each pixel is drawn once, by the face where the ray enters (or, from
    // inside, where it leaves).
    vec3 inverseRay = 1.0 / ray;
    vec3 t0 = (boxMin - eye) * inverseRay;
    vec3 t1 = (boxMax - eye) * inverseRay;
    float enter = max(max(min(t0.x, t1.x), min(t0.y, t1.y)), min(t0.z, t1.z));
    float leave = min(min(max(t0.x, t1.x), max(t0.y, t1.y)), max(t0.z, t1.z));
    float drawnAt = enter > 0.0 ? enter : leave;
    if (abs(reach - drawnAt) > 1e-3 * max(reach, 1.0))
        discard;
    float through = max(leave - max(enter, 0.0), 0.0);
    vec3 size = boxMax - boxMin;

    vec3 light;
    if (draw.kind == kDrawPlasma && !IsNull(payload)) {
        Plasma plasma = Plasma(payload);
        // Brightest at the body (y = 0), fading along the trail; thickest along its axis.
        vec3 middle = eye + ray * (max(enter, 0.0) + through * 0.5);
        float along = clamp(middle.y / max(plasma.trailLength, 1e-3), 0.0, 1.0);
        float axis = 1.0 - clamp(length(middle.xz) / max(plasma.halfWidth, 1e-3), 0.0, 1.0);
        light = plasma.color * plasma.emission * 0.002 * (1.0 - along) * axis * through / max(plasma.halfWidth, 1e-3);
    } else {
        light = kLightBoxGlow * through / max(max(size.x, size.y), max(size.z, 1e-3));
    }
    // Added to what lies behind: display values, so the glow is mapped on its own.
    colour = vec4(ToDisplay(light, frame.exposure), 1.0);
}
