#pragma once

#include "engine/SharedMutex.h"
#include "engine/filesystem/ReadOnlyStream.h"
#include "engine/filesystem/WriteOnlyStream.h"
#include "game/entity/BaseEntity.h"
#include "game/entity/EnvironmentId.h"

#include <glm/mat3x3.hpp>

#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace game::entity {

/// One entity of the server's world: a node of a forest told by the parent id in each child. Entities live in the
/// process-wide table `_sharedObjects`, which owns them; everybody else keeps a weak pointer or the id. The
/// behaviour comes from the Interface that the entity type's module supplies.
class MERIDON_EXPORT ServerSideEntity : public BaseEntity {
public:
    class Interface;

    /// One entity type of a module: its config and the factory of its behaviour.
    struct EntityTypeDef {
        quorl::modular::ModuleID module;
        std::string name;
        std::shared_ptr<EntityConfig> config;
        std::function<std::shared_ptr<Interface>()> factory;
    };

    /// A new entity of `type`. A null `id` is replaced by a fresh one with the prefix "ENTT". An unknown module or
    /// type gives an entity without interface and config, and a warning on standard error, once per module and type.
    ServerSideEntity(quorl::modular::ModuleID const& module, std::string const& type, Id id);
    /// A saved entity, read from its state file; `out` receives the interface's block. Throws the save-file errors.
    ServerSideEntity(Id id, quorl::filesystem::ReadOnlyStream& out);
    /// Releases the interface, then removes the state file if delete_save_on_destroy is set: at once, or with the
    /// next save of the open world (SavedWorld).
    ~ServerSideEntity() override;
    ServerSideEntity(ServerSideEntity const&) = delete;
    ServerSideEntity& operator=(ServerSideEntity const&) = delete;

    void InitNodes() override;
    /// The interface's Update once started, then the joint solver and the re-posing of colliders when asked for.
    void Update(double dt) override;

    /// Constructs an entity and enters it into `_sharedObjects`. Throws std::runtime_error
    /// "UNIQUE_OBJECT ServerSideEntity with id <id> already exists" for a taken id; the first entity stays.
    template <class T = ServerSideEntity, class... Arguments>
    static std::shared_ptr<T> Create(Arguments&&... arguments);
    /// The living entity of this id, null when there is none (or it is not a T).
    template <class T = ServerSideEntity>
    static std::shared_ptr<T> Get(Id const& id);
    /// Calls `function` for every living entity under the shared lock: it must not create or unload entities.
    static void ForEach(std::function<void(std::shared_ptr<ServerSideEntity> const&)> const& function);
    /// Calls `function` for every registered entity type, by module string, then type name. Not locked, like the
    /// table: for the thread that registers types, outside the loops.
    static void ForEachRegisteredType(
        std::function<void(std::string const& module, std::string const& type)> const& function);
    /// The module that registered `name` as an entity type, or else as an item; the null id when none did.
    static quorl::modular::ModuleID FindModuleID(std::string const& name);

    /// The first ancestor that is not a component; null at the end of the chain or at a missing id.
    std::shared_ptr<ServerSideEntity> GetFirstNonComponentParent() const;
    /// Entity space to the space of the body this entity is merged into: identity for a non-component.
    glm::dmat4 GetTransformInPhysicsParent() const;
    /// Inertia of a solid box of the entity's size and mass, in world axes.
    glm::dmat3 GetInertiaTensorWorld() const;

    /// One physics tick over every entity: called by the server loop only, with no entity lock held. Reads
    /// Game::_environmentFunctions and Game::debugServerSidePhysics once, as it starts.
    static void PhysicsUpdate(double dt, int substeps);

    /// Saves every entity with a non-zero save_tag that is no component, then empties the table. The files are
    /// replaced together, so that a crash leaves each one old or new.
    static void UnloadAllEntities();
    /// Empties the table without saving; entities marked delete_save_on_destroy take their files along.
    static void DropAllEntities();
    /// Restores every entity of the current world's "entities" folder. The first file that fails (a name that is no
    /// id, a bad file, an interface that throws) stops the load with its exception.
    static void LoadAllEntities();
    /// Called after each state file with null, or with what failed: the entity is then not in the table.
    using LoadReport = std::function<void(std::filesystem::path const& file, std::exception_ptr failure)>;
    /// Restores every entity of the current world's "entities" folder, going on past a file that fails.
    static void LoadAllEntities(LoadReport const& afterEach);

    /// "../Meridon-data/server/worlds/<world>/entities/<id>.entitystate"
    std::string GetStateSaveFile() const;
    /// Writes this entity's state file. Throws std::runtime_error naming the path when the world's folder is missing
    /// or the disk is full; the previous file then stays as it was.
    void Serialize();
    /// The state file's bytes: the entity's fields, then the interface's block.
    std::vector<unsigned char> SaveState();
    /// Reads the state file into this entity and returns the interface's block.
    quorl::filesystem::ReadOnlyStream Deserialize();

    std::weak_ptr<ServerSideEntity> self;
    Id id;
    bool physics_enabled = false;
    bool aerodynamic = true;
    bool delete_save_on_destroy = true;
    /// Non-zero marks an entity to be saved at unload.
    uint64_t save_tag = 0;
    /// Sums applied since the last tick; zeroed by the physics step.
    glm::dvec3 force_impulse{0.0};
    glm::dvec3 torque_impulse{0.0};
    glm::dvec3 extra_acceleration{0.0};
    /// Seconds at rest; at 1.0 and above the physics treats the body as asleep.
    double rest_time = 0.0;
    EnvironmentId environment = 0;
    EnvironmentId parent_environment = 0;
    // Physics bookkeeping.
    bool settled = false;
    /// Some ancestor is a moving body.
    bool carried = false;
    std::shared_ptr<Interface> interface;

    /// Module string, then type name.
    static std::map<std::string, std::map<std::string, EntityTypeDef>> _registered_interfaces;
    /// Items of modules that are no entity types, by module string.
    static std::map<std::string, std::set<std::string>> _registered_items;
    static std::unordered_map<Id, std::shared_ptr<ServerSideEntity>> _sharedObjects;
    static quorl::SharedMutex _sharedObjectsMutex;
    /// The interfaces each module has made, by module string.
    static std::map<std::string, std::vector<std::weak_ptr<Interface>>> _module_entities;
    static std::recursive_mutex _module_entities_mutex;

private:
    /// Interface and config from the registry, then the nodes; shared by both constructors. False when the type is
    /// not registered.
    bool Construct();
    void WriteFields(quorl::filesystem::WriteOnlyStream& stream) const;
};

}

#include "game/entity/ServerSideEntity.inl"
