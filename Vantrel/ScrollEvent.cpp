#include "Vantrel/ScrollEvent.h"

#include "Vantrel/WindowSystem.h"

#include <QWheelEvent>

namespace {

/// A notch pans by as many points.
constexpr double pointsOfNotch = 48;

/// Whether the device counts in points. One that does may have too small a step for a whole point; on X11 the pixel
/// deltas are in whatever unit the driver counts, those of plain wheels too.
bool isPreciseDevice(const QWheelEvent& event) {
    return !isOnX11() && (event.phase() != Qt::NoScrollPhase || !event.pixelDelta().isNull());
}

/// High-resolution wheels turn by fractions of a notch.
QPointF notchesOf(const QWheelEvent& event) {
    const QPointF notches = QPointF(event.angleDelta()) / QWheelEvent::DefaultDeltasPerStep;
    // There, Qt takes a wheel turned with Alt for one tilted.
    const bool isTransposed = isOnX11() && event.modifiers().testFlag(Qt::AltModifier);
    return isTransposed ? notches.transposed() : notches;
}

} // namespace

ScrollEvent ScrollEvent::of(const QWheelEvent& event) {
    const bool isControlPressed = event.modifiers().testFlag(Qt::ControlModifier);
    if (!isPreciseDevice(event)) {
        return ofNotches(notchesOf(event), isControlPressed, event.position());
    }
    const QPointF points = event.pixelDelta();
    ScrollEvent scroll = ofNotches(points / pointsOfNotch, isControlPressed, event.position());
    scroll.hasPreciseScrollingDeltas = true;
    scroll.scrollingDelta = points;
    return scroll;
}

ScrollEvent ScrollEvent::ofNotches(QPointF notches, bool isControlPressed, QPointF position) {
    constexpr double scrollingDeltaOfNotch = 16;
    constexpr double deltaOfNotch = 50;
    return {
        .isControlPressed = isControlPressed,
        .hasPreciseScrollingDeltas = false,
        .scrollingDelta = notches * scrollingDeltaOfNotch,
        .deltaY = notches.y() * deltaOfNotch,
        .position = position,
    };
}
