#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/FileURL.h"
#include "Platform/Result.h"

#include <QtGlobal>

#include <cstddef>
#include <string>
#include <utility>

namespace Platform {

/// A regular file open for reading by read(2). It is never mapped into memory: a card that is pulled out is a
/// failed read and not a signal. One thread at a time.
class ReadOnlyFile {
public:
    /// Opens the file, following links. Never waits: a pipe, device, socket or folder is an error at once.
    static Result<ReadOnlyFile> open(const FileURL& url);

    /// More than any photo has. What is behind it is not read, as if the file ended there.
    static constexpr qint64 maximumBytes = qint64{1} << 30;

    /// Reads on from the current position.
    /// @return the number of bytes read, less than size only at the end of the file (that of now, or that of when it was
    ///         opened), at the maximum, or where reading fails
    std::size_t read(void* buffer, std::size_t size);

    /// Goes to a position in bytes from the start of the file.
    bool seek(qint64 position);

    /// Goes to the start, as if nothing had been read yet.
    bool startOver();

    /// Length in bytes when the file was opened.
    qint64 size() const { return m_size; }

    /// The name in bytes, without its folder.
    const std::string& name() const { return m_name; }

    /// errno of the first read that failed, or 0 where none did.
    int errorCode() const { return m_errorCode; }

    /// Whether more was asked for when nothing was left, or could not be read.
    bool isExhausted() const { return m_isExhausted; }

private:
    ReadOnlyFile(FileDescriptor descriptor, qint64 size, std::string name)
        : m_descriptor(std::move(descriptor)), m_size(size), m_name(std::move(name)) {}

    FileDescriptor m_descriptor;
    qint64 m_size;
    qint64 m_position = 0;
    std::string m_name;
    int m_errorCode = 0;
    bool m_isExhausted = false;
};

} // namespace Platform
