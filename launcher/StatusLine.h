#pragma once

#include "LoopThread.h"

#include <memory>
#include <string>
#include <vector>

/// The one line a running launcher prints, redrawn in place each second: rate and load of the render loop, when
/// there is a renderer (`render`, else null), then of every other loop.
std::string StatusLine(quorl::FPSCounter const* render, std::vector<std::unique_ptr<LoopThread>> const& loops);
