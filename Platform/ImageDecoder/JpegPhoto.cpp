#include "Platform/ImageDecoder/JpegPhoto.h"

#include "Platform/ImageDecoder/ExifTags.h"
#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Platform/ImageDecoder/PhotoRendering.h"

#include <algorithm>

namespace Platform {

namespace {

/// The most that decoding itself can scale down and still give the longer side in full. Of the scales that
/// libjpeg offers only these have fast inverse transforms.
int scaleDenominator(QSize size, int maxPixelSize) {
    const qint64 longSide = std::max(size.width(), size.height());
    for (const int denominator : {8, 4, 2}) {
        if (maxPixelSize > 0 && longSide >= static_cast<qint64>(maxPixelSize) * denominator) {
            return denominator;
        }
    }
    return 1;
}

ColorTransform::Pixels pixels(const JpegDecompressor& jpeg) {
    switch (jpeg.components()) {
    case JpegDecompressor::Components::Grey:
        return ColorTransform::Pixels::Grey;
    case JpegDecompressor::Components::Rgb:
        return ColorTransform::Pixels::Rgb;
    case JpegDecompressor::Components::Cmyk:
        break;
    }
    return ColorTransform::Pixels::Cmyk;
}

} // namespace

Result<QImage> decodeJpeg(ReadOnlyFile& file, int maxPixelSize, const Task& task) {
    JpegDecompressor jpeg(file, task);
    if (!jpeg.readHeader()) {
        return QImage();
    }
    if (isTooLarge(jpeg.size())) {
        return tooLargeError(file.name());
    }
    const ExifTags exif = readExifTags(jpeg.exif());
    const ColorTransform colors(pixels(jpeg), jpeg.iccProfile(), exif.isAdobeRgb);
    const int denominator = scaleDenominator(jpeg.size(), maxPixelSize);
    if (!jpeg.start(denominator)) {
        return QImage();
    }
    const QSizeF extent = QSizeF(jpeg.size()) / denominator;
    const StoredPicture picture{jpeg, jpeg.scaledSize(), extent, exif.orientation};
    return render(picture, fittedSize(jpeg.size(), maxPixelSize), colors, file.name(), task);
}

} // namespace Platform
