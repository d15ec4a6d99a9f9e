#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Support/FolderContent.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <X11/keysym.h>

#include <chrono>
#include <string>

/// The keys of all keyboards, held keys, and the keys after other windows and the pointer had their turn.
class KeyboardTest : public SessionFixture {
    Q_OBJECT

private slots:
    void cleanup() {
        if (m_screen) {
            m_screen->setLayout("us");
        }
        SessionFixture::cleanup();
    }

    void keysAreFoundByTheirPlaceOnCyrillicKeyboards_data() {
        QTest::addColumn<QString>("layouts");
        QTest::newRow("ru") << "ru";
        QTest::newRow("ru, us") << "ru,us";
    }

    void keysAreFoundByTheirPlaceOnCyrillicKeyboards() {
        QFETCH(QString, layouts);
        QVERIFY(startWithPhotos());
        m_screen->setLayout(layouts);
        press({XK_x});
        SEES("photo 0, rejected");
        press({XK_Right, XK_space});
        SEES("photo 1, approved");
        press({XK_Left, XK_Left, XK_x});
        SEES("photo 18, rejected");

        const QStringList before = checksumsIn(m_photos->url());
        m_screen->press({XK_Control_L, XK_z});
        SEES("photo 18");
        m_screen->press({XK_Control_L, XK_a});
        const QStringList after = moved(before, {nameOf(1)}, "approved");
        QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(m_photos->url()), after, patience);
        m_screen->press({XK_Control_L, XK_r});
        QTRY_COMPARE_WITH_TIMEOUT(
            checksumsIn(m_photos->url()), moved(after, {nameOf(0)}, "rejected"), patience);
        QVERIFY(showChooser());
        press({XK_Escape});
        QVERIFY(isInFrontSoon());
    }

    void capitalLettersAreTheSameKeys() {
        QVERIFY(startWithPhotos());
        press({XK_Caps_Lock, XK_x});
        SEES("photo 0, rejected");
        m_screen->press({XK_Control_L, XK_z});
        SEES("photo 0");
        press({XK_Caps_Lock});
    }

    void aHeldKeyWalksOnUntilItIsLetGo() {
        using std::chrono::milliseconds;
        QVERIFY(startWithPhotos());
        m_screen->setKeyRepeat(milliseconds(200), milliseconds(20));
        m_screen->hold(XK_Right);
        const bool isFarOn = QTest::qWaitFor(
            [&] { return seenIn(m_application->picture()) == QStringLiteral("photo 12"); }, patience);
        m_screen->letGo(XK_Right);
        QVERIFY(isFarOn);

        press({XK_space});
        const auto seen = [&] { return seenIn(m_application->picture()); };
        QTRY_VERIFY_WITH_TIMEOUT(seen().endsWith(QStringLiteral(", approved")), patience);
        const QString last = seen();
        press({XK_Right, XK_x, XK_Left}); // one there and one back: nothing walks on
        QTRY_COMPARE_WITH_TIMEOUT(seen(), last, patience);
        press({XK_Right});
        QTRY_VERIFY_WITH_TIMEOUT(seen().endsWith(QStringLiteral(", rejected")), patience);
    }

    void theKeysComeBackFromAnotherWindow() {
        QVERIFY(startWithPhotos());
        const TemporaryFolder otherHome;
        {
            RunningApplication other(*m_screen, otherHome.url(), Renderer::Software);
            QVERIFY(other.waitUntilReady());
            press({XK_Right, XK_x}); // are the other's
        }
        QVERIFY(isInFrontSoon());
        press({XK_x});
        SEES("photo 0, rejected");
        press({XK_Right});
        SEES("photo 1");
    }

    void theKeysWorkAfterAClickOnAnyButton() {
        QVERIFY(startWithPhotos());
        const QStringList before = checksumsIn(m_photos->url());
        press({XK_space});
        SEES("photo 0, approved");
        click(undoButton());
        SEES("photo 0");
        press({XK_x});
        SEES("photo 0, rejected");
        click(moveRejectedButton());
        QStringList after = moved(before, {nameOf(0)}, "rejected");
        QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(m_photos->url()), after, patience);
        press({XK_space});
        SEES("photo 1, approved");
        click(moveApprovedButton());
        after = moved(after, {nameOf(1)}, "approved");
        QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(m_photos->url()), after, patience);
        press({XK_Right});
        SEES("photo 3");

        click(openFolderButton());
        QVERIFY(QTest::qWaitFor([&] { return !m_application->isInFront(); }, patience));
        press({XK_Escape});
        QVERIFY(isInFrontSoon());
        press({XK_x});
        SEES("photo 3, rejected");
    }

private:
    static std::string nameOf(int photo) { return "photo" + std::to_string(photo + 10) + ".jpg"; }

    bool startWithPhotos() {
        for (int index = 0; index < 19; ++index) {
            m_photos->write(nameOf(index), flatPhoto(readablePhotoColor(index), readablePhotoSize));
        }
        return start() && openFolder(m_photos->url()) &&
               QTest::qWaitFor([&] { return seenIn(m_application->picture()) == "photo 0"; }, patience);
    }

    // The buttons' middles, from the edges of the window.
    QRect window() const { return m_application->window().content; }
    QPoint openFolderButton() const { return window().topLeft() + QPoint(97, 28); }
    QPoint undoButton() const { return window().topRight() + QPoint(-64, 28); }
    QPoint moveApprovedButton() const { return window().bottomRight() + QPoint(-356, -28); }
    QPoint moveRejectedButton() const { return window().bottomRight() + QPoint(-138, -28); }
    void click(QPoint place) { m_screen->click(place); }
};

QTEST_GUILESS_MAIN(KeyboardTest)
#include "KeyboardTest.moc"
