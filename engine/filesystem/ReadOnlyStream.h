#pragma once

#include "engine/Export.h"
#include "engine/filesystem/Stream.h"

#include <string>
#include <vector>

namespace quorl::filesystem {

/// Reads values from a buffer it owns, from the start. Writing throws std::runtime_error.
class QUORL_EXPORT ReadOnlyStream : public Stream {
public:
    explicit ReadOnlyStream(std::vector<unsigned char> const& bytes, std::string name = "memory");
    explicit ReadOnlyStream(std::vector<unsigned char>&& bytes, std::string name = "memory");

    using Stream::Read;
    using Stream::Write;
    void Write(unsigned char const* data, unsigned long size) override;
    void Read(unsigned char* data, unsigned long size) override;

    std::vector<unsigned char> const& Bytes() const override { return _bytes; }
    unsigned long Position() const override { return _position; }
    unsigned long Size() const override { return _bytes.size(); }

private:
    std::vector<unsigned char> _bytes;
    unsigned long _position = 0;
};

}
