// A moving body's own motion: construction from its entity, impulses, integration, and the write-back with
// re-parenting at the end of the tick.

#include "game/physics/DynamicRigidbody.h"

#include "game/entity/ServerSideEntity.h"

#include <glm/gtc/matrix_inverse.hpp>

namespace game::physics {

namespace {
/// Inverse of an inertia tensor; a body of no extent gets none, so that it cannot be spun instead of spinning at
/// infinite rates.
glm::dmat3 InverseInertia(glm::dmat3 const& inertia) {
    return glm::determinant(inertia) == 0.0 ? glm::dmat3(0.0) : glm::inverse(inertia);
}
}

DynamicRigidbody::DynamicRigidbody(std::shared_ptr<game::entity::ServerSideEntity> const& source, double dt)
    : Rigidbody(source),
      linear_velocity(source->linear_velocity),
      angular_velocity(source->angular_velocity),
      inverse_mass(1.0 / source->mass),
      inverse_inertia(InverseInertia(source->GetInertiaTensorWorld())),
      gravity(source->extra_acceleration),
      aerodynamic(source->aerodynamic),
      ignored(source->ignored) {
    linear_acceleration = source->force_impulse / dt * inverse_mass;
    angular_acceleration = inverse_inertia * (source->torque_impulse / dt);
    largest_contact_radius = radius;
    sweep = 0.5 * dt * glm::length(linear_velocity);
    broad_radius = sweep + radius;
}

void DynamicRigidbody::ApplyImpulse(glm::dvec3 const& impulse, glm::dvec3 const& offset) {
    rest_gain = 0.0;
    linear_velocity += inverse_mass * impulse;
    angular_velocity += inverse_inertia * glm::cross(offset, impulse);
}

void DynamicRigidbody::IntegrateMotion(double h) {
    glm::dvec3 acceleration = linear_acceleration + frame_acceleration + gravity;
    linear_velocity += acceleration * h;
    position += linear_velocity * h;
    angular_velocity += angular_acceleration * h;

    glm::dquat spin(0.0, angular_velocity.x, angular_velocity.y, angular_velocity.z);
    glm::dquat turned = orientation + 0.5 * h * (spin * orientation);
    double length = glm::length(turned);
    orientation = length > 0.0 ? turned / length : glm::dquat(1.0, 0.0, 0.0, 0.0);
}

void DynamicRigidbody::ApplyToEntity(double dt) {
    auto target = entity.lock();
    if (!target)
        return;
    auto& e = *target;

    // ---- Pose, motion and rest ----
    glm::dvec3 velocityChange = linear_velocity - e.linear_velocity;
    e.orientation = orientation;
    e.position = position - orientation * center_of_mass;
    e.linear_velocity = linear_velocity;
    e.angular_velocity = angular_velocity;
    e.force_impulse = glm::dvec3(0.0);
    e.torque_impulse = glm::dvec3(0.0);
    e.extra_acceleration = glm::dvec3(0.0);
    e.rest_time += rest_gain;

    // ---- Re-parenting ----
    auto landedOn = ground.lock();
    bool hasParent = !e.parent.IsNull();
    if (touched_parent || (!hasParent && !landedOn)) {
        // Stays where it is.
    } else if (hasParent && (touched_environment || (!parent_body && !landedOn))) {
        // Left its parent: back into the parent's own frame.
        auto formerParent = game::entity::ServerSideEntity::Get(e.parent);
        frame_acceleration = glm::dvec3(0.0);
        if (formerParent) {
            glm::dmat4 pose = formerParent->GetTransform() * e.GetTransform();
            e.position = glm::dvec3(pose[3]);
            e.parent = formerParent->parent;
            e.orientation = formerParent->orientation * e.orientation;
            e.linear_velocity = formerParent->orientation * e.linear_velocity + formerParent->linear_velocity;
            e.angular_velocity = formerParent->orientation * e.angular_velocity;
        } else {
            // The parent is gone: its frame with it. The entity stays where it was, in its environment's frame.
            e.parent = game::entity::Id();
        }
    } else if (landedOn && !hasParent && landedOn->parent.IsNull()) {
        // Landed on a large obstacle: ride with it from now on, in its frame.
        glm::dmat4 pose = glm::inverse(landedOn->GetTransform()) * e.GetTransform();
        e.position = glm::dvec3(pose[3]);
        e.orientation = glm::quat_cast(glm::dmat3(pose));
        e.parent = landedOn->id;
        glm::dquat intoGround = glm::inverse(landedOn->orientation);
        e.linear_velocity = intoGround * (e.linear_velocity - landedOn->linear_velocity);
        e.angular_velocity = intoGround * e.angular_velocity;
    }

    // ---- Accelerometer ----
    glm::dvec3 felt = gravity + frame_acceleration - velocityChange / dt;
    e.local_acceleration = 0.9 * e.local_acceleration + 0.1 * (glm::inverse(e.orientation) * felt);
}

}
