#include "Recorder.h"

extern "C" void SplashBegin() { Record("SplashBegin"); }
extern "C" void SplashEnd() { Record("SplashEnd"); }
