#include "engine/filesystem/TextFile.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quorl::filesystem {

namespace {

std::string Reason(int error) {
    return std::generic_category().message(error);
}

/// Closes the descriptor when the scope ends, unless Close() already did so and reported the outcome.
class Descriptor {
public:
    explicit Descriptor(int fd) : _fd(fd) {}
    ~Descriptor() {
        if (_fd >= 0) {
            ::close(_fd);
        }
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int Get() const { return _fd; }
    /// Returns 0 or the errno of a failed close, which for some file systems is where a failed write shows up.
    int Close() {
        int result = ::close(_fd);
        _fd = -1;
        return result == 0 ? 0 : errno;
    }

private:
    int _fd;
};

/// Where the new content must land: the file itself, or the file a symbolic link points to.
std::filesystem::path ReplacementTarget(std::string const& path) {
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error)) {
        return path;
    }
    auto resolved = std::filesystem::canonical(path, error);
    if (!error) {
        return resolved;
    }
    // A dangling link: create the file it names.
    auto linked = std::filesystem::read_symlink(path);
    return linked.is_absolute() ? linked : std::filesystem::path(path).parent_path() / linked;
}

std::string TemporaryName(std::filesystem::path const& target) {
    static std::atomic<unsigned> counter{0};
    return target.string() + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
}

bool WriteAll(int fd, std::string const& content) {
    char const* data = content.data();
    size_t left = content.size();
    while (left > 0) {
        ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        data += written;
        left -= static_cast<size_t>(written);
    }
    return true;
}

/// Makes the rename itself durable. Some file systems refuse to sync a directory; the data is synced already.
void SyncDirectory(std::filesystem::path const& directory) {
    int fd = ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

}

std::optional<std::string> ReadTextFile(std::string const& path) {
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0) {
        int error = errno;
        if (error == ENOENT) {
            return std::nullopt;
        }
        throw std::runtime_error("cannot open \"" + path + "\": " + Reason(error));
    }
    std::string content;
    char chunk[8192];
    while (true) {
        ssize_t got = ::read(file.Get(), chunk, sizeof chunk);
        if (got == 0) {
            return content;
        }
        if (got < 0) {
            int error = errno;
            if (error == EINTR) {
                continue;
            }
            throw std::runtime_error("cannot read \"" + path + "\": " + Reason(error));
        }
        content.append(chunk, static_cast<size_t>(got));
    }
}

void WriteTextFileAtomically(std::string const& path, std::string const& content) {
    auto target = ReplacementTarget(path);
    // Takes the errno value first: building the message may allocate, and allocation may touch errno.
    auto fail = [&](int error, std::string_view step) {
        throw std::runtime_error("cannot write \"" + path + "\": " + std::string(step) + ": " + Reason(error));
    };

    struct stat original {};
    bool existed = ::stat(target.c_str(), &original) == 0;

    std::string temporary;
    int fd = -1;
    while (fd < 0) {
        temporary = TemporaryName(target);
        fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (int error = errno; fd < 0 && error != EEXIST) {
            fail(error, "cannot create temporary file \"" + temporary + "\"");
        }
    }
    Descriptor file(fd);
    struct RemoveUnlessRenamed {
        std::string const& name;
        bool renamed = false;
        ~RemoveUnlessRenamed() {
            if (!renamed) {
                ::unlink(name.c_str());
            }
        }
    } cleanup{temporary};

    if (existed && ::fchmod(file.Get(), original.st_mode & 07777) != 0) {
        fail(errno, "cannot copy permissions");
    }
    if (!WriteAll(file.Get(), content)) {
        fail(errno, "write failed");
    }
    if (::fsync(file.Get()) != 0) {
        fail(errno, "sync failed");
    }
    if (int error = file.Close(); error != 0) {
        fail(error, "close failed");
    }
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        fail(errno, "cannot replace the file");
    }
    cleanup.renamed = true;
    SyncDirectory(target.parent_path());
}

}
