#include "Vantrel/LoadThumbnail.h"

#include "Platform/ImageDecoder/ImageDecoder.h"

using Platform::Image;

Image loadThumbnail(const Platform::FileURL& url, int maxPixelSize, const Platform::Task& task) {
    const auto image = Platform::decodeImage(url, maxPixelSize, task);
    return image ? *image : Image();
}

std::optional<Image> cacheEntry(const Image& image) {
    return image.isNull() ? std::nullopt : std::optional(image);
}
