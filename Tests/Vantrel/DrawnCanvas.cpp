#include "Tests/Vantrel/DrawnCanvas.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

QRectF DrawnCanvas::photoRect() const {
    const QSizeF size = geometry().imageSize * geometry().zoomScale;
    const QPointF topLeft(
        geometry().imageOffset.x(), window.height() - geometry().imageOffset.y() - size.height());
    return {topLeft * deviceScale(), size * deviceScale()};
}

QRect DrawnCanvas::photoPixels() const {
    return photoRect().adjusted(1, 1, -1, -1).toRect() & QRect(QPoint(), deviceSize());
}

void DrawnCanvas::zoomTo(double devicePixelsPerPixel, const QImage& picture) {
    const double points = devicePixelsPerPixel * picture.width() / deviceScale();
    const double factor = points / geometry().imageSize.width() / geometry().zoomScale;
    gesture(Qt::ZoomNativeGesture, {311, 207}, factor - 1);
    gesture(Qt::EndNativeGesture);
}

QImage DrawnCanvas::drawnAtOnce(const QImage& picture) const {
    QImage expected(deviceSize(), QImage::Format_RGB32);
    expected.fill(Qt::black);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(photoRect(), picture);
    return expected;
}

QImage waves(QSize size, double period) {
    std::vector<int> levels;
    levels.reserve(static_cast<std::size_t>(size.width()) + static_cast<std::size_t>(size.height()));
    for (int position = 0; position < size.width() + size.height(); ++position) {
        levels.push_back(
            static_cast<int>(std::lround(127.5 + 120 * std::sin(2 * std::numbers::pi * position / period))));
    }
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            row[x] = qRgb(levels[x], levels[y], levels[x + y]);
        }
    }
    return picture;
}

int greatestDifference(const QImage& a, const QImage& b, const QRect& area) {
    constexpr int bytesPerPixel = 4;
    int greatest = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const uchar* const p = a.constScanLine(y);
        const uchar* const q = b.constScanLine(y);
        for (int x = bytesPerPixel * area.left(); x < bytesPerPixel * (area.right() + 1); ++x) {
            const bool isColor = x % bytesPerPixel != bytesPerPixel - 1;
            greatest = std::max(greatest, isColor ? std::abs(p[x] - q[x]) : 0);
        }
    }
    return greatest;
}
