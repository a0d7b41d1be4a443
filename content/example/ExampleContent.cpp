// The example module, content side: MERIDON_example.MERIDON_Mod.so. Content modules are listed in Game::_mods
// (the launcher's "mods"); Game::Start loads them and calls Load, and Game::Stop calls Unload before closing them.
//
// This one brings the entity types of the demo world: a crate, a door, a wheel assembly, a light box, the parts of
// a rover (body and wheel), a glider wing, a whole glider, a buoy and the player's avatar. A type is a config file
// (the shape: nodes, joints, colliders) with the mesh of the same stem beside it, and a factory of the Interface that
// gives each entity its behaviour and its own part of the save file.

#include "modules/ServerModuleApi.h"

#include "game/entity/EntityConfig.h"
#include "game/entity/ClientSideEntity.h"
#include "game/entity/ServerSideEntityInterface.h"

#include <filesystem>

using game::entity::ClientSideEntity;
using game::entity::EntityConfig;
using game::entity::ServerSideEntity;

// Tells a future game which module interface this was written for. The game keeps the address only.
extern "C" uint32_t const _MERIDON_Mod_VERSION = MERIDON_MOD_VERSION;

namespace {

std::string const kModule = "MERIDON_example";
// Each the stem of a file in the module's entities/ folder.
char const* const kTypes[] = {"crate", "door",        "light_box", "wheel_assembly", "rover_body",
                              "wheel", "glider_wing", "glider",    "buoy",           "avatar"};

/// Counts how often the entity has been loaded; the count lives in the entity's save file.
class ExampleInterface : public ServerSideEntity::Interface {
public:
    // Written at unload into the entity's state file, read back at the next start: keep the two in step.
    void WriteState(quorl::filesystem::WriteOnlyStream& stream) override { stream.Write(timesLoaded); }
    void ReadState(quorl::filesystem::ReadOnlyStream& stream) override {
        if (stream.Remaining() > 0)
            stream.Read(timesLoaded);
        ++timesLoaded;
    }
    // Runs once the state is read; update passes follow. Entities made by module code are started by it.
    // save_tag is not part of the file: an entity that should outlive this run says so again each time it starts.
    // Left at 0, the entity is dropped at unload and its file deleted with it. Nor is physics_enabled: every type
    // here is a solid thing that takes part in the physics, wherever its placement puts it.
    void Start() override {
        if (auto living = entity.lock()) {
            living->save_tag = 1;
            living->physics_enabled = true;
        }
    }
    // Requests and syncs travel over the module's own network code; the demo has none.
    void Action(quorl::filesystem::ReadOnlyStream&, unsigned long, std::string const&) override {}
    void FullSync(quorl::filesystem::WriteOnlyStream& stream) override { stream.Write(timesLoaded); }

    uint32_t timesLoaded = 0;
};

}

// Registers the types. Their config files lie beside this library, in whichever folder the launcher found it: the
// game folder's modules/ or a --module-path folder. The registry knows which (a hook may ask the registry of its
// own class, but ModuleLoad, which runs with it locked, may not); relative paths start at the game folder.
// Each type is registered on both sides with one config: the server simulates the entity, and the client's shadow
// of it (made when the server's entities reach the client) draws its mesh. The client side needs no behaviour of
// its own, so it takes the base Interface.
extern "C" void Load() {
    std::filesystem::path const folder = std::filesystem::path(MERIDON_Mod::GetModule(kModule)->path).parent_path();
    quorl::modular::ModuleID const module(kModule);
    auto& serverTypes = ServerSideEntity::_registered_interfaces[module.String()];
    auto& clientTypes = ClientSideEntity::_registered_interfaces[module.String()];
    for (char const* type : kTypes) {
        auto config = std::make_shared<EntityConfig>((folder / "entities" / (std::string(type) + ".entity")).string());
        serverTypes[type] = {module, type, config, [] { return std::make_shared<ExampleInterface>(); }};
        clientTypes[type] = {module, type, config, [] { return std::make_shared<ClientSideEntity::Interface>(); }};
    }
}

// The factories are code of this library, and so is what they made: the types must be gone before it closes, and
// the client's shadows of our entities with them (the game clears the rest of the client's table only after the
// content modules have closed). The launcher saves and drops every server entity before it stops the game.
extern "C" void Unload() {
    quorl::modular::ModuleID const module(kModule);
    ClientSideEntity::RemoveModuleEntities(module);
    ServerSideEntity::_registered_interfaces.erase(module.String());
    ClientSideEntity::_registered_interfaces.erase(module.String());
}
