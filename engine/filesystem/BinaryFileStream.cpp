#include "engine/filesystem/BinaryFileStream.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quorl::filesystem {

namespace {

std::string Reason(int error) {
    return std::generic_category().message(error);
}

}

BinaryFileStream::BinaryFileStream(std::string const& path, unsigned long bufferSize)
    : Stream(path), _bufferSize(bufferSize) {}

BinaryFileStream::~BinaryFileStream() {
    try {
        Flush();
    } catch (std::exception const& error) {
        std::cerr << error.what() << "; " << _bufferFill << " buffered bytes lost" << std::endl;
    }
    if (_fd >= 0 && ::close(_fd) != 0 && _mode == Mode::Writing) {
        int error = errno;
        std::cerr << "cannot close \"" << Name() << "\" after writing: " << Reason(error) << std::endl;
    }
}

void BinaryFileStream::Write(unsigned char const* data, unsigned long size) {
    Open(Mode::Writing);
    if (_bufferFill + size > _bufferSize) {
        Flush();
    }
    if (size >= _bufferSize) {
        // A transfer at least as large as the buffer goes straight to the file.
        unsigned long written = 0;
        try {
            WriteToFile(data, size, written);
        } catch (...) {
            _position += written;
            throw;
        }
    } else if (size > 0) {
        std::memcpy(_buffer.data() + _bufferFill, data, size);
        _bufferFill += size;
    }
    _position += size;
}

void BinaryFileStream::Read(unsigned char* data, unsigned long size) {
    Open(Mode::Reading);
    RequireReadable(size);
    while (size > 0) {
        if (_bufferOffset == _bufferFill && size < _bufferSize) {
            _bufferFill = ReadFromFile(_buffer.data(), _bufferSize);
            _bufferOffset = 0;
        }
        unsigned long chunk = 0;
        if (_bufferOffset < _bufferFill) {
            chunk = std::min(size, _bufferFill - _bufferOffset);
            std::memcpy(data, _buffer.data() + _bufferOffset, chunk);
            _bufferOffset += chunk;
        } else if (size >= _bufferSize) {
            // A transfer at least as large as the buffer goes straight to the caller.
            chunk = ReadFromFile(data, size);
        }
        if (chunk == 0) {
            // The file shrank since it was opened.
            ThrowPastEnd(size);
        }
        data += chunk;
        size -= chunk;
        _position += chunk;
    }
}

void BinaryFileStream::Flush() {
    if (_mode != Mode::Writing || _bufferFill == 0) {
        return;
    }
    unsigned long written = 0;
    try {
        WriteToFile(_buffer.data(), _bufferFill, written);
    } catch (...) {
        std::memmove(_buffer.data(), _buffer.data() + written, _bufferFill - written);
        _bufferFill -= written;
        throw;
    }
    _bufferFill = 0;
}

std::vector<unsigned char> const& BinaryFileStream::Bytes() const {
    throw std::runtime_error("file stream \"" + Name() +
                             "\" cannot be nested in another stream; write into a WriteOnlyStream and nest that");
}

void BinaryFileStream::Open(Mode mode) {
    if (_mode == mode) {
        return;
    }
    char const* direction = mode == Mode::Reading ? "reading" : "writing";
    if (_mode != Mode::Unopened) {
        throw std::runtime_error("stream \"" + Name() + "\" is open for " +
                                 (_mode == Mode::Reading ? "reading" : "writing") + " and cannot be used for " +
                                 direction);
    }
    int flags = mode == Mode::Reading ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
    _fd = ::open(Name().c_str(), flags | O_CLOEXEC, 0666);
    if (_fd < 0) {
        int error = errno;
        throw std::runtime_error("cannot open \"" + Name() + "\" for " + direction + ": " + Reason(error));
    }
    if (mode == Mode::Reading) {
        struct stat status {};
        if (::fstat(_fd, &status) != 0) {
            int error = errno;
            ::close(_fd);
            _fd = -1;
            throw std::runtime_error("cannot read the size of \"" + Name() + "\": " + Reason(error));
        }
        _fileSize = static_cast<unsigned long>(status.st_size);
    }
    _buffer.resize(_bufferSize);
    _mode = mode;
}

void BinaryFileStream::WriteToFile(unsigned char const* data, unsigned long size, unsigned long& written) {
    while (written < size) {
        ssize_t result = ::write(_fd, data + written, size - written);
        if (result < 0) {
            int error = errno;
            if (error == EINTR) {
                continue;
            }
            throw std::runtime_error("cannot write to \"" + Name() + "\": " + Reason(error));
        }
        written += static_cast<unsigned long>(result);
    }
}

unsigned long BinaryFileStream::ReadFromFile(unsigned char* data, unsigned long size) {
    while (true) {
        ssize_t result = ::read(_fd, data, size);
        if (result >= 0) {
            return static_cast<unsigned long>(result);
        }
        int error = errno;
        if (error != EINTR) {
            throw std::runtime_error("cannot read \"" + Name() + "\": " + Reason(error));
        }
    }
}

}
