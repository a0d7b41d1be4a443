#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace quorl::filesystem {

/// Polls one file's last-write time on a thread of its own and calls `onChange` there when the time changes or a
/// missing file appears. `onChange` must not throw. Destruction stops and joins the thread at once.
class FileWatcher {
public:
    FileWatcher(std::string path, std::chrono::milliseconds interval, std::function<void()> onChange);
    ~FileWatcher();
    FileWatcher(FileWatcher const&) = delete;
    FileWatcher& operator=(FileWatcher const&) = delete;

    /// Takes the file as it is now as seen, so that a change the owner made itself does not call `onChange`.
    void Rebase();

private:
    /// The file's last-write time, or nothing when it cannot be read (a missing file).
    std::optional<std::filesystem::file_time_type> WriteTime() const;
    void Run();

    std::string const _path;
    std::chrono::milliseconds const _interval;
    std::function<void()> const _onChange;

    std::mutex _mutex;
    std::condition_variable _wake;
    bool _stopping = false;
    std::optional<std::filesystem::file_time_type> _seen;
    std::thread _thread;
};

}
