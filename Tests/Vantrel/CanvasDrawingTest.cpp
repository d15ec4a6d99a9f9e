#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/DrawnCanvas.h"

#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>

using Platform::Image;

namespace {

/// Black and white pixels by turns.
QImage checkerboard(QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            row[x] = (x + y) % 2 == 0 ? 0xffffffff : 0xff000000;
        }
    }
    return picture;
}

/// By how much the window differs from the photo drawn from that row of device pixels on.
int differenceAt(DrawnCanvas& view, const QImage& photo, double top) {
    QImage expected = plain(view.deviceSize(), Qt::black);
    const QRect place(0, static_cast<int>(top), photo.width(), photo.height());
    QPainter(&expected).drawImage(place.topLeft(), photo);
    return greatestDifference(view.picture(), expected, place);
}

/// How many colours a row shows of a photo whose left half is black and whose right half is white.
int colorsAcrossAnEdge(Image::Origin origin, double zoom) {
    DrawnCanvas view;
    QImage photo = plain({100, 90}, Qt::black);
    QPainter(&photo).fillRect(50, 0, 50, 90, Qt::white);
    view.canvas->setImage(Image(photo, origin));
    view.zoomTo(zoom, photo);
    const QImage picture = view.picture();
    const QRect inside = view.photoPixels();
    std::vector<QRgb> colors;
    for (int x = inside.left() + 1; x < inside.right(); ++x) {
        colors.push_back(picture.pixel(x, inside.center().y()));
    }
    std::ranges::sort(colors);
    return static_cast<int>(std::unique(colors.begin(), colors.end()) - colors.begin());
}

} // namespace

/// What the window shows of a photo. Run at several scale factors of the screen.
class CanvasDrawingTest : public QObject {
    Q_OBJECT

private slots:
    void pixelForPixelAPhotoIsDrawnAsItIs() {
        DrawnCanvas view;
        // As wide as the view, and centred in its height between two device pixels.
        const QImage photo =
            checkerboard({view.deviceSize().width(), view.deviceSize().height() / 2 * 2 - 51});
        view.canvas->setImage(Image(photo));
        // Between two device pixels either will do.
        const double top = view.photoRect().top();
        QVERIFY(std::min(differenceAt(view, photo, std::floor(top)),
                    differenceAt(view, photo, std::ceil(top))) <= 8);
    }

    void aFlatPhotoHasNoSeams_data() { addZooms(); }
    void aFlatPhotoHasNoSeams() {
        QFETCH(double, zoom);
        DrawnCanvas view;
        const QImage photo = plain({2600, 2300}, QColor(90, 140, 200));
        view.canvas->setImage(Image(photo));
        view.zoomTo(zoom, photo);
        for (int step = 0; step < 3; ++step) {
            QCOMPARE(greatestDifference(view.picture(), view.drawnAtOnce(photo), view.photoPixels()), 0);
            view.scroll({400, 300}, {-137, -91});
        }
    }

    void aFlatPhotoStaysFlatOnTheWayThroughItsLevels() {
        DrawnCanvas view;
        const QImage photo = plain({2600, 2300}, Qt::white);
        view.canvas->setImage(Image(photo));
        for (const double zoom : {0.9, 0.6, 0.26, 0.14, 0.2, 0.3, 0.52, 0.8, 1.3, 0.4}) {
            view.zoomTo(zoom, photo);
            QCOMPARE(greatestDifference(view.picture(), view.drawnAtOnce(photo), view.photoPixels()), 0);
        }
    }

    void aPhotoInTilesLooksAsIfDrawnAtOnce_data() { addZooms(); }
    void aPhotoInTilesLooksAsIfDrawnAtOnce() {
        QFETCH(double, zoom);
        DrawnCanvas view;
        const bool isShrunk = zoom < 1;
        const QImage photo = waves({2600, 2300}, isShrunk ? 300 : 40);
        view.canvas->setImage(Image(photo, {.isReduced = true, .isPartial = false}));
        view.zoomTo(zoom, photo);
        for (int step = 0; step < 3; ++step) {
            const QImage picture = view.picture();
            const int difference = greatestDifference(picture, view.drawnAtOnce(photo), view.photoPixels());
            QVERIFY2(difference <= 9, qPrintable(QString::number(difference)));
            view.scroll({400, 300}, {-137, -91});
        }
    }

    void finePatternsDoNotAliasWhenShrunk() {
        const QImage photo = checkerboard({2600, 2300});
        for (const double zoom : {0.6, 0.51, 0.37, 0.26, 0.24, 0.1}) {
            DrawnCanvas view;
            view.canvas->setImage(Image(photo));
            view.zoomTo(zoom, photo);
            const QImage grey = plain(view.deviceSize(), QColor(128, 128, 128));
            const int difference = greatestDifference(view.picture(), grey, view.photoPixels());
            QVERIFY2(difference <= 40, qPrintable(QStringLiteral("%1 at %2").arg(difference).arg(zoom)));
        }
    }

    void pixelsAreCrispFromFourToOneUp() {
        QCOMPARE(colorsAcrossAnEdge({}, 4), 2);
        QCOMPARE(colorsAcrossAnEdge({}, 6.3), 2);
        QVERIFY(colorsAcrossAnEdge({}, 3.9) > 2);
    }

    void aReducedPhotoIsNeverBlocky() {
        QVERIFY(colorsAcrossAnEdge({.isReduced = true, .isPartial = false}, 8) > 4);
    }

    void aLargerDecodeMovesNothing() {
        DrawnCanvas view;
        view.open("a.jpg", waves({5000, 3333}, 80));
        for (const qint64 need : {1700, 3000, 4500}) {
            view.zoomToNeed(need);
            const QImage before = view.picture();
            view.scheduler.runAll();
            const QImage after = view.picture();
            QVERIFY(before != after);
            QVERIFY(meanDifference(before, after) < 2); // a quarter of a pixel makes more
        }
    }

    void whileALargerDecodeReachesTheScreenThereIsNeverAHole() {
        DrawnCanvas view;
        const QImage photo = plain({9000, 6000}, QColor(90, 140, 200));
        view.open("a.jpg", photo);
        view.zoomToNeed(4500);
        view.scheduler.runAll();
        QCOMPARE(view.canvas->loadedMaxPixels(), PhotoCanvasView::fullSize);
        const QRect all(QPoint(), view.deviceSize());
        for (int frame = 0; frame < 12; ++frame) {
            const QImage picture = view.window.grabWindow();
            QVERIFY(greatestDifference(picture, view.drawnAtOnce(photo), all) <= 3);
            view.turnWheel({700, 100}, {0, 40}, Qt::ControlModifier);
            view.scroll({400, 300}, {-300, 200});
            QCoreApplication::processEvents();
        }
    }

    void aLargerDecodeReachesTheScreenOverSeveralFrames() {
        DrawnCanvas view;
        // So many pixels that more of them are in view than one frame brings.
        view.open("a.jpg", checkerboard(QSize(6000, 4000) * view.deviceScale()));
        view.zoomToNeed(4100);
        view.picture();
        view.scheduler.runAll();
        QCOMPARE(view.canvas->loadedMaxPixels(), PhotoCanvasView::fullSize);
        const QImage first = view.window.grabWindow();
        QVERIFY(first != view.picture());
    }

    void theNeedIsCountedInPointsWhateverTheScreen() {
        DrawnCanvas view;
        view.open("a.jpg", plain({1500, 1000}, Qt::red));
        QCOMPARE(view.canvas->neededPixels(), 800);
        view.zoomToNeed(1201);
        view.scheduler.runAll();
        QCOMPARE(view.canvas->loadedMaxPixels(), 2400);
    }

    void zoomedFarOutOnlyASmallRectangleIsDrawn() {
        DrawnCanvas view;
        view.canvas->setImage(Image(plain({1200, 800}, Qt::red)));
        view.turnWheel({400, 300}, {0, -120 * 12}, Qt::ControlModifier);
        const QRectF rect = view.photoRect();
        QVERIFY(std::abs(rect.width() - 24 * view.deviceScale()) < 1e-6);
        QImage expected = view.drawnAtOnce(plain({1200, 800}, Qt::red));
        const QImage picture = view.picture();
        QCOMPARE(greatestDifference(picture, expected, view.photoPixels()), 0);
        QPainter(&expected).fillRect(rect.adjusted(-1, -1, 1, 1).toAlignedRect(), Qt::black);
        QImage around = picture.convertToFormat(QImage::Format_RGB32);
        around.setDevicePixelRatio(1);
        QPainter(&around).fillRect(rect.adjusted(-1, -1, 1, 1).toAlignedRect(), Qt::black);
        QCOMPARE(greatestDifference(around, expected, around.rect()), 0);
    }

    void withoutAPhotoNothingIsDrawn() {
        DrawnCanvas view;
        view.canvas->setImage(Image(plain({1200, 800}, Qt::red)));
        QVERIFY(isNear(view.picture().pixelColor(100, 200), Qt::red));
        view.canvas->setImage(Image());
        const QRect all(QPoint(), view.deviceSize());
        QCOMPARE(greatestDifference(view.picture(), plain(view.deviceSize(), Qt::black), all), 0);
    }

private:
    static void addZooms() {
        QTest::addColumn<double>("zoom");
        for (const double zoom : {0.31, 0.66, 0.997, 1.003, 1.37, 2.61}) {
            QTest::addRow("%g", zoom) << zoom;
        }
    }
};

QTEST_MAIN(CanvasDrawingTest)
#include "CanvasDrawingTest.moc"
