// Writes docs/modules.md, the page module authors read: the hand-written text of modules.md.in with each hook table
// filled in from the rows of modules/*.h, where every hook states when it runs, on which thread and in which list.
// The page thus says what the code does; the suite compares the committed page with what this writes now.
//
//   MakeModulesDoc <template> <page>            writes the page
//   MakeModulesDoc --check <template> <page>    exits 1, saying so, when the page differs from what it would write
//
// In the template, a line "{{hooks NAME}}" becomes the table NAME (GAME_Init, GAME_Mod, SERVER_Mod, MERIDON_Mod, or
// Module for the hooks every class has), and "{{MERIDON_MOD_VERSION}}" becomes that number. Every table must appear.

#include "modules/GAME_Init.h"
#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Hook {
    std::string_view signature, when, thread, list;
};

struct Table {
    std::string_view name;
    std::vector<Hook> hooks;
    /// Called for every module of the class, so that the order of the calls is worth a column.
    bool fanOut;
};

#define MERIDON_HOOK_ROW(symbol, result, arguments, when, thread, list) \
    Hook{#result " " #symbol #arguments, when, thread, list},

std::vector<Table> const& Tables() {
    static std::vector<Table> const tables{
        {"Module", {MERIDON_MODULE_HOOKS(MERIDON_HOOK_ROW)}, false},
        {"GAME_Init", {MERIDON_GAME_INIT_HOOKS(MERIDON_HOOK_ROW)}, true},
        {"GAME_Mod", {MERIDON_GAME_MOD_HOOKS(MERIDON_HOOK_ROW)}, true},
        {"SERVER_Mod", {MERIDON_SERVER_MOD_HOOKS(MERIDON_HOOK_ROW)}, true},
        {"MERIDON_Mod", {MERIDON_MERIDON_MOD_HOOKS(MERIDON_HOOK_ROW)}, true},
    };
    return tables;
}

/// A table cell: a '|' would end it early.
std::string Cell(std::string_view text) {
    std::string cell;
    for (char c : text)
        cell += c == '|' ? std::string("\\|") : std::string(1, c);
    return cell;
}

void WriteTable(std::ostream& out, Table const& table) {
    out << (table.fanOut ? "| Hook | When | Thread | Order |\n|---|---|---|---|\n"
                         : "| Hook | When | Thread |\n|---|---|---|\n");
    for (auto const& hook : table.hooks) {
        bool const called = hook.thread != "-";
        out << "| `" << Cell(hook.signature) << "` | " << Cell(hook.when) << ". | "
            << (called ? Cell(hook.thread) : "—");
        if (table.fanOut) {
            out << " | ";
            if (!called)
                out << "—";
            else if (hook.list.empty())
                out << "every module, in no set order";
            else
                out << "sorted list \"" << Cell(hook.list) << "\"";
        }
        out << " |\n";
    }
}

std::string ReadFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read \"" + path + "\"");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string ReplaceAll(std::string text, std::string_view from, std::string_view to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string Page(std::string const& templatePath) {
    std::istringstream lines(ReadFile(templatePath));
    std::ostringstream page;
    page << "<!-- Written by meridon_make_modules_doc from the hook tables of modules/*.h and "
            "modules/tools/modules.md.in: edit those, then run `cmake --build build --target meridon_modules_doc`. "
            "-->\n\n";
    std::set<std::string_view> placed;
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        constexpr std::string_view kHooks = "{{hooks ";
        if (!line.starts_with(kHooks)) {
            page << ReplaceAll(line, "{{MERIDON_MOD_VERSION}}", std::to_string(MERIDON_MOD_VERSION)) << "\n";
            continue;
        }
        std::string_view name = std::string_view(line).substr(kHooks.size());
        if (!name.ends_with("}}"))
            throw std::runtime_error(templatePath + ":" + std::to_string(number) + ": a table line ends with \"}}\"");
        name.remove_suffix(2);
        Table const* table = nullptr;
        for (auto const& candidate : Tables())
            if (candidate.name == name)
                table = &candidate;
        if (!table || !placed.insert(table->name).second)
            throw std::runtime_error(templatePath + ":" + std::to_string(number) + ": no table \"" + std::string(name) +
                                     "\", or it is placed twice");
        WriteTable(page, *table);
    }
    for (auto const& table : Tables())
        if (!placed.contains(table.name))
            throw std::runtime_error(templatePath + ": the table \"" + std::string(table.name) + "\" is not placed");
    return page.str();
}

/// The first line at which two texts differ, counting from 1.
int FirstDifference(std::string const& a, std::string const& b) {
    int line = 1;
    for (size_t i = 0; i < a.size() && i < b.size() && a[i] == b[i]; ++i)
        line += a[i] == '\n';
    return line;
}

}

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    bool const check = !arguments.empty() && arguments.front() == "--check";
    if (check)
        arguments.erase(arguments.begin());
    if (arguments.size() != 2) {
        std::cerr << "usage: MakeModulesDoc [--check] <modules.md.in> <modules.md>\n";
        return 2;
    }
    try {
        std::string const page = Page(arguments[0]);
        if (check) {
            std::string committed;
            try {
                committed = ReadFile(arguments[1]);
            } catch (std::exception const&) {
            }
            if (committed == page)
                return 0;
            std::cerr << arguments[1] << " is not what the hook tables and " << arguments[0] << " make now (from line "
                      << FirstDifference(committed, page)
                      << "): write it again with `cmake --build build --target meridon_modules_doc`\n";
            return 1;
        }
        std::ofstream out(arguments[1], std::ios::binary);
        out << page;
        out.close();
        if (!out)
            throw std::runtime_error("cannot write \"" + arguments[1] + "\"");
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "MakeModulesDoc: " << error.what() << "\n";
        return 1;
    }
}
