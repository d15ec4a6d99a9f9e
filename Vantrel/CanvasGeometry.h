#pragma once

#include <QPointF>
#include <QSizeF>

/// Where a photo stands in its view, and how large. Pure arithmetic.
///
/// The view's coordinates, in points, have their origin at the lower left and grow upward; a point p of the image, in
/// image units, is shown at imageOffset + p x zoomScale.
struct CanvasGeometry {
    static constexpr double minScale = 0.02;

    QSizeF viewSize{0, 0};  ///< points
    QSizeF imageSize{0, 0}; ///< image units; empty where there is no image
    double zoomScale = 1.0; ///< points per image unit
    QPointF imageOffset{0, 0};
    /// The fit scale as last recorded; the photo counts as fitted while the zoom equals it within 0.001.
    double lastComputedFitScale = 1.0;

    /// The zoom at which the whole image just fills the view. Enlarges without bound; never below minScale.
    double fitScale() const;

    /// Fits and centres the image.
    void resetToFit();

    /// Moves an image larger than the view so that no band shows beside it, and centres a smaller one, along each
    /// axis for itself.
    void clamp();

    /// Gives the view another size: a fitted image stays fitted, another keeps its zoom.
    void resizeView(QSizeF size);

private:
    bool isShowable() const { return !imageSize.isEmpty() && !viewSize.isEmpty(); }
};
