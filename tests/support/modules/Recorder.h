#pragma once

// Shared by the recorder test modules: each is built once per name and class, with RECORDER_NAME (e.g.
// "TEST_alpha"), RECORDER_CLASS (e.g. "GAME_Mod") and RECORDER_SORT (its place in every sorted list) defined.

#include "modules/ModuleApi.h"

#include "tests/support/Journal.h"

inline void Record(char const* hook) {
    journal::Record(std::string(RECORDER_NAME) + "." + RECORDER_CLASS + ":" + hook);
}

extern "C" void ModuleLoad() {
    Record("ModuleLoad");
}

extern "C" void ModuleUnload() {
    Record("ModuleUnload");
}

extern "C" int ModuleSort(char const*) {
    return RECORDER_SORT;
}
