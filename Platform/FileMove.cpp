#include "Platform/FileMove.h"

#include "Platform/DirectoryListing.h"
#include "Platform/FileCopy.h"
#include "Platform/FileURL.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace Platform {

namespace {

Error notMoved(const DirectoryEntry& source, int code) {
    return Error::ofSystemCall(QStringLiteral("“%1” could not be moved"), source.name, code);
}

Error notReplaced(const DirectoryEntry& target, int code) {
    return Error::ofSystemCall(
        QStringLiteral("The “%1” that is there already could not be replaced"), target.name, code);
}

/// Gives 0, or errno. A disk may report as failed what it has done, as over a network where the answer got lost and the wish is
/// made again; so it is looked at.
int renameEntry(const DirectoryEntry& from, const DirectoryEntry& to) {
    const auto before = statusOf(from);
    if (renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str()) == 0) {
        return 0;
    }
    const int code = errno;
    const auto arrived = statusOf(to);
    const bool isDone =
        before && arrived && isSameFile(*before, *arrived) && !statusOf(from) && errno == ENOENT;
    return isDone ? 0 : code;
}

/// Whether an entry is known to be there. Where that is unknown, errno says why.
enum class Presence { There, Gone, Unknown };

Presence presenceOf(const DirectoryEntry& entry) {
    if (statusOf(entry)) {
        return Presence::There;
    }
    if (errno != ENOENT) {
        return Presence::Unknown;
    }
    // Where the folder is not there either, that it is missing tells nothing.
    return statusOf({entry.folder, "."}) ? Presence::Gone : Presence::Unknown;
}

/// Removes what stands whole in the other place, too. A disk may report as failed what it has done.
Result<void> removeSource(const DirectoryEntry& source) {
    const int code = removeEntry(source);
    return code == 0 || presenceOf(source) == Presence::Gone ? Result<void>() : notMoved(source, code);
}

/// Gives 0 for an empty folder, else errno.
int checkEmpty(const DirectoryEntry& folder) {
    DirectoryListing listing(folder.name.c_str(), folder.folder);
    return listing.next() ? ENOTEMPTY : listing.error();
}

/// Removes an entry at the end of its scope, unless it was put under another name by then.
class RemovedUnlessPut {
public:
    explicit RemovedUnlessPut(const DirectoryEntry& entry) : m_entry(entry) {}
    ~RemovedUnlessPut() { removeEntry(m_entry); }
    RemovedUnlessPut(const RemovedUnlessPut&) = delete;
    RemovedUnlessPut& operator=(const RemovedUnlessPut&) = delete;

private:
    const DirectoryEntry m_entry;
};

/// Puts an entry into a place, where it replaces what is there, in a way that can be taken back: what was
/// there is kept under a temporary name until the change is confirmed. What is not confirmed is taken back at
/// the end of the scope.
class Replacement {
public:
    explicit Replacement(const DirectoryEntry& place) : m_place(place), m_kept(temporaryBeside(place)) {}
    ~Replacement() {
        if (!m_isConfirmed) {
            takeBack();
        }
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// Moves the entry, which is on the same device, into the place.
    Result<void> put(const DirectoryEntry& entry) {
        if (auto kept = keep(); !kept) {
            return kept;
        }
        int code = renameEntry(entry, m_place);
        if (code == ENOTDIR && m_hasKept) { // a folder takes the place of a file only once that is away
            removeEntry(m_place);
            code = renameEntry(entry, m_place);
        }
        if (code != 0) {
            return notMoved(m_place, code);
        }
        m_isPut = true;
        return {};
    }

    /// Lets go what was replaced. Where even that fails, it stays under its temporary name: the move is done.
    void confirm() {
        m_isConfirmed = true;
        if (m_hasKept) {
            removeEntry(m_kept);
        }
    }

private:
    Result<void> keep() {
        const auto status = statusOf(m_place);
        if (!status) {
            return errno == ENOENT ? Result<void>() : notReplaced(m_place, errno);
        }
        m_isKeptFolder = S_ISDIR(status->st_mode);
        const int code = m_isKeptFolder ? keepEmptyFolder() : keepFile();
        // A disk may report as failed what it has done.
        m_hasKept = code == 0 || statusOf(m_kept);
        return code == 0 ? Result<void>() : notReplaced(m_place, code);
    }

    /// By a second name where the file system knows such, since then the place is never empty.
    int keepFile() const {
        if (linkat(m_place.folder, m_place.name.c_str(), m_kept.folder, m_kept.name.c_str(), 0) == 0) {
            return 0;
        }
        return renameEntry(m_place, m_kept);
    }

    int keepEmptyFolder() const {
        if (const int code = checkEmpty(m_place)) {
            return code;
        }
        return renameEntry(m_place, m_kept);
    }

    void takeBack() const {
        if (m_isPut && (!m_hasKept || m_isKeptFolder)) {
            removeEntry(m_place); // a kept file replaces it in one step, a folder cannot
        }
        if (m_hasKept && renameEntry(m_kept, m_place) == 0) {
            removeEntry(m_kept); // where both names stand for one file, renaming has done nothing
        }
    }

    const DirectoryEntry m_place;
    const DirectoryEntry m_kept;
    bool m_hasKept = false;
    bool m_isKeptFolder = false;
    bool m_isPut = false;
    bool m_isConfirmed = false;
};

/// Moves a folder over a file or a file over an empty folder, which renaming alone does not.
Result<void> moveOverOtherKind(const DirectoryEntry& source, const DirectoryEntry& target) {
    Replacement replacement(target);
    auto put = replacement.put(source);
    if (put) {
        replacement.confirm();
    }
    return put;
}

/// What would keep the source from being removed, as on a locked card: asked before the work of copying it.
/// Gives 0, or errno.
int checkRemovable(const DirectoryEntry& source) {
    return faccessat(source.folder, ".", W_OK | X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

/// Removes the source of a copy that stands safely in its place; a source that has changed meanwhile stays.
Result<void> removeCopied(const DirectoryEntry& source, const struct stat& status) {
    const auto now = statusOf(source);
    if (!now) {
        return notMoved(source, errno);
    }
    if (!isUnchanged(status, *now)) {
        return Error(QStringLiteral("“%1” could not be moved: another program is changing it.")
                         .arg(displayText(source.name)));
    }
    return removeSource(source);
}

/// Whether the folders of both are one, to which two mounts lead: then what was just made in the one is in the other, too.
Result<bool> isOneFolder(const DirectoryEntry& source, const DirectoryEntry& copy) {
    const Presence echo = presenceOf({source.folder, copy.name});
    if (echo == Presence::Unknown) {
        return notMoved(source, errno);
    }
    return echo == Presence::There;
}

Result<void> moveToOtherDevice(
    const DirectoryEntry& source, const struct stat& status, const DirectoryEntry& target) {
    if (const int code = checkRemovable(source)) {
        return notMoved(source, code);
    }
    const DirectoryEntry copy = temporaryBeside(target);
    const RemovedUnlessPut guard(copy);
    if (auto copied = copyEntry(source, status, copy); !copied) {
        return copied;
    }
    if (source.name == target.name) {
        const auto isOne = isOneFolder(source, copy);
        if (!isOne) {
            return isOne.error();
        }
        if (*isOne) {
            return {}; // what would be replaced, and then removed, is the source
        }
    }
    Replacement replacement(target);
    if (auto put = replacement.put(copy); !put) {
        return put;
    }
    if (const int code = syncFolder(target.folder)) {
        return notMoved(source, code);
    }
    auto removed = removeCopied(source, status);
    const Presence left = removed ? Presence::Gone : presenceOf(source);
    if (left == Presence::There) {
        return removed; // the copy is taken back
    }
    // From here on the copy may be all that is left of the photo: a disk that goes away, or a network, may report as failed
    // what it has done.
    replacement.confirm();
    if (left == Presence::Unknown) {
        return removed;
    }
    // The move is done. Should this fail, the worst is that a power cut brings the source back beside its
    // copy.
    (void)syncFolder(source.folder);
    return {};
}

/// Whether both are the very same name in the same folder, reached by two ways.
Result<bool> isSameEntry(const DirectoryEntry& source, const DirectoryEntry& target) {
    struct stat sourceFolder = {};
    struct stat targetFolder = {};
    if (fstat(source.folder, &sourceFolder) != 0 || fstat(target.folder, &targetFolder) != 0) {
        return notMoved(source, errno);
    }
    return source.name == target.name && isSameFile(sourceFolder, targetFolder);
}

/// Whether one file has both names. A file system that ignores case may find one name under two spellings: it
/// has a single link, and must not be taken for two.
bool areTwoLinks(const struct stat& a, const struct stat& b) {
    return isUnchanged(a, b) && a.st_nlink > 1 && !S_ISDIR(a.st_mode);
}

} // namespace

Result<void> moveEntry(const DirectoryEntry& source, const DirectoryEntry& target) {
    const auto status = statusOf(source);
    if (!status) {
        return notMoved(source, errno);
    }
    const auto isSame = isSameEntry(source, target);
    if (!isSame) {
        return isSame.error();
    }
    if (*isSame) {
        return {};
    }
    const auto there = statusOf(target);
    if (!there && errno != ENOENT) {
        return notReplaced(target, errno);
    }
    if (there && areTwoLinks(*status, *there)) {
        return removeSource(source); // renaming would do nothing and call it a success
    }
    switch (const int code = renameEntry(source, target)) {
    case 0:
        return {};
    case EXDEV:
        return moveToOtherDevice(source, *status, target);
    case EISDIR:
    case ENOTDIR:
        return moveOverOtherKind(source, target);
    case EEXIST:
    case ENOTEMPTY:
        return notReplaced(target, ENOTEMPTY);
    default:
        return notMoved(source, code);
    }
}

} // namespace Platform
