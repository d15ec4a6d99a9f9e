#pragma once

#include "Platform/FileURL.h"
#include "Platform/Image.h"
#include "Platform/Result.h"
#include "Platform/Task.h"

namespace Platform {

/// Decodes the photo at url, upright (EXIF orientation applied) and in sRGB, from the full image and never
/// from an embedded preview.
///
/// @param maxPixelSize  the longer side of the result in pixels, exactly, where the photo's is longer; 0: no
///                      bound. A photo is never enlarged.
/// @param task          looked at while decoding; once it is cancelled the decode ends within a few
///                      milliseconds with an error that nobody needs to read.
/// @return the picture, its size in points its size in pixels, its halves made (Image::levels); a damaged file
///         gives what can be decoded of it; an error where nothing can.
///
/// Blocking. Any thread; it holds no state.
Result<Image> decodeImage(const FileURL& url, int maxPixelSize, const Task& task = {});

} // namespace Platform
