#pragma once

#include "engine/filesystem/LockFile.h"
#include "game/Export.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

namespace game::entity {

/// The world the server has open: the folder "../Meridon-data/server/worlds/<Game::_current_world>", held by this
/// process alone, loaded so that one bad file never stops the rest, and saved so that no failure deletes or tears a
/// file. Saves are whole: after a crash or a kill at any moment the folder holds the last completed save.
///
/// While a world is open, destroying an entity marked delete_save_on_destroy no longer removes its file at once: the
/// removal joins the next save that succeeds, and is dropped when the world closes after an error.
///
/// Files of the folder (docs/world-folder.md): "entities/<id>.entitystate", "world.lock" (the lock, holding the
/// process id), "save.journal" (present only while a save lands) and "quarantine/" (files that failed to load).
class MERIDON_EXPORT SavedWorld {
public:
    /// Creates the folders, takes the world's lock, finishes a save that a crash interrupted and checks that the
    /// folder can be written. Throws std::runtime_error saying what is wrong, before any play.
    SavedWorld();
    /// Forgets the removals still waiting and lets the lock go; entities left in the table are not saved.
    ~SavedWorld();
    SavedWorld(SavedWorld const&) = delete;
    SavedWorld& operator=(SavedWorld const&) = delete;

    /// Restores the saved entities. A file that fails is reported on standard error with its path and the reason
    /// and moved into "quarantine/" with the time in its name; a file whose name is no id is reported and left where
    /// it is. Returns the number of entities loaded, which leaves out the files kept for modules not loaded.
    size_t Load();
    /// Saves every entity with a non-zero save_tag that is no component, writing only the files whose bytes changed
    /// since they were loaded or last saved, and removes the files of entities destroyed since. It lands whole or
    /// not at all: on failure it reports what failed, leaves every file as it was and returns false, and the next
    /// save tries again. Safe on the server thread between ticks.
    bool Save() { return Save(true); }
    /// Saves when `autosaveSeconds` have passed since the last save; for the server thread, between ticks.
    void AutosaveIfDue();
    /// How many entities the last save that succeeded holds (changed or not); 0 before one has.
    size_t LastSaveEntities() const { return _lastSaveEntities; }
    /// Saves a last time and drops every entity. The removals of destroyed entities' files land only when that save
    /// succeeded and the world does not close after an error (`afterError`). Returns whether the save succeeded.
    bool Close(bool afterError);

    /// "../Meridon-data/server/worlds/<Game::_current_world>": the one place that says where worlds live.
    static std::string Folder();
    /// For the destruction of an entity: while a world is open, takes the removal of `path` into its next save and
    /// returns true; returns false when no world is open and the caller removes the file itself.
    static bool RemoveWithNextSave(std::string const& path);

    /// Seconds between autosaves; 0 turns them off.
    double autosaveSeconds = 300.0;

private:
    std::string Journal() const;
    /// Moves a file that failed to load into "quarantine/"; returns its new path, or empty if it could not move.
    std::string Quarantine(std::string const& path) const;
    /// Save, landing the waiting removals too when `withRemovals`.
    bool Save(bool withRemovals);

    std::string _name;
    std::optional<quorl::filesystem::LockFile> _lock;
    std::mutex _saveMutex;
    /// A hash of each file's bytes as last loaded or saved, by path: what a save compares with.
    std::unordered_map<std::string, uint64_t> _fileHashes;
    std::mutex _removalsMutex;
    std::set<std::string> _removals;
    std::chrono::steady_clock::time_point _lastSave;
    bool _lastSaveFailed = false;
    size_t _lastSaveEntities = 0;

    static SavedWorld* _open;
    static std::mutex _openMutex;
};

}
