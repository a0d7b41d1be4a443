// Client-side entities: registries, construction, the glide towards the server's state, and the client's physics
// step.
//
// Renderables: the instances that draw an entity (mesh nodes, light boxes, the plasma trail) are made and moved by
// the rendering code, which fills `renderables`; until an entity has them, InitNodes, InitMeshRenderables,
// SetVisibility and PhysicsStep keep only what those instances will be made from (node transforms, the visibility
// flag, the trail's figures).

#include "game/entity/ClientSideEntity.h"

#include "game/Game.h"
#include "game/entity/EntityConfig.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <vector>

namespace game::entity {

std::unordered_map<std::string, std::unordered_map<std::string, ClientSideEntity::EntityTypeDef>>
    ClientSideEntity::_registered_interfaces;
std::unordered_map<Id, std::shared_ptr<ClientSideEntity>> ClientSideEntity::_sharedObjects;
quorl::SharedMutex ClientSideEntity::_sharedObjectsMutex;

namespace {
/// A parent chain longer than this is a loop made by a module; walks stop there instead of hanging the frame.
constexpr int kMaxTreeDepth = 4096;
/// Below this speed no body glows, whatever the medium.
constexpr double kPlasmaTrailMinimumSpeed = 100.0;
}

// ---- Construction --------------------------------------------------------------------------------------------------

ClientSideEntity::ClientSideEntity(Id id, quorl::modular::ModuleID const& module, std::string const& type) : id(id) {
    this->module = module;
    this->type = type;
    auto const& typeDef = _registered_interfaces.at(module.String()).at(type);
    interface = typeDef.factory();
    if (typeDef.config) {
        typeDef.config->ReadOnce();
        config = typeDef.config;
    }
    InitNodes();
    if (config)
        InitMeshRenderables(config->GetMesh());
}

ClientSideEntity::~ClientSideEntity() = default;

void ClientSideEntity::InitNodes() {
    BaseEntity::InitNodes();
    if (config) {
        for (auto const& [name, renderable] : config->renderables)
            node_transforms[name] = config->GetAbsoluteTransform(name);
        for (auto const& [name, camera] : config->cameras)
            node_transforms[name] = config->GetAbsoluteTransform(name);
        // Light boxes draw from their box alone: their instances need the node, no mesh.
        for (auto const& [name, lightBox] : config->light_boxes)
            node_transforms[name] = config->GetAbsoluteTransform(name);
    }
    for (auto& [name, collider] : colliders) {
        collider.entity = id;
        collider.name = name;
    }
}

void ClientSideEntity::InitMeshRenderables(std::shared_ptr<const game::graphics::Mesh>) {
    // A mesh's node instances are made by the rendering code; a type without a mesh has none.
}

// ---- Registry ------------------------------------------------------------------------------------------------------

std::shared_ptr<ClientSideEntity> ClientSideEntity::Create(Id id, quorl::modular::ModuleID const& module,
                                                           std::string const& type) {
    auto entity = std::make_shared<ClientSideEntity>(id, module, type);
    if (entity->interface)
        entity->interface->entity = entity;
    std::unique_lock lock(_sharedObjectsMutex);
    if (!_sharedObjects.emplace(entity->id, entity).second)
        throw std::runtime_error("UNIQUE_OBJECT ClientSideEntity with id " + entity->id.String() + " already exists");
    return entity;
}

std::shared_ptr<ClientSideEntity> ClientSideEntity::Get(Id const& id) {
    std::shared_lock lock(_sharedObjectsMutex);
    auto found = _sharedObjects.find(id);
    return found == _sharedObjects.end() ? nullptr : found->second;
}

void ClientSideEntity::ForEach(std::function<void(std::shared_ptr<ClientSideEntity> const&)> const& function) {
    std::shared_lock lock(_sharedObjectsMutex);
    for (auto const& [id, entity] : _sharedObjects) {
        if (!entity)
            continue;
        auto copy = entity;
        function(copy);
    }
}

void ClientSideEntity::ClearAll() {
    std::vector<std::shared_ptr<ClientSideEntity>> dropped;  // destroyed after the lock is released
    {
        std::unique_lock lock(_sharedObjectsMutex);
        dropped.reserve(_sharedObjects.size());
        for (auto& [id, entity] : _sharedObjects)
            dropped.push_back(std::move(entity));
        _sharedObjects.clear();
    }
    dropped.clear();
    _registered_interfaces.clear();
}

std::shared_ptr<EntityConfig> ClientSideEntity::GetEntityConfig(char const* module, std::string const& type) {
    auto types = _registered_interfaces.find(module);
    if (types == _registered_interfaces.end())
        return nullptr;
    auto definition = types->second.find(type);
    if (definition == types->second.end() || !definition->second.config)
        return nullptr;
    definition->second.config->ReadOnce();
    return definition->second.config;
}

quorl::modular::ModuleID ClientSideEntity::FindModuleID(std::string const& name) {
    for (auto const& [module, types] : _registered_interfaces)
        if (types.contains(name))
            return quorl::modular::ModuleID(module);
    return {};
}

// ---- Frame updates -------------------------------------------------------------------------------------------------

namespace {

/// The step of length t from `from` towards `to` along the shorter arc of the quaternion sphere.
glm::dquat Slerp(glm::dquat const& from, glm::dquat to, double t) {
    double cosine = glm::dot(from, to);
    if (cosine < 0.0) {
        to = -to;
        cosine = -cosine;
    }
    // Nearly equal rotations: sin(a) would vanish, and the straight blend is as good.
    if (cosine > 0.9999999999999998)
        return from * (1.0 - t) + to * t;
    double const angle = std::acos(cosine);
    double const sine = std::sin(angle);
    return from * (std::sin((1.0 - t) * angle) / sine) + to * (std::sin(t * angle) / sine);
}

}

void ClientSideEntity::Update(double dt) {
    if (interface && interface->started)
        interface->CallUpdate(dt);
    if (has_target && interpolation_rate != 0.0f) {
        if (!interpolate || !dynamic) {
            position = target_position;
            orientation = target_orientation;
        } else {
            double const t = std::clamp(static_cast<double>(interpolation_rate) * dt, 0.0, 1.0);
            position = (1.0 - t) * position + t * target_position;
            orientation = Slerp(orientation, target_orientation, t);
        }
    }
    if (!config || (!nodes_animated && !nodes_dirty))
        return;
    config->solver(this);
    BaseEntity::Update(dt);
}

void ClientSideEntity::AfterUpdate(double dt) {
    if (interface && interface->started)
        interface->CallAfterUpdate(dt);
}

void ClientSideEntity::Ui() {
    if (interface)
        interface->Ui();
}

void ClientSideEntity::SetVisibility(bool visible) {
    this->visible = visible;
}

// Both defaults mark themselves, so the frame stops calling them: most interfaces override neither.
void ClientSideEntity::Interface::Update(double) {
    _emptySlots |= kUpdate;
}

void ClientSideEntity::Interface::AfterUpdate(double) {
    _emptySlots |= kAfterUpdate;
}

// ---- Physics step --------------------------------------------------------------------------------------------------

PlasmaTrailFigures PlasmaTrailFigures::For(double speed, double density, double bounds_radius) {
    PlasmaTrailFigures figures;
    figures.heat = speed * speed * density / 1e8;
    figures.glow = speed * std::pow(density, 0.15) / 1000.0;
    figures.active = figures.heat > 0.001 || figures.glow > 0.01;
    figures.length_scale = 1.1 * bounds_radius;
    figures.size_factor = std::clamp(std::max(figures.heat, figures.glow / 5000.0) * 100.0, 0.0, 500.0);
    figures.intensity = std::clamp(figures.glow * 500.0, 0.0, 2500.0);
    return figures;
}

void ClientSideEntity::PhysicsUpdate(double) {
    ForEach([](std::shared_ptr<ClientSideEntity> const& entity) { entity->PhysicsStep(); });
}

void ClientSideEntity::PhysicsStep() {
    double const speed = glm::length(linear_velocity);
    if (dynamic && parent.IsNull() && Game::parentEnvironmentId != 0 && speed > kPlasmaTrailMinimumSpeed) {
        double density = 0.0;
        auto function = Game::_environmentFunctions.find(Game::parentEnvironmentId);
        if (function != Game::_environmentFunctions.end() && function->second)
            density = function->second(position, game::ENVIRONMENT_BODY, 0.0).density;
        plasma_trail = PlasmaTrailFigures::For(speed, density, bounds_radius);
    } else {
        plasma_trail = PlasmaTrailFigures{};
    }
    // The nodes are posed for this frame and what draws them has followed: a one-shot request is done.
    nodes_dirty = false;
}

// ---- Transforms ----------------------------------------------------------------------------------------------------

glm::dmat4 ClientSideEntity::GetAbsoluteTransformInEnvironment() const {
    glm::dmat4 transform = GetTransform();
    Id next = parent;
    for (int depth = 0; !next.IsNull() && depth < kMaxTreeDepth; ++depth) {
        auto ancestor = Get(next);
        if (!ancestor)
            break;
        transform = ancestor->GetTransform() * transform;
        next = ancestor->parent;
    }
    return transform;
}

glm::dmat4 const& ClientSideEntity::GetAbsoluteTransformInEnvironmentCached(bool& changed) {
    glm::dmat4 const transform = GetAbsoluteTransformInEnvironment();
    changed = transform != _cachedTransformInEnvironment;
    _cachedTransformInEnvironment = transform;
    return _cachedTransformInEnvironment;
}

}
