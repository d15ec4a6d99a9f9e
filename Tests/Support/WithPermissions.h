#pragma once

#include "Platform/FileURL.h"

#include <filesystem>

/// Gives a folder other permissions until the end of the scope.
class WithPermissions {
public:
    WithPermissions(const Platform::FileURL& folder, std::filesystem::perms permissions) : m_folder(folder) {
        std::filesystem::permissions(m_folder.path(), permissions);
    }
    ~WithPermissions() { std::filesystem::permissions(m_folder.path(), std::filesystem::perms::owner_all); }
    WithPermissions(const WithPermissions&) = delete;
    WithPermissions& operator=(const WithPermissions&) = delete;

private:
    Platform::FileURL m_folder;
};
