#include "content/player/PlayerInput.h"

#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

namespace player {

namespace {

constexpr unsigned char kMagic[4] = {'M', 'P', 'I', 'N'};
constexpr unsigned long kSize = 4 + 2 + 3 * 4 + 1 + 1 + 1;

enum Flag : uint8_t { kJump = 1, kSprint = 2, kCrouch = 4, kJetpack = 8 };
constexpr uint8_t kAllFlags = kJump | kSprint | kCrouch | kJetpack;

constexpr float kPi = 3.14159265f;

void PutFloat(std::vector<unsigned char>& out, float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, 4);
    for (int byte = 0; byte < 4; ++byte)
        out.push_back(static_cast<unsigned char>(bits >> (8 * byte)));
}

float GetFloat(unsigned char const* data) {
    uint32_t bits = 0;
    for (int byte = 0; byte < 4; ++byte)
        bits |= uint32_t(data[byte]) << (8 * byte);
    float value;
    std::memcpy(&value, &bits, 4);
    return value;
}

float Within(float value, float limit, char const* field) {
    if (!(std::abs(value) <= limit))
        throw std::invalid_argument("player input: " + std::string(field) + " " + std::to_string(value) +
                                    " is not within -" + std::to_string(limit) + ".." + std::to_string(limit));
    return value;
}

}

std::vector<unsigned char> Encode(Input const& input) {
    std::vector<unsigned char> out(kMagic, kMagic + 4);
    out.push_back(kInputVersion & 0xff);
    out.push_back(kInputVersion >> 8);
    PutFloat(out, input.forward);
    PutFloat(out, input.right);
    PutFloat(out, input.heading);
    out.push_back((input.jump ? kJump : 0) | (input.sprint ? kSprint : 0) | (input.crouch ? kCrouch : 0) |
                  (input.jetpack ? kJetpack : 0));
    out.push_back(input.respawns);
    out.push_back(input.interactions);
    return out;
}

std::optional<Input> Decode(unsigned char const* data, unsigned long size) {
    if (size < 4 || std::memcmp(data, kMagic, 4) != 0)
        return std::nullopt;
    if (size != kSize)
        throw std::invalid_argument("player input: " + std::to_string(size) + " bytes, not " + std::to_string(kSize));
    uint16_t const version = uint16_t(data[4] | data[5] << 8);
    if (version != kInputVersion)
        throw std::invalid_argument("player input: version " + std::to_string(version) + ", and this game reads " +
                                    std::to_string(kInputVersion));
    uint8_t const flags = data[18];
    if (flags & ~kAllFlags)
        throw std::invalid_argument("player input: unknown flag bits " + std::to_string(flags & ~kAllFlags));
    return Input{.forward = Within(GetFloat(data + 6), 1.0f, "forward"),
                 .right = Within(GetFloat(data + 10), 1.0f, "right"),
                 .heading = Within(GetFloat(data + 14), 2.0f * kPi, "heading"),
                 .jump = (flags & kJump) != 0,
                 .sprint = (flags & kSprint) != 0,
                 .crouch = (flags & kCrouch) != 0,
                 .jetpack = (flags & kJetpack) != 0,
                 .respawns = data[19],
                 .interactions = data[20]};
}

}
