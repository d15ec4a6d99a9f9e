#include "Vantrel/PhotoTiling.h"

#include <QLineF>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

/// Pixels of its neighbours that a tile holds on each side. Filtering reaches one pixel beyond the edge, and rounding
/// the edge to device pixels moves it by at most one more.
constexpr int bleed = 2;
constexpr int tileSide = PhotoTiling::largestTextureSide - 2 * bleed;

/// How far beyond the view tiles are kept ready, as a part of its size on each side.
constexpr double margin = 0.25;

/// A picture whose pixels and the screen's are the same size but for a drift smaller than this, in device pixels over
/// its whole length, is drawn pixel for pixel.
constexpr double greatestDrift = 0.25;

int tileCount(int side) {
    return (side + tileSide - 1) / tileSide;
}

/// A tile's place in one direction, in device pixels.
struct Span {
    double start;
    double length;
};

/// The edges that tiles share go to whole device pixels; the first and the last are the picture's own.
Span wholePixels(double start, double end, bool isFirst, bool isLast) {
    const double newStart = isFirst ? start : std::round(start);
    const double newEnd = isLast ? end : std::round(end);
    return {newStart, std::max(newEnd - newStart, 0.0)};
}

} // namespace

PhotoTiling::PhotoTiling(
    QSize pixels, int levelCount, const QRectF& rect, QSizeF viewSize, double devicePixelRatio)
    : m_pixels(pixels),
      m_origin(rect.topLeft() * devicePixelRatio),
      m_scale(rect.width() / pixels.width() * devicePixelRatio,
          rect.height() / pixels.height() * devicePixelRatio),
      m_view(QPointF(), viewSize * devicePixelRatio),
      m_devicePixelRatio(devicePixelRatio) {
    const double depth = std::clamp(-std::log2(longerSidesScale()), 0.0, static_cast<double>(levelCount - 1));
    const int nearest = static_cast<int>(std::lround(depth));
    const double pixelForPixel = 1.0 / (1 << nearest);
    if (std::abs(m_scale.x() - pixelForPixel) * pixels.width() < greatestDrift &&
        std::abs(m_scale.y() - pixelForPixel) * pixels.height() < greatestDrift) {
        m_scale = {pixelForPixel, pixelForPixel};
        m_origin = {std::round(m_origin.x()), std::round(m_origin.y())};
        m_finerLevel = m_coarserLevel = nearest;
        return;
    }
    m_finerLevel = static_cast<int>(depth);
    m_finerShare = 1 - (depth - m_finerLevel);
    m_coarserLevel = m_finerShare < 1 ? m_finerLevel + 1 : m_finerLevel;
}

double PhotoTiling::longerSidesScale() const {
    return m_pixels.width() >= m_pixels.height() ? m_scale.x() : m_scale.y();
}

QSize PhotoTiling::levelSize(int level) const {
    const int unit = 1 << level;
    return {(m_pixels.width() + unit - 1) / unit, (m_pixels.height() + unit - 1) / unit};
}

/// Of a whole tile, in device pixels.
QPointF PhotoTiling::tileExtent(int level) const {
    return m_scale * (1 << level) * tileSide;
}

std::vector<TileID> PhotoTiling::neededTiles() const {
    const QSizeF beyond = m_view.size() * margin;
    const QRectF wide = m_view.adjusted(-beyond.width(), -beyond.height(), beyond.width(), beyond.height());
    std::vector<TileID> tiles = tilesIn(m_coarserLevel, wide);
    if (m_finerLevel != m_coarserLevel) {
        const std::vector<TileID> finer = tilesIn(m_finerLevel, wide);
        tiles.insert(tiles.end(), finer.begin(), finer.end());
    }
    const auto need = [&](const TileID& tile) {
        const double distance = QLineF(nominalRect(tile).center(), m_view.center()).length();
        return std::tuple(!isVisible(tile), -tile.level, distance);
    };
    std::ranges::sort(tiles, {}, need);
    return tiles;
}

std::vector<TileID> PhotoTiling::tilesIn(int level, const QRectF& area) const {
    const QSize size = levelSize(level);
    const QPointF extent = tileExtent(level);
    const auto index = [](double position, double side, int count) {
        return static_cast<int>(std::clamp(std::floor(position / side), 0.0, count - 1.0));
    };
    const auto columnAt = [&](double x) {
        return index(x - m_origin.x(), extent.x(), tileCount(size.width()));
    };
    const auto rowAt = [&](double y) {
        return index(y - m_origin.y(), extent.y(), tileCount(size.height()));
    };
    std::vector<TileID> tiles;
    for (int row = rowAt(area.top()); row <= rowAt(area.bottom()); ++row) {
        for (int column = columnAt(area.left()); column <= columnAt(area.right()); ++column) {
            const TileID tile{level, column, row};
            if (nominalRect(tile).intersects(area)) {
                tiles.push_back(tile);
            }
        }
    }
    return tiles;
}

/// In device pixels, before its edges are rounded.
QRectF PhotoTiling::nominalRect(const TileID& tile) const {
    const QPointF extent = tileExtent(tile.level);
    const QPointF topLeft = m_origin + QPointF(tile.column * extent.x(), tile.row * extent.y());
    const QPointF end = m_origin + QPointF(m_pixels.width() * m_scale.x(), m_pixels.height() * m_scale.y());
    const QPointF bottomRight = topLeft + extent;
    return {topLeft, QPointF(std::min(bottomRight.x(), end.x()), std::min(bottomRight.y(), end.y()))};
}

bool PhotoTiling::isVisible(const TileID& tile) const {
    constexpr double rounding = 1;
    return nominalRect(tile).adjusted(-rounding, -rounding, rounding, rounding).intersects(m_view);
}

QRect PhotoTiling::texturePixels(const TileID& tile) const {
    const QRect own(tile.column * tileSide, tile.row * tileSide, tileSide, tileSide);
    return own.adjusted(-bleed, -bleed, bleed, bleed) & QRect(QPoint(), levelSize(tile.level));
}

PhotoTiling::Place PhotoTiling::place(const TileID& tile) const {
    const QSize size = levelSize(tile.level);
    const QRectF exact = nominalRect(tile);
    const Span across = wholePixels(
        exact.left(), exact.right(), tile.column == 0, tile.column + 1 == tileCount(size.width()));
    const Span down =
        wholePixels(exact.top(), exact.bottom(), tile.row == 0, tile.row + 1 == tileCount(size.height()));
    const QPointF scale = m_scale * (1 << tile.level);
    const QPoint texture = texturePixels(tile).topLeft();
    return {
        .target = {across.start / m_devicePixelRatio, down.start / m_devicePixelRatio,
            across.length / m_devicePixelRatio, down.length / m_devicePixelRatio},
        .source = {(across.start - m_origin.x()) / scale.x() - texture.x(),
            (down.start - m_origin.y()) / scale.y() - texture.y(), across.length / scale.x(),
            down.length / scale.y()},
    };
}
