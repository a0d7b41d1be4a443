#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quorl::filesystem {

/// The lines of an INI text as written, each classified, so that readers can pick out keys and a writer can change
/// some values while every other byte of the text stays as it was. The format is described in docs/ini-format.md.
class IniDocument {
public:
    enum class LineKind {
        Blank,
        Comment,
        /// `[name]`; `key` holds the name.
        Header,
        /// `key = value`; both trimmed.
        KeyValue,
        /// Content without '=': `key` holds the first word, `value` the trimmed rest.
        Words,
        /// An unclosed or empty header, or a line starting with '='; `problem` says which.
        Malformed,
    };

    struct Line {
        /// The bytes of the line without its '\n' (a '\r' of a CRLF file stays here).
        std::string text;
        LineKind kind = LineKind::Blank;
        /// The section the line lies in; none before the first header and after a malformed header.
        std::optional<std::string> section;
        std::string key;
        std::string value;
        std::string problem;
    };

    explicit IniDocument(std::string const& text);

    std::vector<Line> const& Lines() const { return _lines; }
    /// The text with all changes applied; identical to the input when nothing was changed.
    std::string Text() const;

    /// Indices of the KeyValue lines for `key` in `section`, in file order.
    std::vector<size_t> FindKey(std::string const& section, std::string const& key) const;
    /// Rewrites the line at `index` as `key = value`.
    void Replace(size_t index, std::string const& key, std::string const& value);
    /// Adds `key = value` after the last non-blank line of `section`, or a new section at the end holding it.
    void Append(std::string const& section, std::string const& key, std::string const& value);

private:
    void Insert(size_t index, Line line);

    std::vector<Line> _lines;
    bool _byteOrderMark = false;
    bool _endsWithNewline = false;
    /// "\r" when the text uses CRLF line ends, so that added lines match the file's style.
    std::string _lineEndSuffix;
};

}
