#include "engine/filesystem/ReadOnlyStream.h"
#include "engine/filesystem/WriteOnlyStream.h"

#include "tests/support/Capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

using quorl::filesystem::ReadOnlyStream;
using quorl::filesystem::WriteOnlyStream;
using testing::HasSubstr;

namespace {

using Bytes = std::vector<unsigned char>;

struct Voxel {
    int32_t x;
    int16_t y;
    uint8_t material;
    bool solid;
    bool operator==(Voxel const&) const = default;
};

// Plain values all take one path, their bytes as they are: the byte layout test pins their order and the bool test
// what a bool may be. Strings of every length up to a few thousand bytes are BinaryFileStreamTest's.
TEST(Stream, PlainValuesBinaryStringsAndLiteralsRoundTrip) {
    Voxel const voxel{-7, 300, 9, true};
    std::string const binary("nul\0inside\xff", 11);
    WriteOnlyStream out(0);
    out.Write(voxel);
    out.Write(binary);
    out.Write("literal");

    ReadOnlyStream in(out.Bytes());
    Voxel readVoxel{};
    std::string readBinary, literal;
    in.Read(readVoxel);
    in.Read(readBinary);
    in.Read(literal);
    EXPECT_EQ(readVoxel, voxel);
    EXPECT_EQ(readBinary, binary);
    EXPECT_EQ(literal, "literal");
    EXPECT_EQ(in.Remaining(), 0u);
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

TEST(Stream, ReadingPastTheEndThrowsKeepsThePositionAndRefusesCorruptLengthsBeforeAllocating) {
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
