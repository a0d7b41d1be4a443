#include "engine/modular/ModuleID.h"

#include "engine/Alphabets.h"

#include <cctype>
#include <string_view>

namespace quorl::modular {

namespace {
constexpr size_t kMaxPartLength = 12;
constexpr uint64_t kBase = 37;
// Twelve base-37 digits stay below 2^64, so this guard only matters if the length rule ever grows; it is judged in
// double arithmetic, as identifiers already stored were made that way.
constexpr double kWordLimit = 18446744073709551616.0;

uint64_t Encode(std::string_view part, std::string_view alphabet) {
    uint64_t value = 0;
    for (auto it = part.rbegin(); it != part.rend(); ++it) {
        auto digit = alphabet.find(*it);
        if (digit == std::string_view::npos)
            return 0;
        if (static_cast<double>(value) * kBase > kWordLimit ||
            static_cast<double>(value) * kBase + static_cast<double>(digit) > kWordLimit)
            return 0;
        value = value * kBase + digit;
    }
    return value;
}

std::string Decode(uint64_t value, std::string_view alphabet) {
    std::string text;
    while (value != 0) {
        text += alphabet[value % kBase];
        value /= kBase;
    }
    return text;
}

bool StartsWithin(std::string_view part, std::string_view firstCharacters) {
    return firstCharacters.find(part.front()) != std::string_view::npos;
}
}

ModuleID::ModuleID(std::string const& name) {
    auto split = name.find('_');
    if (name.empty() || split == std::string::npos)
        return;
    std::string vendorPart = name.substr(0, split);
    std::string modulePart = name.substr(split + 1);
    for (auto& c : vendorPart)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (auto& c : modulePart)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));

    auto validLength = [](std::string const& part) { return !part.empty() && part.size() <= kMaxPartLength; };
    if (!validLength(vendorPart) || !validLength(modulePart))
        return;
    if (!StartsWithin(vendorPart, BASE26_UPPER_CHARS) || !StartsWithin(modulePart, BASE26_LOWER_CHARS))
        return;

    vendor = Encode(vendorPart, BASE36_UPPER_CHARS);
    module = Encode(modulePart, BASE36_LOWER_CHARS);
}

std::string ModuleID::String() const {
    if (vendor == 0 || module == 0)
        return "";
    return Decode(vendor, BASE36_UPPER_CHARS) + "_" + Decode(module, BASE36_LOWER_CHARS);
}

}
