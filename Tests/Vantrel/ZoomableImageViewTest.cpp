#include "Vantrel/ZoomableImageView.h"

#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/ManualTaskScheduler.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Vantrel/PhotoCanvasView.h"

#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include <stdexcept>

using Platform::Image;

namespace {

Image flat(Qt::GlobalColor color) {
    return Image(plain({1200, 800}, color));
}

struct Placement {
    Placement() {
        window.resize(1000, 1000);
        view.setParentItem(window.contentItem());
        view.setSize({1000, 1000});
        view.setProperty("taskScheduler", QVariant::fromValue<Platform::TaskScheduler*>(&scheduler));
        window.show();
        if (!QTest::qWaitForWindowExposed(&window)) {
            throw std::runtime_error("the window does not appear");
        }
    }

    /// One update, as before each frame.
    void update() { window.grabWindow(); }

    PhotoCanvasView* canvas() { return view.findChild<PhotoCanvasView*>(); }

    void pinch(double factor) {
        const double zoom = canvas()->geometry().zoomScale;
        QWheelEvent event({500, 500}, {500, 500}, QPoint(), {0, static_cast<int>((factor - 1) * 1200)},
            Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&window, &event);
        QVERIFY(canvas()->geometry().zoomScale != zoom);
    }

    TemporaryFolder folder;
    ManualTaskScheduler scheduler;
    QQuickWindow window;
    ZoomableImageView view;
};

} // namespace

/// How what the screen binds reaches the canvas, and what the canvas reports the screen.
class ZoomableImageViewTest : public QObject {
    Q_OBJECT

private slots:
    void whatIsBoundReachesTheCanvasOnceInAnUpdate() {
        Placement placement;
        placement.view.setImage(flat(Qt::red));
        QVERIFY(!placement.canvas());
        const Image blue = flat(Qt::blue);
        placement.view.setImage(blue);
        placement.update();
        QVERIFY(placement.canvas()->activeDisplayImage() == blue);
        QCOMPARE(placement.canvas()->geometry().zoomScale, 1000.0 / 1200);
    }

    void theZoomIsKeptInWhateverOrderTheBindingsChange() {
        Placement placement;
        placement.view.setImage(flat(Qt::red));
        placement.view.setFullResURL(placement.folder.at("a.jpg"));
        placement.update();
        placement.pinch(3);
        const double zoom = placement.canvas()->geometry().zoomScale;
        placement.view.setImage(flat(Qt::blue)); // before the flag, and before the file
        placement.view.setFullResURL(placement.folder.at("b.jpg"));
        placement.view.setKeepZoom(true);
        placement.update();
        QCOMPARE(placement.canvas()->geometry().zoomScale, zoom);
        placement.view.setImage(flat(Qt::green));
        placement.view.setKeepZoom(false);
        placement.update();
        QCOMPARE(placement.canvas()->geometry().zoomScale, 1000.0 / 1200);
    }

    void anUpdateThatChangesNothingLeavesZoomAndPosition() {
        Placement placement;
        const Image image = flat(Qt::red);
        placement.view.setImage(image);
        placement.update();
        placement.pinch(3);
        const CanvasGeometry before = placement.canvas()->geometry();
        placement.view.setImage(image);
        placement.view.setKeepZoom(true);
        placement.view.setKeepZoom(false);
        placement.update();
        QCOMPARE(placement.canvas()->geometry().zoomScale, before.zoomScale);
        QCOMPARE(placement.canvas()->geometry().imageOffset, before.imageOffset);
    }

    void theLabelComesOnALaterTurnOfTheEventLoop() {
        Placement placement;
        QSignalSpy changes(&placement.view, &ZoomableImageView::resolutionInfoChanged);
        placement.view.setImage(flat(Qt::red));
        placement.view.setFullResURL(placement.folder.at("a.jpg"));
        placement.update();
        QCOMPARE(placement.view.resolutionInfo(), "");
        QTRY_COMPARE(placement.view.resolutionInfo(), "1.6K");
        placement.canvas()->emitResolution(); // the same again
        QCoreApplication::processEvents();
        QCOMPARE(changes.count(), 1);
    }

    void aLabelForWhichThereIsNoPlaceAnyMoreIsDropped() {
        Placement placement;
        placement.view.setImage(flat(Qt::red));
        placement.update();
        placement.canvas()->emitResolution();
        placement.view.setImage(Image());
        placement.update();
        QCoreApplication::processEvents();
        QCOMPARE(placement.view.resolutionInfo(), "");
    }

    void afterAPhotoThatCannotBeShownTheNextIsFittedThoughZoomIsKept() {
        Placement placement;
        placement.view.setKeepZoom(true);
        placement.view.setImage(flat(Qt::red));
        placement.update();
        placement.pinch(3);
        placement.view.setImage(Image());
        placement.update();
        QVERIFY(!placement.canvas());
        placement.view.setImage(flat(Qt::blue));
        placement.update();
        QCOMPARE(placement.canvas()->geometry().zoomScale, 1000.0 / 1200);
    }

    void theLastLabelStaysWhileThereIsNoPhoto() {
        Placement placement;
        placement.folder.write("a.jpg", jpegFile(plain({3000, 2000}, Qt::red)));
        placement.view.setImage(flat(Qt::red));
        placement.view.setFullResURL(placement.folder.at("a.jpg"));
        placement.update();
        placement.pinch(2);
        placement.scheduler.advance(std::chrono::milliseconds(400));
        placement.scheduler.runAll();
        QTRY_COMPARE(placement.view.resolutionInfo(), "2.4K");
        placement.view.setImage(Image());
        placement.view.setFullResURL({});
        placement.update();
        QCoreApplication::processEvents();
        QCOMPARE(placement.view.resolutionInfo(), "2.4K");
    }
};

QTEST_MAIN(ZoomableImageViewTest)
#include "ZoomableImageViewTest.moc"
