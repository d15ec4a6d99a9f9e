#pragma once

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QSizeF>

#include <compare>
#include <vector>

/// One piece of one level of a picture, small enough for a texture.
struct TileID {
    int level; ///< 0: the picture itself; each next level has half the size
    int column;
    int row;

    // clang-tidy takes the zero that the default compares with for a pointer.
    friend auto operator<=>(const TileID&, const TileID&) = default; // NOLINT(modernize-use-nullptr)
};

/// How a picture is cut into tiles, which of them a view needs, and where each goes. Pure arithmetic, on any thread.
///
/// Vertical coordinates grow downward here. Lengths are in points of the view, in device pixels of the screen, or in
/// pixels of a level. Tiles meet at whole device pixels, so that there is neither gap nor overlap between them, and
/// each holds a few pixels of its neighbours, so that filtering does not stop at its edge.
///
/// Where the picture's pixels fall between two levels both are drawn: the coarser one, and over it the finer one with
/// finerShare() of opacity, as trilinear filtering would mix them.
class PhotoTiling {
public:
    static constexpr int largestTextureSide = 1024;

    /// From this many device pixels for each pixel of the picture on, the pixels are shown as they are.
    static constexpr double crispMagnification = 4;

    /// @param pixels            size of the picture
    /// @param levelCount        how many levels it has
    /// @param rect              where the whole picture is shown, in points from the view's top left corner
    /// @param viewSize          in points
    /// @param devicePixelRatio  device pixels for each point
    PhotoTiling(QSize pixels, int levelCount, const QRectF& rect, QSizeF viewSize, double devicePixelRatio);

    /// The more detailed of the levels that are drawn.
    int finerLevel() const { return m_finerLevel; }

    /// Opacity of the finer level over the next coarser one; 1 where it alone is drawn.
    double finerShare() const { return m_finerShare; }

    /// Whether pixels are to show as such and not to be smoothed.
    bool isCrisp() const { return longerSidesScale() >= crispMagnification; }

    /// All tiles that the view is drawn from, and behind them those a little beyond its edges, in the order of their
    /// need: the coarser level first, and the middle of the view before its edges.
    std::vector<TileID> neededTiles() const;

    /// Whether any of the tile is in view.
    bool isVisible(const TileID& tile) const;

    /// The pixels of its level that the tile's texture holds.
    QRect texturePixels(const TileID& tile) const;

    /// A tile's place on the screen.
    struct Place {
        QRectF target; ///< in points from the view's top left corner
        QRectF source; ///< the part of the texture that is shown there, in its pixels
    };
    Place place(const TileID& tile) const;

private:
    double longerSidesScale() const;
    QSize levelSize(int level) const;
    QPointF tileExtent(int level) const;
    std::vector<TileID> tilesIn(int level, const QRectF& area) const;
    QRectF nominalRect(const TileID& tile) const;

    QSize m_pixels;
    QPointF m_origin; // of the picture, in device pixels
    QPointF m_scale;  // device pixels for each pixel of level 0, across and down
    QRectF m_view;    // in device pixels
    double m_devicePixelRatio;
    int m_finerLevel = 0;
    int m_coarserLevel = 0; // the same where one level alone is drawn
    double m_finerShare = 1;
};
