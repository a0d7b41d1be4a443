#pragma once

#include "LauncherConfig.h"

#include <optional>
#include <string>

/// Applies the command line to `config`. Returns an exit code when the launcher should stop right away (--help, or
/// a bad argument, which is reported on standard error), nothing when it should run.
std::optional<int> ApplyCommandLine(int argc, char** argv, LauncherConfig& config, std::string& configPath);
