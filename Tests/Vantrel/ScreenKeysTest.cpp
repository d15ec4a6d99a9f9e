#include "Tests/Vantrel/ScreenFixture.h"

#include <QRegularExpression>
#include <QTest>

namespace {

constexpr CullingViewModel::FeatureFlags allFeatures{
    .isLockZoomFeatureEnabled = true, .isSyncRawFeatureEnabled = true};

constexpr auto control = Qt::ControlModifier;
constexpr auto super = Qt::MetaModifier;

/// What has the focus in turn when that key is pressed again and again, until it is back where it was.
QStringList walk(ScreenFixture& screen, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    constexpr int moreThanThereAre = 20;
    const QString start = screen.focused();
    QStringList reached;
    do {
        reached.append(screen.focused());
        screen.press(key, modifiers);
    } while (screen.focused() != start && reached.size() < moreThanThereAre);
    return reached;
}

void pressAll(ScreenFixture& screen, const QList<int>& keys) {
    for (const int key : keys) {
        screen.press(static_cast<Qt::Key>(key));
    }
}

void addCommandModifiers() {
    QTest::addColumn<Qt::KeyboardModifiers>("command");
    QTest::newRow("Control") << Qt::KeyboardModifiers(control);
    QTest::newRow("Super") << Qt::KeyboardModifiers(super);
}

void addZoomModifiers() {
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("Control") << Qt::KeyboardModifiers(control);
    QTest::newRow("Control, on the keypad") << (control | Qt::KeypadModifier);
    QTest::newRow("Control and Shift") << (control | Qt::ShiftModifier);
    QTest::newRow("Super") << Qt::KeyboardModifiers(super);
    QTest::newRow("Super, on the keypad") << (super | Qt::KeypadModifier);
}

bool isNear(double a, double b) {
    return std::abs(a - b) < 1e-6;
}

bool isNear(QPointF a, QPointF b) {
    return isNear(a.x(), b.x()) && isNear(a.y(), b.y());
}

} // namespace

/// The keys of the screen: who has them, and what they do.
class ScreenKeysTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".")); }

    // The bare keys

    void theBareKeysWalkAndMark() {
        ScreenFixture screen(threePhotos);
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
        ScreenFixture screen;
        for (const int key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_X, Qt::Key_Space}) {
            QVERIFY(screen.takes(key));
        }
        QVERIFY(!screen.takes(Qt::Key_Y));
    }

    void theZoomLockKeyPassesOnWhileItsFeatureIsOff() {
        ScreenFixture screen(threePhotos);
        QVERIFY(!screen.takes(Qt::Key_L));
        QVERIFY(!screen.takes(Qt::Key_L, control));
        QVERIFY(!screen.model().keepZoom());
    }

    void theZoomLockKeySwitchesWhileItsFeatureIsOn() {
        ScreenFixture screen(threePhotos, {.isLockZoomFeatureEnabled = true});
        QVERIFY(screen.takes(Qt::Key_L));
        QVERIFY(screen.model().keepZoom());
        screen.press(Qt::Key_L, control);
        QVERIFY(!screen.model().keepZoom());
        screen.click("Zoom Locked");
        QVERIFY(screen.model().keepZoom());
    }

    void capsLockDoesNotChangeTheKeys() {
        ScreenFixture screen(threePhotos);
        QKeyEvent capital(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, "X");
        QCoreApplication::sendEvent(screen.window.get(), &capital);
        QVERIFY(screen.model().currentState() == ReviewState::rejected);
    }

    void aKeyWithACommandModifierIsNotABareKey() {
        ScreenFixture screen(threePhotos);
        for (const auto modifier : {control, Qt::AltModifier, super}) {
            screen.press(Qt::Key_X, modifier);
            QVERIFY(screen.model().currentState() == ReviewState::unreviewed);
        }
    }

    void heldBareKeysRepeat() {
        ScreenFixture screen(threePhotos);
        for (const int position : {1, 2, 0}) {
            QVERIFY(screen.takes(Qt::Key_Right, Qt::NoModifier, true));
            QCOMPARE(screen.model().currentIndex(), position);
        }
        QVERIFY(screen.takes(Qt::Key_Left, Qt::NoModifier, true));
        QCOMPARE(screen.model().currentIndex(), 2);
    }

    // The shortcuts

    void theShortcutsDoTheButtonsWork_data() { addCommandModifiers(); }
    void theShortcutsDoTheButtonsWork() {
        QFETCH(Qt::KeyboardModifiers, command);
        ScreenFixture screen(threePhotos);
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

    void theShortcutOfADisabledButtonIsNotTaken_data() { addCommandModifiers(); }
    void theShortcutOfADisabledButtonIsNotTaken() {
        QFETCH(Qt::KeyboardModifiers, command);
        ScreenFixture screen(threePhotos);
        const QString before = screen.account();
        for (const auto key : {Qt::Key_Z, Qt::Key_A, Qt::Key_R}) {
            QVERIFY(!screen.takes(key, command));
        }
        QCOMPARE(screen.account(), before);
        QCOMPARE(namesIn(screen.photos.url()), threePhotos);
    }

    void heldShortcutsActOnce_data() {
        QTest::addColumn<int>("key");
        QTest::newRow("open") << static_cast<int>(Qt::Key_O);
        QTest::newRow("move approved") << static_cast<int>(Qt::Key_A);
        QTest::newRow("move rejected") << static_cast<int>(Qt::Key_R);
        QTest::newRow("lock zoom") << static_cast<int>(Qt::Key_L);
    }
    void heldShortcutsActOnce() {
        QFETCH(int, key);
        ScreenFixture screen(threePhotos, allFeatures);
        pressAll(screen, {Qt::Key_Space, Qt::Key_Right, Qt::Key_X});
        const QString before = screen.account();
        QVERIFY(screen.takes(key, control, true)); // as held since before
        QCOMPARE(screen.account(), before);
        QVERIFY(screen.takes(key, control));
        QVERIFY(screen.account() != before);
    }

    void heldUndoTakesBackOneMarkAfterAnother() {
        ScreenFixture screen(threePhotos);
        pressAll(screen, {Qt::Key_Space, Qt::Key_Right, Qt::Key_Space, Qt::Key_Right, Qt::Key_Space});
        QVERIFY(screen.takes(Qt::Key_Z, control));
        QVERIFY(screen.takes(Qt::Key_Z, control, true));
        QCOMPARE(screen.model().approvedCount(), 1);
    }

    void aHeldKeyThatUsedUpItsButtonDoesNotGoOnToThePhoto() {
        ScreenFixture screen(threePhotos);
        screen.press(Qt::Key_X);
        screen.focus("Undo");
        QVERIFY(screen.takes(Qt::Key_Space)); // the button is disabled now, and the photo has the focus
        QCOMPARE(screen.focused(), QStringLiteral("contentLayer"));
        screen.takes(Qt::Key_Space, Qt::NoModifier, true);
        QVERIFY(screen.model().currentState() == ReviewState::unreviewed);
        screen.press(Qt::Key_Space);
        QVERIFY(screen.model().currentState() == ReviewState::approved);
    }

    void aHeldKeyThatClosedAnAlertDoesNotGoOnToThePhoto() {
        ScreenFixture screen(threePhotos);
        screen.model().setErrorMessage(QStringLiteral("no"));
        QVERIFY(screen.takes(Qt::Key_Space));
        QVERIFY(!screen.isOpen("errorAlert"));
        screen.takes(Qt::Key_Space, Qt::NoModifier, true);
        QVERIFY(screen.model().currentState() == ReviewState::unreviewed);
    }

    void heldTabWalksOn() {
        ScreenFixture screen(threePhotos);
        screen.press(Qt::Key_X);
        screen.takes(Qt::Key_Tab);
        screen.takes(Qt::Key_Tab, Qt::NoModifier, true);
        QCOMPARE(screen.focused(), QStringLiteral("Undo"));
    }

    void aPressOfThePointerGivesTheKeysBackToThePhoto_data() {
        QTest::addColumn<QPoint>("place");
        QTest::newRow("on the photo") << QPoint(450, 400);
        QTest::newRow("on a panel") << QPoint(15, 30);
    }
    void aPressOfThePointerGivesTheKeysBackToThePhoto() {
        QFETCH(QPoint, place);
        ScreenFixture screen(threePhotos);
        screen.resize({900, 650});
        screen.press(Qt::Key_X);
        screen.focus("Undo");
        QTest::mouseClick(screen.window.get(), Qt::LeftButton, Qt::NoModifier, place);
        QCOMPARE(screen.focused(), QStringLiteral("contentLayer"));
        screen.press(Qt::Key_Space);
        QVERIFY(screen.model().currentState() == ReviewState::approved);
    }

    void anotherModifierBesideControlIsNoShortcut_data() {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::newRow("Shift and Control") << (Qt::ShiftModifier | control);
        QTest::newRow("Shift and Super") << (Qt::ShiftModifier | super);
        QTest::newRow("Control and Alt") << (control | Qt::AltModifier);
        QTest::newRow("Control and Super") << (control | super);
        QTest::newRow("Alt") << Qt::KeyboardModifiers(Qt::AltModifier);
    }
    void anotherModifierBesideControlIsNoShortcut() {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        ScreenFixture screen(threePhotos, allFeatures);
        pressAll(screen, {Qt::Key_Space, Qt::Key_Right, Qt::Key_X});
        const QString before = screen.account();
        for (const auto key : {Qt::Key_O, Qt::Key_Z, Qt::Key_A, Qt::Key_R, Qt::Key_L, Qt::Key_X}) {
            QVERIFY(!screen.takes(key, modifiers));
        }
        QCOMPARE(screen.account(), before);
    }

    // Other layouts; the place of a key is its code on X11 and Wayland keyboards

    void onALayoutOfOtherLettersTheBareKeysPlacesCount() {
        ScreenFixture screen(threePhotos, allFeatures);
        QVERIFY(screen.takes(Qt::Key_Right, Qt::NoModifier, false, 114));
        QCOMPARE(screen.model().currentIndex(), 1);
        QVERIFY(screen.takes(Qt::Key_Left, Qt::NoModifier, false, 113));
        QCOMPARE(screen.model().currentIndex(), 0);
        QVERIFY(screen.takes(u'Ч', Qt::NoModifier, false, 53));
        QVERIFY(screen.model().currentState() == ReviewState::rejected);
        QVERIFY(screen.takes(Qt::Key_Space, Qt::NoModifier, false, 65));
        QVERIFY(screen.model().currentState() == ReviewState::approved);
        QVERIFY(screen.takes(u'Д', Qt::NoModifier, false, 46));
        QVERIFY(screen.model().keepZoom());
        QVERIFY(!screen.takes(u'Ы', Qt::NoModifier, false, 39));
    }

    void onALayoutOfOtherLettersTheShortcutsPlacesCount_data() { addCommandModifiers(); }
    void onALayoutOfOtherLettersTheShortcutsPlacesCount() {
        QFETCH(Qt::KeyboardModifiers, command);
        ScreenFixture screen(threePhotos, allFeatures);
        screen.press(Qt::Key_X);
        QVERIFY(screen.takes(u'Я', command, false, 52));
        QCOMPARE(screen.model().rejectedCount(), 0);
        screen.press(Qt::Key_Space);
        QVERIFY(screen.takes(u'Ф', command, false, 38));
        QVERIFY(exists(screen.photos.at("approved/a.jpg")));
        screen.press(Qt::Key_X);
        QVERIFY(screen.takes(u'К', command, false, 27));
        QVERIFY(exists(screen.photos.at("rejected/b.jpg")));
        QVERIFY(screen.takes(u'Д', command, false, 46));
        QVERIFY(screen.model().keepZoom());
        QVERIFY(screen.takes(u'Щ', command, false, 32));
        QVERIFY(!screen.chooserMessage.isEmpty());
    }

    void aLatinLetterInThePlaceOfAnotherIsNotTakenForIt() {
        ScreenFixture screen(threePhotos);
        QVERIFY(!screen.takes(Qt::Key_Q, Qt::NoModifier, false, 53));
        QVERIFY(screen.model().currentState() == ReviewState::unreviewed);
        screen.press(Qt::Key_Space);
        QVERIFY(!screen.takes(u'Š', control, false, 38)); // as on a layout of Latvian
        QCOMPARE(screen.model().approvedCount(), 1);
    }

    // Zoom and position

    void controlZoomsAndMovesThePhoto_data() { addZoomModifiers(); }
    void controlZoomsAndMovesThePhoto() {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        struct Step {
            Qt::Key key;
            double factor;
            QPointF way; // to the right and up
        };
        const Step steps[] = {{Qt::Key_Plus, 1.1, {}}, {Qt::Key_Equal, 1.1, {}}, {Qt::Key_Minus, 0.9, {}},
            {Qt::Key_Left, 1, {48, 0}}, {Qt::Key_Right, 1, {-48, 0}}, {Qt::Key_Up, 1, {0, -48}},
            {Qt::Key_Down, 1, {0, 48}}};
        ScreenFixture screen(threePhotos);
        CanvasGeometry expected = zoomedIn(screen);
        for (const Step& step : steps) {
            const QPointF centre(500, 350);
            expected.zoomScale *= step.factor;
            expected.imageOffset = centre + (expected.imageOffset - centre) * step.factor + step.way;
            QVERIFY(screen.takes(step.key, modifiers));
            const CanvasGeometry found = screen.geometry();
            QVERIFY2(isNear(found.zoomScale, expected.zoomScale) &&
                         isNear(found.imageOffset, expected.imageOffset),
                qPrintable(QKeySequence(step.key).toString()));
        }
        QCOMPARE(screen.model().currentIndex(), 0);
        QVERIFY(!screen.model().canUndo());
    }

    void controlAndZeroFitsThePhoto_data() { addZoomModifiers(); }
    void controlAndZeroFitsThePhoto() {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        ScreenFixture screen(threePhotos);
        zoomedIn(screen);
        QVERIFY(screen.takes(Qt::Key_0, modifiers));
        const CanvasGeometry& geometry = screen.geometry();
        QVERIFY(isNear(geometry.zoomScale, 1000. / 1200));
        QVERIFY(isNear(geometry.imageOffset, QPointF(0, (700 - 800 * geometry.zoomScale) / 2)));
        QVERIFY(!screen.model().canUndo());
    }

    void heldZoomKeysRepeat() {
        ScreenFixture screen(threePhotos);
        const CanvasGeometry before = zoomedIn(screen);
        QVERIFY(screen.takes(Qt::Key_Plus, control, true));
        QVERIFY(screen.takes(Qt::Key_Plus, control, true));
        QVERIFY(isNear(screen.geometry().zoomScale, before.zoomScale * 1.1 * 1.1));
    }

    void theZoomKeysDoNothingWithoutAPhoto() {
        ScreenFixture screen;
        const QString before = screen.account();
        for (const auto key : {Qt::Key_Plus, Qt::Key_Equal, Qt::Key_Minus, Qt::Key_0, Qt::Key_Left,
                 Qt::Key_Right, Qt::Key_Up, Qt::Key_Down}) {
            screen.press(key, control);
        }
        QCOMPARE(screen.account(), before);
        writePhotos(screen.photos, threePhotos);
        screen.model().loadFolder(screen.photos.url());
        screen.scheduler.runAll();
        QCOMPARE(screen.geometry().zoomScale, screen.geometry().fitScale());
    }

    // The focus

    void tabWalksThroughWhatCanBePressed_data() {
        QTest::addColumn<bool>("hasFeatures");
        QTest::addColumn<bool>("hasPhotos");
        QTest::addColumn<QList<int>>("marks");
        QTest::addColumn<QStringList>("expected");
        const QList<int> none;
        const QList<int> both{Qt::Key_Space, Qt::Key_Right, Qt::Key_X};
        QTest::newRow("no folder") << false << false << none << QStringList{"contentLayer", "Open Folder"};
        QTest::newRow("no folder, with the features")
            << true << false << none << QStringList{"contentLayer", "Open Folder", "Zoom Locked"};
        QTest::newRow("no marks") << false << true << none << QStringList{"contentLayer", "Open Folder"};
        QTest::newRow("approved") << false << true << QList<int>{Qt::Key_Space}
                                  << QStringList{"contentLayer", "Open Folder", "Undo", "Move Approved (1)"};
        QTest::newRow("both marks") << false << true << both
                                    << QStringList{"contentLayer", "Open Folder", "Undo", "Move Approved (1)",
                                           "Move Rejected (1)"};
        QTest::newRow("both marks, with the features")
            << true << true << both
            << QStringList{"contentLayer", "Open Folder", "Undo", "Zoom Locked", "Sync RAW",
                   "Move Approved (1)", "Move Rejected (1)"};
    }
    void tabWalksThroughWhatCanBePressed() {
        QFETCH(bool, hasFeatures);
        QFETCH(bool, hasPhotos);
        QFETCH(QList<int>, marks);
        QFETCH(QStringList, expected);
        ScreenFixture screen(hasPhotos ? threePhotos : std::vector<std::string>{},
            hasFeatures ? allFeatures : CullingViewModel::FeatureFlags{});
        pressAll(screen, marks);
        QCOMPARE(walk(screen, Qt::Key_Tab), expected);
        std::reverse(expected.begin() + 1, expected.end());
        QCOMPARE(walk(screen, Qt::Key_Backtab, Qt::ShiftModifier), expected);
    }

    void aFocusedButtonShowsARing() {
        ScreenFixture screen(threePhotos, allFeatures);
        pressAll(screen, {Qt::Key_Space, Qt::Key_Right, Qt::Key_X});
        for (const char* text :
            {"Open Folder", "Undo", "Zoom Locked", "Sync RAW", "Move Approved (1)", "Move Rejected (1)"}) {
            const QRectF place = placeOf(*screen.button(text));
            const QPoint beside(qRound(place.left()) - 2, centreOf(*screen.button(text)).y());
            const QColor ring("#0a84ff");
            QVERIFY(screen.picture().pixelColor(beside) != ring);
            screen.focus(text);
            QCOMPARE(screen.picture().pixelColor(beside), ring);
            screen.press(Qt::Key_Escape);
            QVERIFY(screen.picture().pixelColor(beside) != ring);
        }
    }

    void aFocusedButtonIsPressedByTheKeys_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        const Qt::KeyboardModifiers none;
        QTest::newRow("Space") << static_cast<int>(Qt::Key_Space) << none;
        QTest::newRow("Return") << static_cast<int>(Qt::Key_Return) << none;
        QTest::newRow("Enter") << static_cast<int>(Qt::Key_Enter)
                               << Qt::KeyboardModifiers(Qt::KeypadModifier);
    }
    void aFocusedButtonIsPressedByTheKeys() {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        ScreenFixture screen(threePhotos, allFeatures);
        screen.focus("Zoom Locked");
        QVERIFY(screen.takes(key, modifiers));
        QVERIFY(screen.model().keepZoom());
        screen.focus("Open Folder");
        QVERIFY(screen.takes(key, modifiers));
        QVERIFY(!screen.chooserMessage.isEmpty());
        QVERIFY(!screen.model().canUndo());
        QCOMPARE(screen.focused(), "Open Folder");
    }

    void aHeldKeyPressesAFocusedButtonOnce() {
        ScreenFixture screen(threePhotos, allFeatures);
        screen.focus("Zoom Locked");
        for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
            const QString before = screen.account();
            QVERIFY(screen.takes(key, Qt::NoModifier, true));
            QCOMPARE(screen.account(), before);
        }
    }

    void besideAFocusedButtonTheOtherKeysWork() {
        ScreenFixture screen(threePhotos, allFeatures);
        screen.focus("Open Folder");
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
        screen.press(Qt::Key_Left);
        QCOMPARE(screen.model().currentIndex(), 0);
        screen.press(Qt::Key_X);
        QCOMPARE(screen.model().rejectedCount(), 1);
        screen.press(Qt::Key_Z, control);
        QCOMPARE(screen.model().rejectedCount(), 0);
        screen.press(Qt::Key_L);
        QVERIFY(screen.model().keepZoom());
        const double zoom = screen.geometry().zoomScale;
        screen.press(Qt::Key_Plus, control);
        QVERIFY(isNear(screen.geometry().zoomScale, zoom * 1.1));
        screen.press(Qt::Key_O, control);
        QVERIFY(!screen.chooserMessage.isEmpty());
        QCOMPARE(screen.focused(), "Open Folder");
    }

    void aClickLeavesTheFocusOnThePhoto() {
        ScreenFixture screen(threePhotos, allFeatures);
        pressAll(screen, {Qt::Key_Right, Qt::Key_Space, Qt::Key_Right, Qt::Key_X, Qt::Key_Left, Qt::Key_X});
        screen.picture();
        for (const char* text :
            {"Open Folder", "Zoom Locked", "Undo", "Move Approved (1)", "Move Rejected (1)", "Undo"}) {
            QTest::mousePress(
                screen.window.get(), Qt::LeftButton, Qt::NoModifier, centreOf(*screen.button(text)));
            QCOMPARE(screen.focused(), "contentLayer");
            QTest::mouseRelease(
                screen.window.get(), Qt::LeftButton, Qt::NoModifier, centreOf(*screen.button(text)));
            QCOMPARE(screen.focused(), "contentLayer");
        }
        QCOMPARE(screen.model().photoCount(), 1);
        for (const char* name : {"floatingLeftToolbar", "floatingStatusBar", "imageView"}) {
            QTest::mouseClick(screen.window.get(), Qt::LeftButton, Qt::NoModifier,
                placeOf(*screen.item(name)).center().toPoint());
            QCOMPARE(screen.focused(), "contentLayer");
        }
        screen.press(Qt::Key_Space);
        QCOMPARE(screen.model().approvedCount(), 1);
    }

    void escapeGivesTheFocusBackToThePhoto() {
        ScreenFixture screen(threePhotos);
        screen.focus("Open Folder");
        QVERIFY(screen.takes(Qt::Key_Escape));
        QCOMPARE(screen.focused(), "contentLayer");
        screen.press(Qt::Key_Space);
        QCOMPARE(screen.model().approvedCount(), 1);
        QVERIFY(!screen.takes(Qt::Key_Escape));
        QCOMPARE(screen.focused(), "contentLayer");
    }

    void aFocusedButtonThatIsDisabledLeavesTheKeysWorking_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("mark");
        QTest::addColumn<bool>("isClicked");
        for (const bool isClicked : {false, true}) {
            const QByteArray how = isClicked ? " by a click" : " by its key";
            QTest::newRow("the last undo" + how) << "Undo" << static_cast<int>(Qt::Key_X) << isClicked;
            QTest::newRow("the move of the approved" + how)
                << "Move Approved (1)" << static_cast<int>(Qt::Key_Space) << isClicked;
            QTest::newRow("the move of the rejected" + how)
                << "Move Rejected (1)" << static_cast<int>(Qt::Key_X) << isClicked;
        }
    }
    void aFocusedButtonThatIsDisabledLeavesTheKeysWorking() {
        QFETCH(QString, text);
        QFETCH(int, mark);
        QFETCH(bool, isClicked);
        ScreenFixture screen(threePhotos);
        pressAll(screen, {mark});
        screen.focus(text);
        const QQuickItem* button = screen.button(text);
        if (isClicked) {
            screen.click(text);
        } else {
            screen.press(Qt::Key_Space);
        }
        QVERIFY(!button->isEnabled());
        QCOMPARE(screen.focused(), "contentLayer");
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
        screen.press(Qt::Key_Space);
        QCOMPARE(screen.model().approvedCount(), 1);
    }

    void aFocusedButtonThatIsHiddenLeavesTheKeysWorking() {
        ScreenFixture screen({"a.jpg"});
        screen.press(Qt::Key_Space);
        screen.focus("Move Approved (1)");
        screen.press(Qt::Key_Return);
        QVERIFY(!screen.isShown("floatingMoveRejected"));
        QCOMPARE(screen.focused(), "contentLayer");
        QVERIFY(screen.takes(Qt::Key_Space));
        screen.press(Qt::Key_O, control);
        QVERIFY(!screen.chooserMessage.isEmpty());
    }

    void theKeysWorkAfterTheFolderChooser_data() {
        QTest::addColumn<bool>("isClicked");
        QTest::addColumn<bool>("isChosen");
        QTest::newRow("opened by its key, cancelled") << false << false;
        QTest::newRow("opened by its key, chosen") << false << true;
        QTest::newRow("opened by a click, cancelled") << true << false;
        QTest::newRow("opened by a click, chosen") << true << true;
    }
    void theKeysWorkAfterTheFolderChooser() {
        QFETCH(bool, isClicked);
        QFETCH(bool, isChosen);
        ScreenFixture screen(threePhotos);
        const TemporaryFolder other;
        writePhotos(other, {"d.jpg", "e.jpg"});
        if (isChosen) {
            screen.choice = other.url();
        }
        if (isClicked) {
            screen.click("Open Folder");
        } else {
            screen.press(Qt::Key_O, control);
        }
        QVERIFY(!screen.chooserMessage.isEmpty());
        QCOMPARE(screen.model().photoCount(), isChosen ? 2 : 3);
        screen.press(Qt::Key_Space);
        QCOMPARE(screen.model().approvedCount(), 1);
    }

    void theKeysWorkOnceTheWindowIsActiveAgain_data() {
        QTest::addColumn<QString>("focus");
        QTest::newRow("with the focus on the photo") << "contentLayer";
        QTest::newRow("with the focus on a button") << "Open Folder";
    }
    void theKeysWorkOnceTheWindowIsActiveAgain() {
        QFETCH(QString, focus);
        ScreenFixture screen(threePhotos);
        screen.focus(focus);
        QWindow other;
        other.show();
        other.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QVERIFY(!screen.window->isActive());
        screen.window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(screen.window.get()));
        QCOMPARE(screen.focused(), focus);
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void theKeysWorkAfterAnyButtonWasClicked() {
        ScreenFixture screen(threePhotos);
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

private:
    /// In a window of 1000 x 700, the photo so large that a step in any direction shows no edge of it.
    static CanvasGeometry zoomedIn(ScreenFixture& screen) {
        screen.resize({1000, 700});
        screen.picture();
        screen.turnWheel(10, control);
        return screen.geometry();
    }
};

QTEST_MAIN(ScreenKeysTest)
#include "ScreenKeysTest.moc"
