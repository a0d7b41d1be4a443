#include "game/graphics/LightSourceInstance.h"

#include "engine/vk/Device.h"
#include "game/graphics/RenderDevice.h"

#include <cmath>
#include <cstring>

namespace game::graphics {

std::vector<std::weak_ptr<LightSourceInstance>> LightSourceInstance::_sharedObjects;
quorl::SharedMutex LightSourceInstance::_sharedObjectsMutex;

namespace {
/// The power at which a light reaches no further than its inner radius: the distance law below falls to a twentieth.
constexpr float kLeastVisiblePower = 0.05f;
constexpr float kFourPi = 12.566371f;
}

LightSourceInstance::LightSourceInstance(glm::vec3 position, float innerRadius, glm::vec3 direction, float spotFactor,
    glm::vec3 color, float power)
    : position(position)
    , innerRadius(innerRadius)
    , direction(direction)
    , spotFactor(spotFactor) {
    auto* device = RenderDevice();
    buffer = std::make_shared<InstanceBuffer<LightSourceInstanceData>>(device, kGeometryUsage, 1);
    device->SetDebugName(buffer->allocation, "LightSourceInstanceData");
    record = buffer->data;
    std::memset(record, 0, offsetof(LightSourceInstanceData, color));
    record->color = color;
    record->innerRadius = innerRadius;
    record->direction = direction;
    record->spotFactor = spotFactor;
    if (power > 0.0f) {
        SetPower(power, color, 0.0f);
    }
}

void LightSourceInstance::SetPower(float power, glm::vec3 color, float spot) {
    active = power != 0.0f;
    if (power == 0.0f) {
        return;
    }
    bool const samePower = power == record->power;
    if (spot != 0.0f) {
        spotFactor = spot;
    }
    if (samePower) {
        record->color = color;
        if (spot != 0.0f) {
            record->spotFactor = spot;
        }
        return;
    }
    float const x = power / kLeastVisiblePower - 1.0f;
    float const reach = x > 0.0f ? x : 0.0f;
    float const r = std::sqrt(reach / (spotFactor == 0.0f ? kFourPi : 2.0f * spotFactor));
    float const R = r + innerRadius;
    for (int axis = 0; axis < 3; ++axis) {
        // Shifted along the direction, so that a spot's box lies ahead of the light.
        float const ahead = direction[axis] * R;
        record->boxMin[axis] = position[axis] - R + ahead - direction[axis] * innerRadius;
        record->boxMax[axis] = position[axis] + R + ahead + direction[axis] * innerRadius;
    }
    record->power = power;
    record->radius = R;
    dirty = true;
    record->color = color;
    if (spot != 0.0f) {
        record->spotFactor = spot;
    }
}

}
