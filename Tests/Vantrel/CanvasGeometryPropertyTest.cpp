#include "Vantrel/CanvasGeometry.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

constexpr unsigned walks = 3000;
constexpr int stepsOfWalk = 50;

bool isFinite(const CanvasGeometry& geometry) {
    return std::isfinite(geometry.zoomScale) && std::isfinite(geometry.imageOffset.x()) &&
           std::isfinite(geometry.imageOffset.y()) && std::isfinite(geometry.lastComputedFitScale);
}

/// Along one axis: no band beside what is larger than the view, and the same on both sides of what is smaller.
bool isPlaced(double offset, double view, double shown) {
    const double tolerance = 1e-9 * std::max(view, shown);
    const double after = view - shown - offset;
    if (shown > view) {
        return offset <= tolerance && after <= tolerance;
    }
    return std::abs(offset - after) <= tolerance;
}

QString describe(const CanvasGeometry& geometry) {
    return QStringLiteral("view %1 x %2, image %3 x %4, zoom %5, offset (%6, %7)")
        .arg(geometry.viewSize.width())
        .arg(geometry.viewSize.height())
        .arg(geometry.imageSize.width())
        .arg(geometry.imageSize.height())
        .arg(geometry.zoomScale, 0, 'g', 17)
        .arg(geometry.imageOffset.x(), 0, 'g', 17)
        .arg(geometry.imageOffset.y(), 0, 'g', 17);
}

/// What a user might do to a photo, at random. Each step returns what is wrong after it, or nothing.
class Walk {
public:
    explicit Walk(unsigned seed) : m_random(seed) {
        m_geometry.viewSize = viewSize();
        m_geometry.imageSize = imageSize();
        m_geometry.resetToFit();
    }

    const CanvasGeometry& geometry() const { return m_geometry; }

    QString step() {
        QString problem = act();
        if (!problem.isEmpty()) {
            return problem;
        }
        if (!isFinite(m_geometry)) {
            return QStringLiteral("not finite");
        }
        return m_geometry.viewSize.isEmpty() ? QString() : placement();
    }

private:
    QString act() {
        switch (number(0, 6)) {
        case 0:
            return zoom(real(0.8, 1.25));
        case 1:
            return zoom(1 + real(-50, 50) * 0.002);
        case 2:
            return zoom(1 + real(-3000, 3000) * 0.002);
        case 3:
            m_geometry.imageOffset += {real(-800, 800), real(-800, 800)};
            m_geometry.clamp();
            return {};
        case 4:
            return resize(viewSize());
        case 5:
            m_geometry.imageSize = imageSize();
            if (number(0, 1) == 0) {
                m_geometry.resetToFit();
            } else {
                m_geometry.clamp();
            }
            return {};
        default:
            m_geometry.updateFitTracking();
            return {};
        }
    }

    QString zoom(double factor) {
        const QPointF about(
            real(0, m_geometry.viewSize.width() + 1), real(0, m_geometry.viewSize.height() + 1));
        const QPointF point = imagePointAt(about);
        m_geometry.zoom(factor, about);
        if (m_geometry.zoomScale < 0.02 || m_geometry.zoomScale > 10) {
            return QStringLiteral("zoomed beyond the bounds");
        }
        if (!isAt(point.x(), about.x(), m_geometry.imageOffset.x()) ||
            !isAt(point.y(), about.y(), m_geometry.imageOffset.y())) {
            return QStringLiteral("the point under the pointer moved");
        }
        const QPointF before = m_geometry.imageOffset;
        m_geometry.clamp();
        return wasNeedlesslyMoved(before) ? QStringLiteral("moved without need") : QString();
    }

    /// Whether clamping moved an axis that was well placed before.
    bool wasNeedlesslyMoved(QPointF before) const {
        const QSizeF view = m_geometry.viewSize;
        const QSizeF shown = m_geometry.imageSize * m_geometry.zoomScale;
        const QPointF way = m_geometry.imageOffset - before;
        return (isPlaced(before.x(), view.width(), shown.width()) && std::abs(way.x()) > 0.001) ||
               (isPlaced(before.y(), view.height(), shown.height()) && std::abs(way.y()) > 0.001);
    }

    QString resize(QSizeF size) {
        const bool isFitted = std::abs(m_geometry.zoomScale - m_geometry.lastComputedFitScale) < 0.001;
        const double zoom = m_geometry.zoomScale;
        const bool changes = size != m_geometry.viewSize;
        m_geometry.resizeView(size);
        const double expected = isFitted && changes && !size.isEmpty() ? m_geometry.fitScale() : zoom;
        return m_geometry.zoomScale == expected ? QString() : QStringLiteral("resized to a wrong zoom");
    }

    QPointF imagePointAt(QPointF place) const {
        return (place - m_geometry.imageOffset) / m_geometry.zoomScale;
    }

    bool isAt(double imagePoint, double place, double offset) const {
        return std::abs(offset + imagePoint * m_geometry.zoomScale - place) <= 0.001;
    }

    QString placement() const {
        const QSizeF view = m_geometry.viewSize;
        const QSizeF shown = m_geometry.imageSize * m_geometry.zoomScale;
        if (!isPlaced(m_geometry.imageOffset.x(), view.width(), shown.width())) {
            return QStringLiteral("a band beside the photo, or not centred across");
        }
        if (!isPlaced(m_geometry.imageOffset.y(), view.height(), shown.height())) {
            return QStringLiteral("a band above or below the photo, or not centred down");
        }
        return {};
    }

    QSizeF viewSize() {
        switch (number(0, 9)) {
        case 0:
            return {0, real(0, 1000)};
        case 1:
            return {real(0.1, 3), real(0.1, 3)};
        case 2:
            return {real(0.1, 3), real(300, 2000)};
        case 3:
            return {1000, 1000};
        default:
            return {real(3, 2600), real(3, 1600)};
        }
    }

    QSizeF imageSize() {
        switch (number(0, 5)) {
        case 0:
            return {1, 1};
        case 1:
            return {1, 1200};
        case 2:
            return {1200, 1};
        case 3:
            return {1200, 900};
        default:
            return QSizeF(number(1, 1200), number(1, 900));
        }
    }

    int number(int least, int greatest) {
        return std::uniform_int_distribution<int>(least, greatest)(m_random);
    }
    double real(double least, double greatest) {
        return std::uniform_real_distribution<double>(least, greatest)(m_random);
    }

    std::mt19937 m_random;
    CanvasGeometry m_geometry;
};

} // namespace

class CanvasGeometryPropertyTest : public QObject {
    Q_OBJECT

private slots:
    void whateverTheUserDoesThePhotoStaysWhereItBelongs() {
        for (unsigned seed = 1; seed <= walks; ++seed) {
            Walk walk(seed);
            for (int step = 1; step <= stepsOfWalk; ++step) {
                const QString problem = walk.step();
                QVERIFY2(problem.isEmpty(), qPrintable(QStringLiteral("seed %1, step %2: %3; %4")
                                                           .arg(seed)
                                                           .arg(step)
                                                           .arg(problem, describe(walk.geometry()))));
            }
        }
    }
};

QTEST_APPLESS_MAIN(CanvasGeometryPropertyTest)
#include "CanvasGeometryPropertyTest.moc"
