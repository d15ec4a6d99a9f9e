#pragma once

#include "Platform/FileURL.h"

#include <QStringList>

#include <string>
#include <vector>

/// Every file in a folder and the folders below, as "approved/VTR_0001.JPG SHA-256", sorted. A file that
/// vanishes while it is read has no checksum.
QStringList checksumsIn(const Platform::FileURL& folder);

/// What such a list becomes when those files of the folder are moved into that one below.
QStringList moved(
    const QStringList& checksums, const std::vector<std::string>& names, const std::string& subfolder);

/// What such a list would be with everything moved back out of that folder.
QStringList withoutFolder(const QStringList& checksums, const std::string& subfolder);
