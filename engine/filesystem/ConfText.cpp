#include "engine/filesystem/ConfText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <stdexcept>

namespace quorl::filesystem {

namespace {

using InputBinding = ConfigFile::InputBinding;

std::string Quoted(std::string const& text) {
    return "\"" + text + "\"";
}

bool ParseBool(std::string const& text) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    if (lower == "true" || lower == "yes" || lower == "on" || lower == "1") {
        return true;
    }
    if (lower == "false" || lower == "no" || lower == "off" || lower == "0") {
        return false;
    }
    throw std::invalid_argument("expected true/false/yes/no/on/off/1/0, got " + Quoted(text));
}

template <class Number>
Number ParseNumber(std::string const& text, char const* expected) {
    Number number{};
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range) {
        throw std::invalid_argument("number out of range: " + Quoted(text));
    }
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::invalid_argument(std::string("expected ") + expected + ", got " + Quoted(text));
    }
    return number;
}

int ParseInt(std::string const& text) {
    return ParseNumber<int>(text, "a whole number");
}

float ParseFloat(std::string const& text) {
    return ParseNumber<float>(text, "a number");
}

std::string FormatFloat(float value) {
    std::array<char, 32> buffer{};
    auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

template <class T>
T& Field(ConfigFile::Conf const& conf) {
    return *static_cast<T*>(conf.target);
}

}

std::string FormatConfValue(ConfigFile::Conf const& conf) {
    switch (conf.type) {
    case ConfigFile::CONF_STRING: {
        auto const& text = Field<std::string>(conf);
        if (text.find_first_of("\r\n") != std::string::npos) {
            throw std::invalid_argument("value of key " + Quoted(conf.key) + " contains a line break");
        }
        return text;
    }
    case ConfigFile::CONF_BOOL:
        return Field<bool>(conf) ? "true" : "false";
    case ConfigFile::CONF_INT:
        return std::to_string(Field<int>(conf));
    case ConfigFile::CONF_FLOAT:
        return FormatFloat(Field<float>(conf));
    case ConfigFile::CONF_INPUT_BINDING:
        return Field<InputBinding>(conf).ToText();
    }
    throw std::invalid_argument("key " + Quoted(conf.key) + " has an unknown type " + std::to_string(conf.type));
}

void ParseConfValue(ConfigFile::Conf const& conf, std::string const& text) {
    switch (conf.type) {
    case ConfigFile::CONF_STRING:
        Field<std::string>(conf) = text;
        return;
    case ConfigFile::CONF_BOOL:
        Field<bool>(conf) = ParseBool(text);
        return;
    case ConfigFile::CONF_INT:
        Field<int>(conf) = ParseInt(text);
        return;
    case ConfigFile::CONF_FLOAT:
        Field<float>(conf) = ParseFloat(text);
        return;
    case ConfigFile::CONF_INPUT_BINDING:
        Field<InputBinding>(conf) = InputBinding::FromText(text);
        return;
    }
    throw std::invalid_argument("key " + Quoted(conf.key) + " has an unknown type " + std::to_string(conf.type));
}

bool ConfValueMatches(ConfigFile::Conf const& conf, std::string const& text) {
    try {
        switch (conf.type) {
        case ConfigFile::CONF_STRING:
            return Field<std::string>(conf) == text;
        case ConfigFile::CONF_BOOL:
            return Field<bool>(conf) == ParseBool(text);
        case ConfigFile::CONF_INT:
            return Field<int>(conf) == ParseInt(text);
        case ConfigFile::CONF_FLOAT:
            return Field<float>(conf) == ParseFloat(text);
        case ConfigFile::CONF_INPUT_BINDING:
            return Field<InputBinding>(conf) == InputBinding::FromText(text);
        }
    } catch (std::invalid_argument const&) {
        // Text that does not parse cannot match; the caller rewrites the line.
    }
    return false;
}

}
