#pragma once

#include "Platform/ImageDecoder/ReadOnlyFile.h"
#include "Platform/ImageDecoder/ThreadTeam.h"
#include "Platform/Result.h"
#include "Platform/Task.h"

#include <QImage>

namespace Platform {

/// Decodes a file in any other format that Qt has an image plugin for, told by its content; the first frame
/// of an animation. Transparent parts are shown over black. Blocking; any thread.
///
/// @param maxPixelSize  the longer side of the result in pixels at most; 0: no bound
/// @param team          shares the work
/// @return the picture as decodeImage() gives it; null where it cannot be read or the task was cancelled; an
///         error for too large a picture or too little memory
Result<QImage> decodeOther(ReadOnlyFile& file, int maxPixelSize, const Task& task, ThreadTeam& team);

} // namespace Platform
