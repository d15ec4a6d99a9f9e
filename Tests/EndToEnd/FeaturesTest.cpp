#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QPainter>
#include <QTest>

#include <X11/keysym.h>

#include <string>
#include <vector>

/// The white square of the photo is seen, at once or soon, in that place of the window.
#define SEES_SQUARE(place) QTRY_VERIFY_WITH_TIMEOUT(isNear(squareSeen(), place), patience)

namespace {

constexpr double leastZoom = 2.3; // comes with the last of nine notches of the wheel

const QString allFeatures = QStringLiteral(ALL_FEATURES_PROGRAM);

/// One colour with a white square in it, left of the middle.
QByteArray photoWithSquare(const QColor& color) {
    QImage picture = plain({600, 400}, color);
    QPainter painter(&picture);
    painter.fillRect(QRect(200, 180, 40, 40), Qt::white);
    painter.end();
    return jpegFile(picture);
}

bool isNear(const QRect& a, const QRect& b) {
    constexpr int tolerance = 2;
    const QPoint corner = a.topLeft() - b.topLeft();
    const QPoint otherCorner = a.bottomRight() - b.bottomRight();
    return corner.manhattanLength() <= tolerance && otherCorner.manhattanLength() <= tolerance;
}

} // namespace

/// The features that are complete but not offered: they work in a make of the program that has them on, and nothing
/// of them is in the delivered one.
class FeaturesTest : public SessionFixture {
    Q_OBJECT

private slots:
    void theLockedZoomStaysFromPhotoToPhoto_data() {
        QTest::addColumn<QString>("way");
        QTest::newRow("key") << "key";
        QTest::newRow("shortcut") << "shortcut";
        QTest::newRow("checkbox") << "checkbox";
    }

    void theLockedZoomStaysFromPhotoToPhoto() {
        QFETCH(QString, way);
        writePhotos();
        QVERIFY(startAndOpen(allFeatures));
        // The zoom counts in pixels of the picture shown: both photos have come in their full quality before.
        QTRY_VERIFY_WITH_TIMEOUT(isSharp(), patience);
        press({XK_Right});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(1) && isSharp(), patience);
        press({XK_Left});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(0) && isSharp(), patience);
        const QRect fitted = squareSeen();
        toggleLock(way);
        zoomIn();
        QTRY_VERIFY_WITH_TIMEOUT(squareSeen().width() > leastZoom * fitted.width(), patience);
        const QRect zoomed = squareSeen();

        press({XK_Right});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(1), patience);
        SEES_SQUARE(zoomed);
        toggleLock(way);
        press({XK_Right});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(0), patience);
        SEES_SQUARE(fitted);
    }

    void theDeliveredProgramLocksNoZoomAndShowsNoneOfTheFeatures() {
        writePhotos();
        QVERIFY(startAndOpen(RunningApplication::deliveredProgram()));
        const QRect fitted = squareSeen();
        const QImage before = toolbar();
        press({XK_l});
        QVERIFY(panelWidth() < 150); // Undo alone
        m_screen->press({XK_Control_L, XK_l});
        press({XK_l, XK_Caps_Lock, XK_l, XK_Caps_Lock});
        zoomIn();
        QTRY_VERIFY_WITH_TIMEOUT(squareSeen().width() > leastZoom * fitted.width(), patience);
        press({XK_Right});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(1), patience);
        SEES_SQUARE(fitted);
        press({XK_Left});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(0), patience);
        QTRY_COMPARE_WITH_TIMEOUT(toolbar(), before, patience);
    }

    void orphanRawFilesAreDeletedOnlyOnPurpose() {
        writePhotos();
        m_photos->write("a.ARW", "of a photo");
        m_photos->write("gone.ARW", "of none");
        m_photos->write("left.arw", "of none");
        m_photos->write("notes.txt", "no photo");
        const std::vector<std::string> before = namesIn(m_photos->url());
        QVERIFY(startAndOpen(allFeatures));
        QVERIFY(panelWidth() > 300);

        m_screen->click(syncRawButton());
        SEES("an alert");
        press({XK_Escape});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(0), patience);
        QCOMPARE(namesIn(m_photos->url()), before);

        m_screen->click(syncRawButton());
        SEES("an alert");
        press({XK_Return}); // is Cancel's
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(0), patience);
        QCOMPARE(namesIn(m_photos->url()), before);

        m_screen->click(syncRawButton());
        SEES("an alert");
        press({XK_Tab, XK_space}); // to Delete, and press it
        const std::vector<std::string> after = {"a.ARW", "a.jpg", "b.jpg", "notes.txt"};
        QTRY_COMPARE_WITH_TIMEOUT(namesIn(m_photos->url()), after, patience);
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(0), patience);

        m_screen->click(syncRawButton()); // and there is none left
        SEES("an alert");
        press({XK_Escape});
        QTRY_VERIFY_WITH_TIMEOUT(showsPhoto(0), patience);
        QCOMPARE(namesIn(m_photos->url()), after);
    }

private:
    void writePhotos() {
        m_photos->write("a.jpg", photoWithSquare(readablePhotoColor(0)));
        m_photos->write("b.jpg", photoWithSquare(readablePhotoColor(1)));
    }

    bool startAndOpen(const QString& program) {
        return start(Renderer::Software, program) && openFolder(m_photos->url()) &&
               QTest::qWaitFor([&] { return showsPhoto(0) && !squareSeen().isEmpty(); }, patience);
    }

    void zoomIn() {
        m_screen->movePointer(window().topLeft() + QPoint(window().width() * 4 / 10, window().height() / 2));
        m_screen->turnWheel(9, {XK_Control_L});
    }

    void toggleLock(const QString& way) {
        if (way == "key") {
            press({XK_l});
        } else if (way == "shortcut") {
            m_screen->press({XK_Control_L, XK_l});
        } else {
            const QImage before = toolbar();
            m_screen->click(lockCheckbox());
            QVERIFY(QTest::qWaitFor([&] { return toolbar() != before; }, patience));
        }
    }

    /// Whether the photo of that colour is in the middle of the left side.
    bool showsPhoto(int index) const {
        const QImage seen = m_application->picture();
        return ::isNear(seen.pixelColor(30, seen.height() / 2), readablePhotoColor(index));
    }

    /// The square's place in the window, between the panels; empty where it is not seen.
    QRect squareSeen() const {
        constexpr int panels = 80;
        constexpr int leastWhite = 200;
        const QImage seen = m_application->picture();
        QRect place;
        for (int y = panels; y < seen.height() - panels; ++y) {
            for (int x = 0; x < seen.width(); ++x) {
                if (qGreen(seen.pixel(x, y)) > leastWhite) {
                    place |= QRect(x, y, 1, 1);
                }
            }
        }
        return place;
    }

    /// Whether the square's left edge is as narrow as in the photo itself, not in its small preview.
    bool isSharp() const {
        constexpr int reach = 4;
        const QImage seen = m_application->picture();
        const QRect square = squareSeen();
        const QPoint edge(square.left(), square.center().y());
        return !square.isEmpty() &&
               ::isNear(seen.pixelColor(edge - QPoint(reach, 0)), seen.pixelColor(30, edge.y()), 20) &&
               ::isNear(seen.pixelColor(edge + QPoint(reach, 0)), Qt::white, 20);
    }

    /// The right toolbar's place in the picture, with the most that it can hold.
    QImage toolbar() const { return m_application->picture().copy(window().width() - 420, 8, 408, 42); }

    /// How far the right toolbar reaches from the right edge: to the last light pixel of it.
    int panelWidth() const {
        constexpr int leastLight = 60;
        const QImage picture = toolbar();
        for (int x = 0; x < picture.width(); ++x) {
            for (int y = 0; y < picture.height(); ++y) {
                if (qMin(qRed(picture.pixel(x, y)), qBlue(picture.pixel(x, y))) > leastLight &&
                    !::isNear(picture.pixelColor(x, y), readablePhotoColor(0))) {
                    return picture.width() - x;
                }
            }
        }
        return 0;
    }

    // The middles of what is clicked, from the edges of the window.
    QRect window() const { return m_application->window().content; }
    QPoint lockCheckbox() const { return window().topRight() + QPoint(-230, 28); }
    QPoint syncRawButton() const { return window().topRight() + QPoint(-80, 28); }
};

QTEST_GUILESS_MAIN(FeaturesTest)
#include "FeaturesTest.moc"
