#pragma once

#include "engine/modular/ModuleID.h"
#include "game/Export.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorl::graphics {
class Texture;
using TextureRef = std::shared_ptr<Texture>;
}

namespace game {

/// A block material of terrain and voxel content. Modules declare theirs while loading; a type's id is the small
/// number voxel data carries. The first ForEach (the renderer's or a module's) puts the ids in use and closes the
/// table for good.
class MERIDON_EXPORT VoxelType {
public:
    /// Registers `<moduleName>.<name>`, or joins the type already registered under it (keeping its id; a data of 0
    /// takes over the registered data, any other replaces it). Textures go to the renderer's table, where there is
    /// one. Throws std::runtime_error once the table is closed.
    VoxelType(std::string const& moduleName, std::string const& name, unsigned int data,
        std::vector<quorl::graphics::TextureRef> const& textures);
    VoxelType(VoxelType const&) = default;

    /// Closes the table, then calls `function` for every type but id 0, under the table's mutex: it must not
    /// register types.
    static void ForEach(std::function<void(unsigned short, VoxelType const&)>&& function);

    quorl::modular::ModuleID module;
    std::string name;
    /// Free for the modules to agree on; 0 means none given.
    uint32_t data;
    uint32_t id = 0;
    /// The first of the type's textures in the renderer's table; 0 when it has none.
    uint32_t textureIndex = 0;

    static std::vector<VoxelType> allVoxelTypes;
    /// "<module name>.<type name>" to id.
    static std::unordered_map<std::string, unsigned short> allVoxelTypesByName;
    static bool locked;
    static std::mutex mu;
    /// Id 0: no voxel.
    static VoxelType _empty;
};

}
