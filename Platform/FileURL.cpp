#include "Platform/FileURL.h"

#include <algorithm>
#include <system_error>

namespace Platform {

namespace {

std::filesystem::path withoutTrailingSlash(const std::filesystem::path& path) {
    if (path.has_filename()) {
        return path;
    }
    return path.has_relative_path() ? path.parent_path() : path.root_path();
}

char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

FileURL::FileURL(const std::filesystem::path& path) {
    std::error_code workingDirectoryIsGone;
    const std::filesystem::path absolute = std::filesystem::absolute(path, workingDirectoryIsGone);
    if (!path.empty() && !workingDirectoryIsGone) {
        m_path = withoutTrailingSlash(absolute.lexically_normal()).native();
    }
}

std::string FileURL::lastPathComponent() const {
    const std::size_t slash = m_path.rfind('/');
    return slash + 1 == m_path.size() ? m_path : m_path.substr(slash + 1);
}

std::string FileURL::pathExtension() const {
    const std::string extension = std::filesystem::path(lastPathComponent()).extension().native();
    return extension.empty() ? extension : extension.substr(1);
}

std::string FileURL::baseName() const {
    return std::filesystem::path(lastPathComponent()).stem().native();
}

FileURL FileURL::appendingPathComponent(std::string_view name) const {
    const std::string_view separator = m_path.empty() || m_path.ends_with('/') ? "" : "/";
    FileURL entry;
    entry.m_path.reserve(m_path.size() + separator.size() + name.size());
    entry.m_path.append(m_path).append(separator).append(name);
    return entry;
}

FileURL FileURL::deletingLastPathComponent() const {
    FileURL parent;
    parent.m_path = path().parent_path().native();
    return parent;
}

bool isSameExtension(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, asciiLower, asciiLower);
}

QString displayText(std::string_view name) {
    QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    for (QChar& character : text) {
        if (character < u' ') {
            character = QChar(0x2400 + character.unicode());
        } else if (character == QChar(0x7f)) {
            character = QChar(0x2421);
        } else if (character >= QChar(0x80) && character < QChar(0xa0)) {
            character =
                QChar::ReplacementCharacter; // a control character without a picture; U+0085 ends a line
        } else if (character == QChar::LineSeparator || character == QChar::ParagraphSeparator) {
            character = QChar(0x240a);
        }
    }
    return text;
}

} // namespace Platform
