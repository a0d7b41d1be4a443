#pragma once

// The lighting model in C++, the twin of shaders/shading.glsl: the module fills the frame's sky and sun with it, and
// tests predict the colour of pixels with it. Keep the two in step.

#include <glm/common.hpp>
#include <glm/exponential.hpp>
#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>

namespace render {

constexpr float kPi = 3.14159265f;

/// The light of the sky and the sun at the camera.
struct Lighting {
    glm::vec3 sunDirection{0.0f, 1.0f, 0.0f};
    glm::vec3 sunColor{0.0f};
    glm::vec3 skyZenith{0.0f};
    glm::vec3 skyHorizon{0.0f};
    glm::vec3 ground{0.0f};
    glm::vec3 up{0.0f, 1.0f, 0.0f};
    float exposure = 1.0f;
};

/// Sea-level air of a temperate planet, kg/m^3: the density at which the sky is fully blue.
constexpr double kSeaLevelAirDensity = 1.225;
/// The sun's place in the sky of the camera's environment, in its local frame (y up): high in the south-east.
constexpr glm::vec3 kSunInLocalFrame{0.35f, 0.85f, 0.4f};

/// The sky and sun for a camera in a medium of `density` (kg/m^3), under water when `liquidDensity` is above zero,
/// with `up` the local vertical and `sunDirection` towards the sun. Thin air makes a dark sky and a harsh white sun;
/// water a murky green-blue.
inline Lighting LightingFor(double density, double liquidDensity, glm::vec3 up, glm::vec3 sunDirection) {
    Lighting lighting;
    lighting.up = up;
    lighting.sunDirection = sunDirection;
    float const air = float(std::clamp(density / kSeaLevelAirDensity, 0.0, 1.0));
    glm::vec3 const space(0.004f, 0.005f, 0.012f);
    lighting.skyZenith = glm::mix(space, glm::vec3(0.16f, 0.32f, 0.75f), air);
    lighting.skyHorizon = glm::mix(space, glm::vec3(0.55f, 0.68f, 0.85f), air);
    lighting.ground = glm::mix(glm::vec3(0.0f), glm::vec3(0.12f, 0.11f, 0.09f), air);
    lighting.sunColor = glm::mix(glm::vec3(3.6f), glm::vec3(3.2f, 3.0f, 2.7f), air);
    if (liquidDensity > 0.0) {
        lighting.skyZenith = glm::vec3(0.02f, 0.12f, 0.14f);
        lighting.skyHorizon = glm::vec3(0.01f, 0.06f, 0.07f);
        lighting.ground = glm::vec3(0.005f, 0.02f, 0.02f);
        lighting.sunColor = glm::vec3(0.8f, 1.2f, 1.1f);
    }
    return lighting;
}

/// Exposure, an exponential curve and the display's gamma: what a pixel shows of `radiance`, from 0 to 1.
inline glm::vec3 ToDisplay(glm::vec3 radiance, float exposure) {
    return glm::pow(glm::vec3(1.0f) - glm::exp(-radiance * exposure), glm::vec3(1.0f / 2.2f));
}

/// Light from the sky and the ground on a surface facing `normal`.
inline glm::vec3 Ambient(Lighting const& lighting, glm::vec3 normal) {
    float const skyward = 0.5f + 0.5f * glm::dot(normal, lighting.up);
    return glm::mix(lighting.ground, lighting.skyZenith, skyward);
}

/// Diffuse light and a Blinn-Phong highlight whose sharpness follows the roughness.
inline glm::vec3 Surface(glm::vec3 albedo, float metallic, float roughness, glm::vec3 normal, glm::vec3 toLight,
    glm::vec3 toEye, glm::vec3 radiance) {
    float const facing = std::max(glm::dot(normal, toLight), 0.0f);
    if (facing <= 0.0f)
        return glm::vec3(0.0f);
    glm::vec3 const halfway = glm::normalize(toLight + toEye);
    float const shininess = 2.0f / std::max(roughness * roughness, 1e-3f) - 2.0f;
    float const highlight = std::pow(std::max(glm::dot(normal, halfway), 0.0f), shininess) * (shininess + 8.0f)
        / (8.0f * kPi);
    glm::vec3 const f0 = glm::mix(glm::vec3(0.04f), albedo, metallic);
    glm::vec3 const diffuse = albedo * (1.0f - metallic) / kPi;
    return (diffuse + f0 * highlight) * radiance * facing;
}

/// What a sunlit (unshadowed) surface without emission shows, lit by the sky and the sun alone.
inline glm::vec3 SunlitSurface(Lighting const& lighting, glm::vec3 albedo, float metallic, float roughness,
    glm::vec3 normal, glm::vec3 toEye) {
    glm::vec3 const radiance = albedo * (1.0f - metallic) * Ambient(lighting, normal)
        + Surface(albedo, metallic, roughness, normal, lighting.sunDirection, toEye, lighting.sunColor);
    return ToDisplay(radiance, lighting.exposure);
}

/// The sky along `ray`, away from the sun's disc.
inline glm::vec3 Sky(Lighting const& lighting, glm::vec3 ray) {
    float const height = glm::dot(ray, lighting.up);
    glm::vec3 const colour = height >= 0.0f
        ? glm::mix(lighting.skyHorizon, lighting.skyZenith, std::sqrt(height))
        : glm::mix(lighting.skyHorizon, lighting.ground, std::sqrt(-height));
    return ToDisplay(colour, lighting.exposure);
}

}
