#include "engine/filesystem/FilePath.h"

#include "tests/support/Capture.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using quorl::filesystem::FilePath;
using testing::HasSubstr;

namespace {

TEST(FilePath, DeleteRemovesTheFileToleratesAMissingOneAndNamesThePathWhenItFails) {
    TempDirectory directory;
    FilePath path = directory.File("old.dat");
    WriteFile(path, "bytes");
    path.Delete();
    EXPECT_FALSE(std::filesystem::exists(path.Path()));
    EXPECT_NO_THROW(path.Delete());

    FilePath folder = directory.File("folder");
    std::filesystem::create_directory(folder.Path());
    auto const error = ErrorOf([&] { folder.Delete(); });
    EXPECT_THAT(error, HasSubstr(folder.Path()));
    EXPECT_THAT(error, HasSubstr("directory"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path()));
}

}
