#pragma once

#include "Tests/Support/ManualTaskScheduler.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Vantrel/PhotoCanvasView.h"

#include <QQuickWindow>
#include <QStringList>

/// A canvas that fills a window, worked by the events that the window system would send. Its clock and background
/// work are in the test's hand.
struct CanvasFixture {
    /// Shows the window; waits until it is exposed.
    explicit CanvasFixture(QSize viewSize = {1000, 1000});

    /// Writes the photo into the folder and hands its decode of at most 1200 pixels to the canvas, with the file.
    void open(std::string_view name, const QImage& photo);

    /// The same with a file that is there.
    void open(const Platform::FileURL& file);

    /// Turns the wheel by that angle, in eighths of a degree (120: a notch away from the user).
    void turnWheel(QPointF position, QPoint angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// Scrolls on a device that counts in points.
    void scroll(QPointF position, QPoint points, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// A touchpad's gesture of that type.
    void gesture(Qt::NativeGestureType type, QPointF position = {}, double value = 0, QPointF delta = {},
        int fingers = 2);

    /// Pinches about the view's centre until the photo needs so many points, and ends the pinch.
    void zoomToNeed(qint64 points);

    /// Lets the pause that follows the wheel pass, and all decoding happen.
    void rest();

    /// The window once it has drawn all that is to be drawn, in device pixels.
    QImage picture();

    const CanvasGeometry& geometry() const { return canvas->geometry(); }

    /// The point of the image, in image units, at that position of the view (growing downward).
    QPointF imagePointAt(QPointF position) const;

    TemporaryFolder folder;
    ManualTaskScheduler scheduler;
    QQuickWindow window;
    QStringList labels; ///< as reported, in order
    PhotoCanvasView* canvas;
};
