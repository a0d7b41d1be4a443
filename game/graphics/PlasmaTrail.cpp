#include "game/graphics/PlasmaTrail.h"

#include "engine/graphics/ComputeTexture.h"
#include "engine/vk/Device.h"
#include "game/Game.h"
#include "game/graphics/GameRenderer.h"
#include "game/graphics/RenderDevice.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace game::graphics {

namespace {
constexpr uint32_t kPlasmaHitGroup = 8;
/// The trail reaches this many half widths behind the body.
constexpr float kLengthInHalfWidths = 16.0f;
/// Orange, the hottest the glow gets; it fades from grey towards it.
constexpr glm::vec3 kHottest{1.0f, 0.25f, 0.05f};
constexpr unsigned kTextureSize = 256;
/// There is no plasma under water.
constexpr double kMostLiquidThatGlows = 0.0005;
}

PlasmaTrail::PlasmaTrail() : RenderableInstance(kPlasmaHitGroup) {
    auto* device = RenderDevice();
    plasmaData = std::make_shared<InstanceBuffer<PlasmaData>>(device, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT, 1);
    device->SetDebugName(plasmaData->allocation, "PlasmaData");
    record = plasmaData->data;
    *record = {};
    auto box = std::make_shared<AabbGeometry>(1);
    (*box->boxes)[0] = {glm::vec3(0.0f), glm::vec3(0.0f), plasmaData->address};
    geometries.push_back(box);
}

bool PlasmaTrail::Set(glm::vec4 const& newFlow, double density, double liquidDensity) {
    flow = newFlow;
    if (liquidDensity >= kMostLiquidThatGlows) {
        return false;
    }
    float const r = flow.w;
    double const p = std::pow(density, 0.15);
    double const speedSq = glm::dot(glm::vec3(flow), glm::vec3(flow));
    double const a = speedSq * density / 1e8;
    double const b = std::sqrt(speedSq) * p / 1000.0;
    if (a <= 0.001 && b <= 0.01) {
        return false;
    }
    auto& box = (*std::static_pointer_cast<AabbGeometry>(geometries.front())->boxes)[0];
    box.min = {-r, 0.0f, -r};
    box.max = {r, kLengthInHalfWidths * r, r};
    record->length = kLengthInHalfWidths * r;
    record->halfWidth = r;
    glm::vec3 const color = b > 1.0 ? kHottest : glm::vec3(float((1.0 - b) * 0.5)) + float(b) * kHottest;
    record->red = color.r;
    record->green = color.g;
    record->blue = color.b;
    record->density = float(std::clamp(std::max(a, b / 5000.0) * 100.0, 0.0, 500.0));
    record->emission = float(std::clamp(b * 500.0, 0.0, 2500.0));
    if (!texture) {
        texture = std::make_shared<quorl::graphics::ComputeTexture>(Game::renderer, kTextureSize, kTextureSize,
            VK_FORMAT_R32G32_SFLOAT, 0);
        record->texture = uint16_t(Game::renderer->AddTexture(texture, VK_NULL_HANDLE));
        record->zero = 0;
    }
    return true;
}

}
