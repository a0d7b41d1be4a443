#include "LauncherConfig.h"

#include "engine/String.h"
#include "engine/filesystem/ConfigFile.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <functional>
#include <sstream>
#include <type_traits>

namespace {

/// A number of the whole text, finite and at least `minimum`: what every number of the launcher is.
template <class Number>
bool ParseNumber(std::string const& text, Number minimum, Number& value) {
    auto end = text.data() + text.size();
    auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end && std::isfinite(static_cast<double>(value)) && value >= minimum;
}

using Setter = std::function<std::string(LauncherConfig&, std::string const&)>;

template <class Number>
Setter NumberOf(Number LauncherConfig::*field, Number minimum = 0) {
    return [field, minimum](LauncherConfig& config, std::string const& text) -> std::string {
        Number value{};
        if (!ParseNumber(text, minimum, value))
            return std::string(std::is_integral_v<Number> ? "a whole number" : "a number") + ", " +
                   std::to_string(static_cast<long>(minimum)) + " or more, is needed";
        config.*field = value;
        return "";
    };
}

Setter NamesOf(std::vector<std::string> LauncherConfig::*field) {
    return [field](LauncherConfig& config, std::string const& text) {
        config.*field = SplitNames(text);
        return std::string();
    };
}

/// One setting: its key in launcher.ini (empty for command-line only), its option, and how a text sets it.
struct Setting {
    char const* key;
    char const* option;
    Setter set;
};

/// Every setting that takes a value; the one place that names each and checks its values.
std::vector<Setting> const& Settings() {
    static std::vector<Setting> const settings{
        {"modules", "--modules", NamesOf(&LauncherConfig::modules)},
        {"mods", "--mods", NamesOf(&LauncherConfig::mods)},
        {"module_path", "--module-path",
         [](LauncherConfig& config, std::string const& text) -> std::string {
             auto folders = SplitNames(text, ':');
             // Checked here, so that a mistyped folder is named at start rather than showing as a missing module.
             for (auto const& folder : folders) {
                 std::error_code ignored;
                 if (!std::filesystem::is_directory(folder, ignored))
                     return "'" + folder + "' is not a folder";
             }
             config.modulePath = std::move(folders);
             return "";
         }},
        {"world", "--world",
         [](LauncherConfig& config, std::string const& text) -> std::string {
             if (text.empty() || text.find('/') != std::string::npos || text == "." || text == "..")
                 return "the world's name must be a plain folder name";
             config.world = text;
             return "";
         }},
        {"render_hz", "--render-hz", NumberOf(&LauncherConfig::renderHz)},
        {"game_hz", "--game-hz", NumberOf(&LauncherConfig::gameHz)},
        {"input_hz", "--input-hz", NumberOf(&LauncherConfig::inputHz)},
        {"server_hz", "--server-hz", NumberOf(&LauncherConfig::serverHz)},
        // No substep would freeze the physics without a word.
        {"server_substeps", "--server-substeps", NumberOf(&LauncherConfig::serverSubsteps, 1)},
        {"autosave_minutes", "--autosave", NumberOf(&LauncherConfig::autosaveMinutes)},
        // What one run asks for, not what a game folder keeps: command line only.
        {"", "--ticks", NumberOf(&LauncherConfig::ticks)},
        {"", "--seconds", NumberOf(&LauncherConfig::seconds)},
        {"", "--screenshot",
         [](LauncherConfig& config, std::string const& text) {
             config.screenshot = text;
             return std::string();
         }},
    };
    return settings;
}

Setting const* Find(std::function<bool(Setting const&)> const& matches) {
    for (auto const& setting : Settings())
        if (matches(setting))
            return &setting;
    return nullptr;
}

}

std::vector<std::string> SplitNames(std::string const& text, char separator) {
    std::vector<std::string> names;
    std::stringstream stream(text);
    std::string name;
    while (std::getline(stream, name, separator)) {
        quorl::String::Trim(name, " \t");
        if (!name.empty())
            names.push_back(name);
    }
    return names;
}

std::string LauncherConfig::Set(std::string const& key, std::string const& text) {
    auto setting = Find([&](Setting const& s) { return !key.empty() && key == s.key; });
    return setting ? setting->set(*this, text) : "no such setting";
}

std::string LauncherConfig::SetOption(std::string const& option, std::string const& text) {
    auto setting = Find([&](Setting const& s) { return option == s.option; });
    return setting ? setting->set(*this, text) : "no such option";
}

bool LauncherConfig::TakesValue(std::string const& option) {
    return Find([&](Setting const& s) { return option == s.option; }) != nullptr;
}

std::vector<std::string> LauncherConfig::ReadFile(std::string const& path) {
    quorl::filesystem::ConfigFile file(path);
    // Lines that cannot be read at all would otherwise be skipped, and their settings lost without an error.
    std::vector<std::string> problems;
    auto const entries = file.Entries(problems);
    for (auto const& entry : entries) {
        std::string where = path + ":" + std::to_string(entry.line) + ": ";
        if (entry.section != "launcher") {
            // Reported once, at its header.
            if (entry.key.empty())
                problems.push_back(where + "unknown section [" + entry.section + "]; the launcher reads [launcher]");
            continue;
        }
        if (entry.key.empty())
            continue;
        if (!Find([&](Setting const& s) { return entry.key == s.key; })) {
            problems.push_back(where + "unknown key \"" + entry.key + "\"");
            continue;
        }
        if (auto refused = Set(entry.key, entry.value); !refused.empty())
            problems.push_back(where + entry.key + ": '" + entry.value + "' is not a valid value: " + refused);
    }
    return problems;
}
