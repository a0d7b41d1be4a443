// What saving and loading a world costs, as the server does it through SavedWorld: the first save writes every
// entity's state file in one batch, an autosave after `moved` entities moved writes only theirs, and the load reads
// them all back and starts their interfaces. One measured run of each, printed as one JSON line:
// {"n": N, "save_s": ..., "moved": M, "autosave_s": ..., "written": ..., "load_s": ..., "bytes": ...}
//
// Usage: bench_entity_saves [--n N] [--moved M]   (N entities, 10000 when not given; M moved, 100 when not given)
// Saves go to ../Meridon-data/server/worlds/<fresh world>/ relative to the working folder, which is removed again.

#include "game/Game.h"
#include "game/entity/SavedWorld.h"
#include "game/entity/ServerSideEntityInterface.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

using game::entity::ServerSideEntity;

namespace {

std::string const kModule = quorl::modular::ModuleID("BENCH_saves").String();

/// A small state of its own, about what a simple block keeps: 32 bytes in the save file's block.
class BlockInterface : public ServerSideEntity::Interface {
public:
    void WriteState(quorl::filesystem::WriteOnlyStream& stream) override {
        stream.Write(counter);
        stream.Write(label);
    }
    void ReadState(quorl::filesystem::ReadOnlyStream& stream) override {
        stream.Read(counter);
        stream.Read(label);
    }
    void Start() override {}
    void Action(quorl::filesystem::ReadOnlyStream&, unsigned long, std::string const&) override {}
    void FullSync(quorl::filesystem::WriteOnlyStream& stream) override { stream.Write(counter); }

    uint64_t counter = 0;
    std::string label = "block of a bench";
};

std::shared_ptr<ServerSideEntity> CreateBlock() {
    return ServerSideEntity::Create<ServerSideEntity>(quorl::modular::ModuleID(kModule), "block", game::entity::Id{});
}

/// Removes the world's folder however the run ends.
struct ScratchWorld {
    explicit ScratchWorld(std::filesystem::path folder) : folder(std::move(folder)) {
        std::filesystem::create_directories(this->folder / "entities");
    }
    ~ScratchWorld() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::filesystem::path const folder;
};

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

uintmax_t BytesIn(std::filesystem::path const& folder) {
    uintmax_t bytes = 0;
    for (auto const& file : std::filesystem::directory_iterator(folder))
        bytes += file.file_size();
    return bytes;
}

size_t LivingEntities() {
    std::shared_lock lock(ServerSideEntity::_sharedObjectsMutex);
    return ServerSideEntity::_sharedObjects.size();
}

/// Files in the folder that are newer than `since`: what a save wrote.
size_t WrittenSince(std::filesystem::path const& folder, std::filesystem::file_time_type since) {
    size_t written = 0;
    for (auto const& file : std::filesystem::directory_iterator(folder))
        written += file.last_write_time() > since;
    return written;
}

int Run(unsigned long n, unsigned long moved) {
    Game::_current_world = "bench-saves-" + std::to_string(::getpid()) + "-" +
                           std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    ScratchWorld world("../Meridon-data/server/worlds/" + Game::_current_world);
    auto const entities = world.folder / "entities";

    ServerSideEntity::_registered_interfaces[kModule]["block"] = ServerSideEntity::EntityTypeDef{
        quorl::modular::ModuleID(kModule), "block", nullptr, [] { return std::make_shared<BlockInterface>(); }};

    std::vector<std::shared_ptr<ServerSideEntity>> blocks;
    for (unsigned long i = 0; i < n; ++i) {
        blocks.push_back(CreateBlock());
        blocks.back()->save_tag = 1;
        std::static_pointer_cast<BlockInterface>(blocks.back()->interface)->counter = i;
    }

    double saveSeconds = 0.0, autosaveSeconds = 0.0, loadSeconds = 0.0;
    size_t written = 0, loaded = 0;
    uintmax_t bytes = 0;
    {
        game::entity::SavedWorld saved;
        auto start = std::chrono::steady_clock::now();
        if (!saved.Save())
            return 1;
        saveSeconds = SecondsSince(start);

        for (unsigned long i = 0; i < moved && i < n; ++i)
            blocks[i * (n / std::max(moved, 1ul))]->position.x += 1.0;
        blocks.clear();
        auto before = std::filesystem::file_time_type::clock::now();
        start = std::chrono::steady_clock::now();
        if (!saved.Save())
            return 1;
        autosaveSeconds = SecondsSince(start);
        written = WrittenSince(entities, before);
        saved.Close(false);
        bytes = BytesIn(entities);

        start = std::chrono::steady_clock::now();
        saved.Load();
        loadSeconds = SecondsSince(start);
        loaded = LivingEntities();
        saved.Close(false);
    }
    ServerSideEntity::_registered_interfaces.erase(kModule);

    if (loaded != n) {
        std::cerr << "saved " << n << " entities but " << loaded << " came back" << std::endl;
        return 1;
    }
    std::cout << "{\"n\": " << n << ", \"save_s\": " << saveSeconds << ", \"moved\": " << moved
              << ", \"autosave_s\": " << autosaveSeconds << ", \"written\": " << written
              << ", \"load_s\": " << loadSeconds << ", \"bytes\": " << bytes << "}" << std::endl;
    return 0;
}

}

int main(int argc, char** argv) {
    unsigned long n = 10000, moved = 100;
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        if (argument == "--n" && i + 1 < argc) {
            n = std::stoul(argv[++i]);
        } else if (argument == "--moved" && i + 1 < argc) {
            moved = std::stoul(argv[++i]);
        } else {
            std::cerr << "usage: " << argv[0] << " [--n N] [--moved M]" << std::endl;
            return 2;
        }
    }
    try {
        return Run(n, moved);
    } catch (std::exception const& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
