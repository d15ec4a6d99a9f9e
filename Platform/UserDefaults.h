#pragma once

#include "Platform/FileURL.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace Platform {

/// The persisted settings of this user, in a file of JSON (RFC 8259) that is replaced as a whole. Nothing is kept in memory.
/// Main thread.
class UserDefaults {
public:
    /// The application's file, in the user's folder for such files. Needs the application's name.
    static FileURL standardFile();

    /// @param file  where the entries are kept; made, as is its folder, when the first is stored
    explicit UserDefaults(const FileURL& file) : m_file(file) {}

    /// The bytes stored under the key; nothing where there are none, or where the file cannot be read.
    std::optional<QByteArray> data(const QString& key) const;

    /// Stores the bytes under the key, replacing any earlier ones, and writes them to the disk before it returns. Where that fails,
    /// as on a full disk, the file stays as it was.
    void setData(const QString& key, const QByteArray& bytes);

private:
    const FileURL m_file;
};

} // namespace Platform
