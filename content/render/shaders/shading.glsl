// The lighting model; Shading.h is its C++ twin, with which the tests predict pixels.

const float kPi = 3.14159265;

// Exposure, then a filmic-free exponential curve and the display's gamma: the frame image holds display values.
vec3 ToDisplay(vec3 radiance, float exposure) {
    return pow(vec3(1.0) - exp(-radiance * exposure), vec3(1.0 / 2.2));
}

// Light from the sky and the ground on a surface facing `normal`.
vec3 Ambient(Frame frame, vec3 normal) {
    float skyward = 0.5 + 0.5 * dot(normal, frame.up);
    return mix(frame.ground, frame.skyZenith, skyward);
}

// Diffuse and a Blinn-Phong highlight whose sharpness follows the roughness; metals tint their highlight.
vec3 Surface(vec3 albedo, float metallic, float roughness, vec3 normal, vec3 toLight, vec3 toEye, vec3 radiance) {
    float facing = max(dot(normal, toLight), 0.0);
    if (facing <= 0.0)
        return vec3(0.0);
    vec3 halfway = normalize(toLight + toEye);
    float shininess = 2.0 / max(roughness * roughness, 1e-3) - 2.0;
    float highlight = pow(max(dot(normal, halfway), 0.0), shininess) * (shininess + 8.0) / (8.0 * kPi);
    vec3 f0 = mix(vec3(0.04), albedo, metallic);
    vec3 diffuse = albedo * (1.0 - metallic) / kPi;
    return (diffuse + f0 * highlight) * radiance * facing;
}

// The sky along `ray`: the horizon's colour near it, the zenith's above, the ground's haze below, and the sun's disc.
vec3 Sky(Frame frame, vec3 ray) {
    float height = dot(ray, frame.up);
    vec3 colour = height >= 0.0 ? mix(frame.skyHorizon, frame.skyZenith, sqrt(height))
                                : mix(frame.skyHorizon, frame.ground, sqrt(-height));
    float sun = smoothstep(0.9995, 0.9999, dot(ray, frame.sunDirection));
    return colour + frame.sunColor * sun * 20.0;
}
