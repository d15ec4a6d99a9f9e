#include "Tests/Vantrel/DrawnCanvas.h"

#include <QTest>

/// Photos larger than any texture.
class HugePhotoTest : public QObject {
    Q_OBJECT

private slots:
    void everyPartOfItIsDrawnInFull_data() {
        QTest::addColumn<QSize>("size");
        QTest::newRow("a panorama of 30,000 x 2,000") << QSize(30000, 2000);
        QTest::newRow("100 megapixels") << QSize(12000, 8333);
    }
    void everyPartOfItIsDrawnInFull() {
        QFETCH(QSize, size);
        DrawnCanvas view;
        const QImage photo = waves(size, 400);
        view.open("a.jpg", photo);
        view.gesture(
            Qt::ZoomNativeGesture, {311, 207}, CanvasGeometry::maxScale / view.geometry().zoomScale - 1);
        view.gesture(Qt::EndNativeGesture);
        view.scheduler.runAll();
        QCOMPARE(view.labels.last(), "Full");
        QCOMPARE(view.canvas->displayImage().pixels().size(), size);
        for (const QPoint way :
            {QPoint(), QPoint(-2137, -291), QPoint(-20000, -20000), QPoint(20000, 9000)}) {
            view.scroll({400, 300}, way);
            QVERIFY(greatestDifference(view.picture(), view.drawnAtOnce(photo), view.photoPixels()) <= 14);
        }
    }
};

QTEST_MAIN(HugePhotoTest)
#include "HugePhotoTest.moc"
