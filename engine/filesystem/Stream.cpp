#include "engine/filesystem/Stream.h"

#include <cstdint>
#include <stdexcept>

namespace quorl::filesystem {

void Stream::Write(std::string const& text) {
    Write(static_cast<uint64_t>(text.size()));
    Write(reinterpret_cast<unsigned char const*>(text.data()), text.size());
}

void Stream::Write(Stream const& nested) {
    std::vector<unsigned char> copyOfSelf;
    auto const* bytes = &nested.Bytes();
    if (&nested == this) {
        // Appending a stream to itself would read from the buffer it grows.
        copyOfSelf = *bytes;
        bytes = &copyOfSelf;
    }
    Write(static_cast<uint64_t>(bytes->size()));
    Write(bytes->data(), bytes->size());
}

void Stream::Read(std::string& text) {
    std::string value(ReadLength(), '\0');
    Read(reinterpret_cast<unsigned char*>(value.data()), value.size());
    text = std::move(value);
}

ReadOnlyStream Stream::ReadStream() {
    unsigned long length = ReadLength();
    std::string name = _name + " (nested block at offset " + std::to_string(Position()) + ")";
    std::vector<unsigned char> bytes(length);
    Read(bytes.data(), length);
    return ReadOnlyStream(std::move(bytes), std::move(name));
}

void Stream::RequireReadable(unsigned long size) const {
    if (size > Remaining()) {
        ThrowPastEnd(size);
    }
}

void Stream::ThrowPastEnd(unsigned long size) const {
    throw std::runtime_error("read of " + std::to_string(size) + " bytes past the end of stream \"" + _name +
                             "\" at offset " + std::to_string(Position()) + " of " + std::to_string(Size()));
}

unsigned long Stream::ReadLength() {
    uint64_t length = 0;
    Read(length);
    RequireReadable(length);
    return length;
}

void Stream::CheckBool(unsigned char byte) const {
    if (byte > 1) {
        throw std::runtime_error("byte " + std::to_string(byte) + " before offset " + std::to_string(Position()) +
                                 " of stream \"" + _name + "\" is not a bool (0 or 1)");
    }
}

}
