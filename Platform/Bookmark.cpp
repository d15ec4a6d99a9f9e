#include "Platform/Bookmark.h"

#include "Platform/AnswerWithin.h"
#include "Platform/DirectoryListing.h"

#include <QDataStream>
#include <QIODevice>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace Platform::Bookmark {

namespace {

// The data: signature and version, the identity, then the bytes of the path to the end.
constexpr std::uint32_t signature = 0x56424d31; // "VBM1"

/// What tells a folder from every other on this machine. A number (inode) alone is given again to a new
/// folder as soon as the old one is deleted, the time of birth is not.
struct Identity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool hasBirth = false; ///< not every file system knows it
    std::int64_t birthSeconds = 0;
    std::uint32_t birthNanoseconds = 0;

    bool operator==(const Identity&) const = default;
};

struct Content {
    Identity identity;
    FileURL url;
};

QDataStream& operator<<(QDataStream& stream, const Identity& identity) {
    return stream << quint64(identity.device) << quint64(identity.inode) << identity.hasBirth
                  << qint64(identity.birthSeconds) << quint32(identity.birthNanoseconds);
}

template <typename Stored, typename Value>
void readAs(QDataStream& stream, Value& value) {
    Stored stored{};
    stream >> stored;
    value = stored;
}

QDataStream& operator>>(QDataStream& stream, Identity& identity) {
    readAs<quint64>(stream, identity.device);
    readAs<quint64>(stream, identity.inode);
    readAs<bool>(stream, identity.hasBirth);
    readAs<qint64>(stream, identity.birthSeconds);
    readAs<quint32>(stream, identity.birthNanoseconds);
    return stream;
}

QByteArray encode(const Content& content) {
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    const std::string path = content.url.path().native();
    stream << signature << content.identity;
    stream.writeRawData(path.data(), static_cast<int>(path.size()));
    return data;
}

std::optional<Content> decode(const QByteArray& data) {
    QDataStream stream(data);
    stream.setVersion(QDataStream::Qt_6_4);
    quint32 found = 0;
    Content content;
    stream >> found >> content.identity;
    if (stream.status() != QDataStream::Ok || found != signature) {
        return std::nullopt;
    }
    const QByteArray path = data.sliced(stream.device()->pos());
    if (!path.startsWith('/') || path.contains('\0') || path.size() >= PATH_MAX) {
        return std::nullopt;
    }
    content.url = FileURL(path.toStdString());
    return content;
}

/// The identity of the folder at a path (relative to the open folder), links followed; nothing, with errno
/// set, where there is no folder.
std::optional<Identity> identityOf(const char* path, int folder = AT_FDCWD) {
    struct statx status = {};
    if (statx(folder, path, 0, STATX_TYPE | STATX_INO | STATX_BTIME, &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISDIR(status.stx_mode)) {
        errno = ENOTDIR;
        return std::nullopt;
    }
    Identity identity;
    identity.device = (std::uint64_t{status.stx_dev_major} << 32) | status.stx_dev_minor;
    identity.inode = status.stx_ino;
    identity.hasBirth = (status.stx_mask & STATX_BTIME) != 0;
    if (identity.hasBirth) {
        identity.birthSeconds = status.stx_btime.tv_sec;
        identity.birthNanoseconds = status.stx_btime.tv_nsec;
    }
    return identity;
}

/// The folder of that identity among the entries of another.
std::optional<FileURL> findIn(const FileURL& parent, const Identity& identity) {
    DirectoryListing listing(parent.path().c_str());
    while (const dirent* entry = listing.next()) {
        // The listing tells number and kind, so that only the one entry is asked for more.
        const bool mayBe =
            entry->d_ino == identity.inode && (entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN);
        if (!mayBe) {
            continue;
        }
        FileURL candidate = parent.appendingPathComponent(entry->d_name);
        if (identityOf(candidate.path().c_str()) == identity) {
            return candidate;
        }
    }
    return std::nullopt;
}

Error notFound(const FileURL& folder, int code) {
    return Error::ofSystemCall(
        QStringLiteral("The folder “%1” could not be found"), folder.lastPathComponent(), code);
}

Result<Resolved> find(const Content& content) {
    const FileURL& url = content.url;
    const auto identityAtPath = identityOf(url.path().c_str());
    const int code = identityAtPath ? 0 : errno;
    if (identityAtPath == content.identity) {
        return Resolved{url, false};
    }
    // Without a time of birth the numbers may have been given anew, as when a memory card is put in again.
    if (content.identity.hasBirth || !identityAtPath) {
        if (auto renamed = findIn(url.deletingLastPathComponent(), content.identity)) {
            return Resolved{*std::move(renamed), true};
        }
    }
    return identityAtPath ? Result<Resolved>(Resolved{url, true}) : notFound(url, code);
}

} // namespace

Result<QByteArray> create(const FileURL& folder) {
    const auto identity = identityOf(folder.path().c_str());
    if (!identity) {
        return notFound(folder, errno);
    }
    return encode({*identity, folder});
}

Result<Resolved> resolve(const QByteArray& data) {
    constexpr std::chrono::seconds patience{2};
    const auto content = decode(data);
    if (!content) {
        return Error(QStringLiteral("The reference to the folder cannot be read."));
    }
    const auto found = answerWithin(patience, [content = *content] { return find(content); });
    return found ? *found : notFound(content->url, ETIMEDOUT);
}

} // namespace Platform::Bookmark
