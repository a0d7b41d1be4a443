#include "game/VoxelType.h"

#include "game/Game.h"
#include "game/graphics/GameRenderer.h"

#include <stdexcept>
#include <tuple>

namespace game {

// In one file, so that the table exists before _empty enters it.
std::vector<VoxelType> VoxelType::allVoxelTypes;
std::unordered_map<std::string, unsigned short> VoxelType::allVoxelTypesByName;
bool VoxelType::locked = false;
std::mutex VoxelType::mu;
VoxelType VoxelType::_empty("", "", 0, {});

VoxelType::VoxelType(std::string const& moduleName, std::string const& name, unsigned int data,
    std::vector<quorl::graphics::TextureRef> const& textures)
    : module(moduleName), name(name), data(data) {
    std::lock_guard lock(mu);
    if (locked) {
        throw std::runtime_error("Trying to add more voxel types after executing VoxelType::ForEach()");
    }
    // A dedicated server draws nothing: its types have no textures.
    if (!textures.empty() && Game::renderer) {
        std::vector<std::tuple<quorl::graphics::TextureRef, VkSampler>> withSampler;
        for (auto const& texture : textures) {
            withSampler.emplace_back(texture, *Game::renderer->defaultSampler);
        }
        textureIndex = Game::renderer->AddTextures(withSampler) & 0xFFFF;
    }
    auto const key = moduleName + "." + name;
    auto const found = allVoxelTypesByName.find(key);
    if (found != allVoxelTypesByName.end()) {
        id = found->second;
    } else {
        // Ids are 16-bit so that voxel data stays small; nothing guards the 65536th type.
        id = static_cast<uint32_t>(allVoxelTypes.size());
        allVoxelTypes.push_back(*this);
        allVoxelTypesByName.emplace(key, static_cast<unsigned short>(id));
    }
    if (data != 0) {
        allVoxelTypes[id].data = data;
    } else {
        this->data = allVoxelTypes[id].data;
    }
}

void VoxelType::ForEach(std::function<void(unsigned short, VoxelType const&)>&& function) {
    std::lock_guard lock(mu);
    locked = true;
    for (size_t id = 1; id < allVoxelTypes.size(); ++id) {
        function(static_cast<unsigned short>(id), allVoxelTypes[id]);
    }
}

}
