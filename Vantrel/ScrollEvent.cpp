#include "Vantrel/ScrollEvent.h"

#include <QGuiApplication>
#include <QWheelEvent>

namespace {

/// A notch pans by as many points.
constexpr double pointsOfNotch = 48;

/// On X11 the pixel deltas are in whatever unit the driver counts, those of plain wheels too.
bool hasPixelDeltas(const QWheelEvent& event) {
    return !event.pixelDelta().isNull() && QGuiApplication::platformName() != QLatin1String("xcb");
}

/// High-resolution wheels turn by fractions of a notch.
QPointF notchesOf(const QWheelEvent& event) {
    return hasPixelDeltas(event) ? QPointF(event.pixelDelta()) / pointsOfNotch
                                 : QPointF(event.angleDelta()) / QWheelEvent::DefaultDeltasPerStep;
}

} // namespace

ScrollEvent ScrollEvent::of(const QWheelEvent& event) {
    constexpr double scrollingDeltaOfNotch = 16;
    constexpr double deltaOfNotch = 50;
    const QPointF notches = notchesOf(event);
    const bool isPrecise = hasPixelDeltas(event);
    return {
        .isControlPressed = event.modifiers().testFlag(Qt::ControlModifier),
        .hasPreciseScrollingDeltas = isPrecise,
        .scrollingDelta = isPrecise ? QPointF(event.pixelDelta()) : notches * scrollingDeltaOfNotch,
        .deltaY = notches.y() * deltaOfNotch,
        .position = event.position(),
    };
}
