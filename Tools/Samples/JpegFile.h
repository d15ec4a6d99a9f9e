#pragma once

#include "Platform/Result.h"

#include <cstdint>
#include <filesystem>
#include <functional>

/// Size in pixels.
struct PixelSize {
    int width;
    int height;
};

/// How the rows of a file lie to the picture: the EXIF orientations that a camera writes.
enum class Orientation : std::uint8_t {
    Upright = 1,   ///< rows as they are seen
    TurnRight = 6, ///< to be turned a quarter to the right for viewing
    TurnLeft = 8,  ///< to be turned a quarter to the left for viewing
};

/// Gives one row of the picture as it is stored, as bytes R, G, B from left to right; asked for from the top
/// down, once each.
using RowSource = std::function<const std::uint8_t*(int row)>;

/// Writes a JPEG (quality 92, chroma at half the width) as cameras do, with the EXIF entries of a camera; row
/// by row, so that a picture may be larger than memory. It appears under its name only when it is complete.
/// @param size  of the rows as they are stored, at most 65,500 each way
Platform::Result<void> writeJpeg(
    const std::filesystem::path& file, PixelSize size, Orientation orientation, const RowSource& rowAt);
