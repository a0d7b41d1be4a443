#pragma once

// The rule for every library that calls ImGui, modules included: use the game's context and the game's allocators.
//
// ImGui keeps its current context and its allocation functions in globals of the copy of ImGui that a library was
// linked with. A module that brings its own copy (linked statically, or a different version) would otherwise draw
// into no context at all, or free with one heap what another allocated. So at the top of every hook that calls
// ImGui (Renderer_FrameUpdateUi, where the game's ImGui frame is open):
//
//     #include "modules/ImGuiHost.h"
//     extern "C" void Renderer_FrameUpdateUi() {
//         if (!modules::UseHostImGui())
//             return;
//         ImGui::Begin("My window"); ... ImGui::End();
//     }
//
// The call is cheap; doing it per hook rather than once keeps a module right even when the game makes its context
// anew. content/example/ExampleGame.cpp does it this way.

#include "game/Export.h"

#include <imgui.h>

namespace modules {

/// What the game's ImGui runs on.
struct ImGuiHost {
    /// Made when the renderer starts (before Renderer_StartRendering); null before then and without a renderer.
    ImGuiContext* context = nullptr;
    ImGuiMemAllocFunc alloc = nullptr;
    ImGuiMemFreeFunc free = nullptr;
    void* userData = nullptr;
};

/// The game's ImGui context and allocators, as the game library's own copy of ImGui has them now.
MERIDON_EXPORT ImGuiHost GetImGuiHost();

/// Points the calling library's ImGui at the game's context and allocators. Inline, so that it sets the globals of
/// the caller's own copy of ImGui, whichever that is. False, and nothing changed, while the game has no context.
inline bool UseHostImGui() {
    ImGuiHost const host = GetImGuiHost();
    if (!host.context)
        return false;
    ImGui::SetAllocatorFunctions(host.alloc, host.free, host.userData);
    ImGui::SetCurrentContext(host.context);
    return true;
}

}
