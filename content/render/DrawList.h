#pragma once

#include "FrameRecords.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace game::graphics {
class RenderableInstance;
}

namespace render {

/// What one frame draws, gathered from the world's registries: one draw per distinct geometry with the records of
/// all the visible instances that show it, and the active lights. Draws grow with the number of distinct geometries,
/// never with the number of instances.
class DrawList {
public:
    struct Draw {
        DrawRecord record;
        /// Vertices of one instance: index count, vertex count, or 36 a box.
        uint32_t vertexCount;
        /// Where its instances start in `instances`.
        uint32_t firstInstance;
        uint32_t instanceCount;
        /// The first of them, nearest the eye, that lie within the reach given to Gather.
        uint32_t nearCount;
    };

    /// Walks the registries; `toOrigin` takes world space to the renderer's floating origin, where `eye` is. Each
    /// draw's instances come nearest first, and those within `reach` of the eye are counted apart.
    void Gather(glm::dmat4 const& toOrigin, glm::vec3 eye, float reach);

    std::vector<Draw> draws;
    /// Grouped by draw.
    std::vector<InstanceRecord> instances;
    std::vector<LightRecord> lights;

private:
    void Add(game::graphics::RenderableInstance& instance, glm::dmat4 const& toOrigin);

    /// Per geometry (by address), its draw and its instances, reused from frame to frame.
    std::unordered_map<void const*, uint32_t> _drawOf;
    std::vector<std::vector<InstanceRecord>> _instancesOf;
};

}
