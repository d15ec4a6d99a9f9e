#include "Tests/Vantrel/ScreenFixture.h"

#include <QQmlComponent>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <memory>

namespace {

constexpr QSize smallestWindow(900, 650);

/// What names the action of a button while the pointer rests on it.
QQuickItem* toolTipOf(const QQuickItem& button) {
    const auto children = button.childItems();
    const auto found = std::ranges::find_if(
        children, [](const QQuickItem* child) { return child->property("isWanted").isValid(); });
    return found == children.end() ? nullptr : *found;
}

QStringList textsIn(const QQuickItem& toolTip) {
    QStringList texts;
    for (const QQuickItem* item : toolTip.findChildren<QQuickItem*>()) {
        if (item->inherits("QQuickText") && item->isVisible()) {
            texts.append(item->property("text").toString());
        }
    }
    return texts;
}

/// The main window at its smallest, with a photo approved and another rejected.
struct Screen : ScreenFixture {
    Screen()
        : ScreenFixture(threePhotos, {.isLockZoomFeatureEnabled = true, .isSyncRawFeatureEnabled = true}) {
        resize(smallestWindow);
        press(Qt::Key_Space);
        press(Qt::Key_Right);
        press(Qt::Key_X);
        picture(); // which places the panels
    }

    void point(const QPoint& place) { QTest::mouseMove(window.get(), place); }
    void pointAway() { point({smallestWindow.width() / 2, smallestWindow.height() / 2}); }
};

} // namespace

class ToolTipTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".")); }

    void aButtonUnderThePointerIsNamedWithItsKey_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("expected");
        const auto add = [](const QString& button, const QString& shortcut) {
            QTest::newRow(qPrintable(button))
                << button << (shortcut.isEmpty() ? QStringList{button} : QStringList{button, shortcut});
        };
        add("Open Folder", "Ctrl+O"); // at the left edge and the top
        add("Undo", "Ctrl+Z");
        add("Zoom Locked", "Ctrl+L");
        add("Sync RAW", ""); // at the right edge
        add("Move Approved (1)", "Ctrl+A");
        add("Move Rejected (1)", "Ctrl+R"); // at the right edge and the bottom
    }
    void aButtonUnderThePointerIsNamedWithItsKey() {
        QFETCH(QString, button);
        QFETCH(QStringList, expected);
        Screen screen;
        const QQuickItem* control = screen.button(button);
        QQuickItem* toolTip = toolTipOf(*control);
        QVERIFY(toolTip);
        screen.pointAway();
        QVERIFY(!toolTip->isVisible());
        screen.point(centreOf(*control));
        QTRY_VERIFY(toolTip->isVisible());
        QCOMPARE(textsIn(*toolTip), expected);
        const QRectF place = placeOf(*toolTip);
        QVERIFY(QRectF(QPointF(), smallestWindow).contains(place));
        QVERIFY(!place.intersects(placeOf(*control)));
        QCOMPARE(screen.picture().pixelColor(place.topLeft().toPoint() + QPoint(4, 4)), QColor("#262628"));
        screen.pointAway();
        QVERIFY(!toolTip->isVisible());
    }

    void atAnEdgeOfTheWindowItStaysWithin_data() {
        QTest::addColumn<QPointF>("place");
        QTest::newRow("top left") << QPointF(0, 0);
        QTest::newRow("top right") << QPointF(880, 0);
        QTest::newRow("bottom left") << QPointF(0, 630);
        QTest::newRow("bottom right") << QPointF(880, 630);
    }
    void atAnEdgeOfTheWindowItStaysWithin() {
        QFETCH(QPointF, place);
        Screen screen;
        QQmlComponent component(screen.window->engine());
        component.setData(R"(import QtQuick
            import Vantrel
            Item {
                width: 20; height: 20
                ToolTip { text: "Much wider than that"; shortcut: "Ctrl+W"; isWanted: true }
            })",
            QUrl());
        const std::unique_ptr<QObject> object(component.create());
        auto* control = qobject_cast<QQuickItem*>(object.get());
        QVERIFY2(control, qPrintable(component.errorString()));
        control->setParentItem(screen.window->contentItem());
        control->setPosition(place);
        const QQuickItem* toolTip = toolTipOf(*control);
        QTRY_VERIFY(toolTip->isVisible());
        QVERIFY(toolTip->width() > 2 * control->width());
        QVERIFY(QRectF(QPointF(), smallestWindow).contains(placeOf(*toolTip)));
        QVERIFY(!placeOf(*toolTip).intersects(placeOf(*control)));
    }

    void aPressHidesIt() {
        Screen screen;
        const QQuickItem* control = screen.button("Open Folder");
        const QQuickItem* toolTip = toolTipOf(*control);
        screen.point(centreOf(*control));
        QTRY_VERIFY(toolTip->isVisible());
        QTest::mousePress(screen.window.get(), Qt::LeftButton, Qt::NoModifier, centreOf(*control));
        QVERIFY(!toolTip->isVisible());
        QTest::mouseRelease(screen.window.get(), Qt::LeftButton, Qt::NoModifier, centreOf(*control));
    }

    void aDisabledButtonIsNotNamed() {
        Screen screen;
        const QQuickItem* control = screen.button("Undo");
        const QQuickItem* toolTip = toolTipOf(*control);
        screen.press(Qt::Key_Z, Qt::ControlModifier);
        screen.press(Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(!control->isEnabled());
        screen.point(centreOf(*control));
        QVERIFY(!toolTip->property("isWanted").toBool()); // so that no time will bring it
        screen.press(Qt::Key_Space);
        QVERIFY(control->isEnabled());
        QTRY_VERIFY(toolTip->isVisible());
        screen.press(Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(!toolTip->isVisible());
    }
};

QTEST_MAIN(ToolTipTest)
#include "ToolTipTest.moc"
