#include "engine/filesystem/WriteOnlyStream.h"

#include <stdexcept>

namespace quorl::filesystem {

WriteOnlyStream::WriteOnlyStream(unsigned long initialCapacity, std::string name) : Stream(std::move(name)) {
    _bytes.reserve(initialCapacity);
}

void WriteOnlyStream::Write(unsigned char const* data, unsigned long size) {
    _bytes.insert(_bytes.end(), data, data + size);
}

void WriteOnlyStream::Read(unsigned char*, unsigned long size) {
    throw std::runtime_error("cannot read " + std::to_string(size) + " bytes from write-only stream \"" + Name() +
                             "\"");
}

}
