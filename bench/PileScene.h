#pragma once

#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

/// The pile: unit cubes stacked in columns of ten on a square grid, each one shifted, tilted and turned a little so
/// that the columns topple onto flat ground at y = 0. Both physics benches build it from these poses, so the same N
/// gives the same scene in either engine.
namespace pile {

constexpr double kCubeSize = 1.0;
constexpr double kCubeMass = 100.0;
constexpr double kFriction = 0.5;
constexpr double kGravity = -9.81;
constexpr double kTick = 1.0 / 60.0;

constexpr size_t kColumnHeight = 10;
constexpr double kPitch = 1.5;
constexpr double kLowestCentre = 2.0;
constexpr double kMaxOffset = 0.2;
constexpr double kMaxTilt = 0.3;

struct Pose {
    glm::dvec3 position;
    glm::dquat orientation;
};

/// Cubes per side of the square grid of columns that holds `n` cubes.
inline size_t GridSide(size_t n) {
    size_t columns = (n + kColumnHeight - 1) / kColumnHeight;
    auto side = static_cast<size_t>(std::ceil(std::sqrt(static_cast<double>(columns))));
    return side == 0 ? 1 : side;
}

/// Uniform doubles in [low, high) from the 53 high bits of a 64-bit Mersenne twister: std::uniform_real_distribution
/// may map the same bits differently in another standard library, and the scene has to be the same everywhere.
class Uniform {
public:
    explicit Uniform(uint64_t seed) : _engine(seed) {}

    double Draw(double low, double high) {
        double unit = static_cast<double>(_engine() >> 11) * 0x1.0p-53;
        return low + (high - low) * unit;
    }

private:
    std::mt19937_64 _engine;
};

/// The poses of `n` cubes, column after column, each column from the bottom up.
inline std::vector<Pose> Poses(size_t n) {
    constexpr uint64_t kSeed = 0x9E3779B97F4A7C15ull;
    Uniform uniform(kSeed);
    size_t side = GridSide(n);
    double origin = -0.5 * kPitch * static_cast<double>(side - 1);

    std::vector<Pose> poses;
    poses.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        size_t column = i / kColumnHeight;
        size_t level = i % kColumnHeight;
        double x = origin + kPitch * static_cast<double>(column % side) + uniform.Draw(-kMaxOffset, kMaxOffset);
        double z = origin + kPitch * static_cast<double>(column / side) + uniform.Draw(-kMaxOffset, kMaxOffset);
        double y = kLowestCentre + kPitch * static_cast<double>(level);
        double tiltX = uniform.Draw(-kMaxTilt, kMaxTilt);
        double tiltZ = uniform.Draw(-kMaxTilt, kMaxTilt);
        double yaw = uniform.Draw(0.0, 2.0 * std::numbers::pi);
        glm::dquat orientation = glm::angleAxis(tiltX, glm::dvec3(1.0, 0.0, 0.0)) *
                                 glm::angleAxis(tiltZ, glm::dvec3(0.0, 0.0, 1.0)) *
                                 glm::angleAxis(yaw, glm::dvec3(0.0, 1.0, 0.0));
        poses.push_back({{x, y, z}, orientation});
    }
    return poses;
}

}
