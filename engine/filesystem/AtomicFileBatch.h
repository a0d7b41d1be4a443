#pragma once

#include "engine/Export.h"

#include <string>
#include <vector>

namespace quorl::filesystem {

/// Replaces a set of files so that a crash at any moment leaves each one either old or new, never torn, at the cost
/// of one file-system sync for the whole set instead of one per file. Add writes each new content to a temporary
/// beside its file; Commit makes all temporaries durable with one sync, renames each over its file, and syncs the
/// folders so that the renames last too. Temporaries never committed are removed by the destructor.
class QUORL_EXPORT AtomicFileBatch {
public:
    /// The suffix of temporaries; a crash before Commit may leave one, which the next save of the file replaces.
    static constexpr char const* kTemporarySuffix = ".saving";

    AtomicFileBatch() = default;
    ~AtomicFileBatch();
    AtomicFileBatch(AtomicFileBatch const&) = delete;
    AtomicFileBatch& operator=(AtomicFileBatch const&) = delete;

    /// Writes `bytes` to the temporary of `path`. The folder must exist. Throws std::runtime_error naming the path
    /// and the system's reason (a missing folder, a full disk).
    void Add(std::string const& path, std::vector<unsigned char> const& bytes);
    /// Makes every added file replace its original. Throws std::runtime_error naming the path that failed; files
    /// renamed before the failure stay replaced, the rest keep their old content.
    void Commit();

private:
    struct Pending {
        std::string path;
        std::string temporary;
    };
    std::vector<Pending> _pending;
};

}
