// Replication, client side: a create makes the entity where the server has it, updates give it the target that
// ClientSideEntity::Update glides to, a destroy takes it out of the registry.

#include "content/link/ClientReplication.h"

#include "game/entity/ClientSideEntity.h"

#include <iostream>
#include <mutex>
#include <stdexcept>

namespace entitylink {

using game::entity::ClientSideEntity;

void ClientReplication::Receive(unsigned char const* data, unsigned long size) {
    for (auto const& message : Decode(data, size))
        std::visit([this](auto const& body) { Apply(body); }, message);
}

void ClientReplication::Apply(Create const& create) {
    quorl::modular::ModuleID const module(create.module);
    auto entity = ClientSideEntity::Get(create.id);
    if (entity && (entity->module != module || entity->type != create.type)) {
        Apply(Destroy{create.id});
        entity = nullptr;
    }
    if (!entity) {
        // A type this client cannot make stays unseen, its updates finding nothing to move; said once per type.
        try {
            entity = ClientSideEntity::Create(create.id, module, create.type);
        } catch (std::out_of_range const&) {
            Report(create, "no module registers it on the client side");
            return;
        } catch (std::exception const& error) {
            Report(create, error.what());
            return;
        }
        if (entity->interface)
            entity->interface->started = true;
    }
    // A client entity has no environment of its own: it lives in the player's (Game::parentEnvironmentId).
    entity->parent = create.parent;
    entity->position = create.position;
    entity->orientation = create.orientation;
    entity->target_position = create.position;
    entity->target_orientation = create.orientation;
    entity->interpolation_rate = kInterpolationRate;
    entity->interpolate = true;
    entity->has_target = true;
}

void ClientReplication::Report(Create const& create, std::string const& why) {
    if (_reported.insert(create.module + "/" + create.type).second)
        std::cerr << "MERIDON_link: cannot show entities of type '" << create.type << "' of module '" << create.module
                  << "': " << why << std::endl;
}

void ClientReplication::Apply(Update const& update) {
    auto entity = ClientSideEntity::Get(update.id);
    if (!entity)
        return;
    entity->dynamic = update.dynamic;
    entity->target_position = update.position;
    entity->target_orientation = update.orientation;
    entity->linear_velocity = update.linear_velocity;
    entity->angular_velocity = update.angular_velocity;
    entity->has_target = true;
    for (auto const& value : update.joints) {
        auto joint = entity->joints.find(value.name);
        if (joint == entity->joints.end() ||
            (joint->second.linear == value.linear && joint->second.angular == value.angular))
            continue;
        joint->second.linear = value.linear;
        joint->second.angular = value.angular;
        entity->nodes_dirty = true;  // the joint solver poses the nodes at the entity's next Update
    }
}

void ClientReplication::Apply(Destroy const& destroy) {
    ClientSideEntity::Remove(destroy.id);
}
}
