#include "Tests/Vantrel/ScreenFixture.h"

#include <QGuiApplication>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QRegularExpression>
#include <QTest>

namespace {

const QColor approvedGreen(0x30, 0xd1, 0x58);
const QColor rejectedRed(0xff, 0x5a, 0x50);

bool isNear(const QColor& a, const QColor& b) {
    return std::abs(a.red() - b.red()) <= 6 && std::abs(a.green() - b.green()) <= 6 &&
           std::abs(a.blue() - b.blue()) <= 6;
}

QColor mixed(const QColor& over, const QColor& under, double opacity) {
    const auto mix = [&](int a, int b) {
        return static_cast<int>(std::lround(a * opacity + b * (1 - opacity)));
    };
    return {mix(over.red(), under.red()), mix(over.green(), under.green()), mix(over.blue(), under.blue())};
}

} // namespace

class ScreenTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".")); }

    void beforeAFolderIsOpenedTheEmptyStateShows() {
        ScreenFixture screen;
        QVERIFY(screen.isShown("emptyState"));
        QVERIFY(!screen.isShown("noImagesMessage"));
        QVERIFY(!screen.isShown("imageView"));
        QVERIFY(screen.isShown("floatingLeftToolbar"));
        QVERIFY(screen.isShown("floatingRightToolbar"));
        QVERIFY(!screen.isShown("floatingStatusBar"));
        QVERIFY(!screen.isShown("floatingMoveRejected"));
    }

    void aFolderWithoutPhotosSaysSo() {
        ScreenFixture screen;
        screen.model().loadFolder(screen.photos.url());
        QVERIFY(screen.isShown("noImagesMessage"));
        QVERIFY(!screen.isShown("emptyState"));
        QVERIFY(!screen.isShown("floatingStatusBar"));
        QVERIFY(!screen.isShown("floatingMoveRejected"));
    }

    void aPhotoThatIsNotDecodedYetShowsTheMessageUntilItArrives() {
        ScreenFixture screen;
        screen.photos.write("a.jpg", "no picture yet");
        screen.photos.write("b.jpg", flatPhoto(photoColor(1)));
        screen.model().loadFolder(screen.photos.url());
        QVERIFY(screen.isShown("noImagesMessage"));
        QVERIFY(screen.isShown("floatingStatusBar"));
        QVERIFY(!screen.isShown("imageView"));
        screen.press(Qt::Key_Right);
        screen.scheduler.runAll();
        QVERIFY(screen.isShown("imageView"));
        QVERIFY(!screen.isShown("noImagesMessage"));
    }

    void thePhotoIsFittedAndCentredOnBlack() {
        ScreenFixture screen(threePhotos);
        screen.resize({1200, 700}); // the photo, 3:2, is 1050 wide and leaves 75 on each side
        const QImage picture = screen.picture();
        QVERIFY(isNear(picture.pixelColor(600, 350), photoColor(0)));
        QVERIFY(isNear(picture.pixelColor(78, 350), photoColor(0)));
        QVERIFY(isNear(picture.pixelColor(1121, 350), photoColor(0)));
        QCOMPARE(picture.pixelColor(72, 350), QColor(Qt::black));
        QCOMPARE(picture.pixelColor(1127, 350), QColor(Qt::black));
    }

    void theWindowHasTheApplicationsNameAndALeastSize() {
        ScreenFixture screen;
        QCOMPARE(screen.window->title(), QGuiApplication::applicationDisplayName());
        QCOMPARE(screen.window->minimumSize(), QSize(900, 650));
        QVERIFY(screen.window->width() >= 900 && screen.window->height() >= 650);
    }

    void anUndecidedPhotoHasNoStamp() {
        ScreenFixture screen(threePhotos);
        QVERIFY(!screen.isShown("stateOverlay"));
        const QImage picture = screen.picture();
        QVERIFY(isNear(picture.pixelColor(picture.rect().center()), photoColor(0)));
    }

    void anApprovedPhotoIsStampedGreenAndARejectedOneRed() {
        ScreenFixture screen(threePhotos);
        screen.resize({1200, 700}); // leaves black beside the photo, under the border
        const auto borderColor = [&] { return screen.picture().pixelColor(8, 350); };
        screen.press(Qt::Key_Space);
        QVERIFY(isNear(borderColor(), mixed(approvedGreen, Qt::black, 0.6)));
        screen.press(Qt::Key_X);
        QVERIFY(isNear(borderColor(), mixed(rejectedRed, Qt::black, 0.6)));
        screen.press(Qt::Key_X);
        QCOMPARE(borderColor(), QColor(Qt::black));
        QVERIFY(!screen.isShown("stateOverlay"));
    }

    void zoomIsNeverKeptWhileItsFeatureIsOff() {
        ScreenFixture screen(threePhotos);
        screen.model().setKeepZoom(true);
        QVERIFY(!screen.item("imageView")->property("keepZoom").toBool());
        ScreenFixture locked(threePhotos, {.isLockZoomFeatureEnabled = true});
        QVERIFY(!locked.item("imageView")->property("keepZoom").toBool());
        locked.model().setKeepZoom(true);
        QVERIFY(locked.item("imageView")->property("keepZoom").toBool());
    }

    void theButtonsDoTheirWork() {
        ScreenFixture screen(threePhotos);
        screen.press(Qt::Key_Space);
        screen.click("Undo");
        QCOMPARE(screen.model().approvedCount(), 0);
        screen.press(Qt::Key_Space);
        screen.click("Move Approved (1)");
        QVERIFY(exists(screen.photos.at("approved/a.jpg")));
        screen.press(Qt::Key_X);
        screen.click("Move Rejected (1)");
        QVERIFY(exists(screen.photos.at("rejected/b.jpg")));
        screen.click("Open Folder");
        QVERIFY(!screen.chooserMessage.isEmpty());
    }

    void buttonsWithNothingToDoAreDisabled() {
        ScreenFixture screen(threePhotos);
        QVERIFY(!screen.button("Undo")->isEnabled());
        QVERIFY(!screen.button("Move Approved (0)")->isEnabled());
        QVERIFY(!screen.button("Move Rejected (0)")->isEnabled());
        for (const char* text : {"Undo", "Move Approved (0)", "Move Rejected (0)"}) {
            screen.click(text);
        }
        QCOMPARE(namesIn(screen.photos.url()), threePhotos);
        screen.press(Qt::Key_Space);
        QVERIFY(screen.button("Undo")->isEnabled());
        QVERIFY(screen.button("Move Approved (1)")->isEnabled());
        QVERIFY(!screen.button("Move Rejected (0)")->isEnabled());
    }

    void theBottomRowGoesWithTheLastPhoto() {
        ScreenFixture screen({"a.jpg"});
        screen.press(Qt::Key_Space);
        QVERIFY(screen.isShown("floatingMoveRejected"));
        screen.press(Qt::Key_A, Qt::ControlModifier);
        QVERIFY(!screen.isShown("floatingMoveRejected"));
        QVERIFY(!screen.isShown("floatingStatusBar"));
        QVERIFY(screen.isShown("noImagesMessage"));
    }

    void thePanelsNameThePhotoAndCount() {
        ScreenFixture screen(threePhotos);
        screen.press(Qt::Key_Right);
        screen.press(Qt::Key_X);
        QVERIFY(screen.hasText("floatingStatusBar", "b.jpg"));
        QVERIFY(screen.hasText("floatingMoveRejected", "2 / 3"));
        QVERIFY(screen.hasText("floatingMoveRejected", "⌘A"));
        QVERIFY(screen.hasText("floatingMoveRejected", "⌘R"));
        QVERIFY(screen.button("Move Rejected (1)") != nullptr);
        QVERIFY(screen.hasText(
            "floatingLeftToolbar", QString::fromStdString(screen.photos.url().lastPathComponent())));
    }

    void theFirstPhotoIsNumberOne() {
        ScreenFixture screen(threePhotos);
        QVERIFY(screen.hasText("floatingMoveRejected", "1 / 3"));
    }

    void beforeAResolutionIsReportedTheStatusBarShowsOnlyTheName() {
        ScreenFixture screen;
        screen.photos.write("a.jpg", "no picture");
        screen.model().loadFolder(screen.photos.url());
        screen.scheduler.runAll();
        screen.picture();
        QCoreApplication::processEvents();
        QVERIFY(screen.hasText("floatingStatusBar", "a.jpg"));
        QVERIFY(!screen.hasText("floatingStatusBar", "|"));
    }

    void theStatusBarNamesTheResolutionOnScreen() {
        ScreenFixture screen(threePhotos); // of 1500 pixels, in a window narrower than 1200 points
        screen.resize({1000, 700});
        QTRY_VERIFY(screen.hasText("floatingStatusBar", "1.6K"));
        QVERIFY(screen.hasText("floatingStatusBar", "|"));
        screen.turnWheel(5, Qt::ControlModifier);
        screen.scheduler.advance(std::chrono::milliseconds(400));
        screen.scheduler.runAll();
        QTRY_VERIFY(screen.hasText("floatingStatusBar", "2.4K"));
        screen.press(Qt::Key_Right);
        screen.scheduler.runAll();
        QTRY_VERIFY(screen.hasText("floatingStatusBar", "1.6K"));
    }

    void dragAndWheelOnAPanelAreNotForThePhoto() {
        ScreenFixture screen(threePhotos);
        screen.resize({1000, 700});
        screen.picture();
        screen.turnWheel(10, Qt::ControlModifier);
        const QPointF before = screen.geometry().imageOffset;
        const QQuickItem* panel = screen.item("floatingStatusBar");
        const QPoint start = panel->mapToScene({5, 5}).toPoint();
        QTest::mousePress(screen.window.get(), Qt::LeftButton, Qt::NoModifier, start);
        QTest::mouseMove(screen.window.get(), start + QPoint(50, -50));
        QTest::mouseMove(screen.window.get(), start + QPoint(150, -150));
        QTest::mouseRelease(screen.window.get(), Qt::LeftButton, Qt::NoModifier, start + QPoint(150, -150));
        QCOMPARE(screen.geometry().imageOffset, before);
        for (const auto modifier : {Qt::NoModifier, Qt::ControlModifier}) {
            screen.turnWheelAt(start, 1, modifier);
            QCOMPARE(screen.geometry().imageOffset, before);
        }
    }

    void aPinchReachesThePhotoThroughItsStamp() {
        ScreenFixture screen(threePhotos);
        screen.press(Qt::Key_X);
        const double before = screen.geometry().zoomScale;
        const QPointF centre = QRectF(QPointF(), screen.window->size()).center();
        QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, centre,
            centre, centre, 0.5, {});
        QCoreApplication::sendEvent(screen.window.get(), &pinch);
        QCOMPARE(screen.geometry().zoomScale, before * 1.5);
    }

    void withTheFeaturesOffTheirGroupsAreAbsent() {
        ScreenFixture screen(threePhotos);
        QVERIFY(!screen.button("Zoom Locked")->isVisible());
        QVERIFY(!screen.button("Sync RAW")->isVisible());
    }

    void syncingIsDisabledWithoutAFolder() {
        ScreenFixture screen({}, {.isSyncRawFeatureEnabled = true});
        QVERIFY(!screen.button("Sync RAW")->isEnabled());
        screen.click("Sync RAW");
        QVERIFY(!screen.isOpen("rawSyncAlert"));
        screen.model().loadFolder(screen.photos.url());
        QVERIFY(screen.button("Sync RAW")->isEnabled());
    }
};

QTEST_MAIN(ScreenTest)
#include "ScreenTest.moc"
