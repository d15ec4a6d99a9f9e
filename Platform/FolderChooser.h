#pragma once

#include "Platform/FileURL.h"

#include <functional>
#include <optional>

namespace Platform {

/// Asks the user for one existing folder, modally, and returns when the question is closed.
/// @param message  what the folder is for
/// @param start    where to begin looking; empty, gone, or on a disk that does not answer: the user's pictures
/// @return the folder, or nothing when the user cancelled. Main thread.
using FolderChooser = std::function<std::optional<FileURL>(const QString& message, const FileURL& start)>;

/// The desktop's own folder chooser where there is one. Needs a QApplication.
std::optional<FileURL> runFolderChooser(const QString& message, const FileURL& start);

} // namespace Platform
