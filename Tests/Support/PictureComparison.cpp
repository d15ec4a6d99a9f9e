#include "Tests/Support/PictureComparison.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int blockSide = 4;
constexpr int blockStep = 2; // blocks overlap, so that no line falls between two
constexpr int mapGain = 16;

const QRgb* row(const QImage& picture, int y) {
    return reinterpret_cast<const QRgb*>(picture.constScanLine(y));
}

/// The largest of the channels' differences between the mean colours of a block, which lies within both pictures.
double blockDifference(const QImage& a, const QImage& b, QPoint block) {
    std::array<int, 3> sums{};
    for (int y = block.y(); y < block.y() + blockSide; ++y) {
        const QRgb* p = row(a, y);
        const QRgb* q = row(b, y);
        for (int x = block.x(); x < block.x() + blockSide; ++x) {
            sums[0] += qRed(p[x]) - qRed(q[x]);
            sums[1] += qGreen(p[x]) - qGreen(q[x]);
            sums[2] += qBlue(p[x]) - qBlue(q[x]);
        }
    }
    const int largest = std::max({std::abs(sums[0]), std::abs(sums[1]), std::abs(sums[2])});
    return static_cast<double>(largest) / (blockSide * blockSide);
}

} // namespace

PictureDifference differenceBetween(const QImage& first, const QImage& second) {
    if (first.size() != second.size()) {
        return {255, {}, {}};
    }
    const QImage a = first.convertToFormat(QImage::Format_RGB32);
    const QImage b = second.convertToFormat(QImage::Format_RGB32);
    PictureDifference difference{0, {}, QImage(a.size(), QImage::Format_Grayscale8)};
    difference.map.fill(0);
    for (int y = 0; y + blockSide <= a.height(); y += blockStep) {
        for (int x = 0; x + blockSide <= a.width(); x += blockStep) {
            const double block = blockDifference(a, b, {x, y});
            if (block > difference.largest) {
                difference.largest = block;
                difference.place = {x, y};
            }
            const auto level = static_cast<uchar>(std::min(255.0, std::round(block * mapGain)));
            for (int line = y; level > 0 && line < y + blockSide; ++line) {
                uchar* out = difference.map.scanLine(line) + x;
                std::transform(out, out + blockSide, out, [&](uchar old) { return std::max(old, level); });
            }
        }
    }
    return difference;
}
