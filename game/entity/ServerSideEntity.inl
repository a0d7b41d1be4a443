#pragma once

#include <shared_mutex>
#include <stdexcept>

namespace game::entity {

template <class T, class... Arguments>
std::shared_ptr<T> ServerSideEntity::Create(Arguments&&... arguments) {
    auto entity = std::make_shared<T>(std::forward<Arguments>(arguments)...);
    entity->self = entity;
    std::unique_lock lock(_sharedObjectsMutex);
    if (!_sharedObjects.emplace(entity->id, entity).second) {
        // The file under this id belongs to the entity already there.
        entity->delete_save_on_destroy = false;
        throw std::runtime_error("UNIQUE_OBJECT ServerSideEntity with id " + entity->id.String() + " already exists");
    }
    return entity;
}

template <class T>
std::shared_ptr<T> ServerSideEntity::Get(Id const& id) {
    std::shared_lock lock(_sharedObjectsMutex);
    auto found = _sharedObjects.find(id);
    if (found == _sharedObjects.end())
        return nullptr;
    return std::dynamic_pointer_cast<T>(found->second);
}

}
