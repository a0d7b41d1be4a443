#pragma once

#include "engine/Export.h"
#include "engine/filesystem/Stream.h"

#include <string>
#include <vector>

namespace quorl::filesystem {

/// Collects written values in memory, growing as needed. Reading throws std::runtime_error; to read the bytes
/// back, hand Bytes() to a ReadOnlyStream.
class QUORL_EXPORT WriteOnlyStream : public Stream {
public:
    /// initialCapacity: bytes reserved up front, to spare regrowth when the size is roughly known.
    explicit WriteOnlyStream(unsigned long initialCapacity = 0, std::string name = "memory");

    using Stream::Read;
    using Stream::Write;
    void Write(unsigned char const* data, unsigned long size) override;
    void Read(unsigned char* data, unsigned long size) override;

    std::vector<unsigned char> const& Bytes() const override { return _bytes; }
    unsigned long Position() const override { return _bytes.size(); }
    unsigned long Size() const override { return _bytes.size(); }

private:
    std::vector<unsigned char> _bytes;
};

}
