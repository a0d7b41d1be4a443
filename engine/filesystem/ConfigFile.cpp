// Settings text files: fields bound to keys, read and written in the INI form of docs/ini-format.md.
//
// Index:
//   Helpers           quoting, line problems, section names
//   Binding           Conf, construction, the default ReadConfig and WriteConfig
//   Reading           by section into fields, by section for content lines, every entry with its line
//   Writing           fields into their lines, every other byte kept
//   Reloading         the watcher thread
//   Reports           the file's text, messages once per content

#include "engine/filesystem/ConfigFile.h"

#include "engine/String.h"
#include "engine/filesystem/ConfText.h"
#include "engine/filesystem/FileWatcher.h"
#include "engine/filesystem/IniDocument.h"
#include "engine/filesystem/TextFile.h"

#include <iostream>
#include <stdexcept>

namespace quorl::filesystem {

namespace {

// ---- Helpers -------------------------------------------------------------------------------------------------------

constexpr int DefaultAutoReloadMs = 1000;

std::string Quoted(std::string const& text) {
    return "\"" + text + "\"";
}

/// A line as a message shows it: quoted, without the '\r' of a CRLF file.
std::string Shown(std::string text) {
    String::Trim(text, "\r");
    return Quoted(text);
}

bool IsTrimmed(std::string const& text) {
    std::string trimmed = text;
    String::Trim(trimmed);
    return trimmed == text;
}

/// Why a line cannot be read, if it cannot. `wordsAreContent`: whether lines without '=' are content lines.
std::optional<std::string> LineProblem(IniDocument::Line const& line, bool wordsAreContent) {
    using Kind = IniDocument::LineKind;
    switch (line.kind) {
    case Kind::Malformed:
        return line.problem;
    case Kind::Words:
        if (!wordsAreContent) {
            return "no '=' after the key";
        }
        [[fallthrough]];
    case Kind::KeyValue:
        if (!line.section) {
            return "not inside a valid [section]";
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

void CheckSectionName(std::string const& path, std::string const& section) {
    if (section.empty() || !IsTrimmed(section) || section.find_first_of("[]\r\n") != std::string::npos) {
        throw std::invalid_argument(Quoted(section) + " cannot be a section name in " + Quoted(path));
    }
}

}

// ---- Binding -------------------------------------------------------------------------------------------------------

ConfigFile::Conf::Conf(ConfigFile* file, std::string const& key, void* target, CONFTYPE type)
    : file(file), key(key), target(target), type(type) {
    if (key.empty() || !IsTrimmed(key) || key.find_first_of("=\r\n") != std::string::npos ||
        key.find_first_of("[#;") == 0) {
        throw std::invalid_argument(Quoted(key) + " cannot be an INI key");
    }
    if (target == nullptr) {
        throw std::invalid_argument("Conf for key " + Quoted(key) + " has no target field");
    }
    if (type != CONF_STRING && type != CONF_BOOL && type != CONF_INT && type != CONF_FLOAT &&
        type != CONF_INPUT_BINDING) {
        throw std::invalid_argument("Conf for key " + Quoted(key) + " has unknown type " + std::to_string(type));
    }
}

ConfigFile::ConfigFile(std::string const& path, std::optional<int> autoReloadMs)
    : FilePath(path), _autoReloadMs(autoReloadMs.value_or(DefaultAutoReloadMs)) {
    if (_autoReloadMs <= 0) {
        throw std::invalid_argument("auto-reload interval of " + Quoted(path) + " must be positive, got " +
                                    std::to_string(_autoReloadMs) + " ms");
    }
}

ConfigFile::~ConfigFile() {
    StopAutoReloadThread();
}

void ConfigFile::ReadConfig() {}

void ConfigFile::WriteConfig() {
    throw std::runtime_error("WriteConfig() not implemented");
}

// ---- Reading -------------------------------------------------------------------------------------------------------

void ConfigFile::ReadFromINI(std::string const& section, std::vector<Conf> confs, bool /*written*/) {
    std::lock_guard lock(_mutex);
    CheckOwnership(confs);
    auto text = LoadText();
    if (!_readFailed) {
        // A value mended or removed since the last read is no longer the user's line to keep.
        for (auto const& conf : confs) {
            _unparsed.erase(section + "\n" + conf.key);
        }
    }
    if (!text) {
        return;
    }
    IniDocument document(*text);
    auto const& lines = document.Lines();
    std::vector<std::string> problems;
    for (size_t i = 0; i < lines.size(); ++i) {
        auto const& line = lines[i];
        if (auto problem = LineProblem(line, false)) {
            problems.push_back(Where(i) + ": " + *problem + ", line skipped: " + Shown(line.text));
            continue;
        }
        if (line.kind != IniDocument::LineKind::KeyValue || line.section != section) {
            continue;
        }
        for (auto const& conf : confs) {
            if (conf.key != line.key) {
                continue;
            }
            std::string const unparsedKey = section + "\n" + conf.key;
            try {
                ParseConfValue(conf, line.value);
                _unparsed.erase(unparsedKey);
            } catch (std::invalid_argument const& error) {
                problems.push_back(Where(i) + ": value of " + Quoted(line.key) + " ignored: " + error.what());
                _unparsed[unparsedKey] = FormatConfValue(conf);
            }
        }
    }
    Report(problems);
}

void ConfigFile::ReadFromINI(SectionCallback const& sectionCallback) {
    std::lock_guard lock(_mutex);
    auto text = LoadText();
    if (!text) {
        return;
    }
    IniDocument document(*text);
    auto const& lines = document.Lines();

    struct Section {
        std::string header;
        std::vector<IniDocument::Line const*> lines;
    };
    std::vector<Section> sections;
    std::vector<std::string> problems;
    for (size_t i = 0; i < lines.size(); ++i) {
        auto const& line = lines[i];
        if (auto problem = LineProblem(line, true)) {
            problems.push_back(Where(i) + ": " + *problem + ", line skipped: " + Shown(line.text));
        } else if (line.kind == IniDocument::LineKind::Header) {
            sections.push_back({line.key, {}});
        } else if (line.kind == IniDocument::LineKind::KeyValue || line.kind == IniDocument::LineKind::Words) {
            sections.back().lines.push_back(&line);
        }
    }
    Report(problems);

    for (auto const& section : sections) {
        std::stringstream header(section.header);
        std::vector<ConfLineStream> streams;
        for (auto const* line : section.lines) {
            streams.push_back({std::stringstream(line->key), std::stringstream(line->value)});
        }
        sectionCallback(header, streams);
    }
}

std::vector<ConfigFile::Entry> ConfigFile::Entries(std::vector<std::string>& problems) {
    std::lock_guard lock(_mutex);
    auto text = LoadText(&problems);
    if (!text) {
        return {};
    }
    IniDocument document(*text);
    auto const& lines = document.Lines();
    std::vector<Entry> entries;
    for (size_t i = 0; i < lines.size(); ++i) {
        auto const& line = lines[i];
        if (auto problem = LineProblem(line, false)) {
            // The caller refuses the file, so nothing is skipped: the line is only named.
            problems.push_back(Where(i) + ": " + *problem + ": " + Shown(line.text));
        } else if (line.kind == IniDocument::LineKind::Header) {
            entries.push_back({line.key, "", "", i + 1});
        } else if (line.kind == IniDocument::LineKind::KeyValue) {
            entries.push_back({*line.section, line.key, line.value, i + 1});
        }
    }
    return entries;
}

std::string ConfigFile::KeyLocation(std::string const& section, std::string const& key) {
    std::string location = Path();
    std::lock_guard lock(_mutex);
    std::optional<std::string> text;
    try {
        text = ReadTextFile(Path());
    } catch (std::runtime_error const&) {
        return location;
    }
    IniDocument document(text.value_or(""));
    auto found = document.FindKey(section, key);
    return found.empty() ? location : Where(found.back());
}

// ---- Writing -------------------------------------------------------------------------------------------------------

void ConfigFile::WriteToINI(std::string const& section, std::vector<Conf> confs) {
    std::lock_guard lock(_mutex);
    CheckOwnership(confs);
    CheckSectionName(Path(), section);
    if (_readFailed) {
        // The fields hold defaults where the file may hold the user's values, which a write would replace.
        throw std::runtime_error(Quoted(Path()) + " is not written: it could not be read");
    }
    auto original = ReadTextFile(Path());
    IniDocument document(original.value_or(""));
    for (auto const& conf : confs) {
        std::string value = FormatConfValue(conf);
        // What the user typed and we could not read is theirs to mend: it stays until the program changes the value.
        auto unparsed = _unparsed.find(section + "\n" + conf.key);
        if (unparsed != _unparsed.end()) {
            if (unparsed->second == value) {
                continue;
            }
            _unparsed.erase(unparsed);
        }
        auto found = document.FindKey(section, conf.key);
        if (found.empty()) {
            document.Append(section, conf.key, value);
        }
        for (auto index : found) {
            if (!ConfValueMatches(conf, document.Lines()[index].value)) {
                document.Replace(index, conf.key, value);
            }
        }
    }
    std::string text = document.Text();
    if (original == text) {
        // Rewriting the same bytes would only bump the write time and wake every watcher of the file.
        return;
    }
    WriteTextFileAtomically(Path(), text);
    if (_watcher) {
        _watcher->Rebase();
    }
}

bool ConfigFile::ReadFailed() const {
    std::lock_guard lock(_mutex);
    return _readFailed;
}

// ---- Reloading -----------------------------------------------------------------------------------------------------

void ConfigFile::StartAutoReloadThread() {
    std::lock_guard lock(_mutex);
    if (_watcher) {
        return;
    }
    _watcher = std::make_unique<FileWatcher>(Path(), std::chrono::milliseconds(_autoReloadMs), [this] {
        std::lock_guard reloadLock(_mutex);
        try {
            ReadConfig();
        } catch (std::exception const& error) {
            std::cerr << "reloading " << Quoted(Path()) << " failed: " << error.what() << std::endl;
        } catch (...) {
            std::cerr << "reloading " << Quoted(Path()) << " failed with an unknown exception" << std::endl;
        }
    });
}

void ConfigFile::StopAutoReloadThread() {
    std::unique_ptr<FileWatcher> watcher;
    {
        std::lock_guard lock(_mutex);
        watcher = std::move(_watcher);
    }
    // Joined here, unlocked: the thread may be waiting for the mutex to call ReadConfig.
    watcher.reset();
}

// ---- Reports -------------------------------------------------------------------------------------------------------

void ConfigFile::CheckOwnership(std::vector<Conf> const& confs) const {
    for (auto const& conf : confs) {
        if (conf.file != this) {
            throw std::invalid_argument("Conf for key " + Quoted(conf.key) + " was made for another file than " +
                                        Quoted(Path()));
        }
    }
}

std::optional<std::string> ConfigFile::LoadText(std::vector<std::string>* problems) {
    _readFailed = false;
    try {
        auto text = ReadTextFile(Path());
        if (text) {
            auto hash = std::hash<std::string>{}(*text);
            if (hash != _reportedContentHash) {
                _reported.clear();
                _reportedContentHash = hash;
            }
        }
        return text;
    } catch (std::runtime_error const& error) {
        _readFailed = true;
        if (problems) {
            problems->push_back(error.what());
        } else {
            Report({error.what()});
        }
        return std::nullopt;
    }
}

void ConfigFile::Report(std::vector<std::string> const& messages) {
    std::string text;
    for (auto const& message : messages) {
        if (_reported.insert(message).second) {
            text += message + "\n";
        }
    }
    if (!text.empty()) {
        std::cerr << text << std::flush;
    }
}

std::string ConfigFile::Where(size_t lineIndex) const {
    return Path() + ":" + std::to_string(lineIndex + 1);
}

}
