// What saving and loading a world costs: UnloadAllEntities writes every entity's state file through one
// AtomicFileBatch, LoadAllEntities reads them all back and starts their interfaces. One measured run of each, printed
// as one JSON line: {"n": N, "save_s": ..., "load_s": ..., "bytes": ...}
//
// Usage: bench_entity_saves [--n N]   (N entities, 10000 when not given)
// Saves go to ../Meridon-data/server/worlds/<fresh world>/ relative to the working folder, which is removed again.

#include "game/Game.h"
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

int Run(unsigned long n) {
    Game::_current_world = "bench-saves-" + std::to_string(::getpid()) + "-" +
                           std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    ScratchWorld world("../Meridon-data/server/worlds/" + Game::_current_world);

    ServerSideEntity::_registered_interfaces[kModule]["block"] = ServerSideEntity::EntityTypeDef{
        quorl::modular::ModuleID(kModule), "block", nullptr, [] { return std::make_shared<BlockInterface>(); }};

    for (unsigned long i = 0; i < n; ++i) {
        auto entity = CreateBlock();
        entity->save_tag = 1;
        std::static_pointer_cast<BlockInterface>(entity->interface)->counter = i;
    }

    auto start = std::chrono::steady_clock::now();
    ServerSideEntity::UnloadAllEntities();
    double saveSeconds = SecondsSince(start);
    uintmax_t bytes = BytesIn(world.folder / "entities");

    start = std::chrono::steady_clock::now();
    ServerSideEntity::LoadAllEntities();
    double loadSeconds = SecondsSince(start);

    size_t loaded = LivingEntities();
    {
        std::unique_lock lock(ServerSideEntity::_sharedObjectsMutex);
        ServerSideEntity::_sharedObjects.clear();
    }
    ServerSideEntity::_registered_interfaces.erase(kModule);

    if (loaded != n) {
        std::cerr << "saved " << n << " entities but " << loaded << " came back" << std::endl;
        return 1;
    }
    std::cout << "{\"n\": " << n << ", \"save_s\": " << saveSeconds << ", \"load_s\": " << loadSeconds
              << ", \"bytes\": " << bytes << "}" << std::endl;
    return 0;
}

}

int main(int argc, char** argv) {
    unsigned long n = 10000;
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        if (argument == "--n" && i + 1 < argc) {
            n = std::stoul(argv[++i]);
        } else {
            std::cerr << "usage: " << argv[0] << " [--n N]" << std::endl;
            return 2;
        }
    }
    try {
        return Run(n);
    } catch (std::exception const& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
