#pragma once

#include "Platform/FileURL.h"

#include <QTemporaryDir>

#include <filesystem>
#include <string>
#include <vector>

/// A temporary folder of that many photos: hard links to copies of those given, so that they cost no room on the disk.
class PhotoFolder {
public:
    PhotoFolder(const std::vector<std::filesystem::path>& photos, int count) {
        constexpr int linksPerFile = 30000; // some file systems allow no more than 65,000
        std::vector<std::filesystem::path> originals(photos.size());
        for (int index = 0; index < count; ++index) {
            const std::size_t photo = static_cast<std::size_t>(index) % photos.size();
            const std::filesystem::path name = path(index);
            const bool needsCopy = index / static_cast<int>(photos.size()) % linksPerFile == 0;
            if (needsCopy) {
                std::filesystem::copy_file(photos[photo], name);
                originals[photo] = name;
            } else {
                std::filesystem::create_hard_link(originals[photo], name);
            }
        }
    }

    Platform::FileURL url() const { return Platform::FileURL(m_dir.path().toStdString()); }

    std::filesystem::path path(int index) const {
        return std::filesystem::path(m_dir.path().toStdString()) / ("IMG_" + std::to_string(index) + ".jpg");
    }

private:
    QTemporaryDir m_dir;
};
