#include "Platform/FileManager.h"

#include "Platform/DirectoryListing.h"
#include "Platform/FileDescriptor.h"
#include "Platform/FileMove.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace Platform::FileManager {

namespace {

/// A folder as a place to name entries in. Needs no right to list it.
Result<FileDescriptor> openFolder(const FileURL& folder) {
    FileDescriptor descriptor(
        retryInterrupted([&] { return open(folder.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
    if (!descriptor) {
        return Error::ofSystemCall(
            QStringLiteral("The folder “%1” could not be opened"), folder.lastPathComponent(), errno);
    }
    return descriptor;
}

/// Whether its folder is there, and it is not: where the disk itself has gone, nothing on it is gone for that.
bool isGone(const FileURL& item) {
    const auto exists = FileManager::itemExists(item);
    const auto isFolderThere = FileManager::itemExists(item.deletingLastPathComponent());
    return exists && !*exists && isFolderThere && *isFolderThere;
}

} // namespace

Result<std::vector<FileURL>> contentsOfDirectory(const FileURL& folder) {
    std::vector<FileURL> entries;
    DirectoryListing listing(folder.path().c_str());
    while (const dirent* entry = listing.next()) {
        entries.push_back(folder.appendingPathComponent(entry->d_name));
    }
    if (listing.error() != 0) {
        return Error::ofSystemCall(
            QStringLiteral("The folder “%1” could not be read"), folder.lastPathComponent(), listing.error());
    }
    return entries;
}

Result<void> createDirectory(const FileURL& folder) {
    std::error_code code;
    std::filesystem::create_directories(folder.path(), code);
    if (code) {
        return Error::ofSystemCall(
            QStringLiteral("The folder “%1” could not be made"), folder.lastPathComponent(), code.value());
    }
    return {};
}

Result<void> removeItem(const FileURL& item) {
    if (remove(item.path().c_str()) == 0) {
        return {};
    }
    const int code = errno;
    if (code != ENOENT && isGone(item)) { // a disk may report as failed what it has done
        return {};
    }
    return Error::ofSystemCall(QStringLiteral("“%1” could not be removed"), item.lastPathComponent(), code);
}

Result<bool> itemExists(const FileURL& item) {
    struct stat status = {};
    if (lstat(item.path().c_str(), &status) == 0) {
        return true;
    }
    if (errno == ENOENT) {
        return false;
    }
    return Error::ofSystemCall(
        QStringLiteral("“%1” could not be looked at"), item.lastPathComponent(), errno);
}

Result<void> moveItem(const FileURL& source, const FileURL& target) {
    const auto sourceFolder = openFolder(source.deletingLastPathComponent());
    if (!sourceFolder) {
        return sourceFolder.error();
    }
    const auto targetFolder = openFolder(target.deletingLastPathComponent());
    if (!targetFolder) {
        return targetFolder.error();
    }
    return moveEntry(
        {sourceFolder->get(), source.lastPathComponent()}, {targetFolder->get(), target.lastPathComponent()});
}

} // namespace Platform::FileManager
