#include "game/entity/ServerSideEntityInterface.h"

#include <iostream>
#include <shared_mutex>

namespace game::entity {

std::string ServerSideEntity::Interface::GetLabel() const {
    auto living = entity.lock();
    return living ? living->type : "";
}

std::string ServerSideEntity::Interface::GetInfo(std::string const&, unsigned, unsigned) const {
    return GetLabel();
}

// The defaults mark themselves, so the tick stops calling them: most interfaces override none of the three.
void ServerSideEntity::Interface::BeforeUpdate(double) {
    _emptySlots |= kBeforeUpdate;
}

void ServerSideEntity::Interface::Update(double) {
    _emptySlots |= kUpdate;
}

void ServerSideEntity::Interface::AfterUpdate(double) {
    _emptySlots |= kAfterUpdate;
}

bool ServerSideEntity::Interface::PartialSync(unsigned long, unsigned long&, quorl::filesystem::WriteOnlyStream& stream,
                                              unsigned long) {
    FullSync(stream);
    return true;
}

bool ServerSideEntity::Interface::HasRight(std::string const& right, std::string const& user) {
    std::unique_lock lock(mutex);
    if (owner.empty()) {
        lock.unlock();
        // A component belongs to whatever holds it.
        auto living = entity.lock();
        if (living && living->is_component)
            if (auto holder = ServerSideEntity::Get(living->parent); holder && holder->interface)
                return holder->interface->HasRight(right, user);
        return true;
    }
    if (user == owner)
        return true;
    auto& granted = rights[right];
    if (granted["@everyone"])
        return true;
    auto found = granted.find(user);
    return found != granted.end() && found->second;
}

namespace {

void Bind(std::shared_ptr<ServerSideEntity> const& entity) {
    auto& interface = entity->interface;
    interface->entity = entity;
    interface->self = interface;
    interface->id = entity->id;
    interface->config = entity->config;
}

void StartBound(std::shared_ptr<ServerSideEntity> const& entity) {
    entity->interface->Start();
    entity->interface->started = true;
    std::lock_guard lock(ServerSideEntity::_module_entities_mutex);
    ServerSideEntity::_module_entities[entity->module.String()].push_back(entity->interface);
}

}

bool ServerSideEntity::Interface::StartMade(std::shared_ptr<ServerSideEntity> const& entity) {
    if (!entity->interface)
        return false;
    Bind(entity);
    StartBound(entity);
    return true;
}

std::shared_ptr<ServerSideEntity::Interface> ServerSideEntity::Interface::Create(Id id) {
    quorl::filesystem::ReadOnlyStream block(std::vector<unsigned char>{});
    auto entity = ServerSideEntity::Create<ServerSideEntity>(id, block);
    if (auto interface = entity->interface) {
        Bind(entity);
        interface->ReadState(block);
        StartBound(entity);
        return interface;
    }

    // The module of this entity is not loaded: keep its file for a later run and drop the entity.
    entity->delete_save_on_destroy = false;
    entity.reset();
    std::unique_lock lock(_sharedObjectsMutex);
    auto found = _sharedObjects.find(id);
    if (found != _sharedObjects.end()) {
        if (found->second.use_count() != 1)
            std::cerr << "WARNING: UNIQUE_OBJECT ServerSideEntity with id " << id.String()
                      << " being Destroyed while still in use" << std::endl;
        _sharedObjects.erase(found);
    }
    return nullptr;
}

}
