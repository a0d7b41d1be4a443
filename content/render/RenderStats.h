#pragma once

// What the module tells about its last frame, for benchmarks and tools that load it: fetch the exported function
// MERIDON_render_Stats with dlsym from MERIDON_render.GAME_Mod.so.

#include <cstdint>

namespace render {

struct RenderStats {
    /// Draw calls recorded, shadow map included.
    uint32_t drawCalls = 0;
    uint32_t instances = 0;
    uint32_t lights = 0;
    /// CPU time spent gathering the world and recording the frame's commands.
    double recordMilliseconds = 0.0;
};

using StatsFunction = RenderStats const* (*)();

}
