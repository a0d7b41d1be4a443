#version 460
// A mesh surface: its material with the instance's overrides, lit by the sun (shadowed), the sky and every light.
#include "records.glsl"
#include "shading.glsl"

// The renderer's texture table; monitors take pictures from its first kMonitorTextures slots, as many as the
// smallest table holds (lavapipe's; GPUs hold more).
const uint kMonitorTextures = 32u;
layout(set = 0, binding = 0) uniform sampler2D textures[kMonitorTextures];

layout(location = 0) in vec3 worldPosition;
layout(location = 1) in vec3 worldNormal;
layout(location = 2) in vec4 vertexColour;
layout(location = 3) in vec2 texCoord;
layout(location = 4) flat in uint instanceIndex;
layout(location = 0) out vec4 colour;

// 1 where the shadow map's texel `t` lies beyond `depth` (lit), 0 where something nearer the sun covers it.
float LitAt(Frame frame, ivec2 t, float depth) {
    ivec2 last = ivec2(int(frame.shadowSize) - 1);
    t = clamp(t, ivec2(0), last);
    return depth <= Floats(frame.shadowMap).v[uint(t.y) * frame.shadowSize + uint(t.x)] ? 1.0 : 0.0;
}

// 1 in sunlight, 0 in shadow, with the four nearest texels blended for a soft edge. Outside the map all is lit.
float Sunlight(Frame frame, vec3 position, vec3 normal) {
    vec4 shadow = frame.sunViewProjection * vec4(position + normal * 0.05, 1.0);
    vec2 uv = shadow.xy * 0.5 + 0.5;
    if (any(lessThan(uv, vec2(0.0))) || any(greaterThan(uv, vec2(1.0))) || shadow.z > 1.0)
        return 1.0;
    float depth = shadow.z - 0.0002;
    vec2 at = uv * float(frame.shadowSize) - 0.5;
    ivec2 t = ivec2(floor(at));
    vec2 f = fract(at);
    float top = mix(LitAt(frame, t, depth), LitAt(frame, t + ivec2(1, 0), depth), f.x);
    float bottom = mix(LitAt(frame, t + ivec2(0, 1), depth), LitAt(frame, t + ivec2(1, 1), depth), f.x);
    return mix(top, bottom, f.y);
}

// A point light falls off as power / (1 + 4 pi d^2) past its inner radius, a spot's as power / (1 + 2 s d^2) inside
// its cone; both fade out at the radius of influence.
vec3 PointLight(Light light, vec3 position, vec3 normal, vec3 toEye, vec3 albedo, float metallic, float roughness) {
    vec3 toLight = light.position - position;
    float distance = length(toLight);
    if (distance >= light.radius)
        return vec3(0.0);
    toLight /= max(distance, 1e-4);
    float d = max(distance - light.innerRadius, 0.0);
    float intensity;
    if (light.spotFactor == 0.0) {
        intensity = light.power / (1.0 + 4.0 * kPi * d * d);
    } else {
        float cone = max(dot(-toLight, light.direction), 0.0);
        intensity = light.power * pow(cone, light.spotFactor) / (1.0 + 2.0 * light.spotFactor * d * d);
    }
    float fade = 1.0 - pow(distance / light.radius, 4.0);
    return Surface(albedo, metallic, roughness, normal, toLight, toEye, light.color * intensity * fade * fade);
}

void main() {
    Frame frame = Frame(push.frame);
    Draw draw = Draw(push.draw);
    Instance instance = Instances(frame.instances).v[instanceIndex];

    vec4 base = draw.color * vertexColour;
    vec3 emission = draw.emission;
    float metallic = draw.metallic;
    float roughness = draw.roughness;
    uint monitor = draw.monitorTexture;
    if (!IsNull(instance.overrides)) {
        Overrides o = Overrides(instance.overrides);
        base = mix(base, o.color, o.colorMix);
        metallic = mix(metallic, o.metallic, o.pbrMix);
        roughness = mix(roughness, o.roughness, o.pbrMix);
        if (o.emission != vec3(0.0))
            emission = o.emission;
        if (o.monitorTexture != 0u)
            monitor = o.monitorTexture;
    }
    // A monitor shows its picture as light of its own, tinted by the emission.
    if (monitor != 0u && monitor < kMonitorTextures)
        emission = texture(textures[monitor], texCoord).rgb * (emission == vec3(0.0) ? vec3(1.0) : emission);

    vec3 toEye = normalize(frame.camera - worldPosition);
    // Geometries without normals are lit as facing the eye; both sides of a surface are lit.
    vec3 normal = worldNormal == vec3(0.0) ? toEye : normalize(worldNormal);
    if (dot(normal, toEye) < 0.0)
        normal = -normal;

    vec3 albedo = base.rgb;
    vec3 radiance = emission + albedo * (1.0 - metallic) * Ambient(frame, normal);
    radiance += Surface(albedo, metallic, roughness, normal, frame.sunDirection, toEye, frame.sunColor)
        * Sunlight(frame, worldPosition, normal);
    Lights lights = Lights(frame.lights);
    for (uint i = 0u; i < frame.lightCount; ++i)
        radiance += PointLight(lights.v[i], worldPosition, normal, toEye, albedo, metallic, roughness);
    colour = vec4(ToDisplay(radiance, frame.exposure), 1.0);
}
