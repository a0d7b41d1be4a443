// The voxel type table: ids, joining a known name, closing for good, and textures into the renderer's table.

#include "game/VoxelType.h"

#include "tests/support/Capture.h"
#include "tests/support/GameRendererFixture.h"

#include <vector>

using game::VoxelType;

TEST(VoxelTypeTest, IdsStartAtOneAndAKnownNameJoinsItsTypeUntilTheFirstWalkClosesTheTable) {
    VoxelType::ForEach([](unsigned short, VoxelType const&) {});
    EXPECT_EQ(ErrorOf([] { VoxelType("MERIDON_test", "late", 0, {}); }),
        "Trying to add more voxel types after executing VoxelType::ForEach()")
        << "a walk that found nothing still closes the table";
    VoxelType::locked = false;  // Process-wide table: reopened here only, to test the rest in one process.

    VoxelType const rock("MERIDON_test", "rock", 5, {});
    VoxelType const sand("MERIDON_test", "sand", 0, {});
    VoxelType const rockAgain("MERIDON_test", "rock", 0, {});
    EXPECT_EQ(rock.id, 1u);
    EXPECT_EQ(sand.id, 2u);
    EXPECT_EQ(rockAgain.id, 1u);
    EXPECT_EQ(rockAgain.data, 5u) << "a data of 0 takes over the registered one";
    VoxelType const rockChanged("MERIDON_test", "rock", 7, {});
    EXPECT_EQ(VoxelType::allVoxelTypes[1].data, 7u);
    EXPECT_EQ(VoxelType::allVoxelTypesByName.at("MERIDON_test.sand"), 2u);

    std::vector<unsigned short> walked;
    VoxelType::ForEach([&](unsigned short id, VoxelType const& type) {
        walked.push_back(id);
        EXPECT_EQ(type.id, id);
    });
    EXPECT_EQ(walked, (std::vector<unsigned short>{1, 2})) << "id 0 is no voxel";
}

TEST_F(GameWithRendererTest, VoxelTexturesGoToTheRenderersTableInOrder) {
    auto const atlas = quorl::graphics::Texture::Load(renderer->device.get(),
        "game/graphics/ui/textures/monospace_font_atlas.png");
    VoxelType const plain("MERIDON_test", "plain", 0, {});
    VoxelType const grass("MERIDON_test", "grass", 0, {atlas, atlas});
    VoxelType const dirt("MERIDON_test", "dirt", 0, {atlas});
    EXPECT_EQ(plain.textureIndex, 0u);
    EXPECT_EQ(grass.textureIndex, 1u) << "the first texture after the font atlas";
    EXPECT_EQ(dirt.textureIndex, 3u);
}
