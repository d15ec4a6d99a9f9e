#pragma once

#include <QObject>
#include <QString>

#include <compare>
#include <filesystem>
#include <string>
#include <string_view>

namespace Platform {

/// The absolute location of a file or folder, or nothing. Names are bytes, in whatever encoding the disk
/// holds them; text is made of them for showing only (displayText). Two locations are equal when their paths
/// are.
class FileURL {
    Q_GADGET

public:
    /// No location.
    FileURL() = default;

    /// Made absolute against the working directory, without "." and ".." (by the text of the path, links are
    /// not followed) and without a trailing slash. No location where the working directory is gone.
    explicit FileURL(const std::filesystem::path& path);

    bool isEmpty() const { return m_path.empty(); }
    std::filesystem::path path() const { return m_path; }

    /// The name of the file or folder itself; "/" for the root and "" for no location.
    std::string lastPathComponent() const;

    /// What follows the last dot of the name, case kept; "" without a dot and for names whose only dot leads.
    std::string pathExtension() const;

    /// The name without its last extension and that extension's dot.
    std::string baseName() const;

    /// The entry of that name in this folder. The name is one component, taken as it stands.
    FileURL appendingPathComponent(std::string_view name) const;

    /// The folder that holds this entry.
    FileURL deletingLastPathComponent() const;

    bool operator==(const FileURL&) const = default;

private:
    // Not a path, which holds each of its components, too: that takes several times the memory for each photo of a folder.
    std::string m_path;
};

/// Whether two extensions are the same but for the case of ASCII letters.
bool isSameExtension(std::string_view a, std::string_view b);

/// A name for showing: bytes that are not UTF-8 become U+FFFD, control characters (a line feed, say) their
/// visible pictures (U+2400 and up) or, without one, U+FFFD too, so that the text stays on one line.
QString displayText(std::string_view name);

} // namespace Platform
