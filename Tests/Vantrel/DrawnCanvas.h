#pragma once

#include "Tests/Vantrel/CanvasFixture.h"

#include <QImage>
#include <QRect>

/// A canvas of 800 x 600 points (whole device pixels at all scale factors tested) and what is to be seen on it.
struct DrawnCanvas : CanvasFixture {
    DrawnCanvas() : CanvasFixture({800, 600}) {}

    /// Device pixels for each point.
    double deviceScale() const { return window.effectiveDevicePixelRatio(); }

    /// Of the window, in device pixels.
    QSize deviceSize() const { return window.size() * deviceScale(); }

    /// Where the photo is, in device pixels of the window.
    QRectF photoRect() const;

    /// The device pixels that are all photo.
    QRect photoPixels() const;

    /// Pinches, off the centre, to that many device pixels for each pixel of the picture.
    void zoomTo(double devicePixelsPerPixel, const QImage& picture);

    /// The window as it would be with the picture drawn at once in the photo's place.
    QImage drawnAtOnce(const QImage& picture) const;
};

/// Waves in all channels, so steep that a fraction of a pixel more or less shows.
QImage waves(QSize size, double period);

/// The most by which a channel of a pixel in the area differs, out of 255.
int greatestDifference(const QImage& a, const QImage& b, const QRect& area);
