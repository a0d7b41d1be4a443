#include "engine/filesystem/ReadOnlyStream.h"
#include "engine/filesystem/WriteOnlyStream.h"

#include "tests/support/Capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using quorl::filesystem::ReadOnlyStream;
using quorl::filesystem::WriteOnlyStream;
using testing::HasSubstr;

namespace {

using Bytes = std::vector<unsigned char>;

enum class Biome : uint8_t { Ice = 3, Lava = 200 };

struct Voxel {
    int32_t x;
    int16_t y;
    uint8_t material;
    bool solid;
    bool operator==(Voxel const&) const = default;
};

/// `value` written to a stream and read back, with the stream checked to hold nothing else.
template <class T>
T RoundTrip(T const& value) {
    WriteOnlyStream out(0);
    out.Write(value);
    ReadOnlyStream in(out.Bytes());
    T read{};
    in.Read(read);
    EXPECT_EQ(in.Remaining(), 0u);
    return read;
}

TEST(Stream, NumbersPlainValuesAndStringsRoundTrip) {
    // Plain values all take the same path, their bytes as they are; the byte layout test pins their order.
    EXPECT_EQ(RoundTrip(uint64_t{0x0123456789abcdefULL}), 0x0123456789abcdefULL);
    EXPECT_EQ(RoundTrip(std::numeric_limits<double>::denorm_min()), std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(RoundTrip(true));
    EXPECT_EQ(RoundTrip(Biome::Lava), Biome::Lava);
    EXPECT_EQ(RoundTrip(Voxel{-7, 300, 9, true}), (Voxel{-7, 300, 9, true}));
    // Strings, empty and binary ones too.
    EXPECT_EQ(RoundTrip(std::string("")), "");
    EXPECT_EQ(RoundTrip(std::string("nul\0inside\xff", 11)), std::string("nul\0inside\xff", 11));
    EXPECT_EQ(RoundTrip(std::string(100'000, 'x')), std::string(100'000, 'x'));

    WriteOnlyStream out(0);
    out.Write("literal");
    ReadOnlyStream in(out.Bytes());
    std::string literal;
    in.Read(literal);
    EXPECT_EQ(literal, "literal");
}

TEST(Stream, ByteLayoutIsLittleEndianWithUint64LengthsAndNestedStreamsReadBackWhole) {
    WriteOnlyStream inner(0);
    inner.Write(uint8_t{7});
    WriteOnlyStream middle(0);
    middle.Write(inner);
    middle.Write(WriteOnlyStream(0));
    WriteOnlyStream out(0);
    out.Write(uint32_t{0x01020304});
    out.Write(std::string("ab"));
    out.Write(middle);
    out.Write(uint8_t{2});
    EXPECT_EQ(out.Bytes(), (Bytes{4, 3, 2, 1, 2, 0, 0, 0, 0, 0, 0, 0, 'a', 'b', 17, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0,
                               0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0, 0, 2}));

    ReadOnlyStream in(out.Bytes());
    uint32_t number = 0;
    std::string text;
    uint8_t seven = 0, after = 0;
    in.Read(number);
    in.Read(text);
    auto readMiddle = in.ReadStream();
    in.Read(after);
    EXPECT_EQ(after, 2) << "the nested block was not read whole";
    auto readInner = readMiddle.ReadStream();
    EXPECT_EQ(readMiddle.ReadStream().Size(), 0u);
    EXPECT_EQ(readMiddle.Remaining(), 0u);
    readInner.Read(seven);
    EXPECT_EQ(seven, 7);
}

TEST(Stream, ReadingPastTheEndThrowsAndKeepsThePosition) {
    ReadOnlyStream in(Bytes{1, 2, 3, 4});
    uint16_t first = 0;
    in.Read(first);
    uint64_t tooLarge = 0;
    EXPECT_EQ(ErrorOf([&] { in.Read(tooLarge); }),
              "read of 8 bytes past the end of stream \"memory\" at offset 2 of 4");
    EXPECT_EQ(in.Position(), 2u);
    uint16_t second = 0;
    in.Read(second);
    EXPECT_EQ(second, 0x0403);
}

TEST(Stream, CorruptLengthsAreRefusedBeforeAllocating) {
    WriteOnlyStream out(0);
    out.Write(uint64_t{1} << 60);
    out.Write(uint64_t{0});
    ReadOnlyStream strings(out.Bytes());
    ReadOnlyStream nested(out.Bytes());

    std::string text = "unchanged";
    EXPECT_EQ(ErrorOf([&] { strings.Read(text); }),
              "read of 1152921504606846976 bytes past the end of stream \"memory\" at offset 8 of 16");
    EXPECT_EQ(text, "unchanged");
    EXPECT_THAT(ErrorOf([&] { nested.ReadStream(); }), HasSubstr("read of 1152921504606846976 bytes past the end"));
}

TEST(Stream, ABoolMustBeZeroOrOne) {
    ReadOnlyStream in(Bytes{0, 1, 2});
    bool value = true;
    in.Read(value);
    EXPECT_FALSE(value);
    in.Read(value);
    EXPECT_TRUE(value);
    EXPECT_THAT(ErrorOf([&] { in.Read(value); }), HasSubstr("not a bool"));
}

TEST(Stream, EachMemoryStreamRefusesTheOtherDirection) {
    ReadOnlyStream in(Bytes{1});
    EXPECT_THAT(ErrorOf([&] { in.Write(uint8_t{1}); }), HasSubstr("read-only stream \"memory\""));
    WriteOnlyStream out(0);
    out.Write(uint8_t{1});
    uint8_t value = 0;
    EXPECT_THAT(ErrorOf([&] { out.Read(value); }), HasSubstr("write-only stream \"memory\""));
}

}
