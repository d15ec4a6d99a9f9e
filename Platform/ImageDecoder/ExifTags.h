#pragma once

#include <QtGlobal>

#include <span>

namespace Platform {

/// What a photo's EXIF data say about how its pixels are to be shown.
struct ExifTags {
    /// How the stored picture is turned, 1 to 8 as EXIF numbers them; 1, upright, also for any other value.
    int orientation = 1;

    /// Interoperability index "R03": pixels without a profile are Adobe RGB (1998).
    bool isAdobeRgb = false;
};

/// Reads the tags from an EXIF segment that begins with "Exif"; the defaults for what is missing or damaged.
ExifTags readExifTags(std::span<const uchar> segment);

} // namespace Platform
