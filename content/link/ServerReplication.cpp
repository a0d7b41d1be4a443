// Replication, server side: one reading of the world per tick, then each player's difference from what it was last
// sent.

#include "content/link/ServerReplication.h"

#include "game/entity/ServerSideEntity.h"

#include <algorithm>

namespace entitylink {

namespace {

using game::entity::ServerSideEntity;

/// One entity as the messages tell it.
struct Reading {
    Create create;
    Update update;
    bool sendable = false;
};

Reading Read(ServerSideEntity const& entity) {
    // Physics keeps orientations unit length only up to rounding; the wire asks for unit ones.
    glm::dquat orientation = glm::normalize(entity.orientation);
    Reading reading;
    reading.create = {entity.id,          entity.module.String(), entity.type, entity.parent,
                      entity.environment, entity.position,        orientation};
    Update& update = reading.update;
    update.id = entity.id;
    update.dynamic = entity.dynamic;
    update.position = entity.position;
    update.orientation = orientation;
    update.linear_velocity = entity.linear_velocity;
    update.angular_velocity = entity.angular_velocity;
    update.joints.reserve(entity.joints.size());
    for (auto const& [name, joint] : entity.joints)
        update.joints.push_back({name, joint.linear, joint.angular});
    std::ranges::sort(update.joints, {}, &JointValue::name);
    reading.sendable = IsSendable(reading.create) && IsSendable(update);
    return reading;
}

/// What a client must make anew when it changes; position and orientation travel in updates.
bool SameIdentity(Create const& a, Create const& b) {
    return a.module == b.module && a.type == b.type && a.parent == b.parent && a.environment == b.environment;
}

}

void ServerReplication::Connect(uint32_t player) {
    std::lock_guard lock(_mutex);
    _players[player].clear();
}

void ServerReplication::Disconnect(uint32_t player) {
    std::lock_guard lock(_mutex);
    _players.erase(player);
}

void ServerReplication::Tick(Send const& send) {
    // The world is read before the lock is taken and the packets sent after it is released: neither an entity walk
    // nor a transport ever waits on a player's connecting.
    std::vector<Reading> world;
    ServerSideEntity::ForEach([&](std::shared_ptr<ServerSideEntity> const& entity) { world.push_back(Read(*entity)); });

    std::vector<std::pair<uint32_t, std::vector<unsigned char>>> packets;
    {
        std::lock_guard lock(_mutex);
        ++_tick;
        for (auto& [player, sent] : _players) {
            std::vector<Message> messages;
            for (auto const& reading : world) {
                auto known = sent.find(reading.create.id);
                if (!reading.sendable) {
                    if (known != sent.end())
                        known->second.seenAtTick = _tick;
                    continue;
                }
                if (known == sent.end() || !SameIdentity(known->second.create, reading.create)) {
                    messages.emplace_back(reading.create);
                    known = sent.insert_or_assign(reading.create.id, Sent{reading.create, {}, 0}).first;
                    known->second.update.id = {};  // never equal to a real update: one follows every create
                }
                known->second.seenAtTick = _tick;
                if (!(known->second.update == reading.update)) {
                    messages.emplace_back(reading.update);
                    known->second.update = reading.update;
                }
            }
            for (auto entry = sent.begin(); entry != sent.end();) {
                if (entry->second.seenAtTick == _tick) {
                    ++entry;
                    continue;
                }
                messages.emplace_back(Destroy{entry->first});
                entry = sent.erase(entry);
            }
            if (!messages.empty())
                packets.emplace_back(player, Encode(messages));
        }
    }
    for (auto const& [player, packet] : packets)
        send(player, packet);
}

}
