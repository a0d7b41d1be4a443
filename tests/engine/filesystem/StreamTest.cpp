#include "engine/filesystem/ReadOnlyStream.h"
#include "engine/filesystem/WriteOnlyStream.h"

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
};

/// The message of the std::runtime_error `action` throws, or "no exception".
template <class Action>
std::string ErrorOf(Action action) {
    try {
        action();
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "no exception";
}

TEST(Stream, NumbersAndPlainValuesRoundTrip) {
    WriteOnlyStream out(64);
    out.Write(int8_t{-5});
    out.Write(uint16_t{65535});
    out.Write(int32_t{std::numeric_limits<int32_t>::min()});
    out.Write(uint64_t{0x0123456789abcdefULL});
    out.Write(-1.5f);
    out.Write(std::numeric_limits<double>::denorm_min());
    out.Write(true);
    out.Write(Biome::Lava);
    out.Write(Voxel{-7, 300, 9, true});

    ReadOnlyStream in(out.Bytes());
    int8_t i8 = 0;
    uint16_t u16 = 0;
    int32_t i32 = 0;
    uint64_t u64 = 0;
    float f = 0;
    double d = 0;
    bool b = false;
    Biome biome = Biome::Ice;
    Voxel voxel{};
    in.Read(i8);
    in.Read(u16);
    in.Read(i32);
    in.Read(u64);
    in.Read(f);
    in.Read(d);
    in.Read(b);
    in.Read(biome);
    in.Read(voxel);
    EXPECT_EQ(i8, -5);
    EXPECT_EQ(u16, 65535);
    EXPECT_EQ(i32, std::numeric_limits<int32_t>::min());
    EXPECT_EQ(u64, 0x0123456789abcdefULL);
    EXPECT_EQ(f, -1.5f);
    EXPECT_EQ(d, std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(b);
    EXPECT_EQ(biome, Biome::Lava);
    EXPECT_EQ(voxel.x, -7);
    EXPECT_EQ(voxel.y, 300);
    EXPECT_EQ(voxel.material, 9);
    EXPECT_TRUE(voxel.solid);
    EXPECT_EQ(in.Remaining(), 0u);
}

TEST(Stream, StringsRoundTripIncludingEmptyAndBinary) {
    std::string const binary("nul\0inside\xff", 11);
    WriteOnlyStream out(0);
    out.Write(std::string(""));
    out.Write("literal");
    out.Write(binary);
    out.Write(std::string(100'000, 'x'));

    ReadOnlyStream in(out.Bytes());
    std::string empty = "not yet", literal, readBinary, large;
    in.Read(empty);
    in.Read(literal);
    in.Read(readBinary);
    in.Read(large);
    EXPECT_EQ(empty, "");
    EXPECT_EQ(literal, "literal");
    EXPECT_EQ(readBinary, binary);
    EXPECT_EQ(large, std::string(100'000, 'x'));
}

TEST(Stream, NestedStreamsRoundTripIncludingEmptyAndDeep) {
    WriteOnlyStream inner(0);
    inner.Write(std::string("chunk"));
    inner.Write(uint32_t{42});
    WriteOnlyStream middle(0);
    middle.Write(inner);
    middle.Write(WriteOnlyStream(0));
    WriteOnlyStream out(0);
    out.Write(uint8_t{1});
    out.Write(middle);
    out.Write(uint8_t{2});

    ReadOnlyStream in(out.Bytes());
    uint8_t before = 0, after = 0;
    in.Read(before);
    auto readMiddle = in.ReadStream();
    in.Read(after);
    EXPECT_EQ(before, 1);
    EXPECT_EQ(after, 2);

    auto readInner = readMiddle.ReadStream();
    auto readEmpty = readMiddle.ReadStream();
    EXPECT_EQ(readEmpty.Size(), 0u);
    EXPECT_EQ(readMiddle.Remaining(), 0u);
    std::string text;
    uint32_t number = 0;
    readInner.Read(text);
    readInner.Read(number);
    EXPECT_EQ(text, "chunk");
    EXPECT_EQ(number, 42u);
}

TEST(Stream, ByteLayoutIsLittleEndianWithUint64Lengths) {
    WriteOnlyStream out(0);
    out.Write(uint32_t{0x01020304});
    out.Write(std::string("ab"));
    WriteOnlyStream nested(0);
    nested.Write(uint8_t{7});
    out.Write(nested);
    EXPECT_EQ(out.Bytes(), (Bytes{4, 3, 2, 1, 2, 0, 0, 0, 0, 0, 0, 0, 'a', 'b', 1, 0, 0, 0, 0, 0, 0, 0, 7}));
}

TEST(Stream, AStreamCanNestItself) {
    WriteOnlyStream out(0);
    out.Write(uint8_t{9});
    out.Write(out);
    EXPECT_EQ(out.Bytes(), (Bytes{9, 1, 0, 0, 0, 0, 0, 0, 0, 9}));
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

TEST(Stream, LengthsJustPastTheEndAreRefused) {
    WriteOnlyStream out(0);
    out.Write(std::string("abc"));
    Bytes truncated = out.Bytes();
    truncated.pop_back();
    ReadOnlyStream in(truncated, "chunk 4");
    std::string text;
    EXPECT_EQ(ErrorOf([&] { in.Read(text); }), "read of 3 bytes past the end of stream \"chunk 4\" at offset 8 of 10");
}

TEST(Stream, ErrorsInsideNestedStreamsNameTheirOrigin) {
    WriteOnlyStream nested(0);
    nested.Write(uint8_t{1});
    WriteOnlyStream out(0);
    out.Write(uint32_t{0});
    out.Write(nested);
    ReadOnlyStream in(out.Bytes(), "region.dat");
    uint32_t header = 0;
    in.Read(header);
    auto block = in.ReadStream();
    uint32_t number = 0;
    EXPECT_THAT(ErrorOf([&] { block.Read(number); }), HasSubstr("\"region.dat (nested block at offset 12)\""));
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

TEST(Stream, ReportsPositionAndSize) {
    WriteOnlyStream out(16);
    EXPECT_EQ(out.Size(), 0u);
    out.Write(uint32_t{1});
    out.Write(uint16_t{2});
    EXPECT_EQ(out.Size(), 6u);
    EXPECT_EQ(out.Position(), 6u);

    ReadOnlyStream in(out.Bytes());
    uint32_t first = 0;
    in.Read(first);
    EXPECT_EQ(in.Position(), 4u);
    EXPECT_EQ(in.Remaining(), 2u);
    EXPECT_EQ(in.Size(), 6u);
}

}
