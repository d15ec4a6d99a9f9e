// The EXIF segment of a photo.
#include "Platform/ImageDecoder/ExifTags.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const quint8* bytes, std::size_t size) {
    const Platform::ExifTags tags = Platform::readExifTags({bytes, size});
    if (tags.orientation < 1 || tags.orientation > 8) {
        std::abort();
    }
    return 0;
}
