#pragma once

#include "Vantrel/GestureRecognizer.h"

#include <QPointF>

#include <vector>

/// Follows the fingers on a touch screen: where their centre goes is a drag, how far they spread is a pinch, and both
/// may go on together. Fingers may join and leave on the way without a jump. Main thread.
class TouchTracker {
public:
    /// The recognizers outlive it.
    TouchTracker(PanGestureRecognizer& pan, MagnificationGestureRecognizer& pinch)
        : m_pan(pan), m_pinch(pinch) {}

    /// Fingers have come or gone: where all those on the screen are now, in the coordinates of the view; none where all
    /// have left.
    void place(const std::vector<QPointF>& fingers);

    /// The fingers have moved to there. Another number of them is placed anew.
    void follow(const std::vector<QPointF>& fingers);

    /// The system took the fingers away.
    void cancel();

private:
    PanGestureRecognizer& m_pan;
    MagnificationGestureRecognizer& m_pinch;
    std::size_t m_count = 0;
    QPointF m_centre;
    double m_spread = 0; // mean distance of the fingers from their centre
};
