#pragma once

#include "engine/Export.h"

#include <string>
#include <vector>

namespace quorl::filesystem {

/// Replaces and removes a set of files so that a crash at any moment leaves each one either old or new, never torn,
/// at the cost of one file-system sync for the whole set instead of one per file. Add writes each new content to a
/// temporary beside its file; Commit makes all temporaries durable with one sync, renames each over its file, removes
/// the files given to Remove, and syncs the folders so that all of it lasts.
///
/// With a journal, the set changes as a whole: Commit first writes the list of its renames and removals to the
/// journal file and only then touches a file, so that after a crash Recover either finds no journal (nothing of the
/// batch happened: the temporaries are strays) or finishes the batch from it.
class QUORL_EXPORT AtomicFileBatch {
public:
    /// The suffix of temporaries; a crash before Commit may leave one, which the next save of the file replaces.
    static constexpr char const* kTemporarySuffix = ".saving";

    /// `journal`: where Commit lists its changes before making them; empty for a batch whose files change one by one.
    explicit AtomicFileBatch(std::string journal = {});
    ~AtomicFileBatch();
    AtomicFileBatch(AtomicFileBatch const&) = delete;
    AtomicFileBatch& operator=(AtomicFileBatch const&) = delete;

    /// Writes `bytes` to the temporary of `path`. The folder must exist. Throws std::runtime_error naming the path
    /// and the system's reason (a missing folder, a full disk).
    void Add(std::string const& path, std::vector<unsigned char> const& bytes);
    /// Removes `path` at Commit, after every added file is in place. A file that is already gone is no error.
    void Remove(std::string const& path);
    /// Makes every added file replace its original and removes the files to remove. Throws std::runtime_error naming
    /// the path that failed. Without a journal, files renamed before the failure stay replaced and the rest keep their
    /// old content; with one, a failure after the journal is written is finished by the next Recover.
    void Commit();
    /// Number of files added and removed so far.
    size_t Size() const { return _pending.size() + _removals.size(); }

    /// Finishes a batch that a crash or a failure interrupted after its journal was written, then deletes the journal.
    /// Returns whether there was one. Throws std::runtime_error naming the path that failed.
    static bool Recover(std::string const& journal);

private:
    struct Pending {
        std::string path;
        std::string temporary;
    };
    void WriteJournal() const;

    std::string _journal;
    std::vector<Pending> _pending;
    std::vector<std::string> _removals;
};

}
