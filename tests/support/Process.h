#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

/// Runs a program to its end, in `directory`, and keeps what it printed. With `terminateAfter`, sends it
/// `terminateSignal` once that much time has passed, if it is still running then.
struct ProcessResult {
    int exitCode = -1;
    /// The signal that ended the process, 0 if it exited.
    int signal = 0;
    std::string out;
    std::string err;
};

ProcessResult RunProcess(std::vector<std::string> const& arguments, std::string const& directory,
                         std::optional<std::chrono::milliseconds> terminateAfter = std::nullopt,
                         int terminateSignal = 15 /* SIGTERM */);
