#pragma once

#include "game/physics/AeroSurface.h"
#include "game/physics/DebugLine.h"
#include "game/physics/EnvironmentInfo.h"
#include "game/physics/Rigidbody.h"

#include <glm/mat3x3.hpp>

#include <unordered_set>

namespace game::physics {

/// A body that moves during the tick. Contacts are answered one by one with impulses as they are found, so a later
/// contact sees the velocities an earlier one left; penetration is removed by moving the body at once.
class MERIDON_EXPORT DynamicRigidbody : public Rigidbody {
public:
    /// Takes mass, inertia, velocities and the impulses the entity gathered since the last tick of length `dt`.
    DynamicRigidbody(std::shared_ptr<game::entity::ServerSideEntity> const& source, double dt);

    /// Impulse `impulse` at `offset` from the centre of mass, in the group's axes. Any impulse wakes the body for
    /// the rest of this step.
    void ApplyImpulse(glm::dvec3 const& impulse, glm::dvec3 const& offset);
    /// Semi-implicit Euler over `h` seconds.
    void IntegrateMotion(double h);
    /// Writes pose, velocities and rest back to the living entity, and re-parents it: onto the largest obstacle it
    /// landed on, or back out of its parent when it left it.
    void ApplyToEntity(double dt);

    /// Tests every collider against the bodies and obstacles the broad phase found, and answers each contact.
    void CollisionDetection(double h);
    /// Answers a contact with another moving body; the normal points towards this one.
    void RespondToCollision(DynamicRigidbody* other, Collision const& collision, double friction);
    /// Answers a contact with something that does not move.
    void RespondToCollision(Collision const& collision, double friction);

    /// Finds the surfaces that air or fluid push on, for this tick's motion.
    void ComputeAerodynamicSurfaces(EnvironmentFunction const& environment);
    /// Wing and drag forces, terrain contact, buoyancy and viscous damping, over `h` seconds.
    void InteractWithEnvironment(EnvironmentFunction const& environment, double h);
    /// Terrain contact of a body that rides in `parent`'s frame.
    void InteractWithEnvironmentFromParent(glm::dmat4 const& parent, EnvironmentFunction const& environment,
                                           double dt);

    glm::dvec3 linear_velocity{0.0};
    /// World axes of the group's frame.
    glm::dvec3 angular_velocity{0.0};
    double inverse_mass = 0.0;
    /// World axes, fixed for the tick.
    glm::dmat3 inverse_inertia{0.0};
    /// From the entity's force_impulse.
    glm::dvec3 linear_acceleration{0.0};
    /// From the entity's torque_impulse.
    glm::dvec3 angular_acceleration{0.0};
    /// Grows by one for each step that ends at rest on enough contacts; added to the entity's rest_time.
    double rest_gain = 0.0;
    /// Set by the environment.
    glm::dvec3 gravity{0.0};
    bool aerodynamic = false;
    /// Touched the body of its parent this tick.
    bool touched_parent = false;
    /// Touched the terrain this tick.
    bool touched_environment = false;
    double largest_contact_radius = 0.0;
    /// The largest obstacle touched this tick.
    std::weak_ptr<game::entity::ServerSideEntity> ground;
    /// The body of the entity's parent, when in reach.
    Rigidbody* parent_body = nullptr;
    /// Half the distance travelled in a tick.
    double sweep = 0.0;
    double broad_radius = 0.0;
    std::vector<DynamicRigidbody*> near_dynamic;
    std::vector<Rigidbody*> near_static;
    std::vector<AeroSurface> aero_surfaces;
    /// Set by the tick when the debug view is on: contacts and environment forces then leave lines in debug_lines.
    bool record_debug_lines = false;
    std::vector<DebugLine> debug_lines;
    std::unordered_set<game::entity::Id> ignored;

private:
    struct StaticContact;
};

}
