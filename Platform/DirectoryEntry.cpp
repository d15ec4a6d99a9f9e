#include "Platform/DirectoryEntry.h"

#include "Platform/FileDescriptor.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <fcntl.h>

namespace Platform {

std::optional<struct stat> statusOf(const DirectoryEntry& entry) {
    struct stat status = {};
    if (fstatat(entry.folder, entry.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    return status;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isUnchanged(const struct stat& before, const struct stat& now) {
    return isSameFile(before, now) && before.st_size == now.st_size &&
           before.st_mtim.tv_sec == now.st_mtim.tv_sec && before.st_mtim.tv_nsec == now.st_mtim.tv_nsec;
}

DirectoryEntry temporaryBeside(const DirectoryEntry& entry) {
    const QByteArray random = QByteArray::number(QRandomGenerator::system()->generate64(), 16);
    return {entry.folder, ".vantrel-" + random.toStdString()};
}

int removeEntry(const DirectoryEntry& entry) {
    if (unlinkat(entry.folder, entry.name.c_str(), 0) == 0) {
        return 0;
    }
    if (errno == EISDIR && unlinkat(entry.folder, entry.name.c_str(), AT_REMOVEDIR) == 0) {
        return 0;
    }
    return errno;
}

int syncFolder(int folder) {
    // The folder itself may be open as a mere place, which cannot be synced.
    const FileDescriptor readable(
        retryInterrupted([&] { return openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!readable) {
        return errno;
    }
    if (retryInterrupted([&] { return fsync(readable.get()); }) == 0) {
        return 0;
    }
    return errno == EINVAL ? 0 : errno; // EINVAL: a file system that has nothing to sync for folders
}

} // namespace Platform
