#include "engine/filesystem/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace quorl::filesystem {

namespace {

/// What the holder wrote into the file: its process id, or empty when it cannot be read.
std::string Holder(int fd) {
    char text[32] = {};
    ssize_t count = ::pread(fd, text, sizeof text - 1, 0);
    std::string holder(text, count > 0 ? static_cast<size_t>(count) : 0);
    while (!holder.empty() && (holder.back() == '\n' || holder.back() == ' '))
        holder.pop_back();
    return holder;
}

}

LockFile::LockFile(std::string path) : _path(std::move(path)) {
    _fd = ::open(_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (_fd < 0)
        throw std::runtime_error("cannot open the lock file \"" + _path + "\": " + std::strerror(errno));
    if (::flock(_fd, LOCK_EX | LOCK_NB) != 0) {
        int error = errno;
        std::string holder = Holder(_fd);
        ::close(_fd);
        if (error == EWOULDBLOCK)
            throw std::runtime_error("\"" + _path + "\" is locked by process " + (holder.empty() ? "(unknown)" : holder));
        throw std::runtime_error("cannot lock \"" + _path + "\": " + std::strerror(error));
    }
    std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(_fd, 0) != 0 || ::pwrite(_fd, pid.data(), pid.size(), 0) != static_cast<ssize_t>(pid.size())) {
        int error = errno;
        ::close(_fd);
        throw std::runtime_error("cannot write the lock file \"" + _path + "\": " + std::strerror(error));
    }
}

LockFile::~LockFile() {
    // Closing releases the lock; the file stays, as removing it would race with a process that just opened it.
    ::close(_fd);
}

}
