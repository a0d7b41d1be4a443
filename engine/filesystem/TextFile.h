#pragma once

#include <optional>
#include <string>

namespace quorl::filesystem {

/// Whole content of the file at `path`, or nothing when no file is there. Any other failure throws
/// std::runtime_error naming the path and the system's reason.
std::optional<std::string> ReadTextFile(std::string const& path);

/// Replaces the file at `path` with `content` so that a crash leaves either the old or the new file, never a mix:
/// the content goes to a temporary file in the same folder, is synced, and is renamed over the original, whose
/// permission bits it keeps. A symbolic link at `path` stays a link; its target is replaced. Failures throw
/// std::runtime_error naming the path and the system's reason, and leave no temporary file behind.
void WriteTextFileAtomically(std::string const& path, std::string const& content);

}
