#include "engine/filesystem/IniDocument.h"

#include "engine/String.h"

#include <string_view>

namespace quorl::filesystem {

namespace {

// Editors on Windows put this in front of UTF-8 text; it is kept on write but must not hide the first header.
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr char const* LineWhitespace = " \t\r";

std::string Trimmed(std::string text) {
    String::Trim(text, LineWhitespace);
    return text;
}

/// Classifies one line; `section` is the section open before it and becomes the one open after it.
IniDocument::Line Classify(std::string text, std::optional<std::string>& section) {
    using Kind = IniDocument::LineKind;
    IniDocument::Line line;
    std::string content = Trimmed(text);
    line.text = std::move(text);

    if (content.empty()) {
        line.kind = Kind::Blank;
    } else if (content[0] == '#' || content[0] == ';') {
        line.kind = Kind::Comment;
    } else if (content[0] == '[') {
        std::string name = content.back() == ']' ? Trimmed(content.substr(1, content.size() - 2)) : "";
        if (content.back() != ']') {
            line.kind = Kind::Malformed;
            line.problem = "section header without a closing ']'";
            section.reset();
        } else if (name.empty()) {
            line.kind = Kind::Malformed;
            line.problem = "section header without a name";
            section.reset();
        } else {
            line.kind = Kind::Header;
            line.key = name;
            section = std::move(name);
        }
    } else if (auto equals = content.find('='); equals != std::string::npos) {
        line.key = Trimmed(content.substr(0, equals));
        line.value = Trimmed(content.substr(equals + 1));
        line.kind = line.key.empty() ? Kind::Malformed : Kind::KeyValue;
        if (line.key.empty()) {
            line.problem = "no key before '='";
        }
    } else {
        auto wordEnd = content.find_first_of(LineWhitespace);
        line.kind = Kind::Words;
        line.key = content.substr(0, wordEnd);
        line.value = wordEnd == std::string::npos ? "" : Trimmed(content.substr(wordEnd));
    }
    line.section = section;
    return line;
}

std::string KeyValueText(std::string const& key, std::string const& value) {
    return value.empty() ? key + " =" : key + " = " + value;
}

}

IniDocument::IniDocument(std::string const& text) {
    std::string_view rest = text;
    if (rest.starts_with(ByteOrderMark)) {
        _byteOrderMark = true;
        rest.remove_prefix(ByteOrderMark.size());
    }
    _endsWithNewline = rest.ends_with('\n');

    std::optional<std::string> section;
    while (!rest.empty()) {
        auto end = rest.find('\n');
        _lines.push_back(Classify(std::string(rest.substr(0, end)), section));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    if (!_lines.empty() && _lines.front().text.ends_with('\r')) {
        _lineEndSuffix = "\r";
    }
}

std::string IniDocument::Text() const {
    std::string text = _byteOrderMark ? std::string(ByteOrderMark) : "";
    for (size_t i = 0; i < _lines.size(); ++i) {
        if (i > 0) {
            text += '\n';
        }
        text += _lines[i].text;
    }
    if (_endsWithNewline) {
        text += '\n';
    }
    return text;
}

std::vector<size_t> IniDocument::FindKey(std::string const& section, std::string const& key) const {
    std::vector<size_t> found;
    for (size_t i = 0; i < _lines.size(); ++i) {
        auto const& line = _lines[i];
        if (line.kind == LineKind::KeyValue && line.section == section && line.key == key) {
            found.push_back(i);
        }
    }
    return found;
}

void IniDocument::Replace(size_t index, std::string const& key, std::string const& value) {
    auto& line = _lines.at(index);
    line.text = KeyValueText(key, value) + (line.text.ends_with('\r') ? "\r" : "");
    line.kind = LineKind::KeyValue;
    line.key = key;
    line.value = value;
}

void IniDocument::Append(std::string const& section, std::string const& key, std::string const& value) {
    Line entry{KeyValueText(key, value) + _lineEndSuffix, LineKind::KeyValue, section, key, value, ""};

    std::optional<size_t> lastOfSection;
    for (size_t i = 0; i < _lines.size(); ++i) {
        if (_lines[i].section == section && _lines[i].kind != LineKind::Blank) {
            lastOfSection = i;
        }
    }
    if (lastOfSection) {
        Insert(*lastOfSection + 1, std::move(entry));
        return;
    }
    if (!_lines.empty() && _lines.back().kind != LineKind::Blank) {
        Insert(_lines.size(), Line{_lineEndSuffix, LineKind::Blank, std::nullopt, "", "", ""});
    }
    Insert(_lines.size(), Line{"[" + section + "]" + _lineEndSuffix, LineKind::Header, section, section, "", ""});
    Insert(_lines.size(), std::move(entry));
}

void IniDocument::Insert(size_t index, Line line) {
    if (index == _lines.size()) {
        // The line that was last gains a line end before the new one; the new last line gets one too.
        _endsWithNewline = true;
    }
    _lines.insert(_lines.begin() + static_cast<std::ptrdiff_t>(index), std::move(line));
}

}
