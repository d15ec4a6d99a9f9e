#pragma once

#include "Platform/DirectoryEntry.h"
#include "Platform/Result.h"

namespace Platform {

/// Copies a regular file or a link (as a link) to a name that nothing has, for a move to another device. When
/// it succeeds the copy is on the disk, has been read back and found equal to the source, and has its times,
/// mode and user attributes, as far as the other file system knows such things, and its owner where that is
/// allowed. On failure something may be left at the name, which is for the caller to remove. The name in the folder is not
/// synced. Blocks; any thread.
///
/// @param status  the source as it stood when the move began; one that is neither a file nor a link is an
///                error. Whether it has changed since is for the caller to check, as late as possible
Result<void> copyEntry(const DirectoryEntry& source, const struct stat& status, const DirectoryEntry& copy);

} // namespace Platform
