#include "Platform/ImageDecoder/ReadOnlyFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Platform {

namespace {

Error openError(const std::string& name, int code) {
    return Error::ofSystemCall(QStringLiteral("“%1” could not be opened"), name, code);
}

} // namespace

Result<ReadOnlyFile> ReadOnlyFile::open(const FileURL& url) {
    std::string name = url.lastPathComponent();
    // Without O_NONBLOCK a pipe would be waited on until somebody writes to it.
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    FileDescriptor descriptor(retryInterrupted([&] { return ::open(url.path().c_str(), flags); }));
    struct stat status {};
    if (!descriptor || fstat(descriptor.get(), &status) != 0) {
        return openError(name, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return openError(name, EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        return Error(QStringLiteral("“%1” is not a file.").arg(displayText(name)));
    }
    return ReadOnlyFile(std::move(descriptor), status.st_size, std::move(name));
}

std::size_t ReadOnlyFile::read(void* buffer, std::size_t size) {
    size = std::min(size, static_cast<std::size_t>(std::max(maximumBytes - m_position, qint64{0})));
    std::size_t filled = 0;
    // Where the end is known, the disk is not asked once more, which takes a slow one as long as to read.
    bool isAtEnd = false;
    while (filled < size && !isAtEnd) {
        char* const place = static_cast<char*>(buffer) + filled;
        const ssize_t count =
            retryInterrupted([&] { return ::read(m_descriptor.get(), place, size - filled); });
        if (count < 0 && m_errorCode == 0) {
            m_errorCode = errno;
        }
        if (count <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
        m_position += count;
        isAtEnd = m_position == m_size;
    }
    m_isExhausted = m_isExhausted || filled == 0;
    return filled;
}

bool ReadOnlyFile::seek(qint64 position) {
    if (lseek(m_descriptor.get(), position, SEEK_SET) != position) {
        return false;
    }
    m_position = position;
    return true;
}

bool ReadOnlyFile::startOver() {
    m_isExhausted = false;
    return seek(0);
}

} // namespace Platform
