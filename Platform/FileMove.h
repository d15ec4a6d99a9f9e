#pragma once

#include "Platform/DirectoryEntry.h"
#include "Platform/Result.h"

namespace Platform {

/// Moves an entry to another name, or to a name in another folder, on this device or another; what
/// FileManager's moveItem promises, for folders that are open already. Blocks; any thread.
Result<void> moveEntry(const DirectoryEntry& source, const DirectoryEntry& target);

} // namespace Platform
