#pragma once

#include "game/Export.h"
#include "game/graphics/RenderableInstance.h"

#include <glm/vec4.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace quorl::graphics {
class ComputeTexture;
}

namespace game::graphics {

/// What the trail's intersection shader reads, through the payload address of the trail's box.
struct PlasmaData {
    /// 16 times the half width.
    float length;
    float halfWidth;
    /// 0..2500.
    float emission;
    /// The trail's ComputeTexture in the renderer's texture table.
    uint16_t texture;
    uint16_t zero;
    float red;
    float green;
    float blue;
    /// 0..500.
    float density;
};
static_assert(sizeof(PlasmaData) == 32 && offsetof(PlasmaData, emission) == 8 && offsetof(PlasmaData, texture) == 12
    && offsetof(PlasmaData, zero) == 14 && offsetof(PlasmaData, red) == 16 && offsetof(PlasmaData, blue) == 24
    && offsetof(PlasmaData, density) == 28);

/// The glow behind a body in fast flight through an atmosphere: one procedural box along the flow and its
/// parameter block. Made with RenderableInstance::Make<PlasmaTrail>(); the entity's client physics step sets it.
class MERIDON_EXPORT PlasmaTrail : public RenderableInstance {
public:
    PlasmaTrail();

    /// Fits the trail to a body of radius `flow.w` moving at `flow.xyz` through a medium of `density`; false when
    /// nothing glows, under water included (then only `flow` is written). The texture is made on the first glowing
    /// call.
    bool Set(glm::vec4 const& flow, double density, double liquidDensity);

    std::shared_ptr<InstanceBuffer<PlasmaData>> plasmaData;
    PlasmaData* record;
    std::shared_ptr<quorl::graphics::ComputeTexture> texture;
    /// Velocity, then 1.1 times the body's size.
    glm::vec4 flow{0.0f};
};

}
