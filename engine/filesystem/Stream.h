#pragma once

#include "engine/Export.h"

#include <bit>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace quorl::filesystem {

static_assert(std::endian::native == std::endian::little,
              "streams store values in memory order, which must be little-endian");
static_assert(sizeof(unsigned long) == 8, "stream lengths are 64-bit");

class ReadOnlyStream;

/// A value a Stream stores as its raw bytes: trivially copyable, and not something whose bytes mean nothing outside
/// this process (pointers, views) or that has a form of its own (strings, streams, character arrays).
template <class T>
concept StreamValue = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T> && !std::is_member_pointer_v<T> &&
                      !std::is_null_pointer_v<T> && !std::is_array_v<T> && !std::is_same_v<T, std::string_view>;

/// A sequence of bytes in the form of docs/stream-format.md: values little-endian, strings and nested streams as a
/// uint64 length and their bytes. Reading never goes past the end: it throws std::runtime_error naming the stream,
/// and a stored length is checked against what remains before anything is allocated for it.
class QUORL_EXPORT Stream {
public:
    virtual ~Stream() = default;

    /// The stream's name for messages: a file path, or "memory".
    std::string const& Name() const { return _name; }

    virtual void Write(unsigned char const* data, unsigned long size) = 0;
    void Write(std::string const& text);
    void Write(char const* text) { Write(std::string(text)); }
    /// Writes the whole content of `nested` as one block; read it back with ReadStream().
    void Write(Stream const& nested);
    template <StreamValue T>
    void Write(T const& value) {
        unsigned char bytes[sizeof(T)];
        std::memcpy(bytes, &value, sizeof(T));
        Write(bytes, sizeof(T));
    }

    virtual void Read(unsigned char* data, unsigned long size) = 0;
    void Read(std::string& text);
    /// The next nested block, as written by Write(Stream const&).
    ReadOnlyStream ReadStream();
    /// A bool must be stored as 0 or 1; other bytes throw, since they cannot be a bool.
    template <StreamValue T>
    void Read(T& value) {
        unsigned char bytes[sizeof(T)];
        Read(bytes, sizeof(T));
        if constexpr (std::is_same_v<T, bool>) {
            CheckBool(bytes[0]);
        }
        std::memcpy(&value, bytes, sizeof(T));
    }

    /// All bytes of the stream, for nesting it into another. Streams that cannot hand them out throw.
    virtual std::vector<unsigned char> const& Bytes() const = 0;
    /// Offset of the next read or write.
    virtual unsigned long Position() const = 0;
    /// Bytes in the stream.
    virtual unsigned long Size() const = 0;
    unsigned long Remaining() const { return Size() - Position(); }

protected:
    explicit Stream(std::string name) : _name(std::move(name)) {}
    Stream(Stream const&) = default;
    Stream(Stream&&) = default;
    Stream& operator=(Stream const&) = default;
    Stream& operator=(Stream&&) = default;

    /// Throws the past-the-end error unless `size` more bytes remain to be read.
    void RequireReadable(unsigned long size) const;
    [[noreturn]] void ThrowPastEnd(unsigned long size) const;

private:
    /// Reads a stored length and checks that that many bytes remain.
    unsigned long ReadLength();
    void CheckBool(unsigned char byte) const;

    std::string _name;
};

}

// ReadStream() returns a ReadOnlyStream, which derives from Stream; included last so that either header can come
// first and callers of ReadStream() get the complete type.
#include "engine/filesystem/ReadOnlyStream.h"
