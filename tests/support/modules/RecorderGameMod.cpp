#include "Recorder.h"

extern "C" void Game_Start() { Record("Game_Start"); }
extern "C" void Game_Ready() { Record("Game_Ready"); }
extern "C" void Game_Stop() { Record("Game_Stop"); }
extern "C" void Game_Update(double smoothedFrameSeconds) {
    Record("Game_Update");
    journal::Note(RECORDER_NAME ":Game_Update", smoothedFrameSeconds);
}
extern "C" void Game_ClientUpdate() { Record("Game_ClientUpdate"); }
extern "C" void Input_Update(double) { Record("Input_Update"); }
extern "C" void Input_Update_Play(double) { Record("Input_Update_Play"); }
extern "C" void Input_Update_Station(double) { Record("Input_Update_Station"); }

// The frame stages: each records its name, so that a test sees the order of a frame and of each sorted list.
#define RECORD_STAGE(hook) extern "C" void hook() { Record(#hook); }
#define RECORD_COMMANDS(hook) extern "C" void hook(VkCommandBuffer) { Record(#hook); }
RECORD_STAGE(Renderer_StartRendering)
RECORD_STAGE(Renderer_StopRendering)
RECORD_STAGE(Renderer_RefreshViewport)
RECORD_STAGE(Renderer_FrameCollectGarbage)
RECORD_STAGE(Renderer_FrameUpdateDescriptorSets)
RECORD_STAGE(Renderer_FrameBeforePost)
RECORD_STAGE(Renderer_FrameInit)
RECORD_STAGE(Renderer_FrameUpdateUi)
RECORD_STAGE(Renderer_FrameBeforeUpdate)
RECORD_STAGE(Renderer_FrameUpdate)
RECORD_STAGE(Renderer_FrameAfterUpdate)
RECORD_STAGE(Renderer_FrameBeforeRender)
RECORD_STAGE(Renderer_FrameAfterRender)
RECORD_COMMANDS(Renderer_FramePushCommands)
RECORD_COMMANDS(Renderer_FrameBuildCommands)
RECORD_COMMANDS(Renderer_FrameRenderCommands)
RECORD_COMMANDS(Renderer_FrameResolveCommands)
RECORD_COMMANDS(Renderer_FrameBlitCommands)
RECORD_COMMANDS(Renderer_FramePostCommands)
RECORD_COMMANDS(Renderer_FrameOverlayCommands)
