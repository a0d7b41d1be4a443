#pragma once

#include "modules/ModuleClass.h"

#include <glm/vec3.hpp>
#include <vulkan/vulkan_core.h>

/// Client-side game modules: game loop, input loop and the renderer's frame stages. Loaded by the launcher, except in
/// a dedicated server.
#define MERIDON_GAME_MOD_HOOKS(HOOK)                                                                                   \
    HOOK(Game_Start, void, (),                                                                                         \
         "Once, first thing in Game::Start: before the renderer starts and the content modules load",                  \
         "main", "")                                                                                                   \
    HOOK(Game_Ready, void, (),                                                                                         \
         "Once, in Game::Ready: after the world is loaded and Server_Load has run, before the loops start",            \
         "main", "")                                                                                                   \
    HOOK(Game_Stop, void, (),                                                                                          \
         "Once, in Game::Stop: after the loops have ended, the world is saved, the renderer stopped and the content "  \
         "modules unloaded",                                                                                           \
         "main", "")                                                                                                   \
    HOOK(Game_Update, void, (double smoothedFrameSeconds),                                                             \
         "Each game loop pass, after the work queued with Game::Synchronize and the client-side entities' Update. "    \
         "The argument is the render loop's frame time, smoothed",                                                     \
         "game", "update")                                                                                             \
    HOOK(Game_ClientUpdate, void, (),                                                                                  \
         "Each game loop pass, after Game_Update and the client-side entities' AfterUpdate",                           \
         "game", "")                                                                                                   \
    HOOK(Input_Update, void, (double deltaSeconds),                                                                    \
         "Each input loop pass, after the joysticks and the controller are polled",                                    \
         "input", "")                                                                                                  \
    HOOK(Input_Update_Play, void, (double deltaSeconds),                                                               \
         "Each input loop pass, after Input_Update, unless the input mode is station (Game::_inputMode 2)",            \
         "input", "")                                                                                                  \
    HOOK(Input_Update_Station, void, (double deltaSeconds),                                                            \
         "Each input loop pass, after Input_Update, while the input mode is station (Game::_inputMode 2)",             \
         "input", "")                                                                                                  \
    HOOK(Input_Key_Play, void, (int key, int scancode, int action, int mods),                                          \
         "Not called by `meridon`, whose input goes through the controller's bindings. For a launcher that forwards "  \
         "the window's key events in play mode, with GLFW's numbering",                                                \
         "-", "")                                                                                                      \
    HOOK(Input_Key_Station, void, (int key, int scancode, int action, int mods),                                       \
         "Not called by `meridon`. For a launcher that forwards the window's key events in station mode, with GLFW's"  \
         " numbering",                                                                                                 \
         "-", "")                                                                                                      \
    HOOK(Input_Char_Play, void, (unsigned int codepoint),                                                              \
         "Not called by `meridon`. For a launcher that forwards the characters typed in play mode",                    \
         "-", "")                                                                                                      \
    HOOK(Input_Char_Station, void, (unsigned int codepoint),                                                           \
         "Not called by `meridon`. For a launcher that forwards the characters typed in station mode",                 \
         "-", "")                                                                                                      \
    HOOK(Input_MouseButton_Play, void, (int button, int action, int mods),                                             \
         "Not called by `meridon`. For a launcher that forwards mouse buttons in play mode, with GLFW's numbering",    \
         "-", "")                                                                                                      \
    HOOK(Input_MouseButton_Station, void, (int button, int action, int mods),                                          \
         "Not called by `meridon`. For a launcher that forwards mouse buttons in station mode, with GLFW's numbering", \
         "-", "")                                                                                                      \
    HOOK(Input_MouseScroll_Play, void, (double x, double y),                                                           \
         "Not called by `meridon`. For a launcher that forwards the mouse wheel in play mode",                         \
         "-", "")                                                                                                      \
    HOOK(Input_MouseScroll_Station, void, (double x, double y),                                                        \
         "Not called by `meridon`. For a launcher that forwards the mouse wheel in station mode",                      \
         "-", "")                                                                                                      \
    HOOK(Client_Connected, bool, (),                                                                                   \
         "Not called by `meridon`, which has no network. For a launcher that carries the client's link to its server"  \
         " through the module's own network code: whether the link is up",                                             \
         "-", "")                                                                                                      \
    HOOK(Client_Send, void, (unsigned char const* data, unsigned long size),                                           \
         "Not called by `meridon`. A client module calls it, for every module, with bytes for the server; the "        \
         "one that carries the link sends them: MERIDON_link queues them for the server's next "                       \
         "Server_BeforeUpdate",                                                                                        \
         "-", "")                                                                                                      \
    HOOK(Client_Receive, void, (unsigned char const* data, unsigned long size),                                        \
         "Bytes that came from the server, handed to every module by the module that carries the link. "               \
         "MERIDON_link calls it once per packet in its Game_ClientUpdate; its own Client_Receive applies the "         \
         "entity messages of docs/link-format.md",                                                                     \
         "game", "")                                                                                                   \
    HOOK(Physics_PlayerPosition, void, (glm::dvec3 & position),                                                        \
         "Not called by `meridon`. For a launcher that asks where the player's body is, in world coordinates",         \
         "-", "")                                                                                                      \
    HOOK(Physics_CameraPosition, void, (glm::dvec3 & position),                                                        \
         "Not called by `meridon`. For a launcher that asks where the camera is, in world coordinates",                \
         "-", "")                                                                                                      \
    HOOK(Renderer_StartRendering, void, (),                                                                            \
         "Once, in Game::Start after Game_Start, when the renderer has started: ImGui's context exists from here",     \
         "main", "")                                                                                                   \
    HOOK(Renderer_StopRendering, void, (),                                                                             \
         "Once, first thing in Game::Stop, with the device idle, before the renderer stops",                           \
         "main", "")                                                                                                   \
    HOOK(Renderer_RefreshViewport, void, (),                                                                           \
         "After the swapchain is made again (the window was resized), once the library's overlay has followed it",     \
         "main", "")                                                                                                   \
    HOOK(Renderer_FrameCollectGarbage, void, (),                                                                       \
         "Every frame, stage 1 of 17; the renderer then releases what was handed to GameRenderer::Trash a frame "      \
         "before",                                                                                                     \
         "main", "")                                                                                                   \
    HOOK(Renderer_FrameUpdateDescriptorSets, void, (), "Every frame, stage 2 of 17", "main", "")                       \
    HOOK(Renderer_FrameBeforePost, void, (), "Every frame, stage 3 of 17", "main", "")                                 \
    HOOK(Renderer_FrameInit, void, (),                                                                                 \
         "Every frame, stage 4 of 17: the settings are in the frame and the world origin has moved; "                  \
         "GameRenderer::worldOriginChanged says whether to rebase",                                                    \
         "main", "")                                                                                                   \
    HOOK(Renderer_FrameUpdateUi, void, (),                                                                             \
         "Every frame, stage 5 of 17, inside the ImGui frame: the place for ImGui windows (see the ImGui rule)",       \
         "main", "ui")                                                                                                 \
    HOOK(Renderer_FrameBeforeUpdate, void, (), "Every frame, stage 6 of 17", "main", "update")                         \
    HOOK(Renderer_FrameUpdate, void, (), "Every frame, stage 7 of 17", "main", "update")                               \
    HOOK(Renderer_FrameAfterUpdate, void, (),                                                                          \
         "Every frame, stage 10 of 17: after Renderer_FrameAfterRender, not before it",                                \
         "main", "update")                                                                                             \
    HOOK(Renderer_FrameBeforeRender, void, (), "Every frame, stage 8 of 17", "main", "render")                         \
    HOOK(Renderer_FrameAfterRender, void, (),                                                                          \
         "Every frame, stage 9 of 17, once the interface elements are sorted by draw order",                           \
         "main", "render")                                                                                             \
    HOOK(Renderer_FramePushCommands, void, (VkCommandBuffer commands),                                                 \
         "Every frame, stage 11 of 17, recording the frame's commands; the pending texture uploads follow",            \
         "main", "")                                                                                                   \
    HOOK(Renderer_FrameBuildCommands, void, (VkCommandBuffer commands), "Every frame, stage 12 of 17", "main", "")     \
    HOOK(Renderer_FrameRenderCommands, void, (VkCommandBuffer commands),                                               \
         "Every frame, stage 13 of 17: the world's drawing",                                                           \
         "main", "render")                                                                                             \
    HOOK(Renderer_FrameResolveCommands, void, (VkCommandBuffer commands),                                              \
         "Every frame, stage 14 of 17",                                                                                \
         "main", "post")                                                                                               \
    HOOK(Renderer_FrameBlitCommands, void, (VkCommandBuffer commands), "Every frame, stage 15 of 17", "main", "post")  \
    HOOK(Renderer_FramePostCommands, void, (VkCommandBuffer commands), "Every frame, stage 16 of 17", "main", "post")  \
    HOOK(Renderer_FrameOverlayCommands, void, (VkCommandBuffer commands),                                              \
         "Every frame, stage 17 of 17, before the library's overlay pass (the crosshair)",                             \
         "main", "overlay")

struct MERIDON_EXPORT GameModHooks {
    static constexpr char const* CLASS = "GAME_Mod";
    MERIDON_GAME_MOD_HOOKS(MERIDON_HOOK_FIELD)
    template <class Fetch> void FetchHooks(Fetch&& fetch) { MERIDON_GAME_MOD_HOOKS(MERIDON_HOOK_FETCH) }
};

class MERIDON_EXPORT GAME_Mod final : public modules::ModuleClass<GAME_Mod, GameModHooks> {
public:
    using ModuleClass::ModuleClass;
};

extern template class modules::ModuleClass<GAME_Mod, GameModHooks>;
