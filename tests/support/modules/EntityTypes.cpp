// TEST_entities: a content module that registers entity types whose interfaces keep state of their own, for the
// entity and save tests. Types: "counter" (no config; counts its updates), "saved_counter" (a counter that marks
// itself to be saved and writes a note whose length follows its count, so a torn file shows), "kept" (marks itself
// to be saved and never changes), and "crate" and "door" with the bundled configs. The same types are registered on
// the client side, with an interface that does nothing.

#include "modules/ModuleApi.h"

#include "game/entity/ClientSideEntity.h"
#include "game/entity/EntityConfig.h"
#include "game/entity/ServerSideEntityInterface.h"
#include "tests/support/EntityState.h"

using game::entity::ClientSideEntity;
using game::entity::EntityConfig;
using game::entity::ServerSideEntity;

namespace {

std::string const kModule = quorl::modular::ModuleID("TEST_entities").String();

enum class Kind { Counter, SavedCounter, Kept };

/// Its state: how many updates it has seen, and a note; both go into the save file's block.
template <Kind kind>
class CounterInterface : public ServerSideEntity::Interface {
public:
    void WriteState(quorl::filesystem::WriteOnlyStream& stream) override {
        stream.Write(updates);
        stream.Write(note);
    }
    void ReadState(quorl::filesystem::ReadOnlyStream& stream) override {
        if (stream.Remaining() == 0)
            return;
        stream.Read(updates);
        stream.Read(note);
    }
    void Start() override {
        if (auto living = entity.lock(); living && kind != Kind::Counter)
            living->save_tag = 1;
    }
    void Update(double) override {
        if constexpr (kind == Kind::Counter)
            ++updates;
        else if constexpr (kind == Kind::SavedCounter)
            note = CounterState::Pattern(++updates);
    }
    void Action(quorl::filesystem::ReadOnlyStream&, unsigned long, std::string const&) override {}
    void FullSync(quorl::filesystem::WriteOnlyStream& stream) override { stream.Write(updates); }

    uint64_t updates = 0;
    std::string note;
};

/// The type on both sides, sharing one config as a game that hosts its own server does.
template <Kind kind = Kind::Counter>
void Register(std::string const& type, std::shared_ptr<EntityConfig> config) {
    ServerSideEntity::_registered_interfaces[kModule][type] = ServerSideEntity::EntityTypeDef{
        quorl::modular::ModuleID(kModule), type, config, [] { return std::make_shared<CounterInterface<kind>>(); }};
    ClientSideEntity::_registered_interfaces[kModule][type] = ClientSideEntity::EntityTypeDef{
        quorl::modular::ModuleID(kModule), type, config, [] { return std::make_shared<ClientSideEntity::Interface>(); }};
}

}

extern "C" void Load() {
    Register("counter", nullptr);
    Register<Kind::SavedCounter>("saved_counter", nullptr);
    Register<Kind::Kept>("kept", nullptr);
    Register("crate", std::make_shared<EntityConfig>(MERIDON_CONTENT_DIR "/entities/crate.entity"));
    Register("door", std::make_shared<EntityConfig>(MERIDON_CONTENT_DIR "/entities/door.entity"));
    ServerSideEntity::_registered_items[kModule].insert("crowbar");
}

// The factories live in this library: the types must go before it closes.
extern "C" void Unload() {
    ServerSideEntity::_registered_interfaces.erase(kModule);
    ServerSideEntity::_registered_items.erase(kModule);
    ClientSideEntity::_registered_interfaces.erase(kModule);
}
