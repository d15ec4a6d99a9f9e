#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/CanvasFixture.h"

#include <QPointingDevice>
#include <QTest>

#include <unistd.h>

#include <filesystem>
#include <memory>

using Platform::FileURL;
using Platform::Image;
using Platform::TaskPriority;
using std::chrono::milliseconds;

namespace {

constexpr QPoint notch(0, 120);

bool isClose(QPointF a, QPointF b, double tolerance = 1e-9) {
    return std::abs(a.x() - b.x()) < tolerance && std::abs(a.y() - b.y()) < tolerance;
}

Image flat(QSize size, Qt::GlobalColor color = Qt::red) {
    return Image(plain(size, color));
}

} // namespace

/// The canvas in a window, from the events that the window system sends to what becomes of the photo.
class PhotoCanvasViewTest : public QObject {
    Q_OBJECT

private slots:
    // Mouse

    void aDragWithTheLeftButtonMovesThePhotoWithThePointer() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF held = view.imagePointAt({500, 500});
        QTest::mousePress(&view.window, Qt::LeftButton, Qt::NoModifier, {500, 500});
        QTest::mouseMove(&view.window, {510, 500});
        QTest::mouseMove(&view.window, {560, 470});
        QVERIFY(isClose(view.imagePointAt({560, 470}), held));
        QTest::mouseRelease(&view.window, Qt::LeftButton, Qt::NoModifier, {560, 470});
        QTest::mouseMove(&view.window, {700, 700});
        QVERIFY(isClose(view.imagePointAt({560, 470}), held));
    }

    void otherButtonsMoveNothing() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF before = view.geometry().imageOffset;
        QTest::mousePress(&view.window, Qt::RightButton, Qt::NoModifier, {500, 500});
        QTest::mouseMove(&view.window, {600, 600});
        QTest::mouseRelease(&view.window, Qt::RightButton, Qt::NoModifier, {600, 600});
        QCOMPARE(view.geometry().imageOffset, before);
    }

    void aPhotoSmallerThanTheViewStaysCentredWhateverTheDrag() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 500}));
        QTest::mousePress(&view.window, Qt::LeftButton, Qt::NoModifier, {500, 500});
        QTest::mouseMove(&view.window, {600, 700});
        QCOMPARE(view.geometry().imageOffset, QPointF(0, 250));
    }

    void panningKeepsThePhotoFitted() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 500}));
        QTest::mousePress(&view.window, Qt::LeftButton, Qt::NoModifier, {500, 500});
        QTest::mouseMove(&view.window, {600, 700});
        QCOMPARE(view.geometry().zoomScale, view.geometry().lastComputedFitScale);
    }

    void aDragGoesOnWithThePhotoThatReplacesItsOwn() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        QTest::mousePress(&view.window, Qt::LeftButton, Qt::NoModifier, {500, 500});
        QTest::mouseMove(&view.window, {510, 500});
        view.canvas->setImage(flat({300, 200}));
        QTest::mouseMove(&view.window, {540, 500});
        QCOMPARE(view.geometry().zoomScale, 1000.0 / 300);
        view.canvas->setImage(Image());
        QTest::mouseMove(&view.window, {640, 500});
        QTest::mouseRelease(&view.window, Qt::LeftButton, Qt::NoModifier, {640, 500});
        QVERIFY(view.picture().pixelColor(500, 500) == QColor(Qt::black));
    }

    // Wheel

    void aNotchOfTheWheelMovesThePhotoBy48Points() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF before = view.geometry().imageOffset;
        view.turnWheel({500, 500}, notch); // up: the photo moves down
        QCOMPARE(view.geometry().imageOffset, before + QPointF(0, -48));
        view.turnWheel({500, 500}, {-120, 0});
        QCOMPARE(view.geometry().imageOffset, before + QPointF(-48, -48));
    }

    void aHighResolutionWheelMovesItByFractions() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF before = view.geometry().imageOffset;
        view.turnWheel({500, 500}, notch / 8);
        QVERIFY(isClose(view.geometry().imageOffset, before + QPointF(0, -6)));
    }

    void preciseDeltasMoveItByPoints() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF before = view.geometry().imageOffset;
        view.scroll({500, 500}, {7, -5});
        QCOMPARE(view.geometry().imageOffset, before + QPointF(7, 5));
    }

    void onlyControlZooms() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        for (const auto modifier : {Qt::ShiftModifier, Qt::MetaModifier, Qt::AltModifier}) {
            const QPointF before = view.geometry().imageOffset;
            view.turnWheel({500, 500}, notch, modifier);
            QCOMPARE(view.geometry().zoomScale, 2.0);
            QCOMPARE(view.geometry().imageOffset, before + QPointF(0, -48));
        }
    }

    void aStepTooSmallForAPointIsNotTakenForAWheels() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF before = view.geometry().imageOffset;
        QWheelEvent event(
            {500, 500}, {500, 500}, QPoint(), {0, 5}, Qt::NoButton, Qt::NoModifier, Qt::ScrollUpdate, false);
        QCoreApplication::sendEvent(&view.window, &event);
        QCOMPARE(view.geometry().imageOffset, before);
    }

    void aNotchWithControlZoomsByTenPercentAboutThePointer() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF held = view.imagePointAt({300, 200});
        const double before = view.geometry().zoomScale;
        view.turnWheel({300, 200}, notch, Qt::ControlModifier);
        QCOMPARE(view.geometry().zoomScale, before * 1.1);
        QVERIFY(isClose(view.imagePointAt({300, 200}), held, 1e-6));
        view.turnWheel({300, 200}, notch / 10, Qt::ControlModifier);
        QCOMPARE(view.geometry().zoomScale, before * 1.1 * 1.01);
    }

    void preciseDeltasWithControlZoomAsMuchAsTheyWouldMove() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.scroll({500, 500}, {0, 48}, Qt::ControlModifier);
        QCOMPARE(view.geometry().zoomScale, 1.1);
    }

    void zoomStaysWithinItsBounds() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, {0, 120 * 200}, Qt::ControlModifier);
        QCOMPARE(view.geometry().zoomScale, 10.0);
        view.turnWheel({500, 500}, {0, -120 * 12}, Qt::ControlModifier); // the factor is -0.2
        QCOMPARE(view.geometry().zoomScale, 0.02);
    }

    void theEndOfAScrollWithoutDeltasIsNoZoomStep() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.scroll({500, 500}, {}, Qt::ControlModifier);
        QCOMPARE(view.geometry().lastComputedFitScale, 1.0);
    }

    void withoutAPhotoTheWheelIsPassedOn() {
        CanvasFixture view;
        QWheelEvent event(
            {500, 500}, {500, 500}, QPoint(), notch, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        event.accept();
        QCoreApplication::sendEvent(view.canvas, &event);
        QVERIFY(!event.isAccepted());
    }

    // Touchpad

    void aTouchpadPinchZoomsAboutItsPlaceAndCountsAsFittedAgainAtTheFit() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.gesture(Qt::BeginNativeGesture);
        view.gesture(Qt::ZoomNativeGesture, {200, 300}, 0.5);
        QCOMPARE(view.geometry().zoomScale, 1.5);
        QVERIFY(isClose(view.imagePointAt({200, 300}), {200, 700}));
        view.gesture(Qt::ZoomNativeGesture, {200, 300}, 0.5); // anew from where it stands
        QCOMPARE(view.geometry().zoomScale, 2.25);
        view.gesture(Qt::ZoomNativeGesture, {200, 300}, 1 / 2.25 - 1);
        QCOMPARE(view.geometry().lastComputedFitScale, 0.0);
        view.gesture(Qt::EndNativeGesture);
        QCOMPARE(view.geometry().lastComputedFitScale, 1.0);
    }

    void aSwipeOfThreeFingersIsNotForThePhoto() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF before = view.geometry().imageOffset;
        view.gesture(Qt::PanNativeGesture, {500, 500}, 0, {30, -20}, 3);
        QCOMPARE(view.geometry().imageOffset, before);
    }

    void aPinchGoesOnWithThePhotoThatReplacesItsOwn() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.gesture(Qt::ZoomNativeGesture, {500, 500}, 0.5);
        view.canvas->setImage(flat({500, 500}));
        QCOMPARE(view.geometry().zoomScale, 2.0);
        view.gesture(Qt::ZoomNativeGesture, {500, 500}, 0.5);
        QCOMPARE(view.geometry().zoomScale, 3.0);
        view.canvas->setImage(Image());
        view.gesture(Qt::ZoomNativeGesture, {500, 500}, 0.5);
        view.gesture(Qt::EndNativeGesture);
        view.canvas->setImage(flat({500, 500}));
        QCOMPARE(view.geometry().zoomScale, 2.0);
    }

    void aTouchpadPinchMayMoveThePhotoToo() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.gesture(Qt::BeginNativeGesture);
        view.gesture(Qt::ZoomNativeGesture, {500, 500}, 1);
        view.gesture(Qt::PanNativeGesture, {500, 500}, 0, {30, -20});
        QVERIFY(isClose(view.geometry().imageOffset, {-500 + 30, -500 + 20}));
        view.gesture(Qt::EndNativeGesture);
    }

    // Touch screen

    // Moves of fingers are delivered with the next frame.

    void oneFingerMovesThePhoto() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF held = view.imagePointAt({500, 500});
        QTest::touchEvent(&view.window, screen()).press(0, {500, 500});
        QTest::touchEvent(&view.window, screen()).move(0, {520, 510});
        QTest::touchEvent(&view.window, screen()).move(0, {560, 470});
        QTRY_VERIFY(isClose(view.imagePointAt({560, 470}), held));
        QTest::touchEvent(&view.window, screen()).release(0, {560, 470});
    }

    void twoFingersPinchAndDragTogether() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const double before = view.geometry().zoomScale;
        QTest::touchEvent(&view.window, screen()).press(0, {400, 500}).press(1, {600, 500});
        const QPointF left = view.imagePointAt({400, 500});
        const QPointF right = view.imagePointAt({600, 500});
        QTest::touchEvent(&view.window, screen()).move(0, {380, 480}).move(1, {620, 480});
        QTest::touchEvent(&view.window, screen()).move(0, {370, 470}).move(1, {670, 470});
        QTRY_VERIFY(isClose(view.imagePointAt({370, 470}), left, 1e-6));
        QTRY_VERIFY(isClose(view.imagePointAt({670, 470}), right, 1e-6));
        QTRY_VERIFY(std::abs(view.geometry().zoomScale - before * 1.5) < 1e-9);
        QCOMPARE(view.geometry().lastComputedFitScale, 0.0);
        QTest::touchEvent(&view.window, screen()).release(0, {370, 470}).release(1, {670, 470});
        QCOMPARE(view.geometry().lastComputedFitScale, 1.0);
    }

    void theSecondFingerMayComeLaterAndGoEarlier() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const QPointF held = view.imagePointAt({400, 500});
        QTest::touchEvent(&view.window, screen()).press(0, {400, 500});
        QTest::touchEvent(&view.window, screen()).move(0, {420, 500});
        QTRY_VERIFY(isClose(view.imagePointAt({420, 500}), held));
        QTest::touchEvent(&view.window, screen()).move(0, {420, 500}).press(1, {800, 800});
        QTest::touchEvent(&view.window, screen()).move(0, {420, 500}).release(1, {800, 800});
        QTRY_VERIFY(isClose(view.imagePointAt({420, 500}), held));
        QTest::touchEvent(&view.window, screen()).move(0, {440, 510});
        QTRY_VERIFY(isClose(view.imagePointAt({440, 510}), held));
        QTest::touchEvent(&view.window, screen()).release(0, {440, 510});
    }

    void aFingerThatIsLiftedAsAnotherIsPutDownMovesNothing() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        const CanvasGeometry before = view.geometry();
        QTest::touchEvent(&view.window, screen()).press(0, {100, 100}).press(1, {200, 100});
        QTest::touchEvent(&view.window, screen())
            .move(0, {100, 100})
            .release(1, {200, 100})
            .press(2, {500, 100});
        QTest::touchEvent(&view.window, screen()).release(0, {100, 100}).release(2, {500, 100});
        QCOMPARE(view.geometry().imageOffset, before.imageOffset);
        QCOMPARE(view.geometry().zoomScale, before.zoomScale);
    }

    void aPinchThatIsCancelledIsTreatedAsEnded() {
        CanvasFixture view;
        view.open("a.jpg", plain({3000, 1500}, Qt::blue));
        QTest::touchEvent(&view.window, screen()).press(0, {400, 500}).press(1, {600, 500});
        QTest::touchEvent(&view.window, screen()).move(0, {300, 500}).move(1, {700, 500});
        QTRY_COMPARE(view.geometry().lastComputedFitScale, 0.0);
        QTouchEvent cancel(QEvent::TouchCancel, screen());
        QCoreApplication::sendEvent(&view.window, &cancel);
        QTRY_COMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 1);
        QVERIFY(view.geometry().lastComputedFitScale > 0);
    }

    void aDragThatTheSystemTakesAwayIsOver() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 1000}));
        view.turnWheel({500, 500}, 10 * notch, Qt::ControlModifier);
        QTest::mousePress(&view.window, Qt::LeftButton, Qt::NoModifier, {500, 500});
        QTest::mouseMove(&view.window, {520, 500});
        view.canvas->ungrabMouse();
        const QPointF before = view.geometry().imageOffset;
        QTest::mouseMove(&view.window, {600, 500});
        QTest::mouseRelease(&view.window, Qt::LeftButton, Qt::NoModifier, {600, 500});
        QCOMPARE(view.geometry().imageOffset, before);
    }

    void aPinchThatTheSystemTakesAwayIsTreatedAsEnded() {
        CanvasFixture view;
        view.open("a.jpg", plain({3000, 1500}, Qt::blue));
        QTest::touchEvent(&view.window, screen()).press(0, {400, 500}).press(1, {600, 500});
        QTest::touchEvent(&view.window, screen()).move(0, {300, 500}).move(1, {700, 500});
        QTRY_COMPARE(view.geometry().lastComputedFitScale, 0.0);
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 0); // never during the gesture
        view.canvas->setVisible(false);
        QTRY_COMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 1);
        QVERIFY(view.geometry().lastComputedFitScale > 0);
    }

    // Size of the view

    void aFittedPhotoFollowsTheWindowAndAZoomedOneKeepsItsZoom() {
        CanvasFixture view;
        view.canvas->setImage(flat({1000, 500}));
        view.canvas->setSize({500, 500});
        QCOMPARE(view.geometry().zoomScale, 0.5);
        view.turnWheel({250, 250}, notch, Qt::ControlModifier);
        view.canvas->setSize({900, 700});
        QCOMPARE(view.geometry().zoomScale, 0.55);
    }

    void aViewWithoutASizeTakesGesturesAndDrawsNothing() {
        CanvasFixture view;
        view.canvas->setSize({0, 1000});
        view.canvas->setImage(flat({1000, 500}));
        QCOMPARE(view.geometry().zoomScale, 1.0);
        view.scroll({0, 500}, {3, 0});
        QWheelEvent event(
            {0, 500}, {0, 500}, QPoint(), notch, Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(view.canvas, &event);
        QCOMPARE(view.geometry().zoomScale, 1.1);
        QCOMPARE(view.geometry().lastComputedFitScale, 0.0);
        view.gesture(Qt::ZoomNativeGesture, {0, 500}, 1);
        QTest::mousePress(&view.window, Qt::LeftButton, Qt::NoModifier, {0, 500});
        QTest::mouseMove(&view.window, {20, 510});
        QTest::mouseRelease(&view.window, Qt::LeftButton, Qt::NoModifier, {20, 510});
        QVERIFY(view.picture().pixelColor(500, 500) == QColor(Qt::black));
        view.canvas->setSize({1000, 1000});
        QCOMPARE(view.geometry().zoomScale, 1.1);
    }

    void aWindowWithoutASizeDoesNoHarm() {
        CanvasFixture view;
        view.open("a.jpg", plain({3000, 1500}, Qt::blue));
        view.window.resize(0, 0);
        view.canvas->setSize({0, 0});
        view.picture();
        view.canvas->setSize({1000, 1000});
        view.window.resize(1000, 1000);
        QCOMPARE(view.geometry().zoomScale, 1000.0 / 1200);
    }

    // Resolution on demand

    void aPhotoIsDecodedLargerOnceItSpansMoreThan1200Points() {
        CanvasFixture view({1200, 1000});
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        QCOMPARE(view.canvas->neededPixels(), 1200);
        view.canvas->loadForCurrentZoom();
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 0);
        view.canvas->setSize({1200.12, 1000}); // zoom 1.0001
        QCOMPARE(view.canvas->neededPixels(), 1201);
        view.canvas->loadForCurrentZoom();
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 1);
        view.scheduler.runAll();
        QCOMPARE(view.canvas->loadedMaxPixels(), 2400);
        QCOMPARE(view.canvas->displayImage().pixels().size(), QSize(2400, 1200));
        QCOMPARE(view.canvas->displayImage().size(), QSizeF(1200, 600));
        QCOMPARE(view.labels, QStringList({"1.6K", "2.4K"}));
    }

    void eachNeedHasItsLevel() {
        QCOMPARE(PhotoCanvasView::resolutionFor(1201), 2400);
        QCOMPARE(PhotoCanvasView::resolutionFor(2400), 2400);
        QCOMPARE(PhotoCanvasView::resolutionFor(2401), 4096);
        QCOMPARE(PhotoCanvasView::resolutionFor(4096), 4096);
        QCOMPARE(PhotoCanvasView::resolutionFor(4097), PhotoCanvasView::fullSize);
    }

    void eachLevelHasItsName() {
        QCOMPARE(PhotoCanvasView::resolutionLabel(1200), "1.6K");
        QCOMPARE(PhotoCanvasView::resolutionLabel(2400), "2.4K");
        QCOMPARE(PhotoCanvasView::resolutionLabel(4096), "4K");
        QCOMPARE(PhotoCanvasView::resolutionLabel(PhotoCanvasView::fullSize), "Full");
        QCOMPARE(PhotoCanvasView::resolutionLabel(8999), "8K");
    }

    void levelsChangeInBothDirectionsAndTheLabelSaysSo() {
        CanvasFixture view;
        view.open("a.jpg", plain({5000, 2500}, Qt::blue));
        for (const qint64 need : {1500, 2401, 4097}) {
            view.zoomToNeed(need);
            QCOMPARE(view.canvas->neededPixels(), need);
            view.rest();
        }
        QCOMPARE(view.canvas->displayImage().pixels().size(), QSize(5000, 2500));
        QCOMPARE(view.canvas->loadedMaxPixels(), PhotoCanvasView::fullSize);
        view.zoomToNeed(3000);
        view.rest();
        QCOMPARE(view.canvas->displayImage().pixels().size(), QSize(4096, 2048));
        view.zoomToNeed(1300); // the larger decode is enough
        view.rest();
        view.zoomToNeed(900);
        view.rest();
        QCOMPARE(view.canvas->loadedMaxPixels(), 4096);
        QCOMPARE(view.labels, QStringList({"1.6K", "2.4K", "4K", "Full", "4K"}));
    }

    void aPinchThatEndsWhereALargerDecodeIsOnScreenLoadsNothing() {
        CanvasFixture view;
        view.open("a.jpg", plain({5000, 2500}, Qt::blue));
        view.zoomToNeed(4000);
        view.rest();
        QCOMPARE(view.canvas->loadedMaxPixels(), 4096);
        view.gesture(Qt::ZoomNativeGesture, {500, 500}, 3000.0 / 4000 - 1);
        view.gesture(Qt::EndNativeGesture);
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 0);
    }

    void aPinchThatEndsWhereTheFullSizeIsTooMuchLoadsTheLevel() {
        CanvasFixture view;
        view.open("a.jpg", plain({5000, 2500}, Qt::blue));
        view.zoomToNeed(4500);
        view.rest();
        QCOMPARE(view.canvas->loadedMaxPixels(), PhotoCanvasView::fullSize);
        view.gesture(Qt::ZoomNativeGesture, {500, 500}, 3000.0 / 4500 - 1);
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 0);
        view.gesture(Qt::EndNativeGesture);
        view.scheduler.runAll();
        QCOMPARE(view.canvas->loadedMaxPixels(), 4096);
        QCOMPARE(view.labels.last(), "4K");
    }

    void theWheelMustRestBeforeALargerDecode() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        view.turnWheel({500, 500}, 5 * notch, Qt::ControlModifier);
        view.scheduler.advance(milliseconds(300));
        view.turnWheel({500, 500}, notch, Qt::ControlModifier);
        view.scheduler.advance(milliseconds(399));
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 0);
        view.scheduler.advance(milliseconds(1));
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 1);
        view.scheduler.advance(milliseconds(5000));
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 1);
    }

    void aLargerDecodeOfAPhotoThatWasLeftIsNeverShown() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        view.zoomToNeed(2000);
        view.scheduler.advance(milliseconds(400));
        view.scheduler.runNext(TaskPriority::UserInitiated); // its result waits to be delivered
        view.open("b.jpg", plain({2600, 1300}, Qt::red));
        QCOMPARE(view.labels, QStringList({"1.6K", "1.6K"}));
        view.scheduler.runAll();
        QVERIFY(view.canvas->displayImage().isNull());
        QCOMPARE(view.labels.size(), 2);
    }

    void walkingOnCancelsTheDecodeInFlight() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        view.zoomToNeed(2000);
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 1);
        view.open("b.jpg", plain({2600, 1300}, Qt::red));
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 0);
    }

    void aNewNeedReplacesTheDecodeInFlight() {
        CanvasFixture view;
        view.open("a.jpg", plain({5000, 2500}, Qt::blue));
        view.zoomToNeed(2000);
        view.scheduler.advance(milliseconds(400));
        view.zoomToNeed(3000);
        view.scheduler.advance(milliseconds(400));
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 1);
        view.scheduler.runAll();
        QCOMPARE(view.labels, QStringList({"1.6K", "4K"}));
    }

    void walkingOnDropsTheLargerDecodeAndRefits() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        view.zoomToNeed(2000);
        view.rest();
        QCOMPARE(view.canvas->loadedMaxPixels(), 2400);
        view.open("b.jpg", plain({2600, 1300}, Qt::red));
        QVERIFY(view.canvas->displayImage().isNull());
        QCOMPARE(view.canvas->loadedMaxPixels(), 1200);
        QCOMPARE(view.labels.last(), "1.6K");
        QCOMPARE(view.geometry().zoomScale, view.geometry().fitScale());
    }

    void withZoomKeptOnlyTheLargerDecodeIsDropped() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        view.zoomToNeed(2000);
        view.rest();
        const CanvasGeometry before = view.geometry();
        view.canvas->setKeepZoom(true);
        view.open("b.jpg", plain({2600, 1300}, Qt::red));
        QVERIFY(view.canvas->displayImage().isNull());
        QCOMPARE(view.labels.last(), "1.6K");
        QCOMPARE(view.geometry().zoomScale, before.zoomScale);
        QCOMPARE(view.geometry().imageOffset, before.imageOffset);
    }

    void theSamePhotoOnceMoreChangesNothing() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        const Image image = view.canvas->activeDisplayImage();
        view.zoomToNeed(2000);
        view.rest();
        const CanvasGeometry before = view.geometry();
        view.canvas->setFullResImageURL(view.folder.at("a.jpg"));
        view.canvas->setImage(image);
        QCOMPARE(view.geometry().zoomScale, before.zoomScale);
        QCOMPARE(view.geometry().imageOffset, before.imageOffset);
        QCOMPARE(view.canvas->loadedMaxPixels(), 2400);
        QCOMPARE(view.labels.size(), 2);
    }

    void withoutAFileNothingIsLoadedOrReported() {
        CanvasFixture view;
        view.canvas->setImage(flat({1200, 600}));
        view.zoomToNeed(5000);
        view.rest();
        QVERIFY(view.canvas->displayImage().isNull());
        QVERIFY(view.labels.isEmpty());
    }

    void withoutAPhotoNothingIsNeededOrLoaded() {
        CanvasFixture view;
        view.canvas->setFullResImageURL(view.folder.at("a.jpg"));
        QCOMPARE(view.canvas->neededPixels(), 0);
        view.canvas->loadForCurrentZoom();
        QCOMPARE(view.scheduler.waiting(TaskPriority::UserInitiated), 0);
    }

    void aDecodeThatOutlivesItsCanvasIsDropped() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        view.zoomToNeed(2000);
        view.scheduler.advance(milliseconds(400));
        view.turnWheel({500, 500}, notch, Qt::ControlModifier);
        delete view.canvas;
        view.scheduler.runAll();
        view.scheduler.advance(milliseconds(400)); // the pause of the wheel, too
        QCOMPARE(view.labels, QStringList("1.6K"));
    }

    // Files that change or fail between the two decodes

    void aFileThatIsGoneLeavesPhotoAndLabelAsTheyWere() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        unlink(view.folder.at("a.jpg").path().c_str());
        view.zoomToNeed(2000);
        view.rest();
        QVERIFY(view.canvas->displayImage().isNull());
        QCOMPARE(view.labels, QStringList("1.6K"));
    }

    void anotherPhotoInTheFilesPlaceIsNotShownForTheOneThatIsJudged() {
        CanvasFixture view;
        view.open("a.jpg", landscape({2600, 1300}));
        view.folder.write("a.jpg", jpegFile(landscape({2600, 1300}).mirrored()));
        view.zoomToNeed(2000);
        view.rest();
        QVERIFY(view.canvas->displayImage().isNull());
        QCOMPARE(view.labels, QStringList("1.6K"));
    }

    void theSamePhotoWrittenAnewIsShown() {
        CanvasFixture view;
        view.open("a.jpg", landscape({2600, 1300}));
        JpegOptions coarse;
        coarse.quality = 50;
        view.folder.write("a.jpg", jpegFile(landscape({2600, 1300}), coarse));
        view.zoomToNeed(2000);
        view.rest();
        QCOMPARE(view.canvas->loadedMaxPixels(), 2400);
    }

    void anotherPictureInTheFilesPlaceIsNotStretchedOverThePhoto() {
        CanvasFixture view;
        view.open("a.jpg", plain({2600, 1300}, Qt::blue));
        view.folder.write("a.jpg", jpegFile(plain({1300, 2600}, Qt::red)));
        view.zoomToNeed(2000);
        view.rest();
        QVERIFY(view.canvas->displayImage().isNull());
        QCOMPARE(view.labels, QStringList("1.6K"));
    }

    void aDecodeThatBreaksOffDoesNotReplaceAWholePhoto() {
        CanvasFixture view;
        view.open("a.jpg", landscape({2600, 1300}));
        const FileURL file = view.folder.at("a.jpg");
        std::filesystem::resize_file(file.path(), std::filesystem::file_size(file.path()) * 98 / 100);
        view.zoomToNeed(2000);
        view.rest();
        QVERIFY(view.canvas->displayImage().isNull());
        QCOMPARE(view.labels, QStringList("1.6K"));
    }

    void aDamagedPhotoIsShownAsFarAsItGoesAtEveryLevel() {
        CanvasFixture view;
        const FileURL file = view.folder.write("a.jpg", jpegFile(landscape({2600, 1300})));
        std::filesystem::resize_file(file.path(), std::filesystem::file_size(file.path()) / 2);
        view.open(file);
        view.zoomToNeed(2000);
        view.rest();
        QCOMPARE(view.canvas->loadedMaxPixels(), 2400);
    }

    void veryNarrowPhotosZoomAndLoadLikeOthers() {
        for (const QSize size : {QSize(1, 1), QSize(1, 30000), QSize(30000, 1)}) {
            CanvasFixture view;
            view.open("a.jpg", plain(size, Qt::blue));
            view.turnWheel({500, 500}, 200 * notch, Qt::ControlModifier);
            QCOMPARE(view.geometry().zoomScale, 10.0);
            view.rest();
            QVERIFY(!view.picture().isNull());
            QCOMPARE(view.labels.last(), size == QSize(1, 1) ? "1.6K" : "Full");
        }
    }

private:
    static QPointingDevice* screen() {
        static QPointingDevice* const device = QTest::createTouchDevice();
        return device;
    }
};

QTEST_MAIN(PhotoCanvasViewTest)
#include "PhotoCanvasViewTest.moc"
