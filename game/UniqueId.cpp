#include "game/UniqueId.h"

#include "engine/Base16.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <mutex>
#include <random>
#include <stdexcept>

namespace game {

uint32_t UniqueId::_this_owner = 0;

namespace {

constexpr size_t kStringLength = 28;
constexpr uint64_t kTimeBits = 50;
constexpr uint64_t kTimeMask = (uint64_t(1) << kTimeBits) - 1;

/// Uniform numbers in [Min, Max] from a 64-bit Mersenne twister, safe to draw from any thread.
template <class T, T Min, T Max>
class RandomGenerator {
public:
    RandomGenerator() : _engine(std::random_device("default")() & 0xFFFFFFFFu) {}

    T Draw() {
        std::lock_guard lock(_mutex);
        return static_cast<T>(Min + Bounded(uint64_t(Max) - Min + 1));
    }

private:
    /// An unbiased draw in [0, range) from 64-bit outputs by multiply-and-reject.
    uint64_t Bounded(uint64_t range) {
        unsigned __int128 product = static_cast<unsigned __int128>(_engine()) * range;
        auto low = static_cast<uint64_t>(product);
        if (low < range) {
            uint64_t threshold = (0 - range) % range;
            while (low < threshold) {
                product = static_cast<unsigned __int128>(_engine()) * range;
                low = static_cast<uint64_t>(product);
            }
        }
        return static_cast<uint64_t>(product >> 64);
    }

    std::mt19937_64 _engine;
    std::mutex _mutex;
};

void AppendHex(std::string& text, unsigned char const* bytes, size_t count) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0xF];
    }
}

void DecodeInto(unsigned char* target, std::string const& hex, size_t expectedBytes) {
    auto bytes = quorl::Base16::Decode(hex);
    if (bytes.size() != expectedBytes)
        throw std::invalid_argument("invalid size");
    std::memcpy(target, bytes.data(), expectedBytes);
}

/// The clock's microseconds, but never the same value twice in one process: ids made faster than one a microsecond
/// (a blueprint of many parts) take the next free microsecond. Without this, ids of one burst would collide once
/// in 16383 draws, and with one owner per process no other process shares these ids' low half.
uint64_t UniqueMicroseconds() {
    static std::atomic<uint64_t> last{0};
    auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    uint64_t now = static_cast<uint64_t>(nanoseconds.count()) / 1000;
    uint64_t previous = last.load(std::memory_order_relaxed);
    uint64_t next;
    do {
        next = std::max(now, previous + 1);
    } while (!last.compare_exchange_weak(previous, next, std::memory_order_relaxed));
    return next;
}

}

UniqueId UniqueId::Generate(char const (&prefix)[5]) {
    uint32_t owner = _this_owner;
    uint64_t micros = UniqueMicroseconds() & kTimeMask;

    static RandomGenerator<unsigned int, 1u, 16383u> generator;
    uint64_t random = generator.Draw();

    UniqueId id;
    unsigned char lowBytes[8];
    std::memcpy(lowBytes, prefix, 4);
    std::memcpy(lowBytes + 4, &owner, 4);
    std::memcpy(&id.low, lowBytes, 8);
    id.high = micros | random << kTimeBits;
    return id;
}

UniqueId::UniqueId(std::string const& text) {
    if (text.empty())
        return;
    if (text.size() != kStringLength)
        throw std::runtime_error("UniqueId string length should be 28");
    unsigned char bytes[16];
    std::memcpy(bytes, text.data(), 4);
    DecodeInto(bytes + 4, text.substr(4, 8), 4);
    DecodeInto(bytes + 8, text.substr(12, 16), 8);
    std::memcpy(&low, bytes, 8);
    std::memcpy(&high, bytes + 8, 8);
}

std::string UniqueId::String() const {
    if (IsNull())
        return "";
    unsigned char bytes[16];
    std::memcpy(bytes, &low, 8);
    std::memcpy(bytes + 8, &high, 8);
    std::string text(reinterpret_cast<char const*>(bytes), 4);
    text.reserve(kStringLength);
    AppendHex(text, bytes + 4, 12);
    return text;
}

}
