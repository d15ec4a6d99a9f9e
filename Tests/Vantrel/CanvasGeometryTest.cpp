#include "Vantrel/CanvasGeometry.h"

#include <QTest>

namespace {

CanvasGeometry fitted(QSizeF view, QSizeF image) {
    CanvasGeometry geometry;
    geometry.viewSize = view;
    geometry.imageSize = image;
    geometry.resetToFit();
    return geometry;
}

} // namespace

class CanvasGeometryTest : public QObject {
    Q_OBJECT

private slots:
    void aPhotoIsFittedAndCentred() {
        const CanvasGeometry geometry = fitted({1000, 1000}, {1200, 800});
        QCOMPARE(geometry.zoomScale, 1000.0 / 1200);
        QCOMPARE(geometry.imageOffset, QPointF(0, (1000 - 800 * 1000.0 / 1200) / 2));
    }

    void aSmallPhotoIsEnlargedToFit() {
        const CanvasGeometry geometry = fitted({1000, 1000}, {100, 50});
        QCOMPARE(geometry.zoomScale, 10.0);
        QCOMPARE(geometry.imageOffset, QPointF(0, 250));
        QCOMPARE(fitted({1000, 1000}, {40, 40}).zoomScale, 25.0);
    }

    void aHugePhotoInATinyViewStopsAtTheLeastScale() {
        QCOMPARE(fitted({100, 100}, {20000, 20000}).zoomScale, 0.02);
    }

    void withoutASizeNothingChanges() {
        for (const QSizeF view : {QSizeF(0, 100), QSizeF(100, 0)}) {
            CanvasGeometry geometry = fitted(view, {40, 40});
            geometry.clamp();
            QCOMPARE(geometry.zoomScale, 1.0);
            QCOMPARE(geometry.imageOffset, QPointF(0, 0));
        }
    }

    void aFittedPhotoFollowsTheViewsSize() {
        CanvasGeometry geometry = fitted({1000, 1000}, {100, 100});
        geometry.resizeView({500, 800});
        QCOMPARE(geometry.zoomScale, 5.0);
        QCOMPARE(geometry.imageOffset, QPointF(0, 150));
    }

    void aPhotoThatIsNotFittedKeepsItsZoomAndIsOnlyClamped() {
        CanvasGeometry geometry = fitted({1000, 1000}, {100, 100});
        geometry.zoomScale = 20;
        geometry.imageOffset = {-900, -100};
        geometry.resizeView({1500, 1000});
        QCOMPARE(geometry.zoomScale, 20.0);
        QCOMPARE(geometry.imageOffset, QPointF(-500, -100));
    }

    void noBandShowsBesideALargerPhotoAndASmallerOneIsCentred() {
        CanvasGeometry geometry = fitted({1000, 1000}, {100, 20});
        geometry.zoomScale = 20;
        geometry.imageOffset = {300, 300};
        geometry.clamp();
        QCOMPARE(geometry.imageOffset, QPointF(0, 300));
    }
};

QTEST_APPLESS_MAIN(CanvasGeometryTest)
#include "CanvasGeometryTest.moc"
