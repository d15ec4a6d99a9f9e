#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/EndToEnd/WaylandScreen.h"
#include "Tests/Support/FolderContent.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <X11/keysym.h>

#include <optional>

using Platform::FileURL;

Q_DECLARE_METATYPE(Renderer)

/// The same sessions on a Wayland desktop, whose windows are framed by Qt.
class WaylandTest : public SessionFixture {
    Q_OBJECT

private slots:
    void initTestCase() {
        SessionFixture::initTestCase();
        if (!m_screen) {
            return; // skipped
        }
        if (const QString lacking = WaylandScreen::lacking(); !lacking.isEmpty()) {
            QSKIP(qPrintable(lacking));
        }
        m_desktop.emplace(*m_screen);
    }

    void aFolderIsOpenedWalkedThroughMarkedMovedAndRemembered_data() {
        QTest::addColumn<Renderer>("renderer");
        QTest::newRow("software") << Renderer::Software;
        QTest::newRow("OpenGL") << Renderer::OpenGL;
    }

    void aFolderIsOpenedWalkedThroughMarkedMovedAndRemembered() {
        QFETCH(Renderer, renderer);
        writePhotos();
        const QStringList before = checksumsIn(photos());
        QVERIFY(startOnDesktop(renderer));
        QCOMPARE(m_application->messages().contains("OpenGL"), renderer == Renderer::OpenGL);
        SEES("open a folder");
        QVERIFY(openPhotos());
        SEES("photo 0");

        press({XK_Right, XK_space});
        SEES("photo 1, approved");
        press({XK_Right, XK_x});
        SEES("photo 2, rejected");
        press({XK_Left, XK_Left, XK_Left, XK_x}); // over the first to the last
        SEES("photo 3, rejected");
        m_screen->press({XK_Control_L, XK_z});
        SEES("photo 3");
        m_screen->press({XK_Control_L, XK_z}); // goes back to where the mark was made
        SEES("photo 2");
        press({XK_x});
        SEES("photo 2, rejected");

        m_screen->press({XK_Control_L, XK_a});
        QStringList after = moved(before, {"b.jpg"}, "approved");
        QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(photos()), after, patience);
        SEES("photo 3"); // has come to the place that is shown
        press({XK_Left});
        SEES("photo 2, rejected");
        m_screen->press({XK_Control_L, XK_r});
        after = moved(after, {"c.jpg"}, "rejected");
        QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(photos()), after, patience);
        SEES("photo 3");

        QVERIFY(closeWindow());
        QVERIFY(startOnDesktop(renderer));
        SEES("photo 0");
        press({XK_Right});
        SEES("photo 3");
        QCOMPARE(checksumsIn(photos()), after);
    }

    void theWindowCarriesTheNameOfTheDesktopEntry() {
        QVERIFY(startOnDesktop());
        QCOMPARE(m_application->window().title, QStringLiteral("Vantrel"));
        QCOMPARE(m_application->window().className, QStringLiteral("org.vantrel.Vantrel"));
    }

    void theContentCannotBeMadeSmallerThanItsLeastSize() {
        writePhotos();
        QVERIFY(startOnDesktop());
        QVERIFY(openPhotos());
        SEES("photo 0");
        const QRect content = m_application->window().content;
        const QRect least(content.topLeft(), QSize(900, 650));
        QVERIFY(content.contains(least) && content != least);
        QVERIFY(!isFramed(least));

        // With these keys the desktop resizes a window, whatever its frame is.
        takePointerOut();
        m_screen->drag(content.bottomRight() - QPoint(60, 60), {-500, -400}, {XK_Super_L, XK_Shift_L});
        const QPoint onPhoto = least.center() - QPoint(least.width() / 4, 0);
        const QRgb firstPhoto = colorAt(onPhoto);
        press({XK_Right}); // comes after it
        QTRY_VERIFY_WITH_TIMEOUT(colorAt(onPhoto) != firstPhoto, patience);
        QTRY_VERIFY_WITH_TIMEOUT(isFramed(least), patience);
    }

private:
    const Desktop& desktop() const override { return *m_desktop; }

    /// Four photos in a folder that the chooser shows at once.
    void writePhotos() {
        m_home->makeFolder("p");
        int index = 0;
        for (const char* name : {"p/a.jpg", "p/b.jpg", "p/c.jpg", "p/d.jpg"}) {
            m_home->write(name, flatPhoto(readablePhotoColor(index++), readablePhotoSize));
        }
    }

    FileURL photos() const { return m_home->at("p"); }

    /// Opens that folder. Its name has one letter, because the chooser's list of completions has the keyboard while
    /// it is there, and what is typed at the moment when it closes would be lost.
    bool openPhotos() {
        if (!showChooser()) {
            return false;
        }
        press({XK_p, XK_Return});
        return isInFrontSoon();
    }

    QRgb colorAt(QPoint place) const { return m_screen->picture().pixel(place); }

    /// Whether the frame begins right where that part of the picture ends, to the right and below.
    bool isFramed(const QRect& content) const {
        const QPoint middle = content.center();
        const QRgb frame = colorAt({content.left() - 1, middle.y()});
        return colorAt({content.right() + 1, middle.y()}) == frame &&
               colorAt({content.right(), middle.y()}) != frame &&
               colorAt({middle.x(), content.bottom() + 1}) == frame &&
               colorAt({middle.x(), content.bottom()}) != frame;
    }

    /// Starts the application and takes the pointer, which is part of the picture here, off its content.
    bool startOnDesktop(Renderer renderer = Renderer::Software) {
        const bool isReady = start(renderer);
        takePointerOut();
        m_screen->movePointer(m_application->window().content.topLeft() + QPoint(100, -15));
        return isReady;
    }

    /// The desktop follows the pointer by its steps, and may miss some; where it comes in is taken as it is.
    void takePointerOut() { m_screen->movePointer({0, 0}); }

    /// Closes the main window by the button in its frame, and tells whether that ended the application as it should.
    bool closeWindow() {
        takePointerOut();
        m_screen->click(m_application->window().content.topRight() + QPoint(-14, -15));
        return QTest::qWaitFor([&] { return m_application->hasEnded(); }, patience) &&
               m_application->hasEndedWell();
    }

    std::optional<WaylandScreen> m_desktop; // in m_screen's
};

QTEST_GUILESS_MAIN(WaylandTest)
#include "WaylandTest.moc"
