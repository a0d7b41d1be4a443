#pragma once

#include "engine/Export.h"
#include "engine/filesystem/FilePath.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace quorl::filesystem {

class FileWatcher;

/// A settings text file in the INI form of docs/ini-format.md. Derived classes bind their fields to keys with Conf
/// and implement ReadConfig/WriteConfig with ReadFromINI/WriteToINI.
///
/// Threads: ReadFromINI, WriteToINI and the auto-reload thread's call of ReadConfig all hold Mutex(), so a reload
/// never overlaps a read or write of the same object. Code that reads bound fields on another thread while
/// auto-reload runs takes Mutex() too.
class QUORL_EXPORT ConfigFile : public FilePath {
public:
    enum CONFTYPE {
        CONF_STRING = 1,
        CONF_BOOL = 3,
        CONF_INT = 5,
        CONF_FLOAT = 7,
        CONF_INPUT_BINDING = 8,
    };

    /// One action's input: any of a keyboard key, mouse button, gamepad or joystick input. -1 means unset.
    struct QUORL_EXPORT InputBinding {
        int32_t key = -1;
        int32_t mouse_button = -1;
        std::string gamepad_id{};
        int32_t gamepad_index = 0;
        int32_t gamepad_button = -1;
        int16_t gamepad_axis = -1;
        int16_t gamepad_axis_sign = 1;
        std::string joystick_id{};
        int32_t joystick_index = 0;
        int32_t joystick_button = -1;
        int16_t joystick_axis = -1;
        int16_t joystick_axis_sign = 1;

        bool operator==(InputBinding const&) const = default;

        /// Space-separated `name=value` pairs for the parts that differ from an unset binding, codes by their
        /// quorl::input name where they have one, e.g. "key=KEY_W gamepad_axis=GAMEPAD_AXIS_LEFT_Y
        /// gamepad_axis_sign=-1"; "" when all are unset. Throws std::invalid_argument when an id contains
        /// whitespace, which the text form cannot hold.
        std::string ToText() const;
        /// Inverse of ToText, also taking codes by number; parts not named stay unset. Throws
        /// std::invalid_argument naming an unknown part, or a value that is neither a name of the part's kind nor a
        /// number in the part's range.
        static InputBinding FromText(std::string const& text);
    };

    /// Binds `key` to the field at `target`, whose type `type` names: std::string, bool, int, float or
    /// InputBinding. The field must outlive the Conf; `file` is the file the Conf is used with.
    struct QUORL_EXPORT Conf {
        Conf(ConfigFile* file, std::string const& key, void* target, CONFTYPE type);

        ConfigFile* file;
        std::string key;
        void* target;
        CONFTYPE type;
    };

    /// One content line of a section as ReadFromINI's section form hands it over.
    struct ConfLineStream {
        std::stringstream key;
        std::stringstream rest;
    };

    /// A section header (empty `key`) or a `key = value` line of the file, with its 1-based line number.
    struct Entry {
        std::string section;
        std::string key;
        std::string value;
        size_t line = 0;
    };

    /// Called once per section: `header` holds the text between the brackets, `lines` the section's content lines.
    using SectionCallback = std::function<void(std::stringstream& header, std::vector<ConfLineStream>& lines)>;

    /// Reads nothing yet. autoReloadMs: how often the auto-reload thread checks the file, in milliseconds
    /// (1000 when not given); must be positive.
    explicit ConfigFile(std::string const& path, std::optional<int> autoReloadMs = std::nullopt);
    /// Stops the auto-reload thread. A derived class must call StopAutoReloadThread() first thing in its own
    /// destructor: by the time this one runs, the derived ReadConfig the thread calls is gone.
    ~ConfigFile() override;
    ConfigFile(ConfigFile const&) = delete;
    ConfigFile& operator=(ConfigFile const&) = delete;

    /// Loads the fields from the file. Does nothing here.
    virtual void ReadConfig();
    /// Saves the fields to the file. Throws std::runtime_error("WriteConfig() not implemented") here.
    virtual void WriteConfig();

    /// Sets each Conf's field from its key in `section`; keys absent from the file leave their fields as they were,
    /// and a missing file leaves all. `written` says whether the program also writes these keys (false for
    /// switches a user adds by hand); reading treats both alike. Malformed lines, bad values and an unreadable
    /// file are reported on stderr with the path (and line) and skipped, each once until the file changes.
    void ReadFromINI(std::string const& section, std::vector<Conf> confs, bool written);
    /// Hands every section of the file, in file order, to `sectionCallback`. For `key = value` lines, the key
    /// stream holds the text before the first '=' and the rest stream the text after it; for other lines the key
    /// stream holds the first word and the rest stream the remainder, all trimmed. Reports like the form above.
    void ReadFromINI(SectionCallback const& sectionCallback);
    /// Every section header and `key = value` line of the file, in file order, for readers that refuse what they do
    /// not know. What cannot be read, a malformed line or the file itself, goes to `problems` as "path:line: what"
    /// (the path alone for the file) rather than to stderr; a missing file has no entries and no problems.
    std::vector<Entry> Entries(std::vector<std::string>& problems);
    /// "path:line" of the last line of `key` in `section`, or the path alone when the file has no such line.
    std::string KeyLocation(std::string const& section, std::string const& key);
    /// Stores the Confs' fields under their keys in `section`, keeping every other byte of the file: existing keys
    /// are rewritten in place, new keys go after the section's last non-blank line, a new section goes at the end.
    /// A line whose value did not parse at the last read stays as the user wrote it while its field still holds
    /// what that read left there.
    /// The file is replaced atomically. Throws std::runtime_error naming the path and the system's reason, or when
    /// ReadFailed(), and std::invalid_argument for a value that the text form cannot hold (a line break in a string).
    void WriteToINI(std::string const& section, std::vector<Conf> confs);
    /// Whether the last read found something at the path that it could not read (a folder, a broken disk). Writes
    /// are refused until a read succeeds: the fields hold defaults, not what the file holds.
    bool ReadFailed() const;

    /// Starts a thread that calls ReadConfig whenever the file's last-write time changes from what it is now, or a
    /// missing file appears; call ReadConfig yourself for the first load. Changes made by this object's own
    /// WriteToINI do not count. A ReadConfig that throws is reported on stderr. Does nothing when already running.
    void StartAutoReloadThread();
    /// Stops and joins the thread without waiting out the poll interval. Call it neither from ReadConfig nor
    /// while holding Mutex(). Does nothing when not running.
    void StopAutoReloadThread();

    /// Held around every read, write and reload of this file's fields; recursive, so ReadConfig may call
    /// ReadFromINI while the reload thread holds it.
    std::recursive_mutex& Mutex() const { return _mutex; }

private:
    void CheckOwnership(std::vector<Conf> const& confs) const;
    /// The file's content, or nothing when it is missing or unreadable; why it is unreadable goes to `problems`
    /// when given, else to Report.
    std::optional<std::string> LoadText(std::vector<std::string>* problems = nullptr);
    /// Writes each message to stderr unless it was already reported for this content of the file.
    void Report(std::vector<std::string> const& messages);
    std::string Where(size_t lineIndex) const;

    int _autoReloadMs;
    mutable std::recursive_mutex _mutex;
    std::set<std::string> _reported;
    /// "section\nkey" of the values that did not parse at the last read, with the text of what the field kept.
    std::map<std::string, std::string> _unparsed;
    size_t _reportedContentHash = 0;
    bool _readFailed = false;
    std::unique_ptr<FileWatcher> _watcher;
};

}
