#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace Platform {

/// A name in an open folder, whether or not anything stands there. The folder stays the same one whatever
/// happens to its path meanwhile. Any thread.
struct DirectoryEntry {
    int folder;       ///< descriptor of the folder, kept open by its owner
    std::string name; ///< one component, in bytes
};

/// What stands there, links not followed; nothing, with errno set, where it cannot be told.
std::optional<struct stat> statusOf(const DirectoryEntry& entry);

/// Whether one file is behind both.
bool isSameFile(const struct stat& a, const struct stat& b);

/// Whether both are the same file with, as far as size and time of writing tell, the same content.
bool isUnchanged(const struct stat& before, const struct stat& now);

/// A hidden name in the same folder that nothing has: short, since the name of the entry may be as long as
/// names can be, and without an extension, so that what a crash leaves behind never passes for a photo.
DirectoryEntry temporaryBeside(const DirectoryEntry& entry);

/// Removes a file, a link or an empty folder. Gives 0, or errno.
int removeEntry(const DirectoryEntry& entry);

/// Brings the names of a folder to the disk. Gives 0, or errno.
int syncFolder(int folder);

} // namespace Platform
