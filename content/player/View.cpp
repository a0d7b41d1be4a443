#include "content/player/View.h"

#include "content/player/Avatar.h"

#include <glm/ext/matrix_transform.hpp>
#include <glm/geometric.hpp>
#include <glm/matrix.hpp>

#include <cmath>

namespace player {

glm::dvec3 LookDirection(glm::dvec3 const& eye, double heading, double pitch) {
    return Upright(eye, heading) * glm::dvec3(std::cos(pitch), std::sin(pitch), 0.0);
}

glm::dmat4 CameraMatrix(glm::dvec3 const& eye, double heading, double pitch) {
    return glm::inverse(glm::lookAtRH(eye, eye + LookDirection(eye, heading, pitch), glm::normalize(eye)));
}

glm::dvec3 Fly(glm::dvec3 const& eye, double heading, double pitch, glm::dvec3 const& wish, bool sprint, double dt) {
    glm::dvec3 const up = glm::normalize(eye);
    glm::dvec3 const forward = LookDirection(eye, heading, pitch);
    glm::dvec3 const right = glm::normalize(glm::cross(forward, up));
    glm::dvec3 velocity = forward * wish.x + right * wish.z + up * wish.y;
    if (glm::length(velocity) > 1.0)
        velocity = glm::normalize(velocity);
    return eye + velocity * (sprint ? kDroneSprintSpeed : kDroneSpeed) * dt;
}

}
