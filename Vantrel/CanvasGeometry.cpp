#include "Vantrel/CanvasGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double fitTolerance = 0.001;

double clampedOffset(double offset, double viewExtent, double shownExtent) {
    if (shownExtent > viewExtent) {
        return std::max(std::min(offset, 0.0), viewExtent - shownExtent);
    }
    return (viewExtent - shownExtent) * 0.5;
}

} // namespace

double CanvasGeometry::fitScale() const {
    return std::max(
        std::min(viewSize.height() / imageSize.height(), viewSize.width() / imageSize.width()), minScale);
}

bool CanvasGeometry::resetToFit() {
    if (!isShowable()) {
        return false;
    }
    zoomScale = fitScale();
    lastComputedFitScale = zoomScale;
    imageOffset = {(viewSize.width() - imageSize.width() * zoomScale) * 0.5,
        (viewSize.height() - imageSize.height() * zoomScale) * 0.5};
    return true;
}

bool CanvasGeometry::clamp() {
    if (!isShowable()) {
        return false;
    }
    imageOffset = {clampedOffset(imageOffset.x(), viewSize.width(), imageSize.width() * zoomScale),
        clampedOffset(imageOffset.y(), viewSize.height(), imageSize.height() * zoomScale)};
    return true;
}

void CanvasGeometry::updateFitTracking() {
    if (isShowable()) {
        lastComputedFitScale = fitScale();
    }
}

void CanvasGeometry::zoom(double factor, QPointF about) {
    const double newScale = std::max(std::min(zoomScale * factor, maxScale), minScale);
    imageOffset = about - (about - imageOffset) * (newScale / zoomScale);
    zoomScale = newScale;
    lastComputedFitScale = 0;
}

bool CanvasGeometry::resizeView(QSizeF size) {
    if (size == viewSize) {
        return false;
    }
    viewSize = size;
    const bool isFitted = std::abs(zoomScale - lastComputedFitScale) < fitTolerance;
    return isFitted ? resetToFit() : clamp();
}
