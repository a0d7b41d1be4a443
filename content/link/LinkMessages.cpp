// Link packets: writing, and reading back with every byte checked. docs/link-format.md shows each layout.
//
// Index:
//   Layout      magic, sizes and the rules both directions share
//   Writing     Encode
//   Reading     the bounded reader, then Decode

#include "content/link/LinkMessages.h"

#include <bit>
#include <cmath>
#include <cstring>

namespace entitylink {

// ---- Layout --------------------------------------------------------------------------------------------------------

namespace {

constexpr unsigned char kMagic[4] = {'M', 'L', 'N', 'K'};
/// Magic, version, message count.
constexpr size_t kHeaderBytes = 4 + 2 + 4;
/// Kind byte and body length.
constexpr size_t kMessageHeaderBytes = 1 + 4;
/// A joint with an empty name: name length, then six floats.
constexpr size_t kMinJointBytes = 1 + 6 * 4;
/// The only flag of an update; the other bits are refused so that a later version can give them a meaning.
constexpr uint8_t kDynamicFlag = 1;
/// A physics step renormalises orientations far more tightly than this; what is further off is no rotation.
constexpr double kUnitTolerance = 1e-3;

bool IsFinite(glm::dvec3 const& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}
bool IsFinite(glm::vec3 const& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}
bool IsUnit(glm::dquat const& q) {
    double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    return std::abs(length - 1.0) <= kUnitTolerance;  // false for NaN too
}

char const* KindName(Kind kind) {
    switch (kind) {
    case Kind::Create: return "create";
    case Kind::Update: return "update";
    case Kind::Destroy: return "destroy";
    }
    return "unknown";
}

/// What makes a message unsendable, or null: the rules Decode enforces field by field.
char const* ProblemWith(Create const& create) {
    if (create.id.IsNull())
        return "null entity id";
    if (create.module.size() > kMaxNameBytes || create.type.size() > kMaxNameBytes)
        return "name longer than 255 bytes";
    if (!IsFinite(create.position))
        return "position is not finite";
    if (!IsUnit(create.orientation))
        return "orientation is not a unit quaternion";
    return nullptr;
}
char const* ProblemWith(Update const& update) {
    if (update.id.IsNull())
        return "null entity id";
    if (!IsFinite(update.position) || !IsFinite(update.linear_velocity) || !IsFinite(update.angular_velocity))
        return "position or velocity is not finite";
    if (!IsUnit(update.orientation))
        return "orientation is not a unit quaternion";
    if (update.joints.size() > UINT16_MAX)
        return "more than 65535 joints";
    for (auto const& joint : update.joints) {
        if (joint.name.size() > kMaxNameBytes)
            return "name longer than 255 bytes";
        if (!IsFinite(joint.linear) || !IsFinite(joint.angular))
            return "joint value is not finite";
    }
    return nullptr;
}
char const* ProblemWith(Destroy const& destroy) {
    return destroy.id.IsNull() ? "null entity id" : nullptr;
}

Kind KindOf(Message const& message) {
    return std::visit(
        [](auto const& body) {
            using Body = std::decay_t<decltype(body)>;
            if constexpr (std::is_same_v<Body, Create>)
                return Kind::Create;
            else if constexpr (std::is_same_v<Body, Update>)
                return Kind::Update;
            else
                return Kind::Destroy;
        },
        message);
}

}

bool IsSendable(Message const& message) {
    return std::visit([](auto const& body) { return ProblemWith(body) == nullptr; }, message);
}

// ---- Writing -------------------------------------------------------------------------------------------------------

namespace {

/// Appends little-endian values to a packet.
class Writer {
public:
    explicit Writer(std::vector<unsigned char>& out) : _out(out) {}

    template <class Unsigned> void Put(Unsigned value) {
        for (size_t i = 0; i < sizeof(Unsigned); ++i)
            _out.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
    void Put(double value) { Put(std::bit_cast<uint64_t>(value)); }
    void Put(float value) { Put(std::bit_cast<uint32_t>(value)); }
    void Put(game::entity::Id const& id) {
        Put(id.low);
        Put(id.high);
    }
    void Put(std::string const& name) {
        Put(static_cast<uint8_t>(name.size()));
        _out.insert(_out.end(), name.begin(), name.end());
    }
    template <class Vector> void PutVector(Vector const& v) {
        Put(v.x);
        Put(v.y);
        Put(v.z);
    }
    void Put(glm::dquat const& q) {
        Put(q.w);
        Put(q.x);
        Put(q.y);
        Put(q.z);
    }

    void Body(Create const& create) {
        Put(create.id);
        Put(create.parent);
        Put(create.environment);
        PutVector(create.position);
        Put(create.orientation);
        Put(create.module);
        Put(create.type);
    }
    void Body(Update const& update) {
        Put(update.id);
        Put(static_cast<uint8_t>(update.dynamic ? kDynamicFlag : 0));
        PutVector(update.position);
        Put(update.orientation);
        PutVector(update.linear_velocity);
        PutVector(update.angular_velocity);
        Put(static_cast<uint16_t>(update.joints.size()));
        for (auto const& joint : update.joints) {
            Put(joint.name);
            PutVector(joint.linear);
            PutVector(joint.angular);
        }
    }
    void Body(Destroy const& destroy) { Put(destroy.id); }

    /// Kind, a length to be filled in, then the body.
    void Add(Message const& message) {
        Put(static_cast<uint8_t>(KindOf(message)));
        size_t lengthAt = _out.size();
        Put(uint32_t{0});
        std::visit([this](auto const& body) { Body(body); }, message);
        auto length = static_cast<uint32_t>(_out.size() - lengthAt - 4);
        for (size_t i = 0; i < 4; ++i)
            _out[lengthAt + i] = static_cast<unsigned char>(length >> (8 * i));
    }

private:
    std::vector<unsigned char>& _out;
};

}

std::vector<unsigned char> Encode(std::span<Message const> messages) {
    if (messages.size() > UINT32_MAX)
        throw FormatError("cannot encode more than 4294967295 messages in one packet");
    std::vector<unsigned char> packet(std::begin(kMagic), std::end(kMagic));
    Writer writer(packet);
    writer.Put(kVersion);
    writer.Put(static_cast<uint32_t>(messages.size()));
    for (auto const& message : messages) {
        char const* problem = std::visit([](auto const& body) { return ProblemWith(body); }, message);
        if (problem)
            throw FormatError(std::string("cannot encode ") + KindName(KindOf(message)) + " message: " + problem);
        writer.Add(message);
    }
    return packet;
}

// ---- Reading -------------------------------------------------------------------------------------------------------

namespace {

/// Reads little-endian values from [data, data + end), refusing any read past `end` before it happens. Errors
/// start with `context` and end with the offset in the packet of the value that failed.
class Reader {
public:
    Reader(unsigned char const* data, size_t position, size_t end, std::string context)
        : _data(data), _position(position), _end(end), _context(std::move(context)) {}

    size_t Position() const { return _position; }
    size_t Remaining() const { return _end - _position; }
    void Skip(size_t bytes) {
        Need(bytes);
        _position += bytes;
    }

    [[noreturn]] void Fail(std::string const& problem, size_t at) const {
        throw FormatError(_context + ": " + problem + " at offset " + std::to_string(at));
    }

    template <class Unsigned> Unsigned Get() {
        Need(sizeof(Unsigned));
        Unsigned value = 0;
        for (size_t i = 0; i < sizeof(Unsigned); ++i)
            value |= static_cast<Unsigned>(static_cast<Unsigned>(_data[_position + i]) << (8 * i));
        _position += sizeof(Unsigned);
        return value;
    }
    double GetDouble() { return std::bit_cast<double>(Get<uint64_t>()); }
    float GetFloat() { return std::bit_cast<float>(Get<uint32_t>()); }

    game::entity::Id GetId(bool allowNull, char const* field) {
        size_t at = _position;
        game::entity::Id id;
        id.low = Get<uint64_t>();
        id.high = Get<uint64_t>();
        if (!allowNull && id.IsNull())
            Fail(std::string("null ") + field, at);
        return id;
    }
    std::string GetName() {
        size_t length = Get<uint8_t>();
        Need(length);
        std::string name(reinterpret_cast<char const*>(_data + _position), length);
        _position += length;
        return name;
    }
    glm::dvec3 GetDvec3(char const* field) {
        size_t at = _position;
        glm::dvec3 v;
        v.x = GetDouble();
        v.y = GetDouble();
        v.z = GetDouble();
        if (!IsFinite(v))
            Fail(std::string(field) + " is not finite", at);
        return v;
    }
    glm::vec3 GetVec3(char const* field) {
        size_t at = _position;
        glm::vec3 v;
        v.x = GetFloat();
        v.y = GetFloat();
        v.z = GetFloat();
        if (!IsFinite(v))
            Fail(std::string(field) + " is not finite", at);
        return v;
    }
    glm::dquat GetOrientation() {
        size_t at = _position;
        glm::dquat q;
        q.w = GetDouble();
        q.x = GetDouble();
        q.y = GetDouble();
        q.z = GetDouble();
        if (!IsUnit(q))
            Fail("orientation is not a unit quaternion", at);
        return q;
    }

    Create GetCreate() {
        Create create;
        create.id = GetId(false, "entity id");
        create.parent = GetId(true, "parent");
        create.environment = Get<uint64_t>();
        create.position = GetDvec3("position");
        create.orientation = GetOrientation();
        create.module = GetName();
        create.type = GetName();
        return create;
    }
    Update GetUpdate() {
        Update update;
        update.id = GetId(false, "entity id");
        size_t flagsAt = _position;
        auto flags = Get<uint8_t>();
        if (flags & ~kDynamicFlag)
            Fail("unknown flags " + std::to_string(flags), flagsAt);
        update.dynamic = flags & kDynamicFlag;
        update.position = GetDvec3("position");
        update.orientation = GetOrientation();
        update.linear_velocity = GetDvec3("linear velocity");
        update.angular_velocity = GetDvec3("angular velocity");
        size_t countAt = _position;
        size_t count = Get<uint16_t>();
        // Checked before reserving: a count the body cannot hold must not size an allocation.
        if (count > Remaining() / kMinJointBytes)
            Fail(std::to_string(count) + " joints cannot fit in the " + std::to_string(Remaining()) + " bytes left",
                 countAt);
        update.joints.reserve(count);
        for (size_t i = 0; i < count; ++i) {
            JointValue joint;
            joint.name = GetName();
            joint.linear = GetVec3("joint value");
            joint.angular = GetVec3("joint value");
            update.joints.push_back(std::move(joint));
        }
        return update;
    }
    Destroy GetDestroy() { return Destroy{GetId(false, "entity id")}; }

private:
    void Need(size_t bytes) const {
        if (bytes > Remaining())
            Fail("ends early: " + std::to_string(bytes) + " bytes needed, " + std::to_string(Remaining()) + " left",
                 _position);
    }

    unsigned char const* _data;
    size_t _position;
    size_t _end;
    std::string _context;
};

}

std::vector<Message> Decode(unsigned char const* data, size_t size) {
    Reader packet(data, 0, size, "link packet");
    if (size < kHeaderBytes)
        packet.Fail("header ends early: " + std::to_string(size) + " bytes of " + std::to_string(kHeaderBytes), 0);
    if (std::memcmp(data, kMagic, sizeof kMagic) != 0)
        packet.Fail("no \"MLNK\" magic", 0);
    packet.Get<uint32_t>();
    auto version = packet.Get<uint16_t>();
    if (version != kVersion)
        packet.Fail("version " + std::to_string(version) + " is not supported (this build reads " +
                        std::to_string(kVersion) + ")",
                    4);
    size_t count = packet.Get<uint32_t>();
    if (count > packet.Remaining() / kMessageHeaderBytes)
        packet.Fail(std::to_string(count) + " messages cannot fit in the " + std::to_string(packet.Remaining()) +
                        " bytes left",
                    6);

    std::vector<Message> messages;
    messages.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        size_t at = packet.Position();
        auto kind = static_cast<Kind>(packet.Get<uint8_t>());
        size_t length = packet.Get<uint32_t>();
        if (kind != Kind::Create && kind != Kind::Update && kind != Kind::Destroy)
            packet.Fail("message " + std::to_string(i) + " has unknown kind " +
                            std::to_string(static_cast<unsigned>(kind)),
                        at);
        if (length > packet.Remaining())
            packet.Fail(std::string(KindName(kind)) + " message " + std::to_string(i) + " of " +
                            std::to_string(length) + " bytes runs past the end (" +
                            std::to_string(packet.Remaining()) + " bytes left)",
                        at);
        size_t bodyAt = packet.Position();
        Reader body(data, bodyAt, bodyAt + length,
                    "link packet, " + std::string(KindName(kind)) + " message at offset " + std::to_string(at));
        switch (kind) {
        case Kind::Create: messages.emplace_back(body.GetCreate()); break;
        case Kind::Update: messages.emplace_back(body.GetUpdate()); break;
        case Kind::Destroy: messages.emplace_back(body.GetDestroy()); break;
        }
        if (body.Remaining() != 0)
            body.Fail(std::to_string(body.Remaining()) + " bytes after the end of the body", body.Position());
        packet.Skip(length);
    }
    if (packet.Remaining() != 0)
        packet.Fail(std::to_string(packet.Remaining()) + " bytes after the last message", packet.Position());
    return messages;
}

}
