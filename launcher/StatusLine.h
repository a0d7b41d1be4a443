#pragma once

#include "LoopThread.h"

#include <memory>
#include <string>
#include <vector>

/// The one line a running launcher prints, redrawn in place each second: rate and load of every loop.
std::string StatusLine(std::vector<std::unique_ptr<LoopThread>> const& loops);
