// Client-side entities: registries, construction, the glide towards the server's state, and the client's physics
// step, which places what draws each entity.
//
// Renderables: an entity is drawn by the instances it makes from its type (one per mesh node, one per light box)
// and by its plasma trail. They are GPU records, so a process without a renderer makes none; everything else about
// the entity works the same there.

#include "game/entity/ClientSideEntity.h"

#include "game/Game.h"
#include "game/entity/EntityConfig.h"
#include "game/graphics/GameRenderer.h"
#include "game/graphics/Mesh.h"
#include "game/graphics/PlasmaTrail.h"
#include "game/graphics/RenderableInstance.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/gtx/quaternion.hpp>

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
/// Hit groups of the shaders.
constexpr uint32_t kMeshHitGroup = 1;
constexpr uint32_t kLightBoxHitGroup = 9;
constexpr char const* kPlasmaTrailName = "_plasma_trail";

using game::graphics::RenderableInstance;

/// A rendering module walks the instances on the render thread under the registry's shared side, reading their
/// geometry, flags and transforms: what an entity writes into its instances, from the game loop, it writes under the
/// exclusive side. Never held across a Make, which takes the same lock.
std::unique_lock<quorl::SharedMutex> LockInstances() {
    return std::unique_lock(RenderableInstance::_sharedObjectsMutex);
}

/// The box of room a light fills, drawn from the box alone: no mesh, no override records.
std::shared_ptr<RenderableInstance> LightBoxInstance(EntityConfig::LightBox const& lightBox) {
    auto instance = RenderableInstance::Make<RenderableInstance>(kLightBoxHitGroup);
    auto const lock = LockInstances();
    auto box = std::make_shared<RenderableInstance::AabbGeometry>(1);
    (*box->boxes)[0] = {lightBox.box_min, lightBox.box_max, 0};
    instance->geometries.push_back(box);
    instance->flags.visible = 1;
    instance->flags.active = 0;
    return instance;
}
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

ClientSideEntity::~ClientSideEntity() {
    // A frame in flight may still read the instances' buffers.
    if (Game::renderer)
        for (auto& [name, renderable] : renderables)
            Game::renderer->Trash(std::move(renderable));
}

void ClientSideEntity::InitNodes() {
    BaseEntity::InitNodes();
    if (config) {
        for (auto const& [name, renderable] : config->renderables)
            node_transforms[name] = config->GetAbsoluteTransform(name);
        for (auto const& [name, camera] : config->cameras)
            node_transforms[name] = config->GetAbsoluteTransform(name);
        for (auto const& [name, lightBox] : config->light_boxes) {
            node_transforms[name] = config->GetAbsoluteTransform(name);
            if (Game::renderer)
                renderables[name] = LightBoxInstance(lightBox);
        }
    }
    for (auto& [name, collider] : colliders) {
        collider.entity = id;
        collider.name = name;
    }
}

void ClientSideEntity::InitMeshRenderables(std::shared_ptr<const game::graphics::Mesh> mesh) {
    if (!mesh || !Game::renderer)
        return;
    for (auto const& [name, geometries] : mesh->nodes) {
        auto instance = RenderableInstance::Make<RenderableInstance>(kMeshHitGroup);
        auto const lock = LockInstances();
        // Clones of a mesh instance would share its override records' geometry indices but not the records.
        instance->flags.cloneSource = 0;
        if (!geometries.empty())
            instance->firstGeometry = geometries.front();
        instance->geometries.reserve(geometries.size());
        for (auto const& geometry : geometries) {
            instance->materials[geometry->material].push_back(static_cast<unsigned int>(instance->geometries.size()));
            instance->geometries.push_back(geometry);
        }
        instance->CreateRenderableData();
        instance->flags.visible = visible;
        instance->flags.active = 1;
        renderables[name] = instance;
    }
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

bool ClientSideEntity::Remove(Id const& id) {
    std::shared_ptr<ClientSideEntity> gone;
    {
        std::unique_lock lock(_sharedObjectsMutex);
        auto found = _sharedObjects.find(id);
        if (found == _sharedObjects.end())
            return false;
        gone = std::move(found->second);
        _sharedObjects.erase(found);
    }
    return true;
}

void ClientSideEntity::RemoveModuleEntities(quorl::modular::ModuleID const& module) {
    std::vector<std::shared_ptr<ClientSideEntity>> gone;
    {
        std::unique_lock lock(_sharedObjectsMutex);
        std::erase_if(_sharedObjects, [&](auto& entry) {
            if (entry.second->module != module)
                return false;
            gone.push_back(std::move(entry.second));
            return true;
        });
    }
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
    auto const lock = LockInstances();
    for (auto const& [name, renderable] : renderables)
        renderable->flags.visible = visible;
}

// Both defaults mark themselves, so the frame stops calling them: most interfaces override neither.
void ClientSideEntity::Interface::Update(double) {
    _emptySlots |= kUpdate;
}

void ClientSideEntity::Interface::AfterUpdate(double) {
    _emptySlots |= kAfterUpdate;
}

// ---- Physics step --------------------------------------------------------------------------------------------------

void ClientSideEntity::PhysicsUpdate(double) {
    ForEach([](std::shared_ptr<ClientSideEntity> const& entity) { entity->PhysicsStep(); });
}

void ClientSideEntity::PhysicsStep() {
    if (!renderables.empty() || Game::renderer) {
        glm::dmat4 const inEnvironment = GetAbsoluteTransformInEnvironment();
        if (Game::renderer)
            PlasmaTrailStep(inEnvironment);
        auto const lock = LockInstances();
        for (auto const& [name, renderable] : renderables) {
            auto const node = node_transforms.find(name);
            if (node == node_transforms.end())
                continue;
            glm::dmat4 const transform = inEnvironment * node->second;
            renderable->flags.moved = transform != renderable->transform;
            renderable->transform = transform;
        }
    }
    // The nodes are posed for this frame and what draws them has followed: a one-shot request is done.
    nodes_dirty = false;
}

void ClientSideEntity::PlasmaTrailStep(glm::dmat4 const& inEnvironment) {
    auto existing = renderables.find(kPlasmaTrailName);
    auto trail = existing == renderables.end()
        ? nullptr
        : std::dynamic_pointer_cast<game::graphics::PlasmaTrail>(existing->second);
    double const speed = glm::length(linear_velocity);
    if (!dynamic || !parent.IsNull() || Game::parentEnvironmentId == 0 || !(speed > kPlasmaTrailMinimumSpeed)) {
        if (trail) {
            auto const lock = LockInstances();
            trail->flags.visible = 0;
        }
        return;
    }
    if (!trail) {
        trail = RenderableInstance::Make<game::graphics::PlasmaTrail>();
        renderables[kPlasmaTrailName] = trail;
    }
    game::physics::EnvironmentInfo medium;
    auto function = Game::_environmentFunctions.find(Game::parentEnvironmentId);
    if (function != Game::_environmentFunctions.end() && function->second)
        medium = function->second(position, game::ENVIRONMENT_BODY, 0.0);
    float const halfWidth = static_cast<float>(1.1 * bounds_radius);
    auto const lock = LockInstances();
    bool const glows = trail->Set(glm::vec4(glm::vec3(linear_velocity), halfWidth), medium.density,
        medium.liquidDensity);
    trail->flags.visible = glows && visible;
    // The trail's box reaches along +y from the body: turned to lie along the flight, behind the body.
    glm::dmat4 const along = glm::toMat4(glm::rotation(glm::dvec3(0.0, 1.0, 0.0), -linear_velocity / speed));
    glm::dmat4 const transform = glm::translate(glm::dmat4(1.0), glm::dvec3(inEnvironment[3])) * along;
    trail->flags.moved = transform != trail->transform;
    trail->transform = transform;
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
