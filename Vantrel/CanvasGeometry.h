#pragma once

#include <QPointF>
#include <QSizeF>

/// Where a photo stands in its view, and how large. Pure arithmetic, on any thread.
///
/// The view's coordinates, in points, have their origin at the lower left and grow upward; a point p of the image, in
/// image units, is shown at imageOffset + p x zoomScale.
struct CanvasGeometry {
    static constexpr double minScale = 0.02;
    static constexpr double maxScale = 10.0; ///< of the user's zoom; fitting may go beyond

    QSizeF viewSize{0, 0};  ///< points
    QSizeF imageSize{0, 0}; ///< image units; empty where there is no image
    double zoomScale = 1.0; ///< points per image unit
    QPointF imageOffset{0, 0};
    /// The fit scale as last recorded, or 0 after the user has zoomed; the photo counts as fitted while the zoom
    /// equals it within 0.001.
    double lastComputedFitScale = 1.0;

    /// The zoom at which the whole image just fills the view. Enlarges without bound; never below minScale.
    double fitScale() const;

    /// Fits and centres the image. False where there is no image or the view has no size: then nothing changes.
    bool resetToFit();

    /// Moves an image larger than the view so that no band shows beside it, and centres a smaller one, along each
    /// axis for itself. False where there is no image or the view has no size: then nothing changes.
    bool clamp();

    /// Records the fit scale without moving anything, so that an image zoomed back to it counts as fitted again.
    void updateFitTracking();

    /// Multiplies the zoom within its bounds; the point of the image at that place of the view stays there. What is
    /// left is to clamp().
    void zoom(double factor, QPointF about);

    /// Gives the view another size: a fitted image stays fitted, another keeps its zoom. False where nothing is to be
    /// drawn anew.
    bool resizeView(QSizeF size);

private:
    bool isShowable() const { return !imageSize.isEmpty() && !viewSize.isEmpty(); }
};
