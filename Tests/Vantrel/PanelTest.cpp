#include "Tests/Support/Contrast.h"
#include "Tests/Vantrel/ScreenFixture.h"

#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

constexpr QSize windowSize(1200, 800);

/// The screen with one photo of one colour, which is behind all panels.
struct PanelsOver : ScreenFixture {
    explicit PanelsOver(const QColor& photo)
        : ScreenFixture({}, {.isLockZoomFeatureEnabled = true, .isSyncRawFeatureEnabled = true}) {
        resize(windowSize);
        photos.write("IMG_0001.JPG", flatPhoto(photo, {1500, 1000}));
        photos.write("IMG_0002.JPG", flatPhoto(photo, {1500, 1000}));
        model().loadFolder(photos.url());
        scheduler.runAll();
    }

    /// The panel's place in the window.
    QRect panel(const char* objectName) const { return placeOf(*item(objectName)).toAlignedRect(); }
};

const std::vector<const char*> panelNames = {
    "floatingLeftToolbar", "floatingRightToolbar", "floatingStatusBar", "floatingMoveRejected"};

QColor over(const QColor& ground, const QColor& ink, double opacity) {
    const auto mix = [&](int below, int above) {
        return static_cast<int>(std::lround(above * opacity + below * (1 - opacity)));
    };
    return {mix(ground.red(), ink.red()), mix(ground.green(), ink.green()), mix(ground.blue(), ink.blue())};
}

/// The colour in which a text's glyphs are drawn on that ground.
QColor inkOf(const QQuickItem& text, const QColor& ground) {
    const auto color = text.property("color").value<QColor>();
    double opacity = color.alphaF();
    for (const QQuickItem* item = &text; item; item = item->parentItem()) {
        opacity *= item->opacity();
    }
    return over(ground, color.toRgb(), opacity);
}

/// Whether there is something to be read: not the bars between texts, and not what is disabled.
bool isToBeRead(const QQuickItem& item) {
    return item.inherits("QQuickText") && item.isVisible() && item.isEnabled() &&
           item.property("text") != "|";
}

void forEachItem(const QQuickItem& root, const std::function<void(const QQuickItem&)>& visit) {
    visit(root);
    for (const QQuickItem* child : root.childItems()) {
        forEachItem(*child, visit);
    }
}

/// The share of a gaussian that lies below, in standard deviations.
double shareBelow(double deviations) {
    return std::erfc(-deviations / std::sqrt(2)) / 2;
}

} // namespace

/// The look of the floating panels, in points from the pixels of the window.
class PanelTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".")); }

    void everyTextIsLegibleOverAnyPhoto_data() {
        QTest::addColumn<QColor>("photo");
        QTest::newRow("white") << QColor(Qt::white);
        QTest::newRow("black") << QColor(Qt::black);
        QTest::newRow("yellow") << QColor(Qt::yellow);
    }
    void everyTextIsLegibleOverAnyPhoto() {
        constexpr double leastContrast = 4.5;
        QFETCH(QColor, photo);
        PanelsOver screen(photo);
        screen.press(Qt::Key_Space); // enables buttons
        screen.press(Qt::Key_Right);
        screen.press(Qt::Key_X);
        screen.press(Qt::Key_Left);
        QTRY_VERIFY(!screen.item("imageView")->property("resolutionInfo").toString().isEmpty());
        const QImage picture = screen.picture();
        int count = 0;
        for (const char* name : panelNames) {
            forEachItem(*screen.item(name), [&](const QQuickItem& item) {
                if (isToBeRead(item)) {
                    const QPoint beside = item.mapToScene({-3, item.height() / 2}).toPoint();
                    const QColor ground = picture.pixelColor(beside);
                    const double ratio = contrast(inkOf(item, ground), ground);
                    QVERIFY2(ratio >= leastContrast,
                        qPrintable(
                            QStringLiteral("%1: %2").arg(item.property("text").toString()).arg(ratio)));
                    ++count;
                }
            });
        }
        QCOMPARE(count, 15);
    }

    void thePhotoShinesThroughThePanels() {
        const auto fillOver = [](const QColor& photo) {
            PanelsOver screen(photo);
            return screen.picture().pixelColor(screen.panel("floatingLeftToolbar").center().x(), 12);
        };
        const QColor fill(0x16, 0x16, 0x18);
        for (const QColor& photo : {QColor(Qt::white), QColor(Qt::black), QColor(Qt::red)}) {
            const QColor expected = over(photo, fill, 0.91);
            const QColor found = fillOver(photo);
            QVERIFY2(std::abs(found.red() - expected.red()) <= 2 &&
                         std::abs(found.green() - expected.green()) <= 2 &&
                         std::abs(found.blue() - expected.blue()) <= 2,
                qPrintable(found.name()));
        }
    }

    void aShadowFallsDownwardAroundEachPanel() {
        PanelsOver screen(Qt::white);
        const QImage picture = screen.picture();
        constexpr double deviation = 6; // half of the blur radius
        const auto shade = [&](double intoShadow) {
            return 255 * (1 - 0.3 * shareBelow(intoShadow / deviation));
        };
        for (const char* name : {"floatingLeftToolbar", "floatingRightToolbar"}) {
            const QRect panel = screen.panel(name);
            const int middle = panel.center().x();
            for (int away = 1; away < 18; ++away) {
                const double distance = away + 0.5; // of the pixel's middle from the panel's edge
                const int below = picture.pixelColor(middle, panel.bottom() + 1 + away).green();
                QVERIFY2(std::abs(below - shade(4 - distance)) <= 3,
                    qPrintable(QStringLiteral("%1 below: %2").arg(away).arg(below)));
            }
            const int above = picture.pixelColor(middle, panel.top() - 4).green();
            QVERIFY2(std::abs(above - shade(-4 - 3.5)) <= 3, qPrintable(QString::number(above)));
        }
        const QRect panel = screen.panel("floatingLeftToolbar");
        const int beside = picture.pixelColor(panel.right() + 4, panel.center().y() + 4).green();
        // Less than beside a long edge: the panel is not much higher than its corners.
        QVERIFY2(std::abs(beside - shade(-3.5)) <= 8, qPrintable(QString::number(beside)));
    }

    void aHairlineRunsAroundEachPanel() {
        PanelsOver screen(Qt::black);
        const QImage picture = screen.picture();
        for (const char* name : panelNames) {
            const QRect panel = screen.panel(name);
            const int column = panel.left() + 30;
            const int inside = picture.pixelColor(column, panel.top() + 3).green();
            // Half a point wide, its middle on the edge: a quarter of a pixel on each side.
            const int innerHalf = picture.pixelColor(column, panel.top()).green() - inside;
            const int outerHalf = picture.pixelColor(column, panel.top() - 1).green();
            QVERIFY2(innerHalf >= 3 && innerHalf <= 9, qPrintable(QString::number(innerHalf)));
            QVERIFY2(outerHalf >= 3 && outerHalf <= 9, qPrintable(QString::number(outerHalf)));
        }
    }

    void theCornersAreRound() {
        PanelsOver screen(Qt::white);
        const QImage picture = screen.picture();
        const QRect panel = screen.panel("floatingStatusBar");
        const auto isPanel = [&](int fromLeft, int fromTop) {
            return picture.pixelColor(panel.left() + fromLeft, panel.top() + fromTop).green() < 100;
        };
        QVERIFY(!isPanel(0, 0));
        QVERIFY(!isPanel(2, 1));
        QVERIFY(isPanel(3, 3)); // a circle of radius 10 reaches its diagonal at 2.93
        QVERIFY(!isPanel(2, 2));
        QVERIFY(isPanel(15, 0));
        QVERIFY(isPanel(0, 15));
    }

    void thePanelsStandAtTheMarginsOfTheWindow() {
        PanelsOver screen(Qt::white);
        const QRect inner = QRect(QPoint(), windowSize).adjusted(12, 8, -12, -8);
        QCOMPARE(screen.panel("floatingLeftToolbar").topLeft(), inner.topLeft());
        QCOMPARE(screen.panel("floatingRightToolbar").topRight(), inner.topRight());
        QCOMPARE(screen.panel("floatingStatusBar").bottomLeft(), inner.bottomLeft());
        QCOMPARE(screen.panel("floatingMoveRejected").bottomRight(), inner.bottomRight());
    }

    void theRowsHaveTheirMarginsAndGaps() {
        PanelsOver screen(Qt::white);
        for (const char* name : panelNames) {
            const bool isAbove = QByteArray(name).endsWith("Toolbar");
            const QQuickItem& panel = *screen.item(name);
            const QQuickItem& row = *panel.childItems().constLast();
            QCOMPARE(row.x(), isAbove ? 14.0 : 16.0);
            QCOMPARE(panel.width() - row.width(), 2 * row.x());
            QCOMPARE(panel.height() - row.height(), 16.0);
            QCOMPARE(row.property("spacing").toInt(), 12);
        }
    }

    void withoutRoomForBothTheStatusBarStandsAboveTheMoves() {
        PanelsOver screen(Qt::white);
        screen.resize(screen.window->minimumSize());
        const QRect status = screen.panel("floatingStatusBar");
        const QRect moves = screen.panel("floatingMoveRejected");
        QVERIFY(!status.intersects(moves));
        QVERIFY(QRect(12, 8, 876, 634).contains(status) && QRect(12, 8, 876, 634).contains(moves));
    }
};

QTEST_MAIN(PanelTest)
#include "PanelTest.moc"
