#include "engine/filesystem/ConfigFile.h"

#include "engine/input/KeyNames.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <variant>

namespace quorl::filesystem {

namespace {

using InputBinding = ConfigFile::InputBinding;
using Member = std::variant<int32_t InputBinding::*, int16_t InputBinding::*, std::string InputBinding::*>;

struct Part {
    std::string_view name;
    Member member;
    /// The kind of quorl::input names its codes have, nullptr for a plain number.
    char const* codeKind;
};

// Text order of the parts; ToText writes them in this order.
constexpr Part Parts[] = {
    {"key", &InputBinding::key, "KEY"},
    {"mouse_button", &InputBinding::mouse_button, "MOUSE_BUTTON"},
    {"gamepad_id", &InputBinding::gamepad_id, nullptr},
    {"gamepad_index", &InputBinding::gamepad_index, nullptr},
    {"gamepad_button", &InputBinding::gamepad_button, "GAMEPAD_BUTTON"},
    {"gamepad_axis", &InputBinding::gamepad_axis, "GAMEPAD_AXIS"},
    {"gamepad_axis_sign", &InputBinding::gamepad_axis_sign, nullptr},
    {"joystick_id", &InputBinding::joystick_id, nullptr},
    {"joystick_index", &InputBinding::joystick_index, nullptr},
    {"joystick_button", &InputBinding::joystick_button, "JOYSTICK_BUTTON"},
    {"joystick_axis", &InputBinding::joystick_axis, "JOYSTICK_AXIS"},
    {"joystick_axis_sign", &InputBinding::joystick_axis_sign, nullptr},
};

/// A code by its name, or by number for codes that have none (and for files written before names).
template <class Integer>
Integer ParseCode(Part const& part, std::string const& text) {
    if (part.codeKind != nullptr) {
        if (auto code = input::code_from_string(part.codeKind, text)) {
            return static_cast<Integer>(*code);
        }
    }
    Integer value{};
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        std::string expected = part.codeKind == nullptr ? "" : std::string("a ") + part.codeKind + "_ name or ";
        throw std::invalid_argument("input binding part \"" + std::string(part.name) + "\" needs " + expected +
                                    "a whole number from " + std::to_string(std::numeric_limits<Integer>::min()) +
                                    " to " + std::to_string(std::numeric_limits<Integer>::max()) + ", got \"" +
                                    text + "\"");
    }
    return value;
}

/// The code's name where it has one, else its number.
std::string FormatCode(Part const& part, int code) {
    if (part.codeKind != nullptr) {
        if (auto const* name = input::code_to_string(part.codeKind, code); std::string_view(name) != "NONE") {
            return name;
        }
    }
    return std::to_string(code);
}

}

std::string InputBinding::ToText() const {
    InputBinding const unset;
    std::string text;
    for (auto const& part : Parts) {
        std::visit(
            [&](auto member) {
                if (this->*member == unset.*member) {
                    return;
                }
                std::string value;
                if constexpr (std::is_same_v<decltype(member), std::string InputBinding::*>) {
                    value = this->*member;
                    if (value.find_first_of(" \t\r\n") != std::string::npos) {
                        throw std::invalid_argument("input binding " + std::string(part.name) + " \"" + value +
                                                    "\" contains whitespace");
                    }
                } else {
                    value = FormatCode(part, this->*member);
                }
                text += (text.empty() ? "" : " ") + std::string(part.name) + "=" + value;
            },
            part.member);
    }
    return text;
}

InputBinding InputBinding::FromText(std::string const& text) {
    InputBinding binding;
    std::istringstream words(text);
    std::string word;
    while (words >> word) {
        auto equals = word.find('=');
        std::string_view name = std::string_view(word).substr(0, equals);
        auto const* part =
            std::find_if(std::begin(Parts), std::end(Parts), [&](Part const& p) { return p.name == name; });
        if (part == std::end(Parts)) {
            throw std::invalid_argument("unknown input binding part \"" + std::string(name) + "\" in \"" + text + "\"");
        }
        if (equals == std::string::npos) {
            throw std::invalid_argument("input binding part \"" + word + "\" has no '=value'");
        }
        std::string value = word.substr(equals + 1);
        std::visit(
            [&](auto member) {
                using Value = std::remove_reference_t<decltype(binding.*member)>;
                if constexpr (std::is_same_v<Value, std::string>) {
                    binding.*member = value;
                } else {
                    binding.*member = ParseCode<Value>(*part, value);
                }
            },
            part->member);
    }
    return binding;
}

}
