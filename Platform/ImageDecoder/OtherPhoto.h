#pragma once

#include "Platform/ImageDecoder/ReadOnlyFile.h"
#include "Platform/ImageDecoder/ThreadTeam.h"
#include "Platform/Result.h"
#include "Platform/Task.h"

#include <QImage>

#include <memory>

namespace Platform {

/// Decodes a file in one of the other formats that people have under the name of a JPEG file, as far as Qt has plugins for them:
/// PNG, WebP, GIF (its first frame), TIFF, BMP and HEIF, told by their content. Transparent parts are shown over black. A picture
/// of more than 1 GiB as it is decoded, or in a file of more than that, is refused before it is. The plugin works on a thread of
/// its own, which is abandoned where it takes too long. Blocking; any thread.
///
/// @param file          shared with that thread: only its name may be asked for where the task was cancelled, or after an error
/// @param maxPixelSize  the longer side of the result in pixels at most; 0: no bound
/// @param team          shares the work
/// @return the picture as decodeImage() gives it; null where it cannot be read or the task was cancelled; an error for too large
///         a picture, too little memory or too much time
Result<QImage> decodeOther(
    const std::shared_ptr<ReadOnlyFile>& file, int maxPixelSize, const Task& task, ThreadTeam& team);

} // namespace Platform
