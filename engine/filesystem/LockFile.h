#pragma once

#include "engine/Export.h"

#include <string>

namespace quorl::filesystem {

/// An advisory lock on a file, held by this process from construction to destruction, so that two processes never
/// work on what the file guards at once. The kernel releases it when the process ends, crash or kill included, so a
/// stale file never locks anybody out. The file holds the holder's process id, for the message of the next one.
class QUORL_EXPORT LockFile {
public:
    /// Creates `path` if needed and takes the lock. Throws std::runtime_error naming the path and, when another
    /// process holds the lock, that process's id.
    explicit LockFile(std::string path);
    ~LockFile();
    LockFile(LockFile const&) = delete;
    LockFile& operator=(LockFile const&) = delete;

    std::string const& Path() const { return _path; }

private:
    std::string _path;
    int _fd = -1;
};

}
