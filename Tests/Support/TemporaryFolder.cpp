#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

using Platform::FileURL;

TemporaryFolder::TemporaryFolder() : m_url(std::filesystem::path(m_dir.path().toStdString())) {
    if (!m_dir.isValid()) {
        throw std::runtime_error("no temporary folder could be made");
    }
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored; // before QTemporaryDir, which cannot remove names that are not UTF-8
    std::filesystem::remove_all(m_url.path(), ignored);
}

FileURL TemporaryFolder::write(std::string_view name, const QByteArray& content) const {
    FileURL file = at(name);
    std::ofstream stream(file.path(), std::ios::binary | std::ios::trunc);
    stream.write(content.constData(), content.size());
    stream.close();
    if (!stream) {
        throw std::runtime_error("could not write " + file.path().native());
    }
    return file;
}

FileURL TemporaryFolder::makeFolder(std::string_view name) const {
    FileURL folder = at(name);
    std::filesystem::create_directories(folder.path());
    return folder;
}

QByteArray contentOf(const FileURL& file) {
    std::ifstream stream(file.path(), std::ios::binary);
    if (!stream) {
        throw std::runtime_error("could not read " + file.path().native());
    }
    return QByteArray::fromStdString(std::string(std::istreambuf_iterator<char>(stream), {}));
}

bool exists(const FileURL& item) {
    return std::filesystem::exists(std::filesystem::symlink_status(item.path()));
}

std::vector<std::string> namesIn(const FileURL& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        names.push_back(entry.path().filename().native());
    }
    std::ranges::sort(names);
    return names;
}
