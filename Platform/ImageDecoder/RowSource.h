#pragma once

#include <QtGlobal>

#include <bit>

namespace Platform {

// Pixels are handled by their bytes, in the order in which QImage::Format_RGB32 lays them out here.
static_assert(std::endian::native == std::endian::little);

inline constexpr int bytesPerPixel = 4;

/// The rows of a picture, once and from the top, at four bytes a pixel: blue, green, red and 255, or the four
/// inks of a picture in CMYK.
class RowSource {
public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    /// Writes the next rows.
    ///
    /// @param rows          where the first of them goes, aligned to a pixel
    /// @param bytesPerLine  distance from the start of one row to that of the next; may be negative
    /// @return how many were written: less than count where there are no more, none can be decoded any more,
    ///         or the decode was cancelled
    virtual int readRows(uchar* rows, qsizetype bytesPerLine, int count) = 0;
};

} // namespace Platform
