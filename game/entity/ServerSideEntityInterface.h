#pragma once

#include "game/entity/ServerSideEntity.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace game::entity {

/// The behaviour of one entity, supplied by the module of its type. The entity owns it; it reaches the entity
/// through a weak pointer. Update passes start once Start has run. Overrides of BeforeUpdate, Update and
/// AfterUpdate are optional: an interface that keeps the empty default is not called again.
class MERIDON_EXPORT ServerSideEntity::Interface {
public:
    virtual ~Interface() = default;

    virtual void Destroy() {}
    /// The interface's own block of the state file.
    virtual void WriteState(quorl::filesystem::WriteOnlyStream& stream) = 0;
    virtual void ReadState(quorl::filesystem::ReadOnlyStream& stream) = 0;
    virtual void SerializeState(quorl::filesystem::WriteOnlyStream&) {}
    virtual void DeserializeState(quorl::filesystem::ReadOnlyStream&) {}
    virtual void SerializeBlueprint(nlohmann::json&) const {}
    virtual bool DeserializeBlueprint(nlohmann::json&) { return true; }
    /// The entity's type name; empty once the entity is gone.
    virtual std::string GetLabel() const;
    /// Mark-up describing the entity to a player; the label by default.
    virtual std::string GetInfo(std::string const& user, unsigned width, unsigned height) const;
    virtual bool CanRemoveThisComponent() { return true; }
    virtual void AddedThisComponent(std::shared_ptr<ServerSideEntity>&, unsigned long,
                                    std::unordered_map<std::string, std::string> const&) {}
    /// Runs once, after the state has been read; update passes follow.
    virtual void Start() = 0;
    virtual void BeforeUpdate(double dt);
    virtual void Update(double dt);
    virtual void AfterUpdate(double dt);
    /// A request from a player, in the interface's own format.
    virtual void Action(quorl::filesystem::ReadOnlyStream& stream, unsigned long size, std::string const& user) = 0;
    /// The whole state a client needs.
    virtual void FullSync(quorl::filesystem::WriteOnlyStream& stream) = 0;
    /// What changed since `since`; a full sync unless overridden. Returns whether anything was written.
    virtual bool PartialSync(unsigned long since, unsigned long& version, quorl::filesystem::WriteOnlyStream& stream,
                             unsigned long budget);

    /// Whether `user` may do `right` on this entity: any user when nobody owns it (a component asks its parent),
    /// the owner always, others when granted to "@everyone" or to them by name.
    bool HasRight(std::string const& right, std::string const& user);

    /// Restores a saved entity from its state file and starts its interface. Null when the entity's module is not
    /// loaded: the entity is then dropped again and its file left on disk.
    static std::shared_ptr<Interface> Create(Id id);
    /// Starts an entity that module code made, as loading starts a saved one: binds its interface, runs Start and
    /// enters it in its module's list. False, and nothing started, when the type's module is not loaded.
    static bool StartMade(std::shared_ptr<ServerSideEntity> const& entity);

    /// Calls BeforeUpdate, Update or AfterUpdate unless the interface has shown that it keeps the empty default.
    void CallBeforeUpdate(double dt) { if (!(_emptySlots & kBeforeUpdate)) BeforeUpdate(dt); }
    void CallUpdate(double dt) { if (!(_emptySlots & kUpdate)) Update(dt); }
    void CallAfterUpdate(double dt) { if (!(_emptySlots & kAfterUpdate)) AfterUpdate(dt); }

    std::weak_ptr<ServerSideEntity> entity;
    std::weak_ptr<Interface> self;
    Id id;
    /// Set once Start has run.
    bool started = false;
    std::shared_ptr<EntityConfig> config;
    /// Right name, then user name: granted or not. The user "@everyone" stands for all.
    std::map<std::string, std::map<std::string, bool>> rights;
    mutable std::mutex mutex;
    /// Empty: nobody owns the entity.
    std::string owner;

private:
    enum : uint8_t { kBeforeUpdate = 1, kUpdate = 2, kAfterUpdate = 4 };
    /// The update slots found to be the empty default; their calls are skipped from then on.
    uint8_t _emptySlots = 0;
};

}
