#include "Vantrel/PanelFrame.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

namespace {

constexpr double hairlineWidth = 0.5; // points, as all measures here
constexpr double hairlineOpacity = 0.1;
constexpr double shadowBlurRadius = 12;
constexpr double shadowDrop = 4;
constexpr double shadowOpacity = 0.3;

/// How far from the panel the shadow is followed.
constexpr int shadowReach = 22; // the blur and the drop
/// A shadow has no detail: few pixels are enough on every screen.
constexpr int pointsOfShadowPixel = 4;
/// The distance at which the shadow of a pixel ends, more than three standard deviations.
constexpr int blurTaps = 5;

/// A corner takes so many times its radius along each side...
constexpr double cornerExtent = 1.5;
/// ...and follows |x|^n + |y|^n = 1, so that its curvature grows from nothing. With this n the corner is cut as deep as
/// by a circle of the radius.
constexpr double cornerExponent = 3.19;

/// A quarter of the superellipse, from (1, 0) to (0, 1).
QPointF onCorner(double part) {
    const double angle = part * std::numbers::pi / 2;
    constexpr double power = 2 / cornerExponent;
    return {std::pow(std::cos(angle), power), std::pow(std::sin(angle), power)};
}

QPainterPath continuousRectangle(const QRectF& rect, double radius) {
    constexpr int steps = 24;
    const double extent = cornerExtent * radius;
    const QRectF centres = rect.adjusted(extent, extent, -extent, -extent);
    const std::array corners{
        centres.bottomRight(), centres.bottomLeft(), centres.topLeft(), centres.topRight()};
    QPolygonF outline;
    for (int corner = 0; corner < 4; ++corner) {
        for (int step = 0; step <= steps; ++step) {
            const QPointF way = onCorner(static_cast<double>(step) / steps) * extent;
            const std::array turned{way, QPointF(-way.y(), way.x()), -way, QPointF(way.y(), -way.x())};
            outline << corners[corner] + turned[corner];
        }
    }
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

/// The weights of the shadow's blur, from the middle outward. A blur radius is two standard deviations.
std::array<float, blurTaps + 1> gaussian() {
    constexpr double deviation = shadowBlurRadius / 2 / pointsOfShadowPixel;
    std::array<float, blurTaps + 1> weights{};
    float sum = 0;
    for (int distance = 0; distance <= blurTaps; ++distance) {
        weights[distance] = static_cast<float>(std::exp(-distance * distance / (2 * deviation * deviation)));
        sum += distance == 0 ? weights[distance] : 2 * weights[distance];
    }
    for (float& weight : weights) {
        weight /= sum;
    }
    return weights;
}

/// The picture blurred along its rows, and turned: what were its rows are its columns.
QImage blurredAndTransposed(const QImage& alpha) {
    const auto weights = gaussian();
    const int width = alpha.width();
    QImage blurred(alpha.height(), width, QImage::Format_Alpha8);
    uchar* const target = blurred.bits();
    const qsizetype stride = blurred.bytesPerLine();
    std::vector<float> row(width + 2 * blurTaps); // with nothing beyond both ends
    std::vector<float> sums(width);
    for (int y = 0; y < alpha.height(); ++y) {
        std::copy_n(alpha.constScanLine(y), width, row.begin() + blurTaps);
        std::ranges::fill(sums, 0.5F); // rounds
        for (int tap = -blurTaps; tap <= blurTaps; ++tap) {
            const float weight = weights[std::abs(tap)];
            const float* shifted = row.data() + blurTaps + tap;
            for (int x = 0; x < width; ++x) {
                sums[x] += weight * shifted[x];
            }
        }
        for (int x = 0; x < width; ++x) {
            target[x * stride + y] = static_cast<uchar>(sums[x]);
        }
    }
    return blurred;
}

/// The shadow of a shape in an area of that size.
QImage shadowOf(const QPainterPath& path, QSizeF size) {
    const QSizeF pixels = size / pointsOfShadowPixel;
    QImage shape(qCeil(pixels.width()), qCeil(pixels.height()), QImage::Format_Alpha8);
    shape.fill(Qt::transparent);
    QPainter painter(&shape);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(1.0 / pointsOfShadowPixel, 1.0 / pointsOfShadowPixel);
    painter.fillPath(path.translated(0, shadowDrop), Qt::black);
    painter.end();
    return blurredAndTransposed(blurredAndTransposed(shape))
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

/// A panel of that size with its shadow, which reaches beyond it on all sides.
QImage drawnFrame(QSizeF size, const QColor& fill, double radius, double devicePixelRatio) {
    const QRectF panel(QPointF(shadowReach, shadowReach), size);
    const QSizeF whole = size + 2 * QSizeF(shadowReach, shadowReach);
    const QPainterPath path = continuousRectangle(panel, radius);
    const QImage shadow = shadowOf(path, whole);
    QImage frame((whole * devicePixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
    frame.setDevicePixelRatio(devicePixelRatio);
    frame.fill(Qt::transparent);
    QPainter painter(&frame);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setOpacity(shadowOpacity);
    painter.drawImage(QRectF(QPointF(), QSizeF(shadow.size()) * pointsOfShadowPixel), shadow);
    painter.setOpacity(1);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillPath(path, Qt::black);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.fillPath(path, fill);
    painter.strokePath(path, QPen(QColor::fromRgbF(1, 1, 1, hairlineOpacity), hairlineWidth));
    painter.end();
    return frame;
}

} // namespace

PanelFrame::PanelFrame(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

void PanelFrame::setFill(const QColor& fill) {
    if (m_fill == fill) {
        return;
    }
    m_fill = fill;
    emit fillChanged();
    redraw();
}

void PanelFrame::setRadius(double radius) {
    if (m_radius == radius) {
        return;
    }
    m_radius = radius;
    emit radiusChanged();
    redraw();
}

void PanelFrame::redraw() {
    m_isStale = true;
    update();
}

void PanelFrame::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size()) {
        redraw();
    }
}

void PanelFrame::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) {
        redraw();
    }
}

QSGNode* PanelFrame::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData*) {
    std::unique_ptr<QSGImageNode> node(static_cast<QSGImageNode*>(oldNode));
    if (boundingRect().isEmpty()) {
        return nullptr;
    }
    if (!node) {
        node.reset(window()->createImageNode());
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
        m_isStale = true;
    }
    if (m_isStale) {
        const double ratio = window()->effectiveDevicePixelRatio();
        QImage frame = drawnFrame(size(), m_fill, m_radius, ratio);
        frame.setDevicePixelRatio(1); // a texture is measured in pixels
        node->setTexture(window()->createTextureFromImage(frame));
        node->setSourceRect(QRectF(QPointF(), frame.size()));
        node->setRect(QRectF(QPointF(-shadowReach, -shadowReach), QSizeF(frame.size()) / ratio));
        m_isStale = false;
    }
    return node.release();
}
