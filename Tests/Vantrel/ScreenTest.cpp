#include "Tests/Vantrel/ScreenFixture.h"
#include "Vantrel/PhotoCanvasView.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QRegularExpression>
#include <QTest>

#include <unistd.h>

using Platform::FileURL;

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

struct Screen : ScreenFixture {
    explicit Screen(
        const std::vector<std::string>& photoNames = {}, CullingViewModel::FeatureFlags features = {})
        : ScreenFixture(features) {
        if (!photoNames.empty()) {
            writePhotos(photos, photoNames, {1500, 1000});
            model().loadFolder(photos.url());
            scheduler.runAll();
        }
    }
};

const std::vector<std::string> threePhotos = {"a.jpg", "b.jpg", "c.jpg"};

} // namespace

class ScreenTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".")); }

    void beforeAFolderIsOpenedTheEmptyStateShows() {
        Screen screen;
        QVERIFY(screen.isShown("emptyState"));
        QVERIFY(!screen.isShown("noImagesMessage"));
        QVERIFY(!screen.isShown("imageView"));
        QVERIFY(screen.isShown("floatingLeftToolbar"));
        QVERIFY(screen.isShown("floatingRightToolbar"));
        QVERIFY(!screen.isShown("floatingStatusBar"));
        QVERIFY(!screen.isShown("floatingMoveRejected"));
    }

    void aFolderWithoutPhotosSaysSo() {
        Screen screen;
        screen.model().loadFolder(screen.photos.url());
        QVERIFY(screen.isShown("noImagesMessage"));
        QVERIFY(!screen.isShown("emptyState"));
        QVERIFY(!screen.isShown("floatingStatusBar"));
        QVERIFY(!screen.isShown("floatingMoveRejected"));
    }

    void aPhotoThatIsNotDecodedYetShowsTheMessageUntilItArrives() {
        Screen screen;
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
        Screen screen(threePhotos);
        screen.window->resize(1200, 700); // the photo, 3:2, is 1050 wide and leaves 75 on each side
        QTRY_COMPARE(screen.window->contentItem()->size(), QSizeF(1200, 700));
        const QImage picture = screen.picture();
        QVERIFY(isNear(picture.pixelColor(600, 350), photoColor(0)));
        QVERIFY(isNear(picture.pixelColor(78, 350), photoColor(0)));
        QVERIFY(isNear(picture.pixelColor(1121, 350), photoColor(0)));
        QCOMPARE(picture.pixelColor(72, 350), QColor(Qt::black));
        QCOMPARE(picture.pixelColor(1127, 350), QColor(Qt::black));
    }

    void theWindowHasTheApplicationsNameAndALeastSize() {
        Screen screen;
        QCOMPARE(screen.window->title(), QGuiApplication::applicationDisplayName());
        QCOMPARE(screen.window->minimumSize(), QSize(900, 650));
        QVERIFY(screen.window->width() >= 900 && screen.window->height() >= 650);
    }

    void anUndecidedPhotoHasNoStamp() {
        Screen screen(threePhotos);
        QVERIFY(!screen.isShown("stateOverlay"));
        const QImage picture = screen.picture();
        QVERIFY(isNear(picture.pixelColor(picture.rect().center()), photoColor(0)));
    }

    void anApprovedPhotoIsStampedGreenAndARejectedOneRed() {
        Screen screen(threePhotos);
        screen.window->resize(1200, 700); // leaves black beside the photo, under the border
        QTRY_COMPARE(screen.window->contentItem()->size(), QSizeF(1200, 700));
        const auto borderColor = [&] { return screen.picture().pixelColor(8, 350); };
        screen.press(Qt::Key_Space);
        QVERIFY(isNear(borderColor(), mixed(approvedGreen, Qt::black, 0.6)));
        screen.press(Qt::Key_X);
        QVERIFY(isNear(borderColor(), mixed(rejectedRed, Qt::black, 0.6)));
        screen.press(Qt::Key_X);
        QCOMPARE(borderColor(), QColor(Qt::black));
        QVERIFY(!screen.isShown("stateOverlay"));
    }

    void theBareKeysWalkAndMark() {
        Screen screen(threePhotos);
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
        screen.press(Qt::Key_Left);
        screen.press(Qt::Key_Left);
        QCOMPARE(screen.model().currentIndex(), 2);
        screen.press(Qt::Key_X);
        QVERIFY(screen.model().currentState() == ReviewState::rejected);
        screen.press(Qt::Key_Space);
        QVERIFY(screen.model().currentState() == ReviewState::approved);
    }

    void theScreenTakesItsKeysAlsoWithoutAFolder() {
        Screen screen;
        for (const int key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_X, Qt::Key_Space}) {
            QVERIFY(sends(screen, key));
        }
        QVERIFY(!sends(screen, Qt::Key_Y));
    }

    void theZoomLockKeyPassesOnWhileItsFeatureIsOff() {
        Screen screen(threePhotos);
        QVERIFY(!sends(screen, Qt::Key_L));
        QVERIFY(!screen.model().keepZoom());
    }

    void theZoomLockKeySwitchesWhileItsFeatureIsOn() {
        Screen screen(threePhotos, {.isLockZoomFeatureEnabled = true});
        QVERIFY(sends(screen, Qt::Key_L));
        QVERIFY(screen.model().keepZoom());
        screen.press(Qt::Key_L, Qt::ControlModifier);
        QVERIFY(!screen.model().keepZoom());
        screen.click("Zoom Locked");
        QVERIFY(screen.model().keepZoom());
    }

    void zoomIsNeverKeptWhileItsFeatureIsOff() {
        Screen screen(threePhotos);
        screen.model().setKeepZoom(true);
        QVERIFY(!screen.item("imageView")->property("keepZoom").toBool());
        Screen locked(threePhotos, {.isLockZoomFeatureEnabled = true});
        QVERIFY(!locked.item("imageView")->property("keepZoom").toBool());
        locked.model().setKeepZoom(true);
        QVERIFY(locked.item("imageView")->property("keepZoom").toBool());
    }

    void capsLockDoesNotChangeTheKeys() {
        Screen screen(threePhotos);
        QKeyEvent capital(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, "X");
        QCoreApplication::sendEvent(screen.window.get(), &capital);
        QVERIFY(screen.model().currentState() == ReviewState::rejected);
    }

    void onALayoutOfOtherLettersTheKeysPlaceCounts() {
        constexpr int cyrillicChe = 0x427; // where "x" is on a Latin layout
        Screen screen(threePhotos);
        QKeyEvent press(QEvent::KeyPress, cyrillicChe, Qt::NoModifier, 53, 0, 0, QStringLiteral(u"\u0447"));
        QCoreApplication::sendEvent(screen.window.get(), &press);
        QVERIFY(screen.model().currentState() == ReviewState::rejected);
    }

    void aLatinLetterInThePlaceOfAnotherIsNotTakenForIt() {
        Screen screen(threePhotos);
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Q, Qt::NoModifier, 53, 0, 0, "q");
        QCoreApplication::sendEvent(screen.window.get(), &press);
        QVERIFY(screen.model().currentState() == ReviewState::unreviewed);
    }

    void aKeyWithACommandModifierIsNotABareKey() {
        Screen screen(threePhotos);
        for (const auto modifier : {Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier}) {
            screen.press(Qt::Key_X, modifier);
            QVERIFY(screen.model().currentState() == ReviewState::unreviewed);
        }
    }

    void heldKeysRepeat() {
        Screen screen(threePhotos);
        QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(screen.window.get(), &repeat);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void controlAndSuperShortcutsDoTheButtonsWork_data() {
        QTest::addColumn<int>("modifier");
        QTest::newRow("Control") << static_cast<int>(Qt::ControlModifier);
        QTest::newRow("Super") << static_cast<int>(Qt::MetaModifier);
    }
    void controlAndSuperShortcutsDoTheButtonsWork() {
        QFETCH(int, modifier);
        const auto command = static_cast<Qt::KeyboardModifier>(modifier);
        Screen screen(threePhotos);
        screen.press(Qt::Key_Space);
        screen.press(Qt::Key_Z, command);
        QCOMPARE(screen.model().approvedCount(), 0);
        screen.press(Qt::Key_Space);
        screen.press(Qt::Key_A, command);
        QVERIFY(exists(screen.photos.at("approved/a.jpg")));
        screen.press(Qt::Key_X);
        screen.press(Qt::Key_R, command);
        QVERIFY(exists(screen.photos.at("rejected/b.jpg")));
        screen.choice.reset();
        screen.press(Qt::Key_O, command);
        QVERIFY(!screen.chooserMessage.isEmpty());
    }

    void theButtonsDoTheirWork() {
        Screen screen(threePhotos);
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

    void theKeysWorkAfterAnyButtonWasClicked() {
        Screen screen(threePhotos);
        screen.click("Open Folder");
        screen.press(Qt::Key_Space);
        QCOMPARE(screen.model().approvedCount(), 1);
        screen.click("Undo");
        screen.press(Qt::Key_Space);
        QCOMPARE(screen.model().approvedCount(), 1);
        screen.click("Move Approved (1)");
        screen.press(Qt::Key_X);
        QCOMPARE(screen.model().rejectedCount(), 1);
        screen.click("Move Rejected (1)");
        screen.press(Qt::Key_Space);
        QCOMPARE(screen.model().approvedCount(), 1);
    }

    void disabledButtonsAndTheirShortcutsDoNothing() {
        Screen screen(threePhotos);
        QVERIFY(!screen.button("Undo")->isEnabled());
        QVERIFY(!screen.button("Move Approved (0)")->isEnabled());
        QVERIFY(!screen.button("Move Rejected (0)")->isEnabled());
        for (const auto key : {Qt::Key_Z, Qt::Key_A, Qt::Key_R}) {
            screen.press(key, Qt::ControlModifier);
        }
        QCOMPARE(namesIn(screen.photos.url()), threePhotos);
        screen.press(Qt::Key_Space);
        QVERIFY(screen.button("Undo")->isEnabled());
        QVERIFY(screen.button("Move Approved (1)")->isEnabled());
        QVERIFY(!screen.button("Move Rejected (0)")->isEnabled());
    }

    void theBottomRowGoesWithTheLastPhoto() {
        Screen screen({"a.jpg"});
        screen.press(Qt::Key_Space);
        QVERIFY(screen.isShown("floatingMoveRejected"));
        screen.press(Qt::Key_A, Qt::ControlModifier);
        QVERIFY(!screen.isShown("floatingMoveRejected"));
        QVERIFY(!screen.isShown("floatingStatusBar"));
        QVERIFY(screen.isShown("noImagesMessage"));
    }

    void thePanelsNameThePhotoAndCount() {
        Screen screen(threePhotos);
        screen.press(Qt::Key_Right);
        screen.press(Qt::Key_X);
        QVERIFY(hasText(screen, "floatingStatusBar", "b.jpg"));
        QVERIFY(hasText(screen, "floatingMoveRejected", "2 / 3"));
        QVERIFY(hasText(screen, "floatingMoveRejected", "⌘A"));
        QVERIFY(hasText(screen, "floatingMoveRejected", "⌘R"));
        QVERIFY(screen.button("Move Rejected (1)") != nullptr);
        QVERIFY(hasText(
            screen, "floatingLeftToolbar", QString::fromStdString(screen.photos.url().lastPathComponent())));
    }

    void theFirstPhotoIsNumberOne() {
        Screen screen(threePhotos);
        QVERIFY(hasText(screen, "floatingMoveRejected", "1 / 3"));
    }

    void beforeAResolutionIsReportedTheStatusBarShowsOnlyTheName() {
        Screen screen;
        screen.photos.write("a.jpg", "no picture");
        screen.model().loadFolder(screen.photos.url());
        screen.scheduler.runAll();
        screen.picture();
        QCoreApplication::processEvents();
        QVERIFY(hasText(screen, "floatingStatusBar", "a.jpg"));
        QVERIFY(!hasText(screen, "floatingStatusBar", "|"));
    }

    void theStatusBarNamesTheResolutionOnScreen() {
        Screen screen(threePhotos); // of 1500 pixels, in a window narrower than 1200 points
        screen.window->resize(1000, 700);
        QTRY_VERIFY(hasText(screen, "floatingStatusBar", "1.6K"));
        QVERIFY(hasText(screen, "floatingStatusBar", "|"));
        zoomIn(screen, 5);
        screen.scheduler.advance(std::chrono::milliseconds(400));
        screen.scheduler.runAll();
        QTRY_VERIFY(hasText(screen, "floatingStatusBar", "2.4K"));
        screen.press(Qt::Key_Right);
        screen.scheduler.runAll();
        QTRY_VERIFY(hasText(screen, "floatingStatusBar", "1.6K"));
    }

    void dragAndWheelOnAPanelAreNotForThePhoto() {
        Screen screen(threePhotos);
        screen.window->resize(1000, 700);
        screen.picture();
        zoomIn(screen, 10);
        const auto* canvas = screen.item("imageView")->findChild<PhotoCanvasView*>();
        const QPointF before = canvas->geometry().imageOffset;
        const QQuickItem* panel = screen.item("floatingStatusBar");
        const QPoint start = panel->mapToScene({5, 5}).toPoint();
        QTest::mousePress(screen.window.get(), Qt::LeftButton, Qt::NoModifier, start);
        QTest::mouseMove(screen.window.get(), start + QPoint(50, -50));
        QTest::mouseMove(screen.window.get(), start + QPoint(150, -150));
        QTest::mouseRelease(screen.window.get(), Qt::LeftButton, Qt::NoModifier, start + QPoint(150, -150));
        QCOMPARE(canvas->geometry().imageOffset, before);
        for (const auto modifier : {Qt::NoModifier, Qt::ControlModifier}) {
            QWheelEvent event(
                start, start, QPoint(), {0, 120}, Qt::NoButton, modifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(screen.window.get(), &event);
            QCOMPARE(canvas->geometry().imageOffset, before);
        }
    }

    void aPinchReachesThePhotoThroughItsStamp() {
        Screen screen(threePhotos);
        screen.press(Qt::Key_X);
        screen.picture();
        const auto* canvas = screen.item("imageView")->findChild<PhotoCanvasView*>();
        const double before = canvas->geometry().zoomScale;
        const QPointF centre = QRectF(QPointF(), screen.window->size()).center();
        QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, centre,
            centre, centre, 0.5, {});
        QCoreApplication::sendEvent(screen.window.get(), &pinch);
        QCOMPARE(canvas->geometry().zoomScale, before * 1.5);
    }

    void withTheFeaturesOffTheirGroupsAreAbsent() {
        Screen screen(threePhotos);
        QVERIFY(!screen.button("Zoom Locked")->isVisible());
        QVERIFY(!screen.button("Sync RAW")->isVisible());
        screen.press(Qt::Key_L, Qt::ControlModifier);
        QVERIFY(!screen.model().keepZoom());
    }

    void syncingIsDisabledWithoutAFolder() {
        Screen screen({}, {.isSyncRawFeatureEnabled = true});
        QVERIFY(!screen.button("Sync RAW")->isEnabled());
        screen.click("Sync RAW");
        QVERIFY(!screen.isOpen("rawSyncAlert"));
        screen.model().loadFolder(screen.photos.url());
        QVERIFY(screen.button("Sync RAW")->isEnabled());
    }

    void anErrorIsShownUntilItIsDismissed_data() {
        QTest::addColumn<int>("key");
        QTest::newRow("Return") << static_cast<int>(Qt::Key_Return);
        QTest::newRow("Escape") << static_cast<int>(Qt::Key_Escape);
        QTest::newRow("click") << 0;
    }
    void anErrorIsShownUntilItIsDismissed() {
        QFETCH(int, key);
        Screen screen(threePhotos);
        screen.model().setErrorMessage(QString("Failed to read folder contents."));
        QTRY_VERIFY(screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Right); // the keys are the alert's while it is open
        QCOMPARE(screen.model().currentIndex(), 0);
        if (key) {
            screen.press(static_cast<Qt::Key>(key));
        } else {
            screen.click("OK");
        }
        QVERIFY(!screen.model().hasErrorMessage());
        QTRY_VERIFY(!screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void orphansAreDeletedOnlyOnConfirmation() {
        Screen screen(threePhotos, {.isSyncRawFeatureEnabled = true});
        screen.photos.write("z.ARW", "raw");
        screen.click("Sync RAW");
        QTRY_VERIFY(screen.isOpen("rawSyncAlert"));
        screen.click("Cancel");
        QTRY_VERIFY(!screen.isOpen("rawSyncAlert"));
        QVERIFY(exists(screen.photos.at("z.ARW")));
        QVERIFY(!screen.model().showRawSyncAlert());
        for (const auto key : {Qt::Key_Escape, Qt::Key_Return}) {
            screen.click("Sync RAW");
            QTRY_VERIFY(screen.isOpen("rawSyncAlert"));
            screen.press(key);
            QTRY_VERIFY(!screen.isOpen("rawSyncAlert"));
            QVERIFY(exists(screen.photos.at("z.ARW")));
        }
        screen.click("Sync RAW");
        QTRY_VERIFY(screen.isOpen("rawSyncAlert"));
        screen.click("Delete");
        QTRY_VERIFY(!screen.isOpen("rawSyncAlert"));
        QVERIFY(!exists(screen.photos.at("z.ARW")));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void aSearchThatFoundNothingHasOnlyAnOkButton() {
        Screen screen(threePhotos, {.isSyncRawFeatureEnabled = true});
        screen.click("Sync RAW");
        QTRY_VERIFY(screen.isOpen("rawSyncAlert"));
        QVERIFY(!screen.button("Delete") || !screen.button("Delete")->isVisible());
        screen.click("OK");
        QTRY_VERIFY(!screen.isOpen("rawSyncAlert"));
    }

    void aLongMessageScrollsAndItsButtonsStayOnTheScreen() {
        Screen screen(threePhotos, {.isSyncRawFeatureEnabled = true});
        for (int index = 0; index < 500; ++index) {
            screen.photos.write("RAW" + std::to_string(index) + ".ARW", "raw");
        }
        screen.window->resize(900, 650);
        QTRY_COMPARE(screen.window->contentItem()->size(), QSizeF(900, 650));
        screen.click("Sync RAW");
        QTRY_VERIFY(screen.isOpen("rawSyncAlert"));
        for (const char* text : {"Delete", "Cancel"}) {
            const QQuickItem* found = screen.button(text);
            QVERIFY(found && found->isVisible());
            const QRectF place = found->mapRectToScene(found->boundingRect());
            QVERIFY(QRectF(0, 0, 900, 650).contains(place));
        }
    }

    void oneErrorAfterAnotherShowsBoth() {
        Screen screen(threePhotos, {.isSyncRawFeatureEnabled = true});
        screen.photos.write("z.ARW", "raw");
        screen.click("Sync RAW");
        QTRY_VERIFY(screen.isOpen("rawSyncAlert"));
        unlink(screen.photos.at("z.ARW").path().c_str());
        screen.click("Delete");
        QTRY_VERIFY(screen.isOpen("errorAlert"));
        QVERIFY(screen.model().errorText().startsWith("Failed to delete some RAW files:\nz.ARW: "));
        screen.press(Qt::Key_Return);
        QTRY_VERIFY(!screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

private:
    static void zoomIn(Screen& screen, int notches) {
        const QPointF centre = QRectF(QPointF(), screen.window->size()).center();
        for (int notch = 0; notch < notches; ++notch) {
            QWheelEvent event(centre, centre, QPoint(), {0, 120}, Qt::NoButton, Qt::ControlModifier,
                Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(screen.window.get(), &event);
        }
    }

    /// Whether the window takes the key.
    static bool sends(Screen& screen, int key) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(screen.window.get(), &press);
        return press.isAccepted();
    }

    static bool hasText(const Screen& screen, const char* objectName, const QString& text) {
        const auto texts = screen.item(objectName)->findChildren<QQuickItem*>();
        return std::ranges::any_of(texts, [&](const QQuickItem* item) {
            return item->inherits("QQuickText") && item->isVisible() && item->property("text") == text;
        });
    }
};

QTEST_MAIN(ScreenTest)
#include "ScreenTest.moc"
