// The reader of entity state files, which a crash, a full disk or a hand edit can leave in any shape: any file
// either restores the entity or throws std::runtime_error, and an entity it restores saves bytes that restore to
// the same entity again.

#include "game/Game.h"
#include "game/entity/ServerSideEntity.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

using game::entity::ServerSideEntity;

namespace {

game::entity::Id const kId("ENTT000000010123456789ABCDEF");
/// Where the game looks for the state of kId; set once the world is chosen.
std::string statePath;

std::string WorldFolder() {
    return "../Meridon-data/server/worlds/" + Game::_current_world;
}

void RemoveWorld() {
    std::error_code ignored;
    std::filesystem::remove_all(WorldFolder(), ignored);
}

void WriteStateFile(unsigned char const* data, size_t size) {
    std::ofstream file(statePath, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
}

/// Restores kId from its file and returns what it would save now. Removes the file, as the entity is destroyed.
std::vector<unsigned char> RestoreAndSave() {
    quorl::filesystem::ReadOnlyStream block(std::vector<unsigned char>{});
    ServerSideEntity entity(kId, block);
    return entity.SaveState();
}

}

// A world of this process's own, beside the working folder where the game keeps it, so that parallel jobs do not
// share files.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Game::_current_world = "fuzz-" + std::to_string(::getpid());
    std::filesystem::create_directories(WorldFolder() + "/entities");
    std::atexit(RemoveWorld);
    // Asked of an entity rather than spelled out here, so that inputs keep landing where the reader looks.
    ServerSideEntity probe(quorl::modular::ModuleID(), "", kId);
    probe.delete_save_on_destroy = false;
    statePath = probe.GetStateSaveFile();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    WriteStateFile(data, size);
    std::vector<unsigned char> saved;
    try {
        saved = RestoreAndSave();
    } catch (std::runtime_error const&) {
        return 0;
    }
    WriteStateFile(saved.data(), saved.size());
    if (RestoreAndSave() != saved)
        std::abort();
    return 0;
}
