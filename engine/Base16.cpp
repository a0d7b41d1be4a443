#include "engine/Base16.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace quorl {

namespace {
constexpr std::string_view kDigits = "0123456789ABCDEF";

unsigned char Nibble(char c) {
    auto it = std::lower_bound(kDigits.begin(), kDigits.end(), c);
    if (it == kDigits.end() || *it != c)
        throw std::invalid_argument("not a hex digit");
    return static_cast<unsigned char>(it - kDigits.begin());
}
}

std::vector<unsigned char> Base16::Decode(std::string const& text) {
    if (text.size() % 2 != 0)
        throw std::invalid_argument("invalid size");
    std::vector<unsigned char> bytes;
    bytes.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(Nibble(text[i]) << 4 | Nibble(text[i + 1])));
    return bytes;
}

}
