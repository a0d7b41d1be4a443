// A moving body against its environment: the surfaces that air or fluid push on, buoyancy and viscous damping,
// and contact with the terrain. The library knows no planet; everything comes from the environment function's
// answers, and the costly questions (ground contact per vertex) are asked only when the body is near the ground.

#include "game/physics/DynamicRigidbody.h"

#include "game/physics/ContactEvent.h"

#include <glm/gtc/constants.hpp>
#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace game::physics {

using game::entity::ConvexMeshCollider;

namespace {

/// Speeds (and squared forces) at or below this count as none.
constexpr double kEpsilon = 2.220446049250313e-16;
/// A collider gets a surface of its own only above this share of the body's volume.
constexpr double kSurfaceVolumeShare = 1.0 / 100.0;
/// Below these coverages a collider hands over to its sub-colliders.
constexpr double kSurfaceCoverage = 0.9;
constexpr double kContactCoverage = 0.8;
constexpr double kBuoyancyCoverage = 0.5;
/// A collider floats only above this share of the body's volume (times its volume factor).
constexpr double kBuoyancyVolumeShare = 1.0 / 25.0;
/// One surface may slow the body by at most this much per second for each metre per second of its speed; keeps
/// large light plates from reversing their motion within a step.
constexpr double kMaxSurfaceDeceleration = 0.2;
/// Terrain contacts slide with a tenth of the collider's own friction.
constexpr double kTerrainFriction = 0.1;
/// At or below this (air's is 1.8e-05) a medium damps nothing.
constexpr double kDampingViscosity = 2e-05;
constexpr int kRestContacts = 3;
constexpr double kRestSpeed = 0.1;
constexpr double kRestSpin = 0.05;

glm::dvec3 Extents(ConvexMeshCollider const& collider) {
    return glm::abs(glm::dvec3(collider.box_max - collider.box_min));
}

glm::dvec3 BoxCenter(ConvexMeshCollider const& collider) {
    return glm::dvec3(collider.box_min + collider.box_max) * 0.5;
}

glm::dvec3 Transformed(glm::dmat4 const& transform, glm::dvec3 const& point) {
    return glm::dvec3(transform * glm::dvec4(point, 1.0));
}

/// The unit vector along `v`, or zero for a zero `v`: a plate moving exactly in its plane has no facing side.
glm::dvec3 DirectionOrZero(glm::dvec3 const& v) {
    double length = glm::length(v);
    return length > 0.0 ? v / length : glm::dvec3(0.0);
}

game::EnvironmentInfoFlags ContactFlags(ConvexMeshCollider const& collider) {
    return collider.ignore_fluid ? game::ENVIRONMENT_CONTACT_DRY : game::ENVIRONMENT_CONTACT;
}

void AddDebugLine(DynamicRigidbody& body, glm::dvec3 const& start, glm::dvec3 const& direction, glm::vec4 color) {
    if (!body.record_debug_lines)
        return;
    body.debug_lines.push_back({{}, glm::vec3(start), glm::vec3(start + direction), color});
}

// ---- Surfaces --------------------------------------------------------------------------------------------------------

/// Finds the surface of each collider large enough to matter, for the body's motion at the start of the tick.
struct SurfaceFinder {
    DynamicRigidbody& body;
    /// The body's velocity in body axes.
    glm::dvec3 velocity;
    double threshold;

    /// `transform`: collider to body space.
    void Visit(ConvexMeshCollider const& collider, glm::dmat4 const& transform) {
        glm::dvec3 s = Extents(collider);
        if (!(s.x * s.y * s.z * collider.volume_factor > threshold))
            return;
        if (kSurfaceCoverage > collider.coverage && !collider.sub_colliders->empty()) {
            for (auto const& part : *collider.sub_colliders)
                if (!part.IsEmpty())
                    Visit(part, transform * part.transform);
            return;
        }

        // Ties go to the later axis.
        int thin = s.x < s.y ? 0 : 1;
        thin = s[thin] < s.z ? thin : 2;
        double t = s[thin];
        double area = s[(thin + 1) % 3] * s[(thin + 2) % 3];

        glm::dmat3 axes(transform);
        glm::dvec3 u = glm::normalize(glm::inverse(axes) * velocity);
        glm::dvec3 a = glm::abs(u);
        int chief = a.x >= a.y ? (a.x >= a.z ? 0 : 2) : (a.y >= a.z ? 1 : 2);
        double facing = s[(chief + 1) % 3] * s[(chief + 2) % 3];

        glm::dvec3 center = Transformed(transform, BoxCenter(collider));
        AeroSurface& surface = body.aero_surfaces.emplace_back();
        if (!(area > 2.0 * t * t)) {
            // A chunky shape: plain drag against the motion, on the face it moves towards.
            surface.normal = glm::normalize(axes * -u);
            surface.offset = body.orientation * center;
            surface.area = facing;
            surface.normal_coefficient = 0.0;
            surface.drag_coefficient = 0.5;
        } else {
            // A plate: pushed along its normal, the more the more squarely it meets the flow.
            glm::dvec3 e(0.0);
            e[thin] = 1.0;
            double d = glm::dot(e, u);
            surface.normal = DirectionOrZero(axes * (glm::sign(d) * e));
            surface.offset = body.orientation * (center + 0.5 * t * surface.normal);
            surface.area = area;
            surface.normal_coefficient = std::sin(std::abs(d) * glm::half_pi<double>());
            surface.drag_coefficient = 0.0;
        }
    }
};

// ---- Terrain and buoyancy --------------------------------------------------------------------------------------------

/// One substep's walk over a body's colliders: terrain contacts, and buoyancy samples with their sums. Collider
/// transforms passed around are relative to the body; world copies are taken from the body's current pose, which
/// each contact moves.
struct EnvironmentWalk {
    DynamicRigidbody& body;
    EnvironmentFunction const& environment;
    /// The answer about the body, updated by every buoyancy sample.
    EnvironmentInfo& info;
    glm::dvec3 up;
    double h;
    double threshold;
    int contacts = 0;
    int samples = 0;
    double densitySum = 0.0;
    double viscositySum = 0.0;

    /// Counts the contact unless the collider's on_contact declines it, and answers it unless that function
    /// cancelled it by zeroing the depth. `surface` is in the body's group frame.
    void TerrainContact(ConvexMeshCollider const& collider, glm::dmat4 const& transform, Collision surface) {
        bool counts = true;
        if (collider.on_contact) {
            ConvexMeshCollider world = collider;
            world.transform = body.GetTransform() * transform;
            ContactEvent event{body, world, nullptr, surface, h};
            counts = collider.on_contact(event);
        }
        if (counts)
            ++contacts;
        if (surface.depth > 0.0) {
            AddDebugLine(body, surface.point, surface.normal * 0.5, {0.6f, 0.4f, 0.1f, 1.0f});
            body.RespondToCollision(surface, kTerrainFriction * collider.friction);
        }
        body.touched_environment = true;
    }

    /// A collider whose lowest reach is in the ground: its parts that reach it, or else each vertex.
    void VertexContacts(ConvexMeshCollider const& collider, glm::dmat4 const& transform) {
        if (kContactCoverage > collider.coverage && !collider.sub_colliders->empty()) {
            for (auto const& part : *collider.sub_colliders) {
                if (part.IsEmpty())
                    continue;
                glm::dmat4 partTransform = transform * part.transform;
                glm::dvec3 low = Transformed(body.GetTransform() * partTransform, BoxCenter(part)) -
                                 up * collider.radius;
                EnvironmentInfo below = environment(low, game::ENVIRONMENT_CONTACT, 0.0);
                if (!(below.surface.depth > 0.0))
                    continue;
                if (part.is_sphere)
                    TerrainContact(part, partTransform, below.surface);
                else
                    VertexContacts(part, partTransform);
            }
            return;
        }
        glm::dmat4 world = body.GetTransform() * transform;
        for (uint32_t i = 0; i < collider.vertices_count; ++i) {
            EnvironmentInfo at =
                environment(Transformed(world, glm::dvec3(collider.vertices[i])), game::ENVIRONMENT_CONTACT, 0.0);
            if (!(at.surface.depth > 0.0))
                continue;
            TerrainContact(collider, transform, at.surface);
            world = body.GetTransform() * transform;
        }
    }

    /// Shares the collider's buoyancy out on the half of its corners nearest the environment's origin (the lower
    /// half on a planet centred there), each in or out of the fluid on its own. False when it took no part.
    bool Buoyancy(ConvexMeshCollider const& collider, glm::dmat4 const& transform) {
        if (kBuoyancyCoverage > collider.coverage && !collider.sub_colliders->empty()) {
            bool partsFloat = false;
            for (auto const& part : *collider.sub_colliders)
                if (!part.IsEmpty())
                    partsFloat = Buoyancy(part, transform * part.transform) || partsFloat;
            if (partsFloat)
                return true;
        }
        glm::dvec3 s = Extents(collider);
        double volume = s.x * s.y * s.z;
        if (!(volume > collider.volume_factor * threshold) || !(info.density > 0.0))
            return false;

        glm::dmat4 world = body.GetTransform() * transform;
        uint32_t n = collider.vertices_count;
        std::array<glm::dvec3, ConvexMeshCollider::kMaxVertices> corners{};
        for (uint32_t i = 0; i < n; ++i)
            corners[i] = Transformed(world, glm::dvec3(collider.vertices[i]));
        uint32_t kept = (n + 1) / 2;
        std::partial_sort(corners.begin(), corners.begin() + kept, corners.begin() + n,
                          [](glm::dvec3 const& a, glm::dvec3 const& b) { return glm::dot(a, a) < glm::dot(b, b); });

        // How far the box reaches up from its centre: the scale of each corner's question, so that the
        // environment can answer how much of the box above the corner lies in its fluid.
        glm::dvec3 upInBox = glm::normalize(glm::inverse(glm::dmat3(world)) * up);
        double reach = std::numeric_limits<double>::max();
        for (int axis = 0; axis < 3; ++axis)
            if (upInBox[axis] != 0.0)
                reach = std::min(reach, 0.5 * s[axis] / std::abs(upInBox[axis]));

        for (uint32_t i = 0; i < kept; ++i) {
            info = environment(corners[i], game::ENVIRONMENT_NOTHING, reach);
            ++samples;
            densitySum += info.density;
            viscositySum += info.viscosity;
            if (info.density > 0.0)
                body.ApplyImpulse(-body.gravity * info.density * volume * h / double(kept),
                                  corners[i] - body.position);
        }
        if (densitySum != 0.0)
            info.density = densitySum / samples;
        if (viscositySum != 0.0)
            info.viscosity = viscositySum / samples;
        return true;
    }

    /// Slows the body in a thick medium, vertical motion twice as much, from the mean of the buoyancy samples.
    void Damp() {
        if (densitySum == 0.0 || viscositySum == 0.0)
            return;
        double density = densitySum / samples;
        double viscosity = viscositySum / samples;
        if (!(viscosity > kDampingViscosity))
            return;
        double f1 = std::clamp(density * 5.0 * viscosity * h, 0.0, 1.0);
        body.linear_velocity -= 0.5 * f1 * body.linear_velocity;
        double f2 = std::clamp(density * 10.0 * viscosity * h, 0.0, 1.0);
        double vertical = glm::dot(body.linear_velocity, up) * 0.5;
        body.linear_velocity -= f2 * vertical * up;
        body.angular_velocity -= 0.99 * f1 * body.angular_velocity;
    }
};

}

void DynamicRigidbody::ComputeAerodynamicSurfaces(EnvironmentFunction const& environment) {
    aero_surfaces.clear();
    // The answer is not needed here; the question tells the environment where the body is, once a tick.
    environment(center, game::ENVIRONMENT_NOTHING, 0.0);
    if (glm::dot(linear_velocity, linear_velocity) < kEpsilon)
        return;
    SurfaceFinder finder{*this, glm::inverse(orientation) * linear_velocity, volume * kSurfaceVolumeShare};
    for (auto const& collider : colliders)
        finder.Visit(collider, collider.transform);
}

void DynamicRigidbody::InteractWithEnvironment(EnvironmentFunction const& environment, double h) {
    EnvironmentInfo info = environment(GetPositionAtCenterOfBounds(), game::ENVIRONMENT_BODY, 0.5 * radius);
    gravity = info.gravity;
    // No gravity, no environment to meet: open space.
    if (gravity == glm::dvec3(0.0))
        return;
    glm::dvec3 up = -gravity / glm::length(gravity);

    // ---- Surfaces ----
    for (auto const& surface : aero_surfaces) {
        glm::dvec3 const& r = surface.offset;
        glm::dvec3 v = linear_velocity + glm::cross(angular_velocity, r);
        double speed = glm::length(v);
        if (!(speed > kEpsilon))
            continue;
        glm::dvec3 direction = v / speed;
        glm::dvec3 n = DirectionOrZero(orientation * surface.normal);
        double side = glm::sign(glm::dot(n, direction));
        glm::dvec3 force = 0.5 * info.density * speed * speed * surface.area *
                           (-surface.drag_coefficient * direction - side * surface.normal_coefficient * n);
        if (!(glm::dot(force, force) > kEpsilon))
            continue;
        double limit = kMaxSurfaceDeceleration * speed / inverse_mass;
        double magnitude = glm::length(force);
        if (magnitude > limit)
            force *= limit / magnitude;
        ApplyImpulse(force * h, r);
        AddDebugLine(*this, position + r, force * inverse_mass * 0.1, {0.2f, 0.6f, 1.0f, 1.0f});
    }

    // ---- Terrain and buoyancy ----
    EnvironmentWalk walk{*this, environment, info, up, h, volume * kBuoyancyVolumeShare};
    bool nearGround = info.altitude - radius < 0.0;
    for (auto const& collider : colliders) {
        if (nearGround) {
            glm::dvec3 centre = Transformed(GetTransform() * collider.transform, BoxCenter(collider));
            // Asked for the environment's sake (it may prepare the ground at the collider's scale); the contact
            // is decided at the collider's lowest reach below.
            environment(centre, game::ENVIRONMENT_CONTACT, 0.5 * collider.radius);
            EnvironmentInfo below = environment(centre - up * collider.radius, ContactFlags(collider), 0.0);
            if (below.surface.depth > 0.0) {
                if (collider.is_sphere)
                    walk.TerrainContact(collider, collider.transform, below.surface);
                else
                    walk.VertexContacts(collider, collider.transform);
                continue;
            }
        }
        walk.Buoyancy(collider, collider.transform);
    }
    walk.Damp();

    if (walk.contacts >= kRestContacts && glm::length(linear_velocity) < kRestSpeed &&
        glm::length(angular_velocity) < kRestSpin)
        rest_gain += 1.0;
}

void DynamicRigidbody::InteractWithEnvironmentFromParent(glm::dmat4 const& parent,
                                                         EnvironmentFunction const& environment, double dt) {
    EnvironmentInfo info =
        environment(Transformed(parent, GetPositionAtCenterOfBounds()), game::ENVIRONMENT_BODY, 0.5 * radius);
    if (info.gravity == glm::dvec3(0.0) || !(info.altitude - radius < 0.0))
        return;
    glm::dvec3 up = -glm::normalize(info.gravity);
    glm::dmat4 fromParent = glm::inverse(parent);
    EnvironmentWalk walk{*this, environment, info, up, dt, 0.0};

    // Answers come in the environment's frame; the body lives in its parent's.
    auto respond = [&](ConvexMeshCollider const& collider, Collision surface) {
        surface.point = Transformed(fromParent, surface.point);
        surface.normal = glm::normalize(glm::dmat3(fromParent) * surface.normal);
        walk.TerrainContact(collider, collider.transform, surface);
    };
    for (auto const& collider : colliders) {
        glm::dmat4 world = parent * GetTransform() * collider.transform;
        if (collider.is_sphere) {
            glm::dvec3 low = Transformed(world, BoxCenter(collider)) - up * collider.radius;
            EnvironmentInfo below = environment(low, ContactFlags(collider), 0.5 * collider.radius);
            if (below.surface.depth > 0.0)
                respond(collider, below.surface);
            continue;
        }
        for (uint32_t i = 0; i < collider.vertices_count; ++i) {
            EnvironmentInfo at =
                environment(Transformed(world, glm::dvec3(collider.vertices[i])), ContactFlags(collider), 0.0);
            if (!(at.surface.depth > 0.0))
                continue;
            respond(collider, at.surface);
            world = parent * GetTransform() * collider.transform;
        }
    }
}

}
