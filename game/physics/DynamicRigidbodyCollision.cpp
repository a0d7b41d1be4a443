// Contacts of a moving body: with the other moving bodies, the obstacles and its parent that the broad phase
// found, answered one by one with impulses (no solver, no contact cache).

#include "game/physics/DynamicRigidbody.h"

#include "game/physics/ContactEvent.h"
#include "game/physics/ConvexCollision.h"

#include <glm/gtc/matrix_transform.hpp>

namespace game::physics {

using game::entity::ConvexMeshCollider;

namespace {

constexpr double kTangentEpsilon = 1e-06;
constexpr double kRestSpeed = 0.1;
constexpr double kRestSpin = 0.05;
constexpr int kRestContacts = 3;

/// A collider carried into another frame, `transform` in front of its own, without a copy.
PlacedCollider Placed(ConvexMeshCollider const& collider, glm::dmat4 const& transform) {
    return {collider, transform * collider.transform};
}

/// A whole copy of a placed collider, for what takes one: on_contact functions, and the filter in front of
/// sub-colliders. The narrow phase needs none.
ConvexMeshCollider Copied(PlacedCollider const& placed) {
    ConvexMeshCollider copy = placed.collider;
    copy.transform = placed.transform;
    return copy;
}

/// Whether the collider box `w` can meet a body of many colliders at all, by the body's bounds.
bool CanMeetBody(PlacedCollider const& w, Rigidbody const& body) {
    if (body.colliders.size() <= 3)
        return true;
    return PotentialBoxBoxIntersection(w.transform, body.GetTransform(), glm::dvec3(w.collider.box_min),
                                       glm::dvec3(w.collider.box_max), body.bounds_min, body.bounds_max, true, true);
}

double RotationalMass(DynamicRigidbody const& body, glm::dvec3 const& r, glm::dvec3 const& direction) {
    return glm::dot(direction, glm::cross(body.inverse_inertia * glm::cross(r, direction), r));
}

void AddDebugLine(DynamicRigidbody& body, Collision const& collision) {
    if (!body.record_debug_lines)
        return;
    glm::vec3 start(collision.point);
    body.debug_lines.push_back({{}, start, start + glm::vec3(collision.normal) * 0.5f, {1.0f, 0.2f, 0.2f, 1.0f}});
}

}

// ---- Detection -------------------------------------------------------------------------------------------------------

/// Contacts of one of the body's colliders with something that does not move this tick: an obstacle's collider, or
/// one of the parent's. Colliders that fill little of their box hand over to their sub-colliders.
struct DynamicRigidbody::StaticContact {
    DynamicRigidbody& body;
    ConvexMeshCollider const& own;
    PlacedCollider& world;
    /// The obstacle, or null for the parent.
    Rigidbody const* obstacle;
    double h;
    int& contacts;

    void Test(PlacedCollider const& placed) {
        ConvexMeshCollider const& other = placed.collider;
        if (other.coverage < 0.95 && !other.sub_colliders->empty()) {
            if (!PotentialBoxBoxIntersection(Copied(world), Copied(placed)))
                return;
            for (auto const& part : *other.sub_colliders)
                if (!part.IsEmpty())
                    Test(Placed(part, placed.transform));
            return;
        }
        Collision collision = ConvexCollision(world, placed);
        if (collision.depth <= 0.0)
            return;
        AddDebugLine(body, collision);
        if (other.on_contact) {
            ConvexMeshCollider const theirs = Copied(placed);
            ConvexMeshCollider const mine = Copied(world);
            ContactEvent event{body, theirs, &mine, collision, h};
            if (other.on_contact(event))
                ++contacts;
        } else {
            ++contacts;
        }
        if (collision.depth > 0.0)
            body.RespondToCollision(collision, own.friction * other.friction);
        world.transform = body.GetTransform() * own.transform;
        if (!obstacle) {
            body.touched_parent = true;
        } else if (obstacle->radius > body.largest_contact_radius) {
            body.ground = obstacle->entity;
            body.largest_contact_radius = obstacle->radius;
        }
    }
};

void DynamicRigidbody::CollisionDetection(double h) {
    int contacts = 0;
    for (auto const& own : colliders) {
        PlacedCollider world = Placed(own, GetTransform());

        // Moving bodies: each pair once, from the earlier body's list. Their contacts do not count towards rest.
        for (DynamicRigidbody* other : near_dynamic) {
            if (!CanMeetBody(world, *other))
                continue;
            glm::dmat4 otherTransform = other->GetTransform();
            for (auto const& theirs : other->colliders) {
                PlacedCollider const them = Placed(theirs, otherTransform);
                Collision collision;
                if (theirs.is_sphere) {
                    // The sphere path only knows the sphere as its first shape.
                    collision = ConvexCollision(them, world);
                    collision.normal = -collision.normal;
                } else {
                    collision = ConvexCollision(world, them);
                }
                if (collision.depth <= 0.0)
                    continue;
                AddDebugLine(*this, collision);
                if (theirs.on_contact || own.on_contact) {
                    ConvexMeshCollider const others = Copied(them);
                    ConvexMeshCollider const mine = Copied(world);
                    if (theirs.on_contact) {
                        collision.normal = -collision.normal;
                        ContactEvent event{*other, others, &mine, collision, h};
                        theirs.on_contact(event);
                        collision.normal = -collision.normal;
                    }
                    if (own.on_contact) {
                        ContactEvent event{*this, mine, &others, collision, h};
                        own.on_contact(event);
                    }
                }
                if (collision.depth > 0.0)
                    RespondToCollision(other, collision, own.friction * theirs.friction);
                world.transform = GetTransform() * own.transform;
                otherTransform = other->GetTransform();
            }
        }

        // Already at rest from earlier steps: the obstacles can wait.
        if (rest_gain > 0.99)
            return;

        StaticContact routine{*this, own, world, nullptr, h, contacts};
        for (Rigidbody* obstacle : near_static) {
            if (!CanMeetBody(world, *obstacle))
                continue;
            routine.obstacle = obstacle;
            glm::dmat4 obstacleTransform = obstacle->GetTransform();
            for (auto const& theirs : obstacle->colliders)
                routine.Test(Placed(theirs, obstacleTransform));
        }

        if (parent_body) {
            // The child lives in its parent's entity frame, where the parent's colliders sit at its centre of mass.
            routine.obstacle = nullptr;
            glm::dmat4 parentFrame = glm::translate(glm::dmat4(1.0), parent_body->center_of_mass);
            for (auto const& theirs : parent_body->colliders)
                routine.Test(Placed(theirs, parentFrame));
        }
    }
    if (contacts >= kRestContacts && glm::length(linear_velocity) < kRestSpeed &&
        glm::length(angular_velocity) < kRestSpin)
        rest_gain += 1.0;
}

// ---- Response --------------------------------------------------------------------------------------------------------

void DynamicRigidbody::RespondToCollision(Collision const& collision, double friction) {
    glm::dvec3 const& n = collision.normal;
    glm::dvec3 r = collision.point - position;
    glm::dvec3 v = linear_velocity + glm::cross(angular_velocity, r);

    position += n * collision.depth;

    // No restitution, and no test of the approach speed's sign: the depth is gone already.
    double j = -glm::dot(v, n) / (inverse_mass + RotationalMass(*this, r, n));
    ApplyImpulse(j * n, r);

    // Friction takes a fixed share of the impulse that would stop the sliding, with no cone.
    if (friction > 0.0) {
        glm::dvec3 t = v - n * glm::dot(v, n);
        if (glm::length(t) > kTangentEpsilon) {
            t = glm::normalize(t);
            double k = inverse_mass + RotationalMass(*this, r, t);
            if (k > 0.0)
                ApplyImpulse(-glm::dot(v, t) * friction / k * t, r);
        }
    }
}

void DynamicRigidbody::RespondToCollision(DynamicRigidbody* other, Collision const& collision, double friction) {
    glm::dvec3 const& n = collision.normal;
    double ma = inverse_mass, mb = other->inverse_mass, s = ma + mb;
    glm::dvec3 ra = collision.point - position;
    glm::dvec3 rb = collision.point - other->position;
    glm::dvec3 v = (linear_velocity + glm::cross(angular_velocity, ra)) -
                   (other->linear_velocity + glm::cross(other->angular_velocity, rb));

    position += n * collision.depth * ma / s;
    other->position -= n * collision.depth * mb / s;

    double j = -glm::dot(v, n) / (s + RotationalMass(*this, ra, n) + RotationalMass(*other, rb, n));
    ApplyImpulse(j * n, ra);
    other->ApplyImpulse(-j * n, rb);

    if (friction > 0.0) {
        glm::dvec3 t = v - n * glm::dot(v, n);
        if (glm::length(t) > kTangentEpsilon) {
            t = glm::normalize(t);
            double k = s + RotationalMass(*this, ra, t) + RotationalMass(*other, rb, t);
            if (k > 0.0) {
                glm::dvec3 impulse = -glm::dot(v, t) * friction / k * t;
                ApplyImpulse(impulse, ra);
                other->ApplyImpulse(-impulse, rb);
            }
        }
    }
}

}
