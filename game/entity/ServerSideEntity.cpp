// Server-side entities: registries, construction, the entity tree and the world's unload and load.

#include "game/entity/ServerSideEntity.h"

#include "engine/filesystem/AtomicFileBatch.h"
#include "game/Game.h"
#include "game/entity/EntityConfig.h"
#include "game/entity/SavedWorld.h"
#include "game/entity/ServerSideEntityInterface.h"

#include <filesystem>
#include <iostream>

namespace game::entity {

std::map<std::string, std::map<std::string, ServerSideEntity::EntityTypeDef>> ServerSideEntity::_registered_interfaces;
std::map<std::string, std::set<std::string>> ServerSideEntity::_registered_items;
std::unordered_map<Id, std::shared_ptr<ServerSideEntity>> ServerSideEntity::_sharedObjects;
quorl::SharedMutex ServerSideEntity::_sharedObjectsMutex;
std::map<std::string, std::vector<std::weak_ptr<ServerSideEntity::Interface>>> ServerSideEntity::_module_entities;
std::recursive_mutex ServerSideEntity::_module_entities_mutex;

namespace {
/// A parent chain longer than this is a loop made by a module; walks stop there instead of hanging the server.
constexpr int kMaxTreeDepth = 4096;
}

// ---- Construction --------------------------------------------------------------------------------------------------

namespace {

/// An entity of a type nobody registered would run no code and never be saved, and nothing else would show it: say
/// so, once per module and type, as it is most likely a misspelt name or a type registered too late.
void WarnUnregisteredType(std::string const& module, std::string const& type) {
    static std::mutex mutex;
    static std::set<std::pair<std::string, std::string>> warned;
    std::lock_guard lock(mutex);
    if (!warned.emplace(module, type).second)
        return;
    std::cerr << "Entity type \"" << type << "\" of module \"" << module << "\" is not registered: its entities get no "
              << "interface and no config, so nothing starts or saves them. Register the type in "
              << "ServerSideEntity::_registered_interfaces from the module's Load." << std::endl;
}

}

ServerSideEntity::ServerSideEntity(quorl::modular::ModuleID const& module, std::string const& type, Id id)
    : id(id.IsNull() ? Id::Generate("ENTT") : id) {
    this->module = module;
    this->type = type;
    // Only new entities: a saved one whose module is absent is kept on disk for a later run, by design.
    if (!Construct())
        WarnUnregisteredType(module.String(), type);
}

ServerSideEntity::ServerSideEntity(Id id, quorl::filesystem::ReadOnlyStream& out) : id(id) {
    out = Deserialize();
    Construct();
}

bool ServerSideEntity::Construct() {
    auto types = _registered_interfaces.find(module.String());
    if (types == _registered_interfaces.end())
        return false;
    auto definition = types->second.find(type);
    if (definition == types->second.end())
        return false;
    auto const& typeDef = definition->second;
    if (typeDef.factory)
        interface = typeDef.factory();
    if (typeDef.config) {
        typeDef.config->ReadOnce();
        config = typeDef.config;
    }
    InitNodes();
    return true;
}

ServerSideEntity::~ServerSideEntity() {
    interface.reset();
    if (delete_save_on_destroy && !SavedWorld::RemoveWithNextSave(GetStateSaveFile())) {
        std::error_code ignored;
        std::filesystem::remove(GetStateSaveFile(), ignored);
    }
}

void ServerSideEntity::InitNodes() {
    BaseEntity::InitNodes();
    for (auto& [name, collider] : colliders) {
        collider.entity = id;
        collider.name = name;
    }
}

void ServerSideEntity::Update(double dt) {
    if (interface && interface->started)
        interface->CallUpdate(dt);
    if (!nodes_animated && !nodes_dirty)
        return;
    if (config)
        config->solver(this);
    BaseEntity::Update(dt);
}

// ---- Registry ------------------------------------------------------------------------------------------------------

void ServerSideEntity::ForEach(std::function<void(std::shared_ptr<ServerSideEntity> const&)> const& function) {
    std::shared_lock lock(_sharedObjectsMutex);
    for (auto const& [id, entity] : _sharedObjects) {
        if (!entity)
            continue;
        auto copy = entity;
        function(copy);
    }
}

void ServerSideEntity::ForEachRegisteredType(
    std::function<void(std::string const& module, std::string const& type)> const& function) {
    for (auto const& [module, types] : _registered_interfaces)
        for (auto const& [type, definition] : types)
            function(module, type);
}

quorl::modular::ModuleID ServerSideEntity::FindModuleID(std::string const& name) {
    for (auto const& [module, types] : _registered_interfaces)
        if (types.contains(name))
            return quorl::modular::ModuleID(module);
    for (auto const& [module, items] : _registered_items)
        if (items.contains(name))
            return quorl::modular::ModuleID(module);
    return {};
}

// ---- The tree ------------------------------------------------------------------------------------------------------

std::shared_ptr<ServerSideEntity> ServerSideEntity::GetFirstNonComponentParent() const {
    Id next = parent;
    for (int depth = 0; !next.IsNull() && depth < kMaxTreeDepth; ++depth) {
        auto ancestor = Get(next);
        if (!ancestor)
            return nullptr;
        if (!ancestor->is_component)
            return ancestor;
        next = ancestor->parent;
    }
    return nullptr;
}

glm::dmat4 ServerSideEntity::GetTransformInPhysicsParent() const {
    glm::dmat4 transform(1.0);
    ServerSideEntity const* current = this;
    std::shared_ptr<ServerSideEntity> holder;
    for (int depth = 0; current->is_component && depth < kMaxTreeDepth; ++depth) {
        auto parentEntity = Get(current->parent);
        if (!parentEntity)
            break;
        transform = current->GetTransform() * transform;
        holder = parentEntity;
        current = holder.get();
    }
    return transform;
}

// ---- The world -----------------------------------------------------------------------------------------------------

void ServerSideEntity::UnloadAllEntities() {
    {
        std::unique_lock lock(_sharedObjectsMutex);
        quorl::filesystem::AtomicFileBatch saves;
        // Marked before any is written, so that a save that fails half-way deletes none of their old files.
        for (auto const& [id, entity] : _sharedObjects)
            if (entity && entity->save_tag != 0 && !entity->is_component)
                entity->delete_save_on_destroy = false;
        for (auto const& [id, entity] : _sharedObjects)
            if (entity && entity->save_tag != 0 && !entity->is_component)
                saves.Add(entity->GetStateSaveFile(), entity->SaveState());
        saves.Commit();
    }
    DropAllEntities();
}

void ServerSideEntity::DropAllEntities() {
    std::vector<std::shared_ptr<ServerSideEntity>> dropped;  // destroyed after the lock is released
    std::unique_lock lock(_sharedObjectsMutex);
    dropped.reserve(_sharedObjects.size());
    for (auto& [id, entity] : _sharedObjects)
        dropped.push_back(std::move(entity));
    _sharedObjects.clear();
    // The weak pointers' control blocks were made by the modules' code; none may outlive its module's library.
    std::lock_guard modules(_module_entities_mutex);
    _module_entities.clear();
}

namespace {

/// Calls `load` with the path of every state file of the current world, in the directory's order.
template <class Load>
void ForEachStateFile(Load&& load) {
    std::filesystem::path folder = SavedWorld::Folder() + "/entities";
    if (!std::filesystem::exists(folder))
        return;
    for (auto const& file : std::filesystem::directory_iterator(folder))
        if (file.is_regular_file() && file.path().extension() == ".entitystate")
            load(file.path());
}

}

void ServerSideEntity::LoadAllEntities() {
    ForEachStateFile([](std::filesystem::path const& file) { Interface::Create(Id(file.stem().string())); });
}

void ServerSideEntity::LoadAllEntities(LoadReport const& afterEach) {
    ForEachStateFile([&](std::filesystem::path const& file) {
        std::exception_ptr failure;
        try {
            Id id(file.stem().string());
            try {
                Interface::Create(id);
            } catch (...) {
                failure = std::current_exception();
                // An interface that threw in ReadState or Start leaves its entity in the table, half made: it must
                // not be saved over the file it came from.
                if (auto halfMade = Get(id)) {
                    halfMade->delete_save_on_destroy = false;
                    halfMade.reset();
                    std::unique_lock lock(_sharedObjectsMutex);
                    _sharedObjects.erase(id);
                }
            }
        } catch (...) {
            failure = std::current_exception();
        }
        afterEach(file, failure);
    });
}

}
