#pragma once

#include "engine/SharedMutex.h"
#include "game/Export.h"
#include "game/graphics/RenderableInstance.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace game::graphics {

/// A light as shaders read it. The leading 24 bytes are its bounding box, so that the ray tracer treats a light as
/// a procedural primitive.
struct LightSourceInstanceData {
    glm::vec3 boxMin;
    glm::vec3 boxMax;
    float power;
    /// Radius of influence: where the light has fallen to a twentieth of a unit, plus the inner radius.
    float radius;
    glm::vec3 color;
    float innerRadius;
    glm::vec3 direction;
    /// 0 for a light that shines every way.
    float spotFactor;
};
static_assert(sizeof(LightSourceInstanceData) == 64 && offsetof(LightSourceInstanceData, power) == 24
    && offsetof(LightSourceInstanceData, radius) == 28 && offsetof(LightSourceInstanceData, color) == 32
    && offsetof(LightSourceInstanceData, innerRadius) == 44 && offsetof(LightSourceInstanceData, direction) == 48
    && offsetof(LightSourceInstanceData, spotFactor) == 60);

/// A point or spot light. Its owner moves it through the transforms and changes it with SetPower; the rendering
/// module walks `_sharedObjects`.
class MERIDON_EXPORT LightSourceInstance : public std::enable_shared_from_this<LightSourceInstance> {
public:
    /// A light with a power of 0 or less starts off.
    LightSourceInstance(glm::vec3 position, float innerRadius, glm::vec3 direction, float spotFactor, glm::vec3 color,
        float power);
    virtual ~LightSourceInstance() = default;
    LightSourceInstance(LightSourceInstance const&) = delete;
    LightSourceInstance& operator=(LightSourceInstance const&) = delete;

    /// Makes a light and enters it into `_sharedObjects`, in the first slot of a dead light if there is one.
    template<class... A>
    static std::shared_ptr<LightSourceInstance> Make(A&&... arguments) {
        auto light = std::make_shared<LightSourceInstance>(std::forward<A>(arguments)...);
        std::lock_guard lock(_sharedObjectsMutex);
        light->_id = TakeFirstFreeSlot<LightSourceInstance>(_sharedObjects, light);
        return light;
    }

    /// Calls `visit(LightSourceInstance&)` for every live light, under the shared side of the registry.
    template<class Visit>
    static void ForEach(Visit&& visit) {
        ForEachLiveSlot(_sharedObjects, _sharedObjectsMutex, std::forward<Visit>(visit));
    }

    /// Power 0 switches the light off and leaves its record as it was. The box is recomputed only when the power
    /// changes; otherwise only the colour (and a non-zero spot factor) is written. Owner's thread, no lock.
    void SetPower(float power, glm::vec3 color, float spotFactor);

    size_t _id = 0;
    glm::vec3 position;
    float innerRadius;
    glm::vec3 direction;
    float spotFactor;
    std::shared_ptr<InstanceBuffer<LightSourceInstanceData>> buffer;
    LightSourceInstanceData* record;
    bool active = false;
    /// The box changed since the rendering module last read it.
    bool dirty = false;
    /// Filled by the light's owner.
    glm::dmat4 transform{1.0};
    glm::dmat4 previousTransform{1.0};
    glm::dmat4 environmentTransform{1.0};

    static std::vector<std::weak_ptr<LightSourceInstance>> _sharedObjects;
    static quorl::SharedMutex _sharedObjectsMutex;
};

}
