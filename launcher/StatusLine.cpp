#include "StatusLine.h"

#include <cstdio>

namespace {

void AddLoop(std::string& line, char const* name, quorl::FPSCounter const& counter) {
    char part[96];
    std::snprintf(part, sizeof part, "%s%s %5.1f/s %3.0f%%", line.empty() ? "" : " | ", name,
                  counter.TicksPerSecond(), counter.Load() * 100.0);
    line += part;
}

}

std::string StatusLine(quorl::FPSCounter const* render, std::vector<std::unique_ptr<LoopThread>> const& loops) {
    std::string line;
    if (render)
        AddLoop(line, "render", *render);
    for (auto const& loop : loops)
        AddLoop(line, loop->Name().c_str(), loop->Counter());
    return line;
}
