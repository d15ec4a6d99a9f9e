#pragma once

#include "Platform/FileURL.h"
#include "Platform/Result.h"

#include <QByteArray>

namespace Platform {

/// A durable reference to a folder: its path and its identity on the disk (device, inode, time of birth).
namespace Bookmark {

struct Resolved {
    FileURL url;
    bool isStale = false; ///< the folder is not quite where or what the bookmark says: write a fresh one
};

/// Bookmark data of an existing folder.
Result<QByteArray> create(const FileURL& folder);

/// The folder that the data refers to: at its path; or, renamed in place, under its new name beside it
/// (stale); or a folder at the path that is not the same one (stale). An error where there is neither, and
/// for data that create() did not make. A disk that does not answer within two seconds counts as one that is not there. Blocks;
/// any thread.
Result<Resolved> resolve(const QByteArray& data);

} // namespace Bookmark

} // namespace Platform
