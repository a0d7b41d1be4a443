#include "game/entity/SavedWorld.h"
#include "tests/support/EntityState.h"
#include "tests/support/EntityWorld.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

using game::entity::Id;
using game::entity::SavedWorld;
using game::entity::ServerSideEntity;

class SavedWorldTest : public testing::Test {
protected:
    static std::shared_ptr<ServerSideEntity> MakeSaved(uint64_t updates) {
        auto entity = ServerSideEntity::Create(EntityWorld::Module(), "counter", Id{});
        entity->save_tag = 1;
        CounterState{updates, "note"}.Into(*entity);
        return entity;
    }

    /// A file replaced by a save is a new file: its inode tells whether a save wrote it.
    static ino_t Inode(std::string const& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
    }

    EntityWorld world{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(SavedWorldTest, SaveWritesOnlyTheFilesWhoseBytesChanged) {
    SavedWorld saved;
    auto still = MakeSaved(1), moved = MakeSaved(2);
    ASSERT_TRUE(saved.Save());
    ino_t stillInode = Inode(still->GetStateSaveFile()), movedInode = Inode(moved->GetStateSaveFile());
    ASSERT_NE(stillInode, 0u);

    moved->position.x += 1.0;
    ASSERT_TRUE(saved.Save());
    EXPECT_EQ(Inode(still->GetStateSaveFile()), stillInode) << "an unchanged entity was written again";
    EXPECT_NE(Inode(moved->GetStateSaveFile()), movedInode) << "a moved entity was not saved";
    EXPECT_FALSE(std::filesystem::exists(SavedWorld::Folder() + "/save.journal"));
}

TEST_F(SavedWorldTest, DestroyedEntityKeepsItsFileUntilASaveSucceedsAndAfterAnError) {
    for (bool const afterError : {false, true}) {
        SCOPED_TRACE(afterError ? "closed after an error" : "closed normally");
        SavedWorld saved;
        auto entity = MakeSaved(7);
        ASSERT_TRUE(saved.Save());
        std::string const path = entity->GetStateSaveFile();
        // Destroyed as a player does: out of the table, its last pointer gone.
        {
            std::unique_lock lock(ServerSideEntity::_sharedObjectsMutex);
            ServerSideEntity::_sharedObjects.erase(entity->id);
        }
        entity.reset();
        EXPECT_TRUE(std::filesystem::exists(path)) << "removed before any save";
        EXPECT_TRUE(saved.Close(afterError));
        EXPECT_EQ(std::filesystem::exists(path), afterError);
    }
}

TEST_F(SavedWorldTest, UnsavedEntityOfAWorldClosedAfterAnErrorKeepsItsFile) {
    // Loaded, but its interface never marked it to be saved: the destruction rule would take its file.
    std::string const path = MakeSaved(3)->GetStateSaveFile();
    ServerSideEntity::UnloadAllEntities();

    SavedWorld saved;
    ASSERT_EQ(saved.Load(), 1u);
    ServerSideEntity::ForEach([](auto const& loaded) { loaded->save_tag = 0; });
    EXPECT_TRUE(saved.Close(/*afterError=*/true));
    EXPECT_TRUE(std::filesystem::exists(path));
}
