// TEST_outside, content side: registers the entity type "marker", whose config lies beside this library in the
// module's own folder, wherever the launcher found that folder.

#include "modules/ServerModuleApi.h"

#include "game/entity/EntityConfig.h"
#include "game/entity/ServerSideEntityInterface.h"

#include <filesystem>
#include <stdexcept>

using game::entity::ServerSideEntity;

extern "C" uint32_t const _MERIDON_Mod_VERSION = MERIDON_MOD_VERSION;

namespace {

std::string const kModule = "TEST_outside";

/// Saved at every save; its state is how often it has been loaded.
class MarkerInterface : public ServerSideEntity::Interface {
public:
    void WriteState(quorl::filesystem::WriteOnlyStream& stream) override { stream.Write(timesLoaded); }
    void ReadState(quorl::filesystem::ReadOnlyStream& stream) override {
        if (stream.Remaining() > 0)
            stream.Read(timesLoaded);
        ++timesLoaded;
    }
    void Start() override {
        if (auto living = entity.lock())
            living->save_tag = 1;
    }
    void Action(quorl::filesystem::ReadOnlyStream&, unsigned long, std::string const&) override {}
    void FullSync(quorl::filesystem::WriteOnlyStream& stream) override { stream.Write(timesLoaded); }

    uint32_t timesLoaded = 0;
};

}

// A config file that is not found reads as an empty type, so its absence is made a failure of the run here.
extern "C" void Load() {
    auto const config = std::filesystem::path(MERIDON_Mod::GetModule(kModule)->path).parent_path() / "entities" /
                        "marker.entity";
    if (!std::filesystem::is_regular_file(config))
        throw std::runtime_error("no entity config at " + config.string());
    ServerSideEntity::_registered_interfaces[kModule]["marker"] = {
        quorl::modular::ModuleID(kModule), "marker", std::make_shared<game::entity::EntityConfig>(config.string()),
        [] { return std::make_shared<MarkerInterface>(); }};
}

extern "C" void Unload() {
    ServerSideEntity::_registered_interfaces.erase(kModule);
}
