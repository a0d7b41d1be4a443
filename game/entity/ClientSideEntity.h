#pragma once

#include "engine/SharedMutex.h"
#include "game/entity/BaseEntity.h"

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

namespace game::graphics {
class Mesh;
class RenderableInstance;
}

namespace game::entity {

/// The client's shadow of a server entity: it moves smoothly towards the states the server sends (the target
/// fields, filled by network or module code), poses its nodes with the type's joint solver and places what draws it.
/// Entities live in `_sharedObjects`, which owns them; walks hold the shared side of `_sharedObjectsMutex`.
class MERIDON_EXPORT ClientSideEntity : public BaseEntity {
public:
    class Interface;

    /// One entity type of a module on the client: its config and the factory of its behaviour.
    struct EntityTypeDef {
        quorl::modular::ModuleID module;
        std::string name;
        std::shared_ptr<EntityConfig> config;
        std::function<std::shared_ptr<Interface>()> factory;
    };

    /// A shadow of a registered type. Throws std::out_of_range for an unknown module or type, and
    /// std::bad_function_call when the type has no factory.
    ClientSideEntity(Id id, quorl::modular::ModuleID const& module, std::string const& type);
    ~ClientSideEntity() override;
    ClientSideEntity(ClientSideEntity const&) = delete;
    ClientSideEntity& operator=(ClientSideEntity const&) = delete;

    void InitNodes() override;
    /// The interface's Update once started, the move towards the target, then the joint solver when asked for.
    void Update(double dt) override;
    virtual void AfterUpdate(double dt);
    virtual void Ui();
    /// Shows or hides everything that draws the entity.
    virtual void SetVisibility(bool visible);

    /// Constructs an entity and enters it into `_sharedObjects`. Throws std::runtime_error
    /// "UNIQUE_OBJECT ClientSideEntity with id <id> already exists" for a taken id; the first entity stays.
    static std::shared_ptr<ClientSideEntity> Create(Id id, quorl::modular::ModuleID const& module,
                                                    std::string const& type);
    /// The living entity of this id, null when there is none.
    static std::shared_ptr<ClientSideEntity> Get(Id const& id);
    /// Calls `function` for every living entity under the shared lock: it must not create or remove entities.
    static void ForEach(std::function<void(std::shared_ptr<ClientSideEntity> const&)> const& function);
    /// Drops every entity, then every registered type: the end of a session, once no module is left to make more.
    /// The entities are destroyed after the lock is released.
    static void ClearAll();
    /// Drops the entity of this id, if any; false when there was none. Destroyed after the lock is released.
    static bool Remove(Id const& id);
    /// Drops every entity of `module`'s types: a module that closes takes along what its factories made, whose
    /// code goes with it. Destroyed after the lock is released.
    static void RemoveModuleEntities(quorl::modular::ModuleID const& module);
    /// The shared config of a registered type, read on first use; null when the module or the type is unknown.
    static std::shared_ptr<EntityConfig> GetEntityConfig(char const* module, std::string const& type);
    /// The module that registered `name` as a client entity type; the null id when none did.
    static quorl::modular::ModuleID FindModuleID(std::string const& name);

    /// The client's physics step, once per frame on the game thread: every entity's plasma trail, and what draws
    /// it follows its nodes.
    static void PhysicsUpdate(double dt);

    /// Entity space to the frame of the environment: this entity's transform, then each parent's, up the chain.
    /// A parent that cannot be found ends the chain.
    glm::dmat4 GetAbsoluteTransformInEnvironment() const;
    /// The same, kept between calls; `changed` tells whether it differs from what the previous call returned.
    glm::dmat4 const& GetAbsoluteTransformInEnvironmentCached(bool& changed);

    /// Makes one renderable per node of the type's mesh, under the node's name; nothing for a null mesh.
    void InitMeshRenderables(std::shared_ptr<const game::graphics::Mesh> mesh);

    Id id;
    glm::dvec3 target_position{0.0};
    glm::dquat target_orientation{1.0, 0.0, 0.0, 0.0};
    /// Share of the remaining way covered per second; 0 holds the entity where it is.
    float interpolation_rate = 10.0f;
    /// Clear: a dynamic entity jumps to its target instead of gliding.
    bool interpolate = true;
    /// Set by whoever fills the target fields.
    bool has_target = false;
    std::shared_ptr<Interface> interface;
    /// What draws the entity, by node name; the plasma trail is "_plasma_trail". Made only where there is a
    /// renderer: GPU records need its device.
    std::unordered_map<std::string, std::shared_ptr<game::graphics::RenderableInstance>> renderables;
    /// The flag last given to SetVisibility, for renderables made afterwards.
    bool visible = true;

    /// Module string, then type name.
    static std::unordered_map<std::string, std::unordered_map<std::string, EntityTypeDef>> _registered_interfaces;
    static std::unordered_map<Id, std::shared_ptr<ClientSideEntity>> _sharedObjects;
    static quorl::SharedMutex _sharedObjectsMutex;

private:
    /// Plasma trail and renderables of one entity, under the registry's shared lock.
    void PhysicsStep();
    /// Makes, fits or hides the trail, when the entity flies freely in an environment.
    void PlasmaTrailStep(glm::dmat4 const& inEnvironment);

    glm::dmat4 _cachedTransformInEnvironment{1.0};
};

/// The behaviour of a client entity, supplied by the module of its type. The entity owns it; update calls start
/// once `started` is set. An interface that keeps the empty Update or AfterUpdate is not called again.
class MERIDON_EXPORT ClientSideEntity::Interface {
public:
    virtual ~Interface() = default;

    virtual void Update(double dt);
    virtual void AfterUpdate(double dt);
    virtual void Ui() {}

    void CallUpdate(double dt) { if (!(_emptySlots & kUpdate)) Update(dt); }
    void CallAfterUpdate(double dt) { if (!(_emptySlots & kAfterUpdate)) AfterUpdate(dt); }

    std::weak_ptr<ClientSideEntity> entity;
    /// Set by the module once the interface is ready for updates.
    bool started = false;

private:
    enum : uint8_t { kUpdate = 1, kAfterUpdate = 2 };
    uint8_t _emptySlots = 0;
};

}
