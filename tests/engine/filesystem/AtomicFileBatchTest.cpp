#include "engine/filesystem/AtomicFileBatch.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>

using quorl::filesystem::AtomicFileBatch;

TEST(AtomicFileBatchTest, RecoverFinishesABatchThatStoppedAfterItsJournal) {
    TempDirectory folder;
    std::string const renamed = folder.File("renamed"), waiting = folder.File("waiting"), removed = folder.File("removed");
    std::string const journal = folder.File("journal");
    // As a crash leaves it: one rename done, one temporary still waiting, one removal not yet made.
    WriteFile(renamed, "new renamed");
    WriteFile(waiting, "old waiting");
    WriteFile(waiting + AtomicFileBatch::kTemporarySuffix, "new waiting");
    WriteFile(removed, "old removed");
    WriteFile(journal, "quorl file batch 1\nR " + renamed + "\nR " + waiting + "\nD " + removed + "\nend\n");

    EXPECT_TRUE(AtomicFileBatch::Recover(journal));
    EXPECT_EQ(ReadFile(renamed), "new renamed");
    EXPECT_EQ(ReadFile(waiting), "new waiting");
    EXPECT_FALSE(std::filesystem::exists(removed));
    EXPECT_FALSE(std::filesystem::exists(journal));
    EXPECT_FALSE(AtomicFileBatch::Recover(journal)) << "nothing left to recover";
}

TEST(AtomicFileBatchTest, IncompleteJournalIsRefusedAndLeftAsItIs) {
    TempDirectory folder;
    std::string const file = folder.File("file"), journal = folder.File("journal");
    WriteFile(file, "old");
    WriteFile(file + AtomicFileBatch::kTemporarySuffix, "new");
    WriteFile(journal, "quorl file batch 1\nR " + file + "\n");
    EXPECT_THROW(AtomicFileBatch::Recover(journal), std::runtime_error);
    EXPECT_EQ(ReadFile(file), "old");
    EXPECT_TRUE(std::filesystem::exists(journal));
}
