#pragma once

#include "engine/Export.h"

#include <string>

namespace quorl::filesystem {

/// A path to one file on disk. Converts freely from and to std::string so that it can stand in for a path argument.
class QUORL_EXPORT FilePath {
public:
    FilePath(std::string path) : _path(std::move(path)) {}
    FilePath(char const* path) : _path(path) {}
    virtual ~FilePath() = default;

    operator std::string const&() const { return _path; }
    std::string const& Path() const { return _path; }

    /// Removes the file. A file that is already gone is not an error; any other failure (a directory at the path,
    /// no permission) throws std::runtime_error naming the path and the system's reason.
    virtual void Delete();

private:
    std::string _path;
};

}
