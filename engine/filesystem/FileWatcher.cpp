#include "engine/filesystem/FileWatcher.h"

namespace quorl::filesystem {

FileWatcher::FileWatcher(std::string path, std::chrono::milliseconds interval, std::function<void()> onChange)
    : _path(std::move(path)), _interval(interval), _onChange(std::move(onChange)), _seen(WriteTime()) {
    _thread = std::thread([this] { Run(); });
}

FileWatcher::~FileWatcher() {
    {
        std::lock_guard lock(_mutex);
        _stopping = true;
    }
    _wake.notify_all();
    _thread.join();
}

void FileWatcher::Rebase() {
    std::lock_guard lock(_mutex);
    _seen = WriteTime();
}

std::optional<std::filesystem::file_time_type> FileWatcher::WriteTime() const {
    std::error_code error;
    auto time = std::filesystem::last_write_time(_path, error);
    return error ? std::nullopt : std::optional(time);
}

void FileWatcher::Run() {
    std::unique_lock lock(_mutex);
    while (!_wake.wait_for(lock, _interval, [this] { return _stopping; })) {
        auto now = WriteTime();
        if (now == _seen) {
            continue;
        }
        _seen = now;
        if (!now) {
            // Gone, perhaps for a moment while an editor replaces it; its return counts as a change.
            continue;
        }
        // Unlocked so that a Rebase from inside onChange (a write while reloading) cannot deadlock.
        lock.unlock();
        _onChange();
        lock.lock();
    }
}

}
