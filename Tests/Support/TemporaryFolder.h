#pragma once

#include "Platform/FileURL.h"

#include <QByteArray>
#include <QTemporaryDir>

#include <string>
#include <string_view>
#include <vector>

/// A fresh folder that is removed, with all that is in it, at the end of its scope.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    Platform::FileURL url() const { return m_url; }
    Platform::FileURL at(std::string_view name) const { return m_url.appendingPathComponent(name); }

    /// Writes a file of that name (parts of a path allowed; its folders must exist) and gives its location.
    Platform::FileURL write(std::string_view name, const QByteArray& content) const;

    /// Makes a folder of that name in it.
    Platform::FileURL makeFolder(std::string_view name) const;

private:
    QTemporaryDir m_dir;
    Platform::FileURL m_url;
};

/// The whole content of a file; fails the running test where it cannot be read.
QByteArray contentOf(const Platform::FileURL& file);

/// Whether there is an entry of any kind, a dangling link included.
bool exists(const Platform::FileURL& item);

/// Names of the entries of a folder, sorted by bytes.
std::vector<std::string> namesIn(const Platform::FileURL& folder);
