#include "Process.h"

#include "tests/support/TempDirectory.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

ProcessResult RunProcess(std::vector<std::string> const& arguments, std::string const& directory,
                         std::optional<std::chrono::milliseconds> terminateAfter, int terminateSignal) {
    auto base = std::filesystem::temp_directory_path() / ("meridon-process-" + std::to_string(getpid()));
    std::string outPath = base.string() + ".out", errPath = base.string() + ".err";

    pid_t child = fork();
    if (child < 0)
        throw std::runtime_error("fork failed");
    if (child == 0) {
        int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out < 0 || err < 0 || chdir(directory.c_str()) != 0)
            _exit(127);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        std::vector<char*> argv;
        for (auto const& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }

    int status = 0;
    if (terminateAfter) {
        // A program that ends before the time is up is not signalled, and is not waited for any longer.
        auto const deadline = std::chrono::steady_clock::now() + *terminateAfter;
        while (waitpid(child, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() >= deadline) {
                kill(child, terminateSignal);
                waitpid(child, &status, 0);
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    } else {
        waitpid(child, &status, 0);
    }

    ProcessResult result;
    if (WIFEXITED(status))
        result.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    result.out = ReadFile(outPath);
    result.err = ReadFile(errPath);
    std::filesystem::remove(outPath);
    std::filesystem::remove(errPath);
    return result;
}
