#pragma once

#include "Platform/ImageDecoder/ColorTransform.h"
#include "Platform/ImageDecoder/RowSource.h"
#include "Platform/ImageDecoder/ThreadTeam.h"
#include "Platform/Result.h"
#include "Platform/Task.h"

#include <QImage>
#include <QSize>
#include <QSizeF>

#include <string>

namespace Platform {

/// More pixels than any camera gives; a picture of more is refused before any is decoded.
inline constexpr qint64 maximumPixels = 512'000'000;

/// More than a JPEG can have. What a decode needs beside the picture grows with its sides.
inline constexpr int maximumSide = 65'535;

/// Whether a picture has more pixels than maximumPixels, or a side of more than maximumSide.
bool isTooLarge(QSize size);

/// The size at which a picture is shown: the longer side at most maxPixelSize pixels (0: as it is), the shorter in
/// proportion, rounded, at least 1. Never larger than size.
QSize fittedSize(QSize size, int maxPixelSize);

/// A stored picture, decoded but neither reduced nor in sRGB nor upright.
struct StoredPicture {
    RowSource& rows;
    QSize size;      ///< of the rows, in pixels
    QSizeF extent;   ///< the part of them that is the picture proper: RowResampler
    int orientation; ///< 1 to 8, as EXIF numbers them
};

/// Reduces the picture to the given size as stored, and turns its colours into sRGB and itself upright, in
/// bands of rows; ends early once the task is cancelled. Blocking; any thread.
///
/// @param name  of the file, in bytes
/// @param team  shares the work
/// @return the picture in QImage::Format_RGB32, black where rows are missing; null where none came at all or
///         the task was cancelled; an error where there is too little memory
Result<QImage> render(const StoredPicture& picture, QSize size, const ColorTransform& colors,
    const std::string& name, const Task& task, ThreadTeam& team);

/// The error where the system gives no memory for the picture.
Error tooLittleMemoryError(const std::string& name);

/// The error for a picture that isTooLarge().
Error tooLargeError(const std::string& name);

} // namespace Platform
