// The open world's folder: lock, recovery, loading with quarantine, whole saves of the changed files, autosave.
//
// Index:
//   Progress          a line a second for loads and saves that take longer than one
//   Opening           folders, lock, an interrupted save finished, the write check
//   Loading           entities back, bad files into quarantine
//   Saving            changed files and waiting removals, as one batch
//   Closing           the last save, the entities dropped, removals landed or kept

#include "game/entity/SavedWorld.h"

#include "engine/filesystem/AtomicFileBatch.h"
#include "game/Game.h"
#include "game/entity/ServerSideEntity.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>
#include <vector>

namespace game::entity {

SavedWorld* SavedWorld::_open = nullptr;
std::mutex SavedWorld::_openMutex;

namespace {

using Clock = std::chrono::steady_clock;

uint64_t Hash(std::vector<unsigned char> const& bytes) {
    return std::hash<std::string_view>{}(std::string_view(reinterpret_cast<char const*>(bytes.data()), bytes.size()));
}

std::vector<unsigned char> ReadWhole(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string What(std::exception_ptr failure) {
    try {
        std::rethrow_exception(failure);
    } catch (std::exception const& error) {
        return error.what();
    } catch (...) {
        return "unknown exception";
    }
}

bool IsIdName(std::string const& stem) {
    try {
        Id id(stem);
        return true;
    } catch (...) {
        return false;
    }
}

// ---- Progress ------------------------------------------------------------------------------------------------------

/// Says how far a load or save has come, once a second, when it takes longer than a second; silent otherwise.
class Progress {
public:
    explicit Progress(std::string what) : _what(std::move(what)), _start(Clock::now()), _next(_start + kAfter) {}

    void Step(size_t done) {
        if ((done & 0xff) != 0 || Clock::now() < _next)
            return;
        Print(done, "");
        _next += kAfter;
    }

    void Finish(size_t done) {
        if (_shown)
            Print(done, ", done");
    }

private:
    static constexpr auto kAfter = std::chrono::seconds(1);

    void Print(size_t done, char const* end) {
        double seconds = std::chrono::duration<double>(Clock::now() - _start).count();
        std::cout << _what << ": " << done << " entities in " << static_cast<int>(seconds) << " s, "
                  << static_cast<long>(done / std::max(seconds, 1e-3)) << "/s" << end << std::endl;
        _shown = true;
    }

    std::string _what;
    Clock::time_point _start, _next;
    bool _shown = false;
};

}

// ---- Opening -------------------------------------------------------------------------------------------------------

SavedWorld::SavedWorld() : _name(Game::_current_world), _lastSave(Clock::now()) {
    std::string const folder = Folder();
    std::string const entities = folder + "/entities";
    std::error_code error;
    std::filesystem::create_directories(entities, error);
    if (error)
        throw std::runtime_error("cannot create the world folder \"" + entities + "\": " + error.message());
    try {
        _lock.emplace(folder + "/world.lock");
    } catch (std::exception const& locked) {
        throw std::runtime_error("world '" + _name + "' is open in another process: " + locked.what());
    }

    // A save that was landing when the last process died is finished; one that had not begun to land leaves only
    // temporaries, which are not part of any save.
    if (quorl::filesystem::AtomicFileBatch::Recover(Journal()))
        std::cout << "World '" << _name << "': finished the save that was interrupted" << std::endl;
    for (auto const& file : std::filesystem::directory_iterator(entities, error))
        if (file.path().extension() == quorl::filesystem::AtomicFileBatch::kTemporarySuffix)
            std::filesystem::remove(file.path(), error);

    // Found now rather than at the first save, hours of play later.
    std::string probe = entities + "/.write-check";
    int fd = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    bool written = fd >= 0 && ::write(fd, "ok", 2) == 2;
    int reason = errno;
    if (fd >= 0) {
        written = ::close(fd) == 0 && written;
        ::unlink(probe.c_str());
    }
    if (!written)
        throw std::runtime_error("cannot write in the world folder \"" + entities + "\": " + std::strerror(reason));

    std::lock_guard lock(_openMutex);
    if (_open)
        throw std::logic_error("world '" + _name + "' opened while world '" + _open->_name + "' is open");
    _open = this;
}

SavedWorld::~SavedWorld() {
    std::lock_guard lock(_openMutex);
    _open = nullptr;
}

std::string SavedWorld::Folder() {
    return "../Meridon-data/server/worlds/" + Game::_current_world;
}

std::string SavedWorld::Journal() const {
    return Folder() + "/save.journal";
}

bool SavedWorld::RemoveWithNextSave(std::string const& path) {
    std::lock_guard lock(_openMutex);
    if (!_open)
        return false;
    std::lock_guard removals(_open->_removalsMutex);
    _open->_removals.insert(path);
    return true;
}

// ---- Loading -------------------------------------------------------------------------------------------------------

size_t SavedWorld::Load() {
    Progress progress("Loading world '" + _name + "'");
    size_t loaded = 0;
    ServerSideEntity::LoadAllEntities([&](std::filesystem::path const& file, std::exception_ptr failure) {
        std::string const path = Folder() + "/entities/" + file.filename().string();
        if (!failure) {
            _fileHashes[path] = Hash(ReadWhole(path));
            // A file whose module is not loaded stays on disk for a later run, and is no entity of this one.
            if (ServerSideEntity::Get(Id(file.stem().string())))
                progress.Step(++loaded);
            return;
        }
        if (!IsIdName(file.stem().string())) {
            std::cerr << "World '" << _name << "': \"" << path << "\" is not named after an entity id; left as it is"
                      << std::endl;
            return;
        }
        std::string moved = Quarantine(path);
        std::cerr << "World '" << _name << "': cannot load \"" << path << "\": " << What(failure)
                  << (moved.empty() ? "; left where it is" : "; moved to \"" + moved + "\"") << std::endl;
    });
    progress.Finish(loaded);
    return loaded;
}

std::string SavedWorld::Quarantine(std::string const& path) const {
    std::string const folder = Folder() + "/quarantine";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::time_t now = std::time(nullptr);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d_%H-%M-%S", std::localtime(&now));
    std::string const name = std::filesystem::path(path).filename().string();
    std::string target = folder + "/" + stamp + "_" + name;
    for (int copy = 2; std::filesystem::exists(target, error); ++copy)
        target = folder + "/" + stamp + "-" + std::to_string(copy) + "_" + name;
    std::filesystem::rename(path, target, error);
    return error ? std::string() : target;
}

// ---- Saving --------------------------------------------------------------------------------------------------------

bool SavedWorld::Save(bool withRemovals) {
    std::lock_guard saving(_saveMutex);
    _lastSave = Clock::now();
    Progress progress("Saving world '" + _name + "'");

    struct Change {
        std::string path;
        std::vector<unsigned char> bytes;
        uint64_t hash;
    };
    // The bytes are taken under the registry's lock, the files written after it, so ticks wait for memory only.
    std::vector<Change> changes;
    std::vector<std::string> failures;
    size_t considered = 0;
    ServerSideEntity::ForEach([&](std::shared_ptr<ServerSideEntity> const& entity) {
        if (entity->save_tag == 0 || entity->is_component)
            return;
        try {
            auto bytes = entity->SaveState();
            uint64_t hash = Hash(bytes);
            std::string path = entity->GetStateSaveFile();
            auto known = _fileHashes.find(path);
            if (known == _fileHashes.end() || known->second != hash)
                changes.push_back({std::move(path), std::move(bytes), hash});
        } catch (...) {
            failures.push_back("entity " + entity->id.String() + ": " + What(std::current_exception()));
        }
        progress.Step(++considered);
    });

    std::set<std::string> removals;
    if (withRemovals && failures.empty()) {
        // A file is removed only with a save in which every entity was written.
        std::lock_guard lock(_removalsMutex);
        removals = _removals;
    }
    try {
        quorl::filesystem::AtomicFileBatch batch(Journal());
        std::set<std::string> written;
        for (auto const& change : changes) {
            batch.Add(change.path, change.bytes);
            written.insert(change.path);
        }
        for (auto const& path : removals)
            if (!written.contains(path))
                batch.Remove(path);
        if (batch.Size() > 0)
            batch.Commit();
    } catch (std::exception const& error) {
        failures.push_back(error.what());
        changes.clear();
        removals.clear();
    }

    for (auto const& change : changes)
        _fileHashes[change.path] = change.hash;
    if (!removals.empty()) {
        std::lock_guard lock(_removalsMutex);
        for (auto const& path : removals) {
            _removals.erase(path);
            _fileHashes.erase(path);
        }
    }
    progress.Finish(considered);

    _lastSaveFailed = !failures.empty();
    if (!_lastSaveFailed)
        _lastSaveEntities = considered;
    if (_lastSaveFailed) {
        std::cerr << "World '" << _name << "': the save failed:";
        for (auto const& failure : failures)
            std::cerr << "\n  " << failure;
        std::cerr << "\nEvery file keeps its last saved content; the save is tried again at the next autosave and at "
                     "exit."
                  << std::endl;
    }
    return !_lastSaveFailed;
}

void SavedWorld::AutosaveIfDue() {
    if (autosaveSeconds <= 0.0 || Clock::now() - _lastSave < std::chrono::duration<double>(autosaveSeconds))
        return;
    Save();
}

// ---- Closing -------------------------------------------------------------------------------------------------------

bool SavedWorld::Close(bool afterError) {
    bool saved = Save(!afterError);
    // The entities just saved keep their files when they go; the others take theirs along, by the destruction rule,
    // as a removal waiting below.
    ServerSideEntity::ForEach([](std::shared_ptr<ServerSideEntity> const& entity) {
        if (entity->save_tag != 0 && !entity->is_component)
            entity->delete_save_on_destroy = false;
    });
    ServerSideEntity::DropAllEntities();

    std::set<std::string> removals;
    {
        std::lock_guard lock(_removalsMutex);
        removals.swap(_removals);
    }
    if (removals.empty())
        return saved;
    if (!saved || afterError) {
        std::cerr << "World '" << _name << "': " << removals.size() << " file(s) of entities destroyed since the last "
                  << "save are kept, as the world closes " << (afterError ? "after an error" : "without a save")
                  << std::endl;
        return saved;
    }
    try {
        quorl::filesystem::AtomicFileBatch batch(Journal());
        for (auto const& path : removals)
            batch.Remove(path);
        batch.Commit();
    } catch (std::exception const& error) {
        std::cerr << "World '" << _name << "': cannot remove the files of destroyed entities: " << error.what()
                  << std::endl;
        return false;
    }
    return saved;
}

}
