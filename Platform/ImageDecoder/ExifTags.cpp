#include "Platform/ImageDecoder/ExifTags.h"

#include <libexif/exif-data.h>

#include <memory>
#include <string_view>

namespace Platform {

namespace {

struct Unreference {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

/// The first value of an entry of any whole-number type, as which some programs write what should be a short;
/// 0 for others.
qint64 wholeNumber(const ExifEntry& entry, ExifByteOrder order) {
    if (entry.components == 0 || entry.size < exif_format_get_size(entry.format)) {
        return 0;
    }
    switch (entry.format) {
    case EXIF_FORMAT_BYTE:
    case EXIF_FORMAT_SBYTE:
        return entry.data[0];
    case EXIF_FORMAT_SHORT:
    case EXIF_FORMAT_SSHORT:
        return exif_get_short(entry.data, order);
    case EXIF_FORMAT_LONG:
    case EXIF_FORMAT_SLONG:
        return exif_get_long(entry.data, order);
    default:
        return 0;
    }
}

int orientation(ExifData& data) {
    const ExifEntry* entry = exif_content_get_entry(data.ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    const qint64 value = entry ? wholeNumber(*entry, exif_data_get_byte_order(&data)) : 0;
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

bool isAdobeRgb(ExifData& data) {
    const ExifEntry* entry =
        exif_content_get_entry(data.ifd[EXIF_IFD_INTEROPERABILITY], EXIF_TAG_INTEROPERABILITY_INDEX);
    return entry &&
           std::string_view(reinterpret_cast<const char*>(entry->data), entry->size).starts_with("R03");
}

} // namespace

ExifTags readExifTags(std::span<const uchar> segment) {
    if (segment.empty()) {
        return {};
    }
    const std::unique_ptr<ExifData, Unreference> data(exif_data_new());
    if (!data) {
        return {};
    }
    // As it stands in the file: the library would otherwise amend what it finds wanting.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), segment.data(), static_cast<unsigned>(segment.size()));
    return {orientation(*data), isAdobeRgb(*data)};
}

} // namespace Platform
