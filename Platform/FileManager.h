#pragma once

#include "Platform/FileURL.h"
#include "Platform/Result.h"

#include <vector>

namespace Platform::FileManager {

// Each call blocks. Main thread or any other; nothing is shared between calls.

/// The immediate entries of a folder, hidden ones included, "." and ".." left out, in the order in which the
/// file system lists them. Nothing but the names is read: no entry is opened or asked for its kind.
Result<std::vector<FileURL>> contentsOfDirectory(const FileURL& folder);

/// Makes the folder and those above it that are missing; a folder that is there already is a success.
Result<void> createDirectory(const FileURL& folder);

/// Removes a file, a link (never what it points to) or an empty folder, for good.
Result<void> removeItem(const FileURL& item);

/// Whether something answers to that name; a link counts, wherever it leads. An error where that cannot be told.
Result<bool> itemExists(const FileURL& item);

/// Moves an entry (a link moves as a link) to a place whose folder exists, replacing a file, a link or an
/// empty folder that is there. At every moment, also after a kill or a power cut, the entry stands whole at
/// source or at target, and what it replaces is not lost before the new one is in place. On failure source
/// and target are as before, but where the source's disk goes away while the source is removed: then target stays, too,
/// since it may be all that is left. To another device the content is copied, checked and kept with times and mode
/// before the source goes; a kill in the middle may leave a hidden file, ".vantrel-" and a number, beside the
/// target.
Result<void> moveItem(const FileURL& source, const FileURL& target);

} // namespace Platform::FileManager
