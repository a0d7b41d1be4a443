#include "engine/filesystem/AtomicFileBatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

namespace quorl::filesystem {

namespace {

// The journal, text: this header line, then "R <path>" for a temporary to rename over <path> and "D <path>" for a
// file to remove, one per line in the order of the batch, then the end line (docs/world-folder.md).
constexpr char kJournalHeader[] = "quorl file batch 1";
constexpr char kJournalEnd[] = "end";

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

void SyncFolder(std::string const& folder) {
    WithFolder(folder, [](int fd) { ::fsync(fd); });
}

/// Writes `bytes` to a new file at `path`, durable once this returns when `sync` is set.
void WriteFile(std::string const& path, char const* bytes, size_t size, bool sync) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        Fail("cannot create", path, errno);
    size_t written = 0;
    while (written < size) {
        ssize_t count = ::write(fd, bytes + written, size - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            int error = count < 0 ? errno : ENOSPC;
            ::close(fd);
            ::unlink(path.c_str());
            Fail("cannot write", path, error);
        }
        written += static_cast<size_t>(count);
    }
    if ((sync && ::fsync(fd) != 0) || ::close(fd) != 0) {
        int error = errno;
        ::unlink(path.c_str());
        Fail("cannot write", path, error);
    }
}

void RenameOver(std::string const& temporary, std::string const& path) {
    if (::rename(temporary.c_str(), path.c_str()) != 0)
        Fail("cannot replace", path, errno);
}

void RemoveFile(std::string const& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        Fail("cannot remove", path, errno);
}

}

AtomicFileBatch::AtomicFileBatch(std::string journal) : _journal(std::move(journal)) {}

AtomicFileBatch::~AtomicFileBatch() {
    for (auto const& pending : _pending)
        ::unlink(pending.temporary.c_str());
}

void AtomicFileBatch::Add(std::string const& path, std::vector<unsigned char> const& bytes) {
    if (path.find('\n') != std::string::npos)
        throw std::runtime_error("cannot save \"" + path + "\": a line break in a file name");
    std::string temporary = path + kTemporarySuffix;
    WriteFile(temporary, reinterpret_cast<char const*>(bytes.data()), bytes.size(), false);
    _pending.push_back({path, temporary});
}

void AtomicFileBatch::Remove(std::string const& path) {
    if (path.find('\n') != std::string::npos)
        throw std::runtime_error("cannot remove \"" + path + "\": a line break in a file name");
    _removals.push_back(path);
}

void AtomicFileBatch::Commit() {
    std::set<std::string> folders;
    for (auto const& pending : _pending)
        folders.insert(FolderOf(pending.path));
    for (auto const& path : _removals)
        folders.insert(FolderOf(path));

    // One sync per file system makes every temporary durable before any of them replaces a good file.
    for (auto const& folder : folders)
        WithFolder(folder, [&](int fd) {
            if (::syncfs(fd) != 0)
                Fail("cannot sync", folder, errno);
        });

    if (!_journal.empty()) {
        // An earlier batch that failed half-way is finished first, so that its journal is not lost under ours.
        Recover(_journal);
        WriteJournal();
    }
    try {
        while (!_pending.empty()) {
            RenameOver(_pending.back().temporary, _pending.back().path);
            _pending.pop_back();
        }
        for (auto const& path : _removals)
            RemoveFile(path);
        _removals.clear();
    } catch (...) {
        // Once in the journal, the temporaries left are what Recover needs to finish the batch.
        if (!_journal.empty())
            _pending.clear();
        throw;
    }

    for (auto const& folder : folders)
        SyncFolder(folder);
    if (!_journal.empty()) {
        RemoveFile(_journal);
        SyncFolder(FolderOf(_journal));
    }
}

void AtomicFileBatch::WriteJournal() const {
    std::string text = std::string(kJournalHeader) + "\n";
    for (auto const& pending : _pending)
        text += "R " + pending.path + "\n";
    for (auto const& path : _removals)
        text += "D " + path + "\n";
    text += std::string(kJournalEnd) + "\n";
    // Written whole under another name and renamed, so that a journal that exists is complete.
    std::string temporary = _journal + kTemporarySuffix;
    WriteFile(temporary, text.data(), text.size(), true);
    RenameOver(temporary, _journal);
    SyncFolder(FolderOf(_journal));
}

bool AtomicFileBatch::Recover(std::string const& journal) {
    std::ifstream file(journal);
    if (!file)
        return false;
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    if (lines.size() < 2 || lines.front() != kJournalHeader || lines.back() != kJournalEnd)
        throw std::runtime_error("journal \"" + journal + "\" is not a complete file batch; it is left as it is");

    std::set<std::string> folders;
    for (size_t i = 1; i + 1 < lines.size(); ++i) {
        auto const& line = lines[i];
        std::string path = line.size() > 2 ? line.substr(2) : "";
        if (line.starts_with("R ")) {
            // A temporary already renamed is gone; its file is new already.
            std::string temporary = path + kTemporarySuffix;
            if (::access(temporary.c_str(), F_OK) == 0)
                RenameOver(temporary, path);
        } else if (line.starts_with("D ")) {
            RemoveFile(path);
        } else {
            throw std::runtime_error("journal \"" + journal + "\" line " + std::to_string(i + 1) + ": \"" + line +
                                     "\" is neither a replacement nor a removal");
        }
        folders.insert(FolderOf(path));
    }
    for (auto const& folder : folders)
        SyncFolder(folder);
    RemoveFile(journal);
    SyncFolder(FolderOf(journal));
    return true;
}

}
