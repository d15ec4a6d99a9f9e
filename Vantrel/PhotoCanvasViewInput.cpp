// What the window system delivers, made into gestures.
#include "Vantrel/PhotoCanvasView.h"

#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QTouchEvent>
#include <QWheelEvent>

#include <cmath>

bool PhotoCanvasView::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        nativeGesture(*static_cast<QNativeGestureEvent*>(event));
        event->accept();
        return true;
    }
    return QQuickItem::event(event);
}

void PhotoCanvasView::nativeGesture(const QNativeGestureEvent& event) {
    switch (event.gestureType()) {
    case Qt::ZoomNativeGesture:
        if (std::isfinite(event.value())) {
            m_pinch.magnify(1 + event.value(), upward(event.position()));
        }
        break;
    case Qt::PanNativeGesture:
        if (event.fingerCount() <= 2) { // with more it is a swipe, which is the desktop's
            m_pan.move({event.delta().x(), -event.delta().y()});
        }
        break;
    case Qt::EndNativeGesture:
        m_pinch.end();
        m_pan.end();
        break;
    default:
        break;
    }
}

void PhotoCanvasView::mousePressEvent(QMouseEvent* event) {
    m_lastMousePosition = event->position();
}

void PhotoCanvasView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF way = event->position() - m_lastMousePosition;
    if (!way.isNull()) {
        m_lastMousePosition = event->position();
        m_pan.move({way.x(), -way.y()});
    }
}

void PhotoCanvasView::mouseReleaseEvent(QMouseEvent*) {
    m_pan.end();
}

void PhotoCanvasView::mouseUngrabEvent() {
    m_pan.cancel();
}

void PhotoCanvasView::touchEvent(QTouchEvent* event) {
    if (event->type() == QEvent::TouchCancel) {
        m_touches.cancel();
        return;
    }
    std::vector<QPointF> fingers;
    for (const QEventPoint& point : event->points()) {
        if (point.state() != QEventPoint::Released) {
            fingers.push_back(upward(point.position()));
        }
    }
    if (event->touchPointStates() & (QEventPoint::Pressed | QEventPoint::Released)) {
        m_touches.place(fingers);
    } else {
        m_touches.follow(fingers);
    }
}

void PhotoCanvasView::touchUngrabEvent() {
    m_touches.cancel();
}

void PhotoCanvasView::wheelEvent(QWheelEvent* event) {
    const ScrollEvent scroll = ScrollEvent::of(*event);
    if (m_image.isNull()) {
        event->ignore();
        return;
    }
    if (!scroll.isNull()) { // the first and the last event of a touchpad's scroll have no deltas
        scrollWheel(scroll);
    }
}
