// The reader of entity type files, which come from content modules and are edited by hand: any file reads without
// failing, into boxes and meshes the physics can take; every node it gives has a transform in entity space, and an
// entity of the type can take its nodes and be posed by its joints. A parent that names no node may only throw
// std::out_of_range when asked for by name.

#include "game/entity/BaseEntity.h"
#include "game/entity/EntityConfig.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

using game::entity::EntityConfig;

namespace {

/// One file per fuzzing process, rewritten for every input, so that parallel jobs do not read each other's. A global
/// rather than a function's static: that would be destroyed before the exit handler that removes the file runs.
std::string configPath;

void RemoveConfigFile() {
    std::remove(configPath.c_str());
}

/// The corners come ordered whatever the file says; NaN compares false either way.
void CheckBox(glm::vec3 const& min, glm::vec3 const& max) {
    for (int axis = 0; axis < 3; ++axis)
        if (min[axis] > max[axis])
            std::abort();
}

void CheckCollider(EntityConfig::Collider const& collider) {
    CheckBox(collider.box_min, collider.box_max);
    if (collider.vertices_count > collider.vertices.size() || collider.normals_count > collider.faces_normal.size() ||
        collider.triangles_count > collider.triangles.size())
        std::abort();
}

}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    configPath =
        (std::filesystem::temp_directory_path() / ("meridon-fuzz-" + std::to_string(::getpid()) + ".entity")).string();
    std::atexit(RemoveConfigFile);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    {
        std::ofstream file(configPath, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
    }
    auto config = std::make_shared<EntityConfig>(configPath);
    config->ReadConfig();

    for (auto const& [name, collider] : config->colliders)
        CheckCollider(collider);
    for (auto const& [name, box] : config->light_boxes)
        CheckBox(box.box_min, box.box_max);
    for (auto const& [name, node] : config->nodes) {
        config->GetAbsoluteTransform(name);
        try {
            config->GetAbsoluteTransform(node.parent);
        } catch (std::out_of_range const&) {
        }
    }

    game::entity::BaseEntity entity;
    entity.config = config;
    entity.InitNodes();
    config->solver(&entity);
    return 0;
}
