#pragma once

#include "modules/ModuleClass.h"

#include <glm/vec3.hpp>
#include <vulkan/vulkan_core.h>

/// Client-side game modules. Hooks marked "launcher" are called by the launcher; the rest by Game and the renderer,
/// either for all modules or for one of the sorted lists "update", "render", "post", "overlay" and "ui".
#define MERIDON_GAME_MOD_HOOKS(HOOK)                                                                 \
    HOOK(Game_Start, void, ())                                                                       \
    HOOK(Game_Ready, void, ())                                                                       \
    HOOK(Game_Stop, void, ())                                                                        \
    HOOK(Game_Update, void, (double smoothedFrameSeconds)) /* list "update" */                       \
    HOOK(Game_ClientUpdate, void, ())                                                                \
    HOOK(Input_Update, void, (double deltaSeconds))                                                  \
    HOOK(Input_Update_Play, void, (double deltaSeconds))                                             \
    HOOK(Input_Update_Station, void, (double deltaSeconds))                                          \
    /* launcher: window events, with GLFW's numbering */                                             \
    HOOK(Input_Key_Play, void, (int key, int scancode, int action, int mods))                        \
    HOOK(Input_Key_Station, void, (int key, int scancode, int action, int mods))                     \
    HOOK(Input_Char_Play, void, (unsigned int codepoint))                                            \
    HOOK(Input_Char_Station, void, (unsigned int codepoint))                                         \
    HOOK(Input_MouseButton_Play, void, (int button, int action, int mods))                           \
    HOOK(Input_MouseButton_Station, void, (int button, int action, int mods))                        \
    HOOK(Input_MouseScroll_Play, void, (double x, double y))                                         \
    HOOK(Input_MouseScroll_Station, void, (double x, double y))                                      \
    /* launcher: the client's link to its server, carried by the module's own network code */        \
    HOOK(Client_Connected, bool, ())                                                                 \
    HOOK(Client_Send, void, (unsigned char const* data, unsigned long size))                         \
    HOOK(Client_Receive, void, (unsigned char const* data, unsigned long size))                      \
    /* launcher: world positions of the player's body and of the camera */                           \
    HOOK(Physics_PlayerPosition, void, (glm::dvec3 & position))                                      \
    HOOK(Physics_CameraPosition, void, (glm::dvec3 & position))                                      \
    HOOK(Renderer_StartRendering, void, ())                                                          \
    HOOK(Renderer_StopRendering, void, ())                                                           \
    HOOK(Renderer_RefreshViewport, void, ())                                                         \
    HOOK(Renderer_FrameCollectGarbage, void, ())                                                     \
    HOOK(Renderer_FrameUpdateDescriptorSets, void, ())                                               \
    HOOK(Renderer_FrameBeforePost, void, ())                                                         \
    HOOK(Renderer_FrameInit, void, ())                                                               \
    HOOK(Renderer_FrameUpdateUi, void, ())                           /* list "ui" */                 \
    HOOK(Renderer_FrameBeforeUpdate, void, ())                       /* list "update" */             \
    HOOK(Renderer_FrameUpdate, void, ())                             /* list "update" */             \
    HOOK(Renderer_FrameAfterUpdate, void, ())                        /* list "update" */             \
    HOOK(Renderer_FrameBeforeRender, void, ())                       /* list "render" */             \
    HOOK(Renderer_FrameAfterRender, void, ())                        /* list "render" */             \
    HOOK(Renderer_FramePushCommands, void, (VkCommandBuffer commands))                               \
    HOOK(Renderer_FrameBuildCommands, void, (VkCommandBuffer commands))                              \
    HOOK(Renderer_FrameRenderCommands, void, (VkCommandBuffer commands))   /* list "render" */       \
    HOOK(Renderer_FrameResolveCommands, void, (VkCommandBuffer commands))  /* list "post" */         \
    HOOK(Renderer_FrameBlitCommands, void, (VkCommandBuffer commands))     /* list "post" */         \
    HOOK(Renderer_FramePostCommands, void, (VkCommandBuffer commands))     /* list "post" */         \
    HOOK(Renderer_FrameOverlayCommands, void, (VkCommandBuffer commands))  /* list "overlay" */

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
