#include "Vantrel/StandIn.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

using Platform::Image;

namespace {

/// Whether one picture has the shape of the other, but for the rounding of its sides to pixels.
bool hasShapeOf(const Image& image, const Image& larger) {
    const QSizeF size = image.size();
    const QSizeF pixels = larger.pixels().size();
    const double scale = std::max(size.width(), size.height()) / std::max(pixels.width(), pixels.height());
    const QSizeF difference = pixels * scale - size;
    return std::abs(difference.width()) <= 1 && std::abs(difference.height()) <= 1;
}

/// Whether two pictures of one shape look alike from afar: two decodes of one photo differ there by next to nothing.
bool looksLike(const Image& image, const Image& larger) {
    constexpr QSize afar(16, 16);
    constexpr double greatestMeanDifference = 8; // out of 255
    const QSize size = image.levels().back().size().scaled(afar, Qt::KeepAspectRatio).expandedTo({1, 1});
    const auto shrunk = [&](const Image& picture) {
        return picture.levels().back().scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const QImage a = shrunk(image);
    const QImage b = shrunk(larger);
    double sum = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum +=
                std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return sum <= greatestMeanDifference * 3 * size.width() * size.height();
}

} // namespace

bool canStandInFor(const Image& image, const Image& larger) {
    const bool isAsWhole = image.origin().isPartial || !larger.origin().isPartial;
    return isAsWhole && hasShapeOf(image, larger) && looksLike(image, larger);
}
