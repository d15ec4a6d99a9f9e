#pragma once

#include <QPointF>

class QWheelEvent;

/// One step of a wheel or of a two-finger scroll, in the measures that the canvas works with. One notch of a wheel
/// counts as 16 of scrollingDelta and as 50 of deltaY, so that it pans by 48 points and zooms by 10 %.
struct ScrollEvent {
    bool isControlPressed;
    bool hasPreciseScrollingDeltas; ///< scrollingDelta is in points, of a device that knows them
    QPointF scrollingDelta;         ///< positive where the content is to move to the right or downward
    double deltaY;                  ///< positive where scrolled up
    QPointF position;               ///< in the item, growing downward

    bool isNull() const { return scrollingDelta.isNull() && deltaY == 0; }

    static ScrollEvent of(const QWheelEvent& event);

    /// A plain wheel turned (vertically) and tilted by so many notches.
    static ScrollEvent ofNotches(QPointF notches, bool isControlPressed, QPointF position);
};
