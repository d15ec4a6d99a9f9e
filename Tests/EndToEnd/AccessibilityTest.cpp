#include "Tests/EndToEnd/AccessibleTree.h"
#include "Tests/EndToEnd/MessageBus.h"
#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FolderContent.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/WithPermissions.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <X11/keysym.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <vector>

using Platform::FileURL;

/// The two are equal, at once or soon by the clock: to ask takes its time.
#define BECOMES(actual, ...)                                                                                 \
    static_cast<void>(QTest::qWaitFor([&] { return (actual) == (__VA_ARGS__); }, patience));                 \
    QCOMPARE(actual, (__VA_ARGS__))

/// A screen reader that walks through the window finds, at once or soon, these things in this order.
#define READS(...) BECOMES(read(), (QStringList{QStringLiteral("frame: Vantrel"), __VA_ARGS__}))

/// A screen reader has been told, since the last action, or is soon that these things are called so now.
#define ANNOUNCES(...) BECOMES(notAnnounced({__VA_ARGS__}).join(u"; "), QStringLiteral(""))

/// The keyboard focus is, at once or soon, there and nowhere else.
#define FOCUSES(words) BECOMES(focused(), QStringList{words})

/// The folder holds, at once or soon, these files of these contents.
#define HOLDS(folder, files) BECOMES(checksumsIn(folder), files)

namespace {

const QString nextPageAction = QStringLiteral("Next Page");
const QString previousPageAction = QStringLiteral("Previous Page");
const QString pressAction = QStringLiteral("Press");
const QString toggleAction = QStringLiteral("Toggle");
const QString increaseAction = QStringLiteral("Increase");
const QString decreaseAction = QStringLiteral("Decrease");

/// The desktop of somebody who uses a screen reader.
class SpeakingDesktop : public Desktop {
public:
    explicit SpeakingDesktop(const VirtualScreen& screen) : m_screen(screen), m_bus(screen) {}

    QString busAddress() const { return m_bus.address(); }

    QProcessEnvironment environment(const FileURL& home) const override {
        auto environment = m_screen.environment(home);
        environment.insert("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
        environment.insert("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        return environment;
    }
    QImage picture() const override { return m_screen.picture(); }
    ScreenWindow activeWindow() const override { return m_screen.activeWindow(); }

private:
    const VirtualScreen& m_screen;
    MessageBus m_bus;
};

} // namespace

/// What the application tells assistive technology, and what that can do with it.
class AccessibilityTest : public SessionFixture {
    Q_OBJECT

private slots:
    void initTestCase() {
        SessionFixture::initTestCase();
        if (!m_screen) {
            return; // skipped
        }
        if (const QString lacking = MessageBus::lacking(); !lacking.isEmpty()) {
            QSKIP(qPrintable(lacking));
        }
        m_desktop.emplace(*m_screen);
        // This process is the screen reader.
        qunsetenv("AT_SPI_BUS_ADDRESS");
        qputenv("DISPLAY", m_screen->displayName().toLatin1());
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_desktop->busAddress().toLatin1());
        m_tree.emplace();
    }

    void withoutAFolderTheScreenSaysWhatToDo() {
        QVERIFY(start());
        READS("image: Open a folder to begin reviewing", "tool bar: Folder", "push button: Open Folder",
            "tool bar: Marks", "push button: Undo");
        FOCUSES("image: Open a folder to begin reviewing");
        QCOMPARE(shown("push button: Open Folder")->description(), QStringLiteral("Ctrl+O"));
        QCOMPARE(shown("push button: Undo")->description(), QStringLiteral("Ctrl+Z"));
    }

    void aFolderWithoutPhotosSaysSo() {
        const FileURL empty = m_photos->makeFolder("empty");
        QVERIFY(start());
        QVERIFY(openByActions(empty));
        READS("image: No JPG images found in this folder.", "tool bar: Folder", "push button: Open Folder",
            "label: folder empty", "tool bar: Marks", "push button: Undo");
        FOCUSES("image: No JPG images found in this folder.");
    }

    void aFolderIsOpenedReviewedAndMovedWithoutAKey() {
        const FileURL card = writeCard();
        const QStringList before = checksumsIn(card);
        QVERIFY(start());
        QVERIFY(openByActions(card));
        READS("image: photo 1 of 4, a.jpg, unreviewed", "tool bar: Folder", "push button: Open Folder",
            "label: folder card", "tool bar: Marks", "push button: Undo", "tool bar: Photo",
            "label: file a.jpg", "label: resolution 1.6K", "tool bar: Moves", "label: photo 1 of 4",
            "label: 0 approved", "label: 0 rejected", "push button: Move Approved (0)",
            "push button: Move Rejected (0)");
        FOCUSES("image: photo 1 of 4, a.jpg, unreviewed");

        QVERIFY(actOnPhoto(pressAction));
        ANNOUNCES(
            "image: photo 1 of 4, a.jpg, approved", "label: 1 approved", "push button: Move Approved (1)");
        QVERIFY(actOnPhoto(nextPageAction));
        ANNOUNCES("image: photo 2 of 4, b.jpg, unreviewed", "label: photo 2 of 4", "label: file b.jpg");
        QVERIFY(actOnPhoto(toggleAction));
        ANNOUNCES(
            "image: photo 2 of 4, b.jpg, rejected", "label: 1 rejected", "push button: Move Rejected (1)");
        QVERIFY(actOnPhoto(previousPageAction));
        ANNOUNCES("image: photo 1 of 4, a.jpg, approved");
        QVERIFY(actOnPhoto(previousPageAction));
        ANNOUNCES("image: photo 4 of 4, d.jpg, unreviewed");
        QVERIFY(actOnPhoto(pressAction));
        ANNOUNCES("image: photo 4 of 4, d.jpg, approved", "label: 2 approved");
        SEES("photo 3, approved"); // what is told is what is on the screen
        QVERIFY(act("push button: Undo", pressAction));
        ANNOUNCES("image: photo 4 of 4, d.jpg, unreviewed", "label: 1 approved");
        QVERIFY(actOnPhoto(toggleAction));
        ANNOUNCES("image: photo 4 of 4, d.jpg, rejected", "label: 2 rejected");
        QVERIFY(actOnPhoto(toggleAction));
        ANNOUNCES("image: photo 4 of 4, d.jpg, unreviewed", "label: 1 rejected");
        QVERIFY(actOnPhoto(nextPageAction));
        ANNOUNCES("image: photo 1 of 4, a.jpg, approved", "label: file a.jpg");
        SEES("photo 0, approved");
        FOCUSES("image: photo 1 of 4, a.jpg, approved");
        QCOMPARE(checksumsIn(card), before);

        QVERIFY(act("push button: Move Approved (1)", pressAction));
        QStringList after = moved(before, {"a.jpg"}, "approved");
        HOLDS(card, after);
        ANNOUNCES("image: photo 1 of 3, b.jpg, rejected", "label: photo 1 of 3", "label: 0 approved",
            "push button: Move Approved (0)");
        QVERIFY(act("push button: Move Rejected (1)", pressAction));
        after = moved(after, {"b.jpg"}, "rejected");
        HOLDS(card, after);
        ANNOUNCES("image: photo 1 of 2, c.jpg, unreviewed", "label: 0 rejected");

        QVERIFY(actOnPhoto(pressAction));
        ANNOUNCES("image: photo 1 of 2, c.jpg, approved");
        QVERIFY(actOnPhoto(nextPageAction));
        ANNOUNCES("image: photo 2 of 2, d.jpg, unreviewed");
        QVERIFY(actOnPhoto(pressAction));
        ANNOUNCES("image: photo 2 of 2, d.jpg, approved");
        QVERIFY(act("push button: Move Approved (2)", pressAction));
        HOLDS(card, moved(after, {"c.jpg", "d.jpg"}, "approved"));
        ANNOUNCES("image: No JPG images found in this folder.");
        READS("image: No JPG images found in this folder.", "tool bar: Folder", "push button: Open Folder",
            "label: folder card", "tool bar: Marks", "push button: Undo");
        FOCUSES("image: No JPG images found in this folder.");
    }

    void whatKeysDoIsAnnouncedAsWell() {
        QVERIFY(start());
        QVERIFY(openByActions(writeCard()));
        ANNOUNCES("image: photo 1 of 4, a.jpg, unreviewed");
        m_tree->forget();
        press({XK_Right});
        ANNOUNCES("image: photo 2 of 4, b.jpg, unreviewed", "label: photo 2 of 4", "label: file b.jpg");
        m_tree->forget();
        press({XK_x});
        ANNOUNCES("image: photo 2 of 4, b.jpg, rejected", "label: 1 rejected");
        m_tree->forget();
        m_screen->press({XK_Control_L, XK_z});
        ANNOUNCES("image: photo 2 of 4, b.jpg, unreviewed", "label: 0 rejected");
    }

    void thePhotoIsZoomedByItsActions() {
        QVERIFY(start());
        QVERIFY(openByActions(writeCard()));
        SEES("photo 0");
        const auto isAtTheTop = [this] { // where the fitted photo leaves a black edge
            const QImage picture = m_application->picture();
            return isNear(picture.pixelColor(picture.width() / 2, 2), readablePhotoColor(0));
        };
        QVERIFY(!isAtTheTop());
        QVERIFY(actOnPhoto(increaseAction));
        QVERIFY(QTest::qWaitFor([&] { return isAtTheTop(); }, patience));
        QVERIFY(actOnPhoto(decreaseAction));
        QVERIFY(QTest::qWaitFor([&] { return !isAtTheTop(); }, patience));
    }

    void aButtonSaysWhichKeyDoesTheSameAndWhetherItCanBePressed() {
        const QStringList before{"push button: Open Folder", "push button: Undo",
            "push button: Move Approved (0)", "push button: Move Rejected (0)"};
        const QStringList after{"push button: Open Folder", "push button: Undo",
            "push button: Move Approved (1)", "push button: Move Rejected (0)"};
        QVERIFY(start());
        QVERIFY(openByActions(writeCard()));
        BECOMES(buttons(), before);
        QStringList keys;
        for (const QString& button : before) {
            keys.append(shown(button)->description());
        }
        QCOMPARE(keys, (QStringList{"Ctrl+O", "Ctrl+Z", "Ctrl+A", "Ctrl+R"}));
        QCOMPARE(usableButtons(), before.sliced(0, 1));
        QVERIFY(actOnPhoto(pressAction));
        BECOMES(buttons(), after);
        BECOMES(usableButtons(), after.sliced(0, 3));
    }

    void pressingAButtonThatIsOffDoesNothing() {
        const FileURL card = writeCard();
        const QStringList before = checksumsIn(card);
        QVERIFY(start());
        QVERIFY(openByActions(card));
        for (const char* button :
            {"push button: Undo", "push button: Move Approved (0)", "push button: Move Rejected (0)"}) {
            act(button, pressAction); // may be refused
        }
        QVERIFY(actOnPhoto(nextPageAction)); // comes after them
        ANNOUNCES("image: photo 2 of 4, b.jpg, unreviewed");
        QVERIFY(!shown("alert: Error"));
        QCOMPARE(checksumsIn(card), before);
    }

    void anAlertIsReadAndDismissedAndThePhotoHasTheKeysAgain() {
        const FileURL locked = m_photos->makeFolder("locked");
        const WithPermissions none(locked, std::filesystem::perms::none);
        QVERIFY(start());
        QVERIFY(openByActions(writeCard()));
        ANNOUNCES("image: photo 1 of 4, a.jpg, unreviewed");
        QVERIFY(openByActions(locked));
        QVERIFY(QTest::qWaitFor([&] { return shown("alert: Error").has_value(); }, patience));
        const QString message = QStringLiteral("Failed to read folder contents.");
        QCOMPARE(shown("alert: Error")->description(), message);
        QCOMPARE(textsThatRead(message).size(), 1);
        QCOMPARE(unclear(), QStringList());
        FOCUSES("push button: OK");

        QVERIFY(act("push button: OK", pressAction));
        QVERIFY(QTest::qWaitFor([&] { return !shown("alert: Error"); }, patience));
        FOCUSES("image: photo 1 of 4, a.jpg, unreviewed");
        press({XK_Right, XK_space});
        FOCUSES("image: photo 2 of 4, b.jpg, approved");
    }

    void tabReachesEveryControlOnceAndReturnsToThePhoto() {
        QVERIFY(start());
        QVERIFY(openByActions(writeCard()));
        ANNOUNCES("image: photo 1 of 4, a.jpg, unreviewed");
        press({XK_x, XK_Right, XK_space}); // so that every button can be pressed
        const QString photo = QStringLiteral("image: photo 2 of 4, b.jpg, approved");
        FOCUSES(photo);
        const QStringList way{"push button: Open Folder", "push button: Undo",
            "push button: Move Approved (1)", "push button: Move Rejected (1)", photo};
        QStringList reached = way;
        std::sort(reached.begin(), reached.end());
        BECOMES(focusable(), reached);
        for (const QString& control : way) {
            press({XK_Tab});
            FOCUSES(control);
        }
        for (auto control = std::next(way.rbegin()); control != way.rend(); ++control) {
            m_screen->press({XK_Shift_L, XK_Tab});
            FOCUSES(*control);
        }
        m_screen->press({XK_Shift_L, XK_Tab});
        FOCUSES(photo);
    }

private:
    const Desktop& desktop() const override { return *m_desktop; }

    /// A folder with the photos 0 to 3.
    FileURL writeCard() {
        int index = 0;
        FileURL card = m_photos->makeFolder("card");
        for (const char* name : {"card/a.jpg", "card/b.jpg", "card/c.jpg", "card/d.jpg"}) {
            m_photos->write(name, flatPhoto(readablePhotoColor(index++), readablePhotoSize));
        }
        return card;
    }

    std::vector<Accessible> showing() const { return m_tree->showing(m_application->window().processId); }

    /// The first that shows and is called so, in words; waits for none.
    std::optional<Accessible> shown(const QString& words) const {
        for (const Accessible& accessible : showing()) {
            if (accessible.inWords() == words) {
                return accessible;
            }
        }
        return std::nullopt;
    }

    QStringList read() const {
        return wordsOf([](const Accessible&) { return true; });
    }

    /// An alert has the focus together with what has it in the alert, and is left out.
    QStringList focused() const {
        return wordsOf([](const Accessible& accessible) {
            return accessible.is("focused") && accessible.role() != u"alert";
        });
    }

    /// What the keyboard focus can be given to, sorted. Texts call themselves so although it cannot.
    QStringList focusable() const {
        QStringList words = wordsOf([](const Accessible& accessible) {
            return accessible.is("focusable") && accessible.role() != u"label";
        });
        words.sort();
        return words;
    }

    /// What of the window has no name or no role that says what it is.
    QStringList unclear() const {
        return wordsOf([](const Accessible& accessible) {
            const QStringList meaningless{"unknown", "invalid", "filler", "panel"};
            return accessible.name().isEmpty() || meaningless.contains(accessible.role());
        });
    }

    template <typename Condition>
    QStringList wordsOf(const Condition& holds) const {
        QStringList words;
        for (const Accessible& accessible : showing()) {
            if (holds(accessible)) {
                words.append(accessible.inWords());
            }
        }
        return words;
    }

    QStringList buttons() const {
        return wordsOf([](const Accessible& accessible) { return accessible.role() == u"push button"; });
    }

    /// Those that look as if a press did something.
    QStringList usableButtons() const {
        return wordsOf([](const Accessible& accessible) {
            return accessible.role() == u"push button" &&
                   (accessible.is("enabled") || accessible.is("sensitive"));
        });
    }

    QStringList notAnnounced(QStringList words) {
        for (const QString& announced : m_tree->renamed()) {
            words.removeAll(announced);
        }
        return words;
    }

    /// Everything in the window that reads so, as a text.
    QStringList textsThatRead(const QString& text) const {
        return wordsOf([&](const Accessible& accessible) {
            const QStringList texts{"label", "text"};
            return texts.contains(accessible.role()) &&
                   (accessible.name() == text || accessible.text() == text);
        });
    }

    /// Waits for what is called so in words, and does that action of it.
    bool act(const QString& words, const QString& action) {
        std::optional<Accessible> found;
        m_tree->forget();
        return QTest::qWaitFor([&] { return (found = shown(words)).has_value(); }, patience) &&
               found->act(action);
    }

    bool actOnPhoto(const QString& action) {
        const QStringList images =
            wordsOf([](const Accessible& accessible) { return accessible.role() == u"image"; });
        return images.size() == 1 && act(images.first(), action);
    }

    /// Opens a folder by way of the chooser without a key.
    bool openByActions(const FileURL& folder) {
        const auto field = [this] { return shown("text: Directory:"); };
        return act("push button: Open Folder", pressAction) &&
               QTest::qWaitFor([&] { return field().has_value(); }, patience) &&
               field()->enter(QString::fromStdString(folder.path().native())) &&
               act("push button: Open", pressAction) && isInFrontSoon();
    }

    std::optional<SpeakingDesktop> m_desktop; // on m_screen
    std::optional<AccessibleTree> m_tree;
};

QTEST_GUILESS_MAIN(AccessibilityTest)
#include "AccessibilityTest.moc"
