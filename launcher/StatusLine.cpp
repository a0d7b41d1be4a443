#include "StatusLine.h"

#include <cstdio>

std::string StatusLine(std::vector<std::unique_ptr<LoopThread>> const& loops) {
    std::string line;
    for (auto const& loop : loops) {
        char part[96];
        std::snprintf(part, sizeof part, "%s%s %5.1f/s %3.0f%%", line.empty() ? "" : " | ", loop->Name().c_str(),
                      loop->Counter().TicksPerSecond(), loop->Counter().Load() * 100.0);
        line += part;
    }
    return line;
}
