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

    void withoutASizeOrAPhotoNothingIsPlaced_data() {
        QTest::addColumn<QSizeF>("view");
        QTest::addColumn<QSizeF>("image");
        QTest::newRow("no width") << QSizeF(0, 100) << QSizeF(40, 40);
        QTest::newRow("no height") << QSizeF(100, 0) << QSizeF(40, 40);
        QTest::newRow("no size") << QSizeF(0, 0) << QSizeF(40, 40);
        QTest::newRow("no photo") << QSizeF(100, 100) << QSizeF(0, 0);
    }

    void withoutASizeOrAPhotoNothingIsPlaced() {
        QFETCH(QSizeF, view);
        QFETCH(QSizeF, image);
        CanvasGeometry geometry{view, image, 3, {-7, 500}, 2};
        QVERIFY(!geometry.clamp());
        QVERIFY(!geometry.resetToFit());
        geometry.updateFitTracking();
        QCOMPARE(geometry.zoomScale, 3.0);
        QCOMPARE(geometry.imageOffset, QPointF(-7, 500));
        QCOMPARE(geometry.lastComputedFitScale, 2.0);
    }

    void withASizeAndAPhotoItIsPlaced() {
        CanvasGeometry geometry{{100, 100}, {40, 40}, 3, {-7, 500}, 2};
        QVERIFY(geometry.clamp());
        QCOMPARE(geometry.imageOffset, QPointF(-7, 0));
        QVERIFY(geometry.resetToFit());
        QCOMPARE(geometry.zoomScale, 2.5);
    }

    void withoutASizeZoomAndPositionStillFollowTheUser() {
        CanvasGeometry geometry{{0, 100}, {40, 40}, 2, {10, 20}, 2};
        geometry.zoom(1.5, {4, 8});
        geometry.clamp();
        QCOMPARE(geometry.zoomScale, 3.0);
        QCOMPARE(geometry.imageOffset, QPointF(13, 26));
        QCOMPARE(geometry.lastComputedFitScale, 0.0);
        geometry.resizeView({100, 100});
        QCOMPARE(geometry.zoomScale, 3.0);
        QCOMPARE(geometry.imageOffset, QPointF(0, 0));
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

    void aLargerPhotoStopsAtEitherEdgeOfTheView() {
        CanvasGeometry geometry = fitted({1000, 1000}, {100, 100});
        geometry.zoomScale = 15;
        geometry.imageOffset = {-700, 3};
        geometry.clamp();
        QCOMPARE(geometry.imageOffset, QPointF(-500, 0));
        geometry.imageOffset = {-499, -1};
        geometry.clamp();
        QCOMPARE(geometry.imageOffset, QPointF(-499, -1));
    }

    void aSmallerPhotoCannotBeMovedOutOfTheMiddle() {
        CanvasGeometry geometry{{1000, 600}, {100, 50}, 2, {}, 0};
        for (const QPointF way : {QPointF(300, 0), QPointF(-900, -900), QPointF(1, 10000)}) {
            geometry.imageOffset += way;
            geometry.clamp();
            QCOMPARE(geometry.imageOffset, QPointF(400, 250));
        }
    }

    void aPhotoAsLargeAsTheViewFillsIt() {
        for (const QPointF offset : {QPointF(30, 30), QPointF(-30, -30)}) {
            CanvasGeometry geometry{{1000, 500}, {100, 50}, 10, offset, 0};
            geometry.clamp();
            QCOMPARE(geometry.imageOffset, QPointF(0, 0));
        }
    }

    void theFirstZoomBringsAPhotoFittedBeyondTheGreatestScaleWithinIt() {
        for (const double factor : {1.01, 0.9}) {
            CanvasGeometry geometry = fitted({1000, 1000}, {40, 40});
            geometry.zoom(factor, {500, 500});
            geometry.clamp();
            QCOMPARE(geometry.zoomScale, 10.0);
            QCOMPARE(geometry.imageOffset, QPointF(300, 300));
        }
        CanvasGeometry geometry = fitted({1000, 1000}, {40, 40});
        geometry.zoom(0.2, {500, 500});
        QCOMPARE(geometry.zoomScale, 5.0);
    }

    void theZoomStaysWithinItsBounds() {
        CanvasGeometry geometry = fitted({1000, 1000}, {1000, 1000});
        geometry.zoom(1 + 5 * 0.002, {500, 500});
        QCOMPARE(geometry.zoomScale, 1.01);
        geometry.zoom(1000, {500, 500});
        QCOMPARE(geometry.zoomScale, 10.0);
        geometry.zoom(1 - 600 * 0.002, {500, 500});
        QCOMPARE(geometry.zoomScale, 0.02);
    }

    void thePointOfThePhotoUnderThePointerStaysThere() {
        CanvasGeometry geometry{{1000, 1000}, {800, 800}, 2, {-100, -300}, 2};
        geometry.zoom(1.5, {300, 100});
        QCOMPARE(geometry.zoomScale, 3.0);
        QCOMPARE(geometry.imageOffset, QPointF(-300, -500));
        QCOMPARE(geometry.lastComputedFitScale, 0.0);
    }

    void atTheGreatestScaleThePointUnderThePointerStaysThereToo() {
        CanvasGeometry geometry{{1000, 1000}, {800, 800}, 5, {-100, -300}, 5};
        geometry.zoom(3, {300, 100});
        QCOMPARE(geometry.zoomScale, 10.0);
        QCOMPARE(geometry.imageOffset, QPointF(-500, -700));
        geometry.zoom(3, {300, 100});
        QCOMPARE(geometry.imageOffset, QPointF(-500, -700));
    }

    void theSameSizeAgainMovesNothing() {
        CanvasGeometry geometry{{1000, 1000}, {100, 100}, 5, {1, 2}, 5};
        geometry.resizeView({1000, 1000});
        QCOMPARE(geometry.zoomScale, 5.0);
        QCOMPARE(geometry.imageOffset, QPointF(1, 2));
    }

    void onlyAZoomWithinAThousandthOfTheFitIsFitted() {
        for (const double difference : {-0.0009, 0.0009}) {
            CanvasGeometry geometry = fitted({1000, 1000}, {100, 100});
            geometry.zoomScale += difference;
            geometry.resizeView({500, 500});
            QCOMPARE(geometry.zoomScale, 5.0);
        }
        for (const double difference : {-0.0011, 0.0011}) {
            CanvasGeometry geometry = fitted({1000, 1000}, {100, 100});
            geometry.zoomScale += difference;
            geometry.resizeView({500, 500});
            QCOMPARE(geometry.zoomScale, 10 + difference);
        }
    }

    void zoomedBackToTheFitAPhotoIsFittedAgainOnceThatIsTracked() {
        CanvasGeometry geometry = fitted({1000, 1000}, {200, 100});
        geometry.zoom(2, {100, 700});
        geometry.zoom(0.5, {800, 200});
        geometry.clamp();
        CanvasGeometry untracked = geometry;
        geometry.updateFitTracking();
        QCOMPARE(geometry.imageOffset, untracked.imageOffset);
        geometry.resizeView({400, 400});
        QCOMPARE(geometry.zoomScale, 2.0);
        untracked.resizeView({400, 400});
        QCOMPARE(untracked.zoomScale, 5.0);
    }

    void trackingTheFitOfAZoomedPhotoLeavesItZoomed() {
        CanvasGeometry geometry = fitted({1000, 1000}, {200, 100});
        geometry.zoom(2, {500, 500});
        geometry.updateFitTracking();
        QCOMPARE(geometry.lastComputedFitScale, 5.0);
        geometry.resizeView({400, 400});
        QCOMPARE(geometry.zoomScale, 10.0);
    }
};

QTEST_APPLESS_MAIN(CanvasGeometryTest)
#include "CanvasGeometryTest.moc"
