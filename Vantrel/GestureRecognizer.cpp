#include "Vantrel/GestureRecognizer.h"

void GestureRecognizer::enter(GestureState state) {
    m_state = state;
    m_action();
}

void GestureRecognizer::finish(GestureState state) {
    if (isUnderWay()) {
        enter(state);
    }
    m_state = GestureState::possible;
}

void PanGestureRecognizer::move(QPointF delta) {
    if (!isUnderWay()) {
        m_translation = {};
    }
    m_translation += delta;
    if (!isUnderWay()) {
        enter(GestureState::began);
    }
    enter(GestureState::changed);
}

void MagnificationGestureRecognizer::magnify(double factor, QPointF location) {
    if (!isUnderWay()) {
        m_magnification = 0;
    }
    m_magnification = (1 + m_magnification) * factor - 1;
    m_location = location;
    enter(isUnderWay() ? GestureState::changed : GestureState::began);
}
