#include "content/player/Avatar.h"

#include "content/demo/Door.h"
#include "content/planet/Planet.h"

#include "game/Game.h"
#include "game/physics/EnvironmentInfo.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <memory>

namespace player {

using game::entity::ServerSideEntity;

glm::dvec3 SpawnPosition() {
    return planet::AtAltitude(0.0, 0.0, 0.02);
}

glm::dquat Upright(glm::dvec3 const& position, double heading) {
    return glm::dquat(glm::dvec3(0.0, 1.0, 0.0), glm::normalize(position)) *
           glm::angleAxis(heading, glm::dvec3(0.0, 1.0, 0.0));
}

namespace {

/// Where a body that stands on others is, in the planet's frame, and how its own frame (its parent's) is turned there.
struct PlanetFrame {
    glm::dvec3 position;
    glm::dquat rotation{1.0, 0.0, 0.0, 0.0};
};

PlanetFrame FrameOf(ServerSideEntity const& avatar) {
    PlanetFrame frame{avatar.position};
    for (auto parent = ServerSideEntity::Get(avatar.parent); parent; parent = ServerSideEntity::Get(parent->parent)) {
        frame.position = parent->position + parent->orientation * frame.position;
        frame.rotation = parent->orientation * frame.rotation;
    }
    return frame;
}

bool OnGround(ServerSideEntity const& avatar, glm::dvec3 const& planetPosition) {
    if (!avatar.parent.IsNull())
        return true;  // the physics parents a body to what it stands on
    auto environment = Game::_environmentFunctions.find(avatar.environment);
    if (environment == Game::_environmentFunctions.end())
        return false;
    return environment->second(planetPosition, game::ENVIRONMENT_BODY, 0.0).altitude < kGroundContact;
}

double Speed(Input const& input) {
    return input.crouch ? kCrouchSpeed : input.sprint ? kSprintSpeed : kWalkSpeed;
}

}

void Steer(ServerSideEntity& avatar, Input const& input, double dt) {
    // Standing on another body, the avatar's numbers are in that body's frame: turn the planet's up into it.
    PlanetFrame const frame = FrameOf(avatar);
    glm::dquat const toOwnFrame = glm::inverse(frame.rotation);
    glm::dvec3 const up = toOwnFrame * glm::normalize(frame.position);
    avatar.orientation = toOwnFrame * Upright(frame.position, input.heading);
    avatar.angular_velocity = glm::dvec3(0.0);
    // A resting body leaves the simulation; a player's body never rests.
    avatar.rest_time = 0.0;

    glm::dvec3 wish = avatar.orientation * glm::dvec3(input.forward, 0.0, input.right);
    if (glm::length(wish) > 1.0)
        wish = glm::normalize(wish);
    wish *= Speed(input);
    double const vertical = glm::dot(avatar.linear_velocity, up);
    glm::dvec3 const horizontal = avatar.linear_velocity - vertical * up;
    bool const grounded = OnGround(avatar, frame.position);
    glm::dvec3 const steered = grounded ? wish : horizontal + (wish - horizontal) * std::min(1.0, kAirControl * dt);
    double climb = vertical;
    if (grounded && input.jump)
        climb = std::max(climb, kJumpSpeed);
    if (input.jetpack)
        climb += kJetpackThrust * dt;
    avatar.linear_velocity = steered + climb * up;
}

void Respawn(ServerSideEntity& avatar) {
    avatar.parent = game::entity::Id{};
    avatar.position = SpawnPosition();
    avatar.orientation = Upright(avatar.position, 0.0);
    avatar.linear_velocity = glm::dvec3(0.0);
    avatar.angular_velocity = glm::dvec3(0.0);
    avatar.rest_time = 0.0;
}

bool UseDoorInFront(ServerSideEntity const& avatar) {
    if (!avatar.parent.IsNull())
        return false;  // doors stand on the planet; from another body, their frames differ
    glm::dvec3 const facing = avatar.orientation * glm::dvec3(1.0, 0.0, 0.0);
    std::shared_ptr<ServerSideEntity> nearest;
    double nearestDistance = kReach;
    ServerSideEntity::ForEach([&](std::shared_ptr<ServerSideEntity> const& entity) {
        if (entity->type != "door" || entity->environment != avatar.environment || !entity->parent.IsNull())
            return;
        glm::dvec3 const toDoor = entity->position - avatar.position;
        double const distance = glm::length(toDoor);
        if (distance < nearestDistance && glm::dot(toDoor, facing) >= kReachCosine * distance) {
            nearest = entity;
            nearestDistance = distance;
        }
    });
    if (!nearest)
        return false;
    bool const shut = std::abs(nearest->joints.at("hinge").angular.z) < 45.0f;
    demo::SwingDoor(*nearest, shut ? 90.0f : 0.0f);
    return true;
}

}
