#include "Vantrel/TouchTracker.h"

#include <QLineF>

#include <numeric>

namespace {

QPointF centreOf(const std::vector<QPointF>& fingers) {
    return std::accumulate(fingers.begin(), fingers.end(), QPointF()) / static_cast<double>(fingers.size());
}

double spreadOf(const std::vector<QPointF>& fingers, QPointF centre) {
    double sum = 0;
    for (const QPointF finger : fingers) {
        sum += QLineF(centre, finger).length();
    }
    return sum / static_cast<double>(fingers.size());
}

} // namespace

void TouchTracker::place(const std::vector<QPointF>& fingers) {
    if (fingers.size() < 2) {
        m_pinch.end();
    }
    if (fingers.empty()) {
        m_pan.end();
    }
    m_count = fingers.size();
    m_centre = fingers.empty() ? QPointF() : centreOf(fingers);
    m_spread = fingers.empty() ? 0 : spreadOf(fingers, m_centre);
}

void TouchTracker::follow(const std::vector<QPointF>& fingers) {
    if (fingers.size() == m_count && !fingers.empty()) {
        const QPointF centre = centreOf(fingers);
        const double spread = spreadOf(fingers, centre);
        if (centre != m_centre) {
            m_pan.move(centre - m_centre);
        }
        if (m_spread > 0 && spread > 0 && spread != m_spread) {
            m_pinch.magnify(spread / m_spread, centre);
        }
    }
    place(fingers);
}

void TouchTracker::cancel() {
    m_count = 0;
    m_pinch.cancel();
    m_pan.cancel();
}
