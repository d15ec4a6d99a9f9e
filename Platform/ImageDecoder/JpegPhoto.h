#pragma once

#include "Platform/ImageDecoder/ReadOnlyFile.h"
#include "Platform/ImageDecoder/ThreadTeam.h"
#include "Platform/Result.h"
#include "Platform/Task.h"

#include <QImage>

namespace Platform {

/// Decodes a JPEG file, scaled down as far as that goes while decoding. Blocking; any thread.
///
/// @param file          at its start
/// @param maxPixelSize  the longer side of the result in pixels at most; 0: no bound
/// @param team          shares the work
/// @return the picture as decodeImage() gives it; null where libjpeg finds none in the file or the task was
///         cancelled; an error for too large a picture or too little memory
Result<QImage> decodeJpeg(ReadOnlyFile& file, int maxPixelSize, const Task& task, ThreadTeam& team);

} // namespace Platform
