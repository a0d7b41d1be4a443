#include "engine/filesystem/BinaryFileStream.h"
#include "engine/filesystem/WriteOnlyStream.h"

#include "tests/support/Capture.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

using quorl::filesystem::BinaryFileStream;
using quorl::filesystem::WriteOnlyStream;
using testing::HasSubstr;

namespace {

class BinaryFileStreamTest : public testing::Test {
protected:
    TempDirectory directory;
    std::string path = directory.File("world.sav");
};

/// Writes values of many sizes, so that some fit the buffer, some fill it exactly and some exceed it.
void WriteSave(BinaryFileStream& out) {
    out.Write(uint8_t{1});
    out.Write(uint32_t{0xdeadbeef});
    out.Write(std::string("name of the world"));
    WriteOnlyStream chunk(0);
    chunk.Write(std::string(5000, 'v'));
    out.Write(chunk);
    out.Write(std::string(""));
    out.Write(-2.5);
}

void ExpectSave(BinaryFileStream& in) {
    uint8_t version = 0;
    uint32_t magic = 0;
    std::string name, empty = "x";
    double number = 0;
    in.Read(version);
    in.Read(magic);
    in.Read(name);
    auto chunk = in.ReadStream();
    in.Read(empty);
    in.Read(number);
    std::string voxels;
    chunk.Read(voxels);
    EXPECT_EQ(version, 1);
    EXPECT_EQ(magic, 0xdeadbeef);
    EXPECT_EQ(name, "name of the world");
    EXPECT_EQ(voxels, std::string(5000, 'v'));
    EXPECT_EQ(empty, "");
    EXPECT_EQ(number, -2.5);
    EXPECT_EQ(in.Remaining(), 0u);
}

TEST_F(BinaryFileStreamTest, SaveFileRoundTripsWithAnyBufferSizeFlushedByHandOrByTheDestructor) {
    for (unsigned long bufferSize : {0ul, 1ul, 4ul, 17ul, 1024ul, 1ul << 20}) {
        for (bool flush : {true, false}) {
            SCOPED_TRACE(testing::Message() << bufferSize << (flush ? " flushed" : " destroyed"));
            std::filesystem::remove(path);
            {
                BinaryFileStream out(path, bufferSize);
                WriteSave(out);
                if (flush)
                    out.Flush();
            }
            BinaryFileStream in(path, bufferSize);
            ExpectSave(in);
        }
    }
}

TEST_F(BinaryFileStreamTest, OpeningFailuresNameThePathAndReason) {
    BinaryFileStream in(path, 1024);
    uint8_t value = 0;
    auto error = ErrorOf([&] { in.Read(value); });
    EXPECT_THAT(error, HasSubstr("\"" + path + "\""));
    EXPECT_THAT(error, HasSubstr("No such file or directory"));

    auto missing = directory.File("no-such-folder/world.sav");
    BinaryFileStream out(missing, 1024);
    EXPECT_THAT(ErrorOf([&] { out.Write(uint8_t{1}); }), HasSubstr("\"" + missing + "\" for writing"));
}

TEST_F(BinaryFileStreamTest, ReadingPastTheEndNamesThePath) {
    WriteFile(path, std::string("\x01\x02\x03", 3));
    BinaryFileStream in(path, 2);
    uint16_t first = 0;
    in.Read(first);
    uint32_t second = 0;
    EXPECT_EQ(ErrorOf([&] { in.Read(second); }),
              "read of 4 bytes past the end of stream \"" + path + "\" at offset 2 of 3");
    uint8_t last = 0;
    in.Read(last);
    EXPECT_EQ(last, 3);
}

TEST_F(BinaryFileStreamTest, TheFirstUseDecidesTheDirection) {
    WriteFile(path, "data");
    BinaryFileStream in(path, 1024);
    uint8_t value = 0;
    in.Read(value);
    EXPECT_THAT(ErrorOf([&] { in.Write(uint8_t{1}); }), HasSubstr("is open for reading"));
    EXPECT_EQ(ReadFile(path), "data");

    BinaryFileStream out(directory.File("new.sav"), 1024);
    out.Write(uint8_t{1});
    EXPECT_THAT(ErrorOf([&] { out.Read(value); }), HasSubstr("is open for writing"));
}

TEST_F(BinaryFileStreamTest, FullDiskIsReportedByFlushAndByTheDestructor) {
    auto reported = StderrOf([] {
        BinaryFileStream out("/dev/full", 1024);
        out.Write(uint64_t{1});
        auto error = ErrorOf([&] { out.Flush(); });
        EXPECT_THAT(error, HasSubstr("\"/dev/full\""));
        EXPECT_THAT(error, HasSubstr("No space left on device"));
    });
    EXPECT_THAT(reported, HasSubstr("\"/dev/full\": No space left on device; 8 buffered bytes lost"));
}

}
