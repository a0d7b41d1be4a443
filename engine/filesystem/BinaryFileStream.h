#pragma once

#include "engine/Export.h"
#include "engine/filesystem/Stream.h"

#include <string>
#include <vector>

namespace quorl::filesystem {

/// A file read or written through a buffer. The first Read or Write decides which: a first Read opens the file
/// for reading, a first Write creates or truncates it for writing, and the other direction then throws. So
/// `BinaryFileStream(path, 1024)` serves a save-file writer (Write..., Flush) and a loader (Read...) alike.
/// Failing to open throws std::runtime_error naming the path and the system's reason; Position and Size are 0
/// until then. Not for use from several threads at once.
class QUORL_EXPORT BinaryFileStream : public Stream {
public:
    /// bufferSize: bytes gathered before each system read or write; larger transfers bypass the buffer.
    BinaryFileStream(std::string const& path, unsigned long bufferSize);
    /// Flushes; a failure is reported on stderr, as a destructor cannot throw.
    ~BinaryFileStream() override;
    BinaryFileStream(BinaryFileStream const&) = delete;
    BinaryFileStream& operator=(BinaryFileStream const&) = delete;

    using Stream::Read;
    using Stream::Write;
    void Write(unsigned char const* data, unsigned long size) override;
    void Read(unsigned char* data, unsigned long size) override;
    /// Hands buffered written bytes to the system. Throws std::runtime_error naming the path and the reason (a full
    /// disk); unwritten bytes stay buffered for another try. Does nothing for a stream that reads.
    void Flush();

    /// Throws: a file is not held in memory, so it cannot be nested. Nest a WriteOnlyStream instead.
    std::vector<unsigned char> const& Bytes() const override;
    unsigned long Position() const override { return _position; }
    unsigned long Size() const override { return _mode == Mode::Reading ? _fileSize : _position; }

private:
    enum class Mode { Unopened, Reading, Writing };

    void Open(Mode mode);
    /// Writes all of `size` bytes or throws; `written` counts the bytes that made it, also when it throws.
    void WriteToFile(unsigned char const* data, unsigned long size, unsigned long& written);
    /// Reads up to `size` bytes; returns how many, 0 at the end of the file.
    unsigned long ReadFromFile(unsigned char* data, unsigned long size);

    unsigned long const _bufferSize;
    Mode _mode = Mode::Unopened;
    int _fd = -1;
    std::vector<unsigned char> _buffer;
    /// Bytes of _buffer in use: read from the file and not yet all handed out, or written and not yet flushed.
    unsigned long _bufferFill = 0;
    /// Next unread byte of _buffer while reading.
    unsigned long _bufferOffset = 0;
    unsigned long _position = 0;
    unsigned long _fileSize = 0;
};

}
