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
