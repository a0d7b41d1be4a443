#include "content/link/LinkMessages.h"
#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

using namespace entitylink;

namespace {

game::entity::Id const kCrate{std::string("ENTT0000000100000000000000A1")};
game::entity::Id const kCart{std::string("ENTT0000000100000000000000B2")};

Create CrateCreate() {
    return {kCrate, "MERIDON_example", "crate", kCart, 0x504c414e4554, {1.5, 6000.25, -3.0},
            glm::normalize(glm::dquat(0.9, 0.1, -0.3, 0.2))};
}

Update DoorUpdate() {
    return {kCrate,
            true,
            {-0.0, 1e300, 4.9e-324},
            glm::dquat(0.0, 0.0, 1.0, 0.0),
            {0.0, -9.81, 0.5},
            {0.25, 0.0, -1.0},
            {{"hinge", {0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 45.0f}}, {"latch", {0.01f, 0.0f, 0.0f}, {0.0f, 0.0f, 0.0f}}}};
}

/// The byte form of a little-endian value, for patching packets.
template <class T> void Poke(std::vector<unsigned char>& bytes, size_t offset, T value) {
    auto raw = std::bit_cast<std::array<unsigned char, sizeof(T)>>(value);
    std::copy(raw.begin(), raw.end(), bytes.begin() + static_cast<long>(offset));
}

}

TEST(LinkMessagesTest, EveryKindRoundTripsByteForByte) {
    struct Case {
        char const* name;
        std::vector<Message> messages;
    };
    Update still = DoorUpdate();
    still.dynamic = false;
    still.joints.clear();
    Create ofNoModule = CrateCreate();
    ofNoModule.module.clear();
    ofNoModule.parent = {};
    ofNoModule.type = std::string(kMaxNameBytes, 't');
    Case const cases[] = {
        {"empty packet", {}},
        {"create", {CrateCreate()}},
        {"create of no module, longest type name", {ofNoModule}},
        {"update with joints, signed zero, huge and denormal numbers", {DoorUpdate()}},
        {"update without joints", {still}},
        {"destroy", {Destroy{kCart}}},
        {"a tick: create, update, destroy", {CrateCreate(), DoorUpdate(), Destroy{kCart}}},
    };
    for (auto const& [name, messages] : cases) {
        auto bytes = Encode(messages);
        auto decoded = Decode(bytes.data(), bytes.size());
        EXPECT_EQ(decoded, messages) << name;
        EXPECT_EQ(Encode(decoded), bytes) << name;
    }
    // Signed zero survives too, which == cannot see.
    auto bytes = Encode(std::vector<Message>{DoorUpdate()});
    EXPECT_TRUE(std::signbit(std::get<Update>(Decode(bytes.data(), bytes.size())[0]).position.x));
}

TEST(LinkMessagesTest, VersionOneSampleReadsAndWritesAsDocumented) {
    // docs/link-format.md's example: a destroy, then a create of "A_b" type "c" at (1, 2, 3), unrotated.
    std::vector<unsigned char> const sample = {
        'M', 'L', 'N', 'K', 0x01, 0x00, 0x02, 0x00, 0x00, 0x00,                    // header: version 1, 2 messages
        0x03, 0x10, 0x00, 0x00, 0x00,                                              // destroy, 16 bytes
        1, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0,                            // id low 1, high 2
        0x01, 0x66, 0x00, 0x00, 0x00,                                              // create, 102 bytes
        1, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0,                            // id low 1, high 3
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,                            // no parent
        7, 0, 0, 0, 0, 0, 0, 0,                                                    // environment 7
        0, 0, 0, 0, 0, 0, 0xf0, 0x3f, 0, 0, 0, 0, 0, 0, 0, 0x40,                   // position 1, 2,
        0, 0, 0, 0, 0, 0, 0x08, 0x40,                                              //   3
        0, 0, 0, 0, 0, 0, 0xf0, 0x3f, 0, 0, 0, 0, 0, 0, 0, 0,                      // orientation w 1, x 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,                            //   y 0, z 0
        0x03, 'A', '_', 'b', 0x01, 'c',                                            // module, type
    };
    game::entity::Id first, second;
    first.low = 1;
    first.high = 2;
    second.low = 1;
    second.high = 3;
    std::vector<Message> const messages = {
        Destroy{first}, Create{second, "A_b", "c", {}, 7, {1.0, 2.0, 3.0}, glm::dquat(1.0, 0.0, 0.0, 0.0)}};
    EXPECT_EQ(Decode(sample.data(), sample.size()), messages);
    EXPECT_EQ(Encode(messages), sample);
}

TEST(LinkMessagesTest, MalformedPacketsAreRefusedWithWhereAndWhy) {
    // One update with one joint "hinge": the header at 0, the message at 10, its body at 15.
    Update one = DoorUpdate();
    one.joints.resize(1);
    auto const valid = Encode(std::vector<Message>{one});
    constexpr size_t kBody = 15;
    struct Case {
        char const* name;
        std::function<void(std::vector<unsigned char>&)> damage;
        std::string error;
    };
    Case const cases[] = {
        {"nothing", [](auto& b) { b.clear(); }, "link packet: header ends early: 0 bytes of 10 at offset 0"},
        {"other magic", [](auto& b) { b[0] = 'X'; }, "link packet: no \"MLNK\" magic at offset 0"},
        {"later version", [](auto& b) { Poke<uint16_t>(b, 4, 2); },
         "link packet: version 2 is not supported (this build reads 1) at offset 4"},
        {"count beyond the bytes", [](auto& b) { Poke<uint32_t>(b, 6, 0xffffffff); },
         "link packet: 4294967295 messages cannot fit in the 158 bytes left at offset 6"},
        {"a kind of a later version", [](auto& b) { b[10] = 4; },
         "link packet: message 0 has unknown kind 4 at offset 10"},
        {"kind 0", [](auto& b) { b[10] = 0; }, "link packet: message 0 has unknown kind 0 at offset 10"},
        {"body past the end", [](auto& b) { b.pop_back(); },
         "link packet: update message 0 of 153 bytes runs past the end (152 bytes left) at offset 10"},
        {"bytes after the last message", [](auto& b) { b.push_back(0); },
         "link packet: 1 bytes after the last message at offset 168"},
        {"body longer than its fields", [](auto& b) { Poke<uint32_t>(b, 11, 154); b.push_back(0); },
         "link packet, update message at offset 10: 1 bytes after the end of the body at offset 168"},
        {"null id", [](auto& b) { Poke<uint64_t>(b, kBody, 0); },
         "link packet, update message at offset 10: null entity id at offset 15"},
        {"unknown flag", [](auto& b) { b[kBody + 16] = 3; },
         "link packet, update message at offset 10: unknown flags 3 at offset 31"},
        {"position not a number", [](auto& b) { Poke(b, kBody + 17 + 8, std::nan("")); },
         "link packet, update message at offset 10: position is not finite at offset 32"},
        {"angular velocity infinite", [](auto& b) { Poke(b, kBody + 97, HUGE_VAL); },
         "link packet, update message at offset 10: angular velocity is not finite at offset 112"},
        {"orientation of zero length", [](auto& b) { Poke(b, kBody + 41 + 16, 0.0); },
         "link packet, update message at offset 10: orientation is not a unit quaternion at offset 56"},
        {"joint count beyond the body", [](auto& b) { Poke<uint16_t>(b, kBody + 121, 0xffff); },
         "link packet, update message at offset 10: 65535 joints cannot fit in the 30 bytes left at offset 136"},
        {"joint name past the body", [](auto& b) { b[kBody + 123] = 200; },
         "link packet, update message at offset 10: ends early: 200 bytes needed, 29 left at offset 139"},
        {"joint value not a number", [](auto& b) { Poke(b, b.size() - 4, std::numeric_limits<float>::quiet_NaN()); },
         "link packet, update message at offset 10: joint value is not finite at offset 156"},
    };
    for (auto const& [name, damage, error] : cases) {
        auto bytes = valid;
        damage(bytes);
        EXPECT_EQ(ErrorOf<FormatError>([&] { Decode(bytes.data(), bytes.size()); }), error) << name;
    }
}

TEST(LinkMessagesTest, EncodeRefusesWhatDecodeWouldRefuse) {
    Update lost = DoorUpdate();
    lost.linear_velocity.y = std::numeric_limits<double>::infinity();
    Create unnamed = CrateCreate();
    unnamed.type = std::string(kMaxNameBytes + 1, 't');
    Create turned = CrateCreate();
    turned.orientation = {2.0, 0.0, 0.0, 0.0};
    struct Case {
        Message message;
        std::string error;
    };
    Case const cases[] = {
        {lost, "cannot encode update message: position or velocity is not finite"},
        {unnamed, "cannot encode create message: name longer than 255 bytes"},
        {turned, "cannot encode create message: orientation is not a unit quaternion"},
        {Destroy{}, "cannot encode destroy message: null entity id"},
    };
    for (auto const& [message, error] : cases) {
        EXPECT_FALSE(IsSendable(message)) << error;
        EXPECT_EQ(ErrorOf<FormatError>([&] { Encode(std::vector<Message>{message}); }), error);
    }
}
