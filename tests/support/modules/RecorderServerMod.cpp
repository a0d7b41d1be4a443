#include "Recorder.h"

#include <iostream>

namespace {
long beforeUpdates = 0;
long gameUpdates = 0;
}

extern "C" void Server_Load(char const* world) { Record((std::string("Server_Load ") + world).c_str()); }
extern "C" void Server_BeforeUpdate(double) { Record("Server_BeforeUpdate"); ++beforeUpdates; }
extern "C" void Server_GameUpdate(double) { Record("Server_GameUpdate"); ++gameUpdates; }

// The launcher runs in a process of its own, so its test reads the tick counts from standard output.
__attribute__((destructor)) static void ReportTicks() {
    if (beforeUpdates || gameUpdates)
        std::cout << RECORDER_NAME << " ticks: " << beforeUpdates << " before, " << gameUpdates << " game" << std::endl;
}
