#include "Platform/Halving.h"

#include "Platform/PixelMemory.h"

#include <algorithm>

namespace Platform {

namespace {

constexpr int rowsBetweenLooks = 64;

/// The mean of four pixels, two channels at a time: 16 bits hold the sum of four.
quint32 mean(quint32 a, quint32 b, quint32 c, quint32 d) {
    constexpr quint32 channels = 0x00ff00ff;
    constexpr quint32 half = 0x00020002;
    const quint32 low = (a & channels) + (b & channels) + (c & channels) + (d & channels) + half;
    const quint32 high =
        (a >> 8 & channels) + (b >> 8 & channels) + (c >> 8 & channels) + (d >> 8 & channels) + half;
    return (low >> 2 & channels) | (high << 6 & ~channels);
}

void halveRows(const quint32* upper, const quint32* lower, int width, quint32* to) {
    const qsizetype pairs = width / 2;
    for (qsizetype x = 0; x < pairs; ++x) {
        to[x] = mean(upper[2 * x], upper[2 * x + 1], lower[2 * x], lower[2 * x + 1]);
    }
    if (width % 2 != 0) {
        to[pairs] = mean(upper[width - 1], upper[width - 1], lower[width - 1], lower[width - 1]);
    }
}

} // namespace

QImage halved(const QImage& picture, const Task& task) {
    QImage half = undefinedPicture({(picture.width() + 1) / 2, (picture.height() + 1) / 2});
    if (half.isNull()) {
        return half;
    }
    const auto row = [&](int y) { return reinterpret_cast<const quint32*>(picture.constScanLine(y)); };
    for (int y = 0; y < half.height(); ++y) {
        if (y % rowsBetweenLooks == 0 && task.isCancelled()) {
            return QImage();
        }
        const int last = picture.height() - 1;
        halveRows(row(2 * y), row(std::min(2 * y + 1, last)), picture.width(),
            reinterpret_cast<quint32*>(half.scanLine(y)));
    }
    return half;
}

} // namespace Platform
