#include "Tests/Support/Contrast.h"
#include "Tests/Vantrel/ScreenFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QRegularExpression>
#include <QTest>

#include <unistd.h>

#include <algorithm>

namespace {

constexpr CullingViewModel::FeatureFlags allFeatures{
    .isLockZoomFeatureEnabled = true, .isSyncRawFeatureEnabled = true};

constexpr QSize smallestWindow(900, 650);

struct Screen : ScreenFixture {
    explicit Screen(const std::vector<std::string>& photoNames = threePhotos)
        : ScreenFixture(photoNames, allFeatures) {
        resize(smallestWindow);
    }

    void showError(const QString& message) {
        model().setErrorMessage(message);
        QVERIFY(isOpen("errorAlert"));
        picture(); // which places the alert's parts
    }

    /// Asks whether so many RAW files may be deleted.
    void showQuestion(int count = 1) {
        for (int index = 0; index < count; ++index) {
            photos.write("RAW" + std::to_string(index) + ".ARW", "raw");
        }
        click("Sync RAW");
        QVERIFY(isOpen("rawSyncAlert"));
        picture();
    }

    QQuickItem* message() const { return item("alertMessage"); }
    QQuickItem* scrollBar() const { return item("alertScrollBar"); }
    QQuickItem* scroller() const { return scrollBar()->property("scrolled").value<QQuickItem*>(); }
    double scrolled() const { return scroller()->property("contentY").toDouble(); }
    double end() const { return scroller()->property("contentHeight").toDouble() - scroller()->height(); }

    /// Whether the end of the message is on the screen.
    bool showsEndOfMessage() const {
        QRectF cursor;
        QMetaObject::invokeMethod(message(), "positionToRectangle", Q_RETURN_ARG(QRectF, cursor),
            Q_ARG(int, message()->property("length").toInt()));
        return placeOf(*scroller()).contains(message()->mapRectToScene(cursor));
    }

    void clickAt(QPoint place) { QTest::mouseClick(window.get(), Qt::LeftButton, Qt::NoModifier, place); }
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(window.get(), Qt::LeftButton, Qt::NoModifier, from);
        for (int step = 1; step <= 10; ++step) {
            QTest::mouseMove(window.get(), from + (to - from) * step / 10);
        }
        QTest::mouseRelease(window.get(), Qt::LeftButton, Qt::NoModifier, to);
    }
};

QString clipboardText() {
    return QGuiApplication::clipboard()->text();
}

const QString shortMessage = QStringLiteral("Failed to read folder contents.");

} // namespace

/// The two alerts: what they show, and that nothing else can be done while one is open.
class AlertTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QTest::failOnWarning(QRegularExpression("."));
        QGuiApplication::clipboard()->clear();
    }

    // How they look

    void theButtonsAreLegible_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("the one that deletes") << QStringLiteral("Delete");
        QTest::newRow("the one that changes nothing") << QStringLiteral("Cancel");
    }
    void theButtonsAreLegible() {
        QFETCH(QString, text);
        Screen screen;
        screen.showQuestion();
        const QQuickItem& button = *screen.button(text);
        const auto isLegible = [&] {
            const QPoint besideTheText = button.mapToScene({8, button.height() / 2}).toPoint();
            const auto texts = button.findChildren<QQuickItem*>();
            const auto label = std::ranges::find_if(
                texts, [](const QQuickItem* item) { return item->inherits("QQuickText"); });
            return contrast((*label)->property("color").value<QColor>(),
                       screen.picture().pixelColor(besideTheText)) >= 4.5;
        };
        QVERIFY(isLegible());
        QTest::mouseMove(screen.window.get(), centreOf(button));
        QTRY_VERIFY(button.property("isHovered").toBool());
        QVERIFY(isLegible());
        QTest::mousePress(screen.window.get(), Qt::LeftButton, Qt::NoModifier, centreOf(button));
        QVERIFY(button.property("isPressed").toBool());
        QVERIFY(isLegible());
        QTest::mouseRelease(screen.window.get(), Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    }

    void theArrowsGoBetweenTheButtons() {
        Screen screen;
        screen.showQuestion();
        screen.press(Qt::Key_Left);
        QCOMPARE(screen.focused(), QStringLiteral("Delete"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.focused(), QStringLiteral("Cancel"));
        QVERIFY(screen.isOpen("rawSyncAlert"));
    }

    void theTextShowsThatItHasTheFocus() {
        Screen screen;
        screen.showError(shortMessage);
        QVERIFY(!screen.isShown("alertMessageRing"));
        screen.focus("alertMessage");
        QVERIFY(screen.isShown("alertMessageRing"));
    }

    // How they come and go

    void anErrorIsShownUntilItIsDismissed_data() { addWays(); }
    void anErrorIsShownUntilItIsDismissed() {
        QFETCH(int, key);
        Screen screen;
        screen.showError(shortMessage);
        dismiss(screen, key, "OK");
        QVERIFY(!screen.isOpen("errorAlert"));
        QVERIFY(!screen.model().hasErrorMessage());
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void aQuestionIsDismissedWithoutDeleting_data() { addWays(); }
    void aQuestionIsDismissedWithoutDeleting() {
        QFETCH(int, key);
        Screen screen;
        screen.showQuestion();
        dismiss(screen, key, "Cancel");
        QVERIFY(!screen.isOpen("rawSyncAlert"));
        QVERIFY(!screen.model().showRawSyncAlert());
        QVERIFY(exists(screen.photos.at("RAW0.ARW")));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
        screen.showQuestion();
    }

    void aSearchThatFoundNothingHasOnlyAnOkButton_data() { addWays(); }
    void aSearchThatFoundNothingHasOnlyAnOkButton() {
        QFETCH(int, key);
        Screen screen;
        screen.showQuestion(0);
        QVERIFY(!screen.button("Delete") || !screen.button("Delete")->isVisible());
        dismiss(screen, key, "OK");
        QVERIFY(!screen.isOpen("rawSyncAlert"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void orphansAreDeletedOnConfirmation_data() {
        QTest::addColumn<int>("key");
        QTest::newRow("click") << 0;
        QTest::newRow("Return") << static_cast<int>(Qt::Key_Return);
        QTest::newRow("Enter") << static_cast<int>(Qt::Key_Enter);
        QTest::newRow("Space") << static_cast<int>(Qt::Key_Space);
    }
    void orphansAreDeletedOnConfirmation() {
        QFETCH(int, key);
        Screen screen;
        screen.showQuestion();
        QCOMPARE(screen.focused(), "Cancel");
        if (key) {
            screen.focus("Delete");
        }
        dismiss(screen, key, "Delete");
        QVERIFY(!screen.isOpen("rawSyncAlert"));
        QVERIFY(!exists(screen.photos.at("RAW0.ARW")));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void anErrorThatWasThereBeforeTheWindowHasTheKeys() {
        Screen screen;
        screen.model().setErrorMessage(shortMessage);
        screen.showWindow();
        QVERIFY(screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 0);
        screen.press(Qt::Key_Return);
        QVERIFY(!screen.model().hasErrorMessage());
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void anErrorThatCameBehindAnotherWindowHasTheKeys() {
        Screen screen;
        QWindow other;
        other.show();
        other.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        screen.showError(shortMessage);
        screen.window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(screen.window.get()));
        QCOMPARE(screen.focused(), "OK");
        screen.press(Qt::Key_Return);
        QVERIFY(!screen.model().hasErrorMessage());
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void anErrorThatADeletionLeftIsShownAfterIt() {
        Screen screen;
        screen.showQuestion();
        unlink(screen.photos.at("RAW0.ARW").path().c_str());
        screen.click("Delete");
        QVERIFY(screen.isOpen("errorAlert"));
        QVERIFY(screen.model().errorText().startsWith("Failed to delete some RAW files:\nRAW0.ARW: "));
        screen.press(Qt::Key_Return);
        QVERIFY(!screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void anErrorWaitsForTheQuestion() {
        Screen screen;
        screen.showQuestion();
        screen.model().setErrorMessage(shortMessage);
        QVERIFY(screen.isOpen("rawSyncAlert"));
        QVERIFY(!screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Escape);
        QVERIFY(!screen.isOpen("rawSyncAlert"));
        QVERIFY(screen.isOpen("errorAlert"));
        QCOMPARE(screen.model().errorText(), shortMessage);
        screen.press(Qt::Key_Escape);
        QVERIFY(!screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void aQuestionDuringAnErrorIsAskedFirst() {
        Screen screen;
        screen.showError(shortMessage);
        screen.model().findOrphanRawFiles();
        QVERIFY(screen.isOpen("rawSyncAlert"));
        QVERIFY(!screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Return);
        QVERIFY(!screen.isOpen("rawSyncAlert"));
        QVERIFY(screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Return);
        QVERIFY(!screen.model().hasErrorMessage());
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void aHeldKeyDoesNotDismissTheAlertThatItOpened() {
        Screen screen;
        screen.photos.write("RAW0.ARW", "raw");
        screen.focus("Sync RAW");
        screen.press(Qt::Key_Return);
        QVERIFY(screen.isOpen("rawSyncAlert"));
        QCOMPARE(screen.focused(), "Cancel");
        for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Escape}) {
            screen.takes(key, Qt::NoModifier, true);
            QVERIFY(screen.isOpen("rawSyncAlert"));
        }
    }

    // What they keep from the screen

    void whileAnAlertIsOpenNothingElseCanBeDone_data() {
        QTest::addColumn<bool>("isQuestion");
        QTest::newRow("error") << false;
        QTest::newRow("question") << true;
    }
    void whileAnAlertIsOpenNothingElseCanBeDone() {
        QFETCH(bool, isQuestion);
        Screen screen;
        screen.picture();
        screen.turnWheel(10, Qt::ControlModifier);
        for (const auto key : {Qt::Key_Space, Qt::Key_Right, Qt::Key_X}) {
            screen.press(key);
        }
        if (isQuestion) {
            screen.showQuestion();
        } else {
            screen.showError(shortMessage);
        }
        const QString before = screen.account();
        pressEverything(screen);
        QCOMPARE(screen.account(), before);
        touchEverything(screen);
        QCOMPARE(screen.account(), before);
        QCOMPARE(screen.isOpen("rawSyncAlert"), isQuestion);
        QCOMPARE(screen.isOpen("errorAlert"), !isQuestion);
        QCOMPARE(namesIn(screen.photos.url()).size(), isQuestion ? 4u : 3u);
    }

    void tabStaysInTheAlert() {
        Screen screen;
        screen.press(Qt::Key_Space);
        screen.showQuestion();
        for (const char* next : {"Delete", "alertMessage", "Cancel", "Delete", "alertMessage", "Cancel"}) {
            screen.press(Qt::Key_Tab);
            QCOMPARE(screen.focused(), next);
        }
        for (const char* next : {"alertMessage", "Delete", "Cancel"}) {
            screen.press(Qt::Key_Backtab, Qt::ShiftModifier);
            QCOMPARE(screen.focused(), next);
        }
        screen.press(Qt::Key_Escape);
        screen.showError(shortMessage);
        for (const char* next : {"alertMessage", "OK", "alertMessage", "OK"}) {
            screen.press(Qt::Key_Tab);
            QCOMPARE(screen.focused(), next);
        }
    }

    // Their message

    void theMessageIsCopiedByTheKeys() {
        Screen screen;
        screen.showError(shortMessage);
        screen.focus("alertMessage");
        screen.press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(screen.message()->property("selectedText").toString(), shortMessage);
        screen.press(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboardText(), shortMessage);
        screen.press(Qt::Key_Return); // the text takes no keys but those
        QVERIFY(!screen.isOpen("errorAlert"));
    }

    void theMessageIsSelectedWithTheMouse() {
        Screen screen;
        screen.showError(shortMessage);
        const QRectF place = placeOf(*screen.message());
        screen.drag(place.topLeft().toPoint() + QPoint(1, 5), place.topLeft().toPoint() + QPoint(90, 5));
        const QString selected = screen.message()->property("selectedText").toString();
        QVERIFY(selected.size() > 3);
        QVERIFY(shortMessage.startsWith(selected));
        screen.press(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboardText(), selected);
        screen.press(Qt::Key_Escape);
        QVERIFY(!screen.isOpen("errorAlert"));
        screen.press(Qt::Key_Right);
        QCOMPARE(screen.model().currentIndex(), 1);
    }

    void theMessageIsShownAsItStands_data() {
        QTest::addColumn<QString>("message");
        QTest::newRow("tags") << QStringLiteral("a<b>old</b>.jpg: No such file.<br/>");
        QTest::newRow("entities") << QStringLiteral("me &amp; you & &lt;them&gt;.jpg");
        QTest::newRow("a whole document") << QStringLiteral("<html><body><h1>a</h1></body></html>");
    }
    void theMessageIsShownAsItStands() {
        QFETCH(QString, message);
        Screen screen;
        screen.showError(message);
        screen.focus("alertMessage");
        screen.press(Qt::Key_A, Qt::ControlModifier);
        screen.press(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboardText(), message);
    }

    void aShortMessageHasNoScrollBar() {
        Screen screen;
        screen.showError(shortMessage);
        QVERIFY(!screen.isShown("alertScrollBar"));
        QVERIFY(screen.showsEndOfMessage());
        screen.turnWheel(-5);
        screen.press(Qt::Key_PageDown);
        screen.press(Qt::Key_End);
        QCOMPARE(screen.scrolled(), 0);
    }

    void aLongNameIsWrapped() {
        Screen screen;
        screen.showError("Failed to move some approved photos:\n" + QString(400, 'w') + ".jpg: No space.");
        const QQuickItem* message = screen.message();
        QVERIFY(message->property("lineCount").toInt() > 5);
        QVERIFY(message->property("contentWidth").toDouble() <= message->width());
        QVERIFY(!screen.isShown("alertScrollBar"));
        QVERIFY(screen.showsEndOfMessage());
        const QRectF ok = placeOf(*screen.button("OK"));
        QVERIFY(placeOf(*message).right() <= ok.right());
        QVERIFY(placeOf(*message).bottom() <= ok.top());
    }

    void theButtonsOfALongMessageStayInTheWindow() {
        Screen screen;
        screen.showQuestion(500);
        QVERIFY(screen.isShown("alertScrollBar"));
        QVERIFY(!screen.showsEndOfMessage());
        for (const char* text : {"Delete", "Cancel"}) {
            const QRectF place = placeOf(*screen.button(text));
            QVERIFY(QRectF(QPointF(), smallestWindow).contains(place));
            QVERIFY(place.top() >= placeOf(*screen.scroller()).bottom());
        }
        screen.click("Delete");
        QCOMPARE(namesIn(screen.photos.url()), threePhotos);
    }

    void aLongMessageScrollsByTheKeys_data() {
        QTest::addColumn<QString>("focus");
        QTest::newRow("with the focus on the button") << "Cancel";
        QTest::newRow("with the focus on the text") << "alertMessage";
    }
    void aLongMessageScrollsByTheKeys() {
        QFETCH(QString, focus);
        Screen screen;
        screen.showQuestion(500);
        screen.focus(focus);
        screen.press(Qt::Key_Up);
        QCOMPARE(screen.scrolled(), 0);
        screen.press(Qt::Key_Down);
        const double line = screen.scrolled();
        QVERIFY(line > 0 && line < screen.scroller()->height() / 2);
        screen.press(Qt::Key_Down);
        QCOMPARE(screen.scrolled(), 2 * line);
        screen.press(Qt::Key_Up);
        QCOMPARE(screen.scrolled(), line);
        screen.press(Qt::Key_PageDown);
        QCOMPARE(screen.scrolled(), line + screen.scroller()->height());
        screen.press(Qt::Key_PageUp);
        QCOMPARE(screen.scrolled(), line);
        screen.press(Qt::Key_End);
        QCOMPARE(screen.scrolled(), screen.end());
        QVERIFY(screen.showsEndOfMessage());
        screen.press(Qt::Key_Down);
        QCOMPARE(screen.scrolled(), screen.end());
        screen.press(Qt::Key_Home);
        QCOMPARE(screen.scrolled(), 0);
        QCOMPARE(screen.focused(), focus);
    }

    void aLongMessageScrollsWithTheWheel() {
        Screen screen;
        screen.showQuestion(500);
        screen.turnWheel(-1);
        QTRY_VERIFY(screen.scrolled() > 0);
        screen.turnWheel(10);
        QTRY_COMPARE(screen.scrolled(), 0);
        screen.press(Qt::Key_End);
        screen.press(Qt::Key_Up);
        QVERIFY(!screen.showsEndOfMessage());
        screen.turnWheel(-10);
        QTRY_COMPARE(screen.scrolled(), screen.end());
        QVERIFY(screen.showsEndOfMessage());
    }

    void aLongMessageScrollsByItsScrollBar() {
        Screen screen;
        screen.showQuestion(500);
        const QRectF bar = placeOf(*screen.scrollBar());
        const int x = qRound(bar.center().x());
        const QPoint top(x, qRound(bar.top()) + 2);
        const QPoint bottom(x, qRound(bar.bottom()) - 2);
        QTest::mousePress(screen.window.get(), Qt::LeftButton, Qt::NoModifier, top);
        QCOMPARE(screen.scrolled(), 0); // the thumb is grabbed where it stands
        QTest::mouseRelease(screen.window.get(), Qt::LeftButton, Qt::NoModifier, top);
        screen.drag(top, bottom + QPoint(0, 100));
        QCOMPARE(screen.scrolled(), screen.end());
        QVERIFY(screen.showsEndOfMessage());
        screen.drag(bottom, top);
        QVERIFY(screen.scrolled() < screen.scroller()->height() / 2);
        screen.clickAt(bar.center().toPoint());
        QVERIFY(std::abs(screen.scrolled() - screen.end() / 2) < screen.scroller()->height());
    }

    void aNewMessageStartsAtItsTop() {
        Screen screen;
        screen.showQuestion(500);
        screen.press(Qt::Key_End);
        screen.press(Qt::Key_Escape);
        screen.showQuestion(500);
        QCOMPARE(screen.scrolled(), 0);
        QCOMPARE(screen.focused(), "Cancel");
    }

    void aNewMessageHasTheFocusOnItsFirstButton() {
        Screen screen;
        screen.showQuestion();
        screen.focus("Delete");
        screen.press(Qt::Key_Escape);
        screen.showQuestion();
        QCOMPARE(screen.focused(), "Cancel");
        screen.press(Qt::Key_Return);
        QVERIFY(exists(screen.photos.at("RAW0.ARW")));
    }

private:
    static void addWays() {
        QTest::addColumn<int>("key");
        QTest::newRow("click") << 0;
        QTest::newRow("Return") << static_cast<int>(Qt::Key_Return);
        QTest::newRow("Enter") << static_cast<int>(Qt::Key_Enter);
        QTest::newRow("Escape") << static_cast<int>(Qt::Key_Escape);
    }

    /// By that key; by a click on the button where it is 0.
    static void dismiss(Screen& screen, int key, const QString& button) {
        if (key) {
            screen.press(
                static_cast<Qt::Key>(key), key == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier);
        } else {
            screen.click(button);
        }
    }

    /// All keys that do something where no alert is open, but those that dismiss one.
    static void pressEverything(Screen& screen) {
        for (const QString& focus : {screen.focused(), QStringLiteral("alertMessage")}) {
            screen.focus(focus);
            for (const auto key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_X, Qt::Key_L}) {
                screen.press(key);
            }
            for (const auto modifier : {Qt::ControlModifier, Qt::MetaModifier}) {
                for (const auto key : {Qt::Key_O, Qt::Key_Z, Qt::Key_L, Qt::Key_A, Qt::Key_R, Qt::Key_Plus,
                         Qt::Key_Minus, Qt::Key_0, Qt::Key_Left, Qt::Key_Up}) {
                    screen.press(key, modifier);
                }
            }
        }
        screen.press(Qt::Key_Space); // with the focus on the text, where it presses no button
    }

    /// All that the pointer could do to what the alert covers.
    static void touchEverything(Screen& screen) {
        for (const char* text :
            {"Open Folder", "Undo", "Zoom Locked", "Sync RAW", "Move Approved (1)", "Move Rejected (1)"}) {
            screen.clickAt(centreOf(*screen.button(text)));
        }
        const QPoint besideTheAlert(100, 325);
        screen.drag(besideTheAlert, besideTheAlert + QPoint(80, 80));
        for (const QPointF place : {QPointF(besideTheAlert), QPointF(450, 325)}) {
            for (const auto modifier : {Qt::NoModifier, Qt::ControlModifier}) {
                screen.turnWheelAt(place, 1, modifier);
            }
            QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2,
                place, place, place, 0.5, {});
            QCoreApplication::sendEvent(screen.window.get(), &pinch);
        }
    }
};

QTEST_MAIN(AlertTest)
#include "AlertTest.moc"
