#include "Platform/ImageDecoder/PhotoRendering.h"

#include "Platform/FileURL.h"
#include "Platform/ImageDecoder/RowResampler.h"
#include "Platform/ImageDecoder/UprightImage.h"

#include <algorithm>
#include <optional>

namespace Platform {

namespace {

/// Fills the image with all rows that come. False where none does, or the task is cancelled.
bool fill(UprightImage& image, RowSource& rows, int width, const ColorTransform& colors, const Task& task,
    ThreadTeam& team) {
    int rowsFilled = 0;
    while (true) {
        const UprightImage::Band band = image.band();
        const int count = rows.readRows(band.rows, band.bytesPerLine, band.count);
        if (!colors.isIdentity()) {
            team.forEach(count, [&](int row) {
                if (!task.isCancelled()) {
                    colors.apply(band.rows + row * band.bytesPerLine, width);
                }
            });
        }
        if (task.isCancelled()) {
            return false;
        }
        image.finishBand(count);
        rowsFilled += count;
        if (count < band.count || band.count == 0) {
            return rowsFilled > 0;
        }
    }
}

} // namespace

bool isTooLarge(QSize size) {
    return std::max(size.width(), size.height()) > maximumSide ||
           static_cast<qint64>(size.width()) * size.height() > maximumPixels;
}

QSize fittedSize(QSize size, int maxPixelSize) {
    const int longSide = std::max(size.width(), size.height());
    if (maxPixelSize <= 0 || longSide <= maxPixelSize) {
        return size;
    }
    const auto fitted = [&](int side) {
        const qint64 doubled = 2 * static_cast<qint64>(side) * maxPixelSize;
        return std::max(1, static_cast<int>((doubled + longSide) / (2 * static_cast<qint64>(longSide))));
    };
    return QSize(fitted(size.width()), fitted(size.height()));
}

Result<QImage> render(const StoredPicture& picture, QSize size, const ColorTransform& colors,
    const std::string& name, const Task& task, ThreadTeam& team) {
    UprightImage image(size, picture.orientation);
    if (image.isNull()) {
        return tooLittleMemoryError(name);
    }
    std::optional<RowResampler> resampler;
    if (picture.size != size || picture.extent != QSizeF(size)) {
        resampler.emplace(picture.rows, picture.size, picture.extent, size, team);
    }
    RowSource& rows = resampler ? *resampler : picture.rows;
    return fill(image, rows, size.width(), colors, task, team) ? image.take() : QImage();
}

Error tooLittleMemoryError(const std::string& name) {
    return Error(QStringLiteral("There is too little memory to show “%1”.").arg(displayText(name)));
}

Error tooLargeError(const std::string& name) {
    return Error(QStringLiteral("“%1” has too many pixels to be shown.").arg(displayText(name)));
}

} // namespace Platform
