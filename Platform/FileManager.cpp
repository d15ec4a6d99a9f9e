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
    struct stat status = {};
    const bool isGone = lstat(item.path().c_str(), &status) != 0 && errno == ENOENT;
    if (isGone && code != ENOENT) { // a disk may report as failed what it has done
        return {};
    }
    return Error::ofSystemCall(QStringLiteral("“%1” could not be removed"), item.lastPathComponent(), code);
}

bool isSameItem(const FileURL& first, const FileURL& second) {
    struct stat firstStatus = {};
    struct stat secondStatus = {};
    return lstat(first.path().c_str(), &firstStatus) == 0 &&
           lstat(second.path().c_str(), &secondStatus) == 0 && isSameFile(firstStatus, secondStatus);
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
