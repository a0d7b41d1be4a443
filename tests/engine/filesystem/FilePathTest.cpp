#include "engine/filesystem/FilePath.h"

#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using quorl::filesystem::FilePath;
using testing::HasSubstr;

namespace {

TEST(FilePath, DeleteRemovesTheFileAndToleratesAMissingOne) {
    TempDirectory directory;
    FilePath path = directory.File("old.dat");
    WriteFile(path, "bytes");

    path.Delete();
    EXPECT_FALSE(std::filesystem::exists(path.Path()));
    EXPECT_NO_THROW(path.Delete());
}

TEST(FilePath, DeleteFailureNamesThePathAndReason) {
    TempDirectory directory;
    FilePath path = directory.File("folder");
    std::filesystem::create_directory(path.Path());

    try {
        path.Delete();
        FAIL() << "deleting a directory through FilePath must fail";
    } catch (std::runtime_error const& error) {
        EXPECT_THAT(error.what(), HasSubstr(path.Path()));
        EXPECT_THAT(error.what(), HasSubstr("directory"));
    }
    EXPECT_TRUE(std::filesystem::is_directory(path.Path()));
}

}
