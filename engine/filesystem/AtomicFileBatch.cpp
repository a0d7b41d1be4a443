#include "engine/filesystem/AtomicFileBatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <stdexcept>

namespace quorl::filesystem {

namespace {

[[noreturn]] void Fail(std::string const& what, std::string const& path, int error) {
    throw std::runtime_error(what + " \"" + path + "\": " + std::strerror(error));
}

std::string FolderOf(std::string const& path) {
    auto folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

/// Runs `call` on a descriptor of `folder`; folders that cannot be opened are skipped, as the data is safe already.
template <class Call>
void WithFolder(std::string const& folder, Call&& call) {
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    call(fd);
    ::close(fd);
}

}

AtomicFileBatch::~AtomicFileBatch() {
    for (auto const& pending : _pending)
        ::unlink(pending.temporary.c_str());
}

void AtomicFileBatch::Add(std::string const& path, std::vector<unsigned char> const& bytes) {
    std::string temporary = path + kTemporarySuffix;
    int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        Fail("cannot create", temporary, errno);
    size_t written = 0;
    while (written < bytes.size()) {
        ssize_t count = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            int error = count < 0 ? errno : ENOSPC;
            ::close(fd);
            ::unlink(temporary.c_str());
            Fail("cannot write", temporary, error);
        }
        written += static_cast<size_t>(count);
    }
    if (::close(fd) != 0) {
        int error = errno;
        ::unlink(temporary.c_str());
        Fail("cannot write", temporary, error);
    }
    _pending.push_back({path, temporary});
}

void AtomicFileBatch::Commit() {
    std::set<std::string> folders;
    for (auto const& pending : _pending)
        folders.insert(FolderOf(pending.path));

    // One sync per file system makes every temporary durable before any of them replaces a good file.
    for (auto const& folder : folders)
        WithFolder(folder, [&](int fd) {
            if (::syncfs(fd) != 0)
                Fail("cannot sync", folder, errno);
        });

    while (!_pending.empty()) {
        auto const& pending = _pending.back();
        if (::rename(pending.temporary.c_str(), pending.path.c_str()) != 0)
            Fail("cannot replace", pending.path, errno);
        _pending.pop_back();
    }

    for (auto const& folder : folders)
        WithFolder(folder, [](int fd) { ::fsync(fd); });
}

}
