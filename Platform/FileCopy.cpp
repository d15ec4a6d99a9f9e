#include "Platform/FileCopy.h"

#include "Platform/FileDescriptor.h"
#include "Platform/FileURL.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace Platform {

namespace {

constexpr std::size_t blockSize = 1 << 17; // bytes held of a file at a time

Error failure(const DirectoryEntry& source, int code) {
    return Error::ofSystemCall(
        QStringLiteral("“%1” could not be copied to the other disk"), source.name, code);
}

/// Fills the buffer from the file, less only at its end. Gives the bytes read, or -1 with errno.
ssize_t readBlock(int file, std::vector<char>& buffer) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count =
            retryInterrupted([&] { return read(file, buffer.data() + filled, buffer.size() - filled); });
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = retryInterrupted([&] { return write(file, bytes.data(), bytes.size()); });
        if (count < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool copyContent(int source, int copy) {
    std::vector<char> buffer(blockSize);
    ssize_t count = 0;
    while ((count = readBlock(source, buffer)) > 0) {
        if (!writeAll(copy, {buffer.data(), static_cast<std::size_t>(count)})) {
            return false;
        }
    }
    return count == 0;
}

/// Whether both files, read from their beginnings, hold the same bytes; errno is EIO where they do not.
bool isSameContent(int source, int copy) {
    if (lseek(source, 0, SEEK_SET) < 0 || lseek(copy, 0, SEEK_SET) < 0) {
        return false;
    }
    std::vector<char> sourceBlock(blockSize);
    std::vector<char> copyBlock(blockSize);
    for (;;) {
        const ssize_t count = readBlock(source, sourceBlock);
        const ssize_t copyCount = readBlock(copy, copyBlock);
        if (count < 0 || copyCount < 0) {
            return false;
        }
        if (count != copyCount ||
            !std::equal(sourceBlock.begin(), sourceBlock.begin() + count, copyBlock.begin())) {
            errno = EIO;
            return false;
        }
        if (count == 0) {
            return true;
        }
    }
}

bool syncFile(int file) {
    return retryInterrupted([&] { return fsync(file); }) == 0;
}

/// Whether the disk holds the same bytes for both files.
bool isSameOnDisk(int source, int copy) {
    if (!syncFile(copy)) {
        return false;
    }
    // Else the comparison would read the memory that was just written, and not the disk. Only a hint.
    posix_fadvise(copy, 0, 0, POSIX_FADV_DONTNEED);
    return isSameContent(source, copy);
}

/// Whether a file system refused something that it, or the user's rights on it, have no room for: a memory
/// card knows neither owners nor attributes, which must not keep a photo from being moved there.
bool isBeyondFileSystem(int code) {
    return code == EPERM || code == EACCES || code == ENOTSUP || code == EINVAL || code == ENOSYS;
}

/// The same for attributes, which may be too long for it, or too many.
bool isBeyondAttributes(int code) {
    return isBeyondFileSystem(code) || code == E2BIG || code == ENOSPC || code == ERANGE;
}

bool copyUserAttribute(int source, int copy, const char* name) {
    std::vector<char> value(XATTR_SIZE_MAX);
    const ssize_t size = fgetxattr(source, name, value.data(), value.size());
    return size >= 0 && fsetxattr(copy, name, value.data(), static_cast<std::size_t>(size), 0) == 0;
}

bool copyUserAttributes(int source, int copy) {
    std::vector<char> names(XATTR_LIST_MAX);
    const ssize_t size = flistxattr(source, names.data(), names.size());
    if (size < 0) {
        return isBeyondAttributes(errno);
    }
    const char* const end = names.data() + size;
    for (const char* name = names.data(); name < end; name += std::string_view(name).size() + 1) {
        if (std::string_view(name).starts_with("user.") && !copyUserAttribute(source, copy, name) &&
            !isBeyondAttributes(errno)) {
            return false;
        }
    }
    return true;
}

std::array<timespec, 2> timesOf(const struct stat& status) {
    return {status.st_atim, status.st_mtim};
}

bool copyMetadata(int source, const struct stat& status, int copy) {
    if (fchown(copy, status.st_uid, status.st_gid) != 0 && !isBeyondFileSystem(errno)) {
        return false;
    }
    if (!copyUserAttributes(source, copy)) {
        return false;
    }
    if (fchmod(copy, status.st_mode & 0777) != 0 && !isBeyondFileSystem(errno)) {
        return false;
    }
    return futimens(copy, timesOf(status).data()) == 0 || isBeyondFileSystem(errno);
}

/// The times come last, since reading the copy back changes them.
bool copyOpenFile(int source, const struct stat& status, int copy) {
    return copyContent(source, copy) && isSameOnDisk(source, copy) && copyMetadata(source, status, copy) &&
           syncFile(copy);
}

Result<void> copyFile(const DirectoryEntry& source, const struct stat& status, const DirectoryEntry& copy) {
    // Not blocking, in case that it has become a pipe meanwhile.
    const FileDescriptor sourceFile(retryInterrupted([&] {
        return openat(source.folder, source.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }));
    if (!sourceFile) {
        return failure(source, errno);
    }
    struct stat opened = {};
    if (fstat(sourceFile.get(), &opened) != 0) {
        return failure(source, errno);
    }
    if (!isUnchanged(status, opened)) { // what has its name by now is not what is to be moved
        return Error(
            QStringLiteral("“%1” could not be copied to the other disk: another program is changing it.")
                .arg(displayText(source.name)));
    }
    const FileDescriptor copyFile(retryInterrupted([&] {
        return openat(
            copy.folder, copy.name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    }));
    if (!copyFile) {
        return failure(source, errno);
    }
    if (!copyOpenFile(sourceFile.get(), status, copyFile.get())) {
        return failure(source, errno);
    }
    return {};
}

Result<void> copyLink(const DirectoryEntry& source, const struct stat& status, const DirectoryEntry& copy) {
    std::string content(PATH_MAX, '\0');
    const ssize_t size = readlinkat(source.folder, source.name.c_str(), content.data(), content.size());
    if (size < 0) {
        return failure(source, errno);
    }
    content.resize(static_cast<std::size_t>(size));
    if (symlinkat(content.c_str(), copy.folder, copy.name.c_str()) != 0) {
        return failure(source, errno);
    }
    // A link works alike whoever owns it and whenever it was made: these two are kept where it is possible.
    [[maybe_unused]] const int owned =
        fchownat(copy.folder, copy.name.c_str(), status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW);
    (void)utimensat(copy.folder, copy.name.c_str(), timesOf(status).data(), AT_SYMLINK_NOFOLLOW);
    return {};
}

} // namespace

Result<void> copyEntry(const DirectoryEntry& source, const struct stat& status, const DirectoryEntry& copy) {
    if (S_ISREG(status.st_mode)) {
        return copyFile(source, status, copy);
    }
    if (S_ISLNK(status.st_mode)) {
        return copyLink(source, status, copy);
    }
    return Error(QStringLiteral("“%1” could not be moved to the other disk: it is neither a file nor a link.")
                     .arg(displayText(source.name)));
}

} // namespace Platform
