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

/// Values of many sizes, so that some fit the buffer, some fill it exactly and some exceed it.
std::vector<std::string> const kTexts{"", "v", "name of the world", std::string(5000, 'v')};

TEST_F(BinaryFileStreamTest, SaveFileRoundTripsWithAnyBufferSizeFlushedByHandOrByTheDestructor) {
    for (unsigned long bufferSize : {0ul, 1ul, 4ul, 17ul, 1024ul, 1ul << 20}) {
        for (bool flush : {true, false}) {
            SCOPED_TRACE(testing::Message() << bufferSize << (flush ? " flushed" : " destroyed"));
            std::filesystem::remove(path);
            {
                BinaryFileStream out(path, bufferSize);
                out.Write(uint32_t{0xdeadbeef});
                for (auto const& text : kTexts)
                    out.Write(text);
                WriteOnlyStream chunk(0);
                chunk.Write(-2.5);
                out.Write(chunk);
                if (flush)
                    out.Flush();
            }

            BinaryFileStream in(path, bufferSize);
            uint32_t magic = 0;
            in.Read(magic);
            EXPECT_EQ(magic, 0xdeadbeef);
            for (auto const& expected : kTexts) {
                std::string text = "x";
                in.Read(text);
                EXPECT_EQ(text, expected);
            }
            double number = 0;
            in.ReadStream().Read(number);
            EXPECT_EQ(number, -2.5);
            EXPECT_EQ(in.Remaining(), 0u);
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
