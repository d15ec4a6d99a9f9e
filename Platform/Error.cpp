#include "Platform/Error.h"

#include "Platform/FileURL.h"

#include <cerrno>
#include <cstring>

namespace Platform {

namespace {

/// The reason in the user's words where the system's own are a programmer's.
QString reason(int code) {
    switch (code) {
    case EACCES:
    case EPERM:
        return QStringLiteral("you do not have permission");
    case ENOENT:
        return QStringLiteral("it does not exist any more");
    case EEXIST:
        return QStringLiteral("something of that name is in the way");
    case ENOTDIR:
        return QStringLiteral("a file is in the way where a folder is needed");
    case EISDIR:
        return QStringLiteral("it is a folder");
    case ENOTEMPTY:
        return QStringLiteral("the folder is not empty");
    case ENOSPC:
        return QStringLiteral("the disk is full");
    case EDQUOT:
        return QStringLiteral("your disk quota is used up");
    case EROFS:
        return QStringLiteral("the disk is read-only");
    case EIO:
        return QStringLiteral("the disk reported an error");
    case ENODEV:
    case ENXIO:
    case ENOTCONN: // a file system whose process is gone
    case ECONNABORTED:
    case ESTALE:
        return QStringLiteral("the disk is not there any more");
    case ETIMEDOUT:
        return QStringLiteral("the disk does not answer");
    case ENAMETOOLONG:
        return QStringLiteral("the name is too long");
    case ELOOP:
        return QStringLiteral("its links lead round in a circle");
    case EFBIG:
        return QStringLiteral("the file is too large");
    default:
        break;
    }
    // strerrordesc_np, unlike strerror, is neither translated nor shared between threads.
    const char* text = strerrordesc_np(code);
    return text ? QString::fromUtf8(text).toLower() : QStringLiteral("system error %1").arg(code);
}

} // namespace

Error Error::ofSystemCall(const QString& what, std::string_view name, int code) {
    Error error(QStringLiteral("%1: %2.").arg(what.arg(displayText(name)), reason(code)));
    error.m_code = code;
    return error;
}

} // namespace Platform
