#include "Platform/ImageDecoder/JpegPhoto.h"

#include "Platform/ImageDecoder/ExifTags.h"
#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Platform/ImageDecoder/PhotoRendering.h"
#include "Platform/ImageDecoder/ReducedJpeg/ReducedJpeg.h"

#include <algorithm>
#include <optional>
#include <utility>

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

/// How the pixels of a photo are to be shown, whoever decodes them.
struct Presentation {
    QSize stored; ///< size in pixels
    QSize shown;  ///< likewise, before it is turned upright
    int denominator;
    ExifTags exif;
    ColorTransform colors;
};

Presentation presentation(JpegDecompressor& jpeg, int maxPixelSize) {
    const ExifTags exif = readExifTags(jpeg.exif());
    return {jpeg.size(), fittedSize(jpeg.size(), maxPixelSize), scaleDenominator(jpeg.size(), maxPixelSize),
        exif, ColorTransform(pixels(jpeg), jpeg.iccProfile(), exif.isAdobeRgb)};
}

Result<QImage> show(RowSource& rows, QSize size, const Presentation& presentation, const ReadOnlyFile& file,
    const Task& task, ThreadTeam& team) {
    const QSizeF extent = QSizeF(presentation.stored) / presentation.denominator;
    const StoredPicture picture{rows, size, extent, presentation.exif.orientation};
    return render(picture, presentation.shown, presentation.colors, file.name(), task, team);
}

/// By our own decoder. Nothing where the photo, or its data, are not of the kind that it decodes.
std::optional<Result<QImage>> decodeReduced(JpegDecompressor& jpeg, const Presentation& presentation,
    const ReadOnlyFile& file, const Task& task, ThreadTeam& team) {
    if (presentation.denominator == 1) {
        return std::nullopt;
    }
    const std::optional<JpegFrame> frame = jpeg.frame(presentation.denominator);
    const std::optional<McuCodes> codes = frame ? McuCodes::make(*frame) : std::nullopt;
    if (!codes) {
        return std::nullopt;
    }
    const auto read = [&jpeg](std::span<uchar> buffer) { return jpeg.readData(buffer); };
    ReducedJpeg reduced(*frame, *codes, read, team, task);
    Result<QImage> picture = show(reduced, frame->scaledSize, presentation, file, task, team);
    const bool isValid = reduced.isFinished() || !picture || task.isCancelled();
    return isValid ? std::optional(std::move(picture)) : std::nullopt;
}

} // namespace

Result<QImage> decodeJpeg(ReadOnlyFile& file, int maxPixelSize, const Task& task, ThreadTeam& team) {
    std::optional<JpegDecompressor> jpeg(std::in_place, file, task);
    if (!jpeg->readHeader()) {
        return QImage();
    }
    if (isTooLarge(jpeg->size())) {
        return tooLargeError(file.name());
    }
    const Presentation howToShow = presentation(*jpeg, maxPixelSize);
    if (auto picture = decodeReduced(*jpeg, howToShow, file, task, team)) {
        return *picture;
    }
    if (jpeg->hasGivenData()) {
        jpeg.emplace(file, task);
        if (!file.startOver() || !jpeg->readHeader()) {
            return QImage();
        }
    }
    if (!jpeg->start(howToShow.denominator, maxPixelSize)) {
        return QImage();
    }
    return show(*jpeg, jpeg->scaledSize(), howToShow, file, task, team);
}

} // namespace Platform
