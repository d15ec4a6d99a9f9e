#pragma once

#include "Platform/FileURL.h"
#include "Platform/Image.h"
#include "Platform/Task.h"

#include <optional>

/// Longer side, in pixels, of the picture that shows a photo at once.
inline constexpr int smallPixelSize = 200;

/// Longer side, in pixels, of the picture that a photo is judged by.
inline constexpr int largePixelSize = 1200;

/// The picture of a photo with at most maxPixelSize pixels on its longer side (0: all that it has), upright; none
/// where it cannot be decoded or the task was cancelled. Blocking; any thread.
Platform::Image loadThumbnail(
    const Platform::FileURL& url, int maxPixelSize, const Platform::Task& task = {});

/// What a cache holds of a decode: the picture, or nothing where there is none.
std::optional<Platform::Image> cacheEntry(const Platform::Image& image);
