#include "engine/filesystem/FilePath.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace quorl::filesystem {

void FilePath::Delete() {
    // unlink rather than std::filesystem::remove: the latter would also remove an empty directory at the path.
    if (::unlink(_path.c_str()) == 0) {
        return;
    }
    int error = errno;
    if (error != ENOENT) {
        throw std::runtime_error("cannot delete \"" + _path + "\": " + std::generic_category().message(error));
    }
}

}
