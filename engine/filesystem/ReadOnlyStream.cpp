#include "engine/filesystem/ReadOnlyStream.h"

#include <stdexcept>

namespace quorl::filesystem {

ReadOnlyStream::ReadOnlyStream(std::vector<unsigned char> const& bytes, std::string name)
    : Stream(std::move(name)), _bytes(bytes) {}

ReadOnlyStream::ReadOnlyStream(std::vector<unsigned char>&& bytes, std::string name)
    : Stream(std::move(name)), _bytes(std::move(bytes)) {}

void ReadOnlyStream::Write(unsigned char const*, unsigned long size) {
    throw std::runtime_error("cannot write " + std::to_string(size) + " bytes to read-only stream \"" + Name() + "\"");
}

void ReadOnlyStream::Read(unsigned char* data, unsigned long size) {
    RequireReadable(size);
    if (size > 0) {
        std::memcpy(data, _bytes.data() + _position, size);
        _position += size;
    }
}

}
