#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FolderContent.h"
#include "Tests/Support/WithPermissions.h"

#include <QDeadlineTimer>
#include <QTest>

#include <X11/keysym.h>

#include <filesystem>
#include <string>
#include <vector>

using Platform::FileURL;

/// The folder holds, at once or soon, these files of these contents.
#define HOLDS(folder, files) QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(folder), files, patience)

namespace {

const std::vector<Key> undoKeys = {XK_Control_L, XK_z};
const std::vector<Key> moveApprovedKeys = {XK_Control_L, XK_a};
const std::vector<Key> moveRejectedKeys = {XK_Control_L, XK_r};
constexpr Key approveKey = XK_space;
constexpr Key rejectKey = XK_x;

/// Names of that many photos as a camera gives them, in the order of their numbers.
std::vector<std::string> cameraNames(int count) {
    constexpr int first = 8; // so that the numbers grow by a digit on the way
    std::vector<std::string> names;
    for (int number = first; number < first + count; ++number) {
        names.push_back("VTR_" + std::to_string(number) + ".JPG");
    }
    return names;
}

} // namespace

/// Folders opened and remembered, photos walked through, marked and moved.
class SessionTest : public SessionFixture {
    Q_OBJECT

private slots:
    void aFolderIsOpenedWalkedThroughMarkedAndMoved() {
        writePhotos(cameraNames(6));
        const QStringList before = checksumsIn(m_photos->url());
        QVERIFY(start());
        SEES("open a folder");
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");

        press({XK_Right, approveKey});
        SEES("photo 1, approved");
        press({XK_Right, XK_Right, rejectKey});
        SEES("photo 3, rejected");
        press({XK_Left});
        SEES("photo 2");
        press({approveKey, rejectKey});
        SEES("photo 2, rejected");
        m_screen->press(undoKeys);
        SEES("photo 2, approved");
        m_screen->press(undoKeys);
        SEES("photo 2");
        press({XK_Left, XK_Left, XK_Left, rejectKey}); // over the first to the last
        SEES("photo 5, rejected");
        press({XK_Right, XK_Right});
        SEES("photo 1, approved");
        m_screen->press(undoKeys); // goes back to where the mark was made
        SEES("photo 5");
        press({rejectKey, XK_Right, XK_Right});
        SEES("photo 1, approved");
        QCOMPARE(checksumsIn(m_photos->url()), before); // marks alone change nothing on the disk

        m_screen->press(moveApprovedKeys);
        QStringList after = moved(before, {"VTR_9.JPG"}, "approved");
        HOLDS(m_photos->url(), after);
        SEES("photo 2");           // stands now where the moved one stood
        m_screen->press(undoKeys); // a move leaves nothing to take back
        press({XK_Right});
        SEES("photo 3, rejected");

        m_screen->press(moveRejectedKeys);
        after = moved(after, {"VTR_11.JPG", "VTR_13.JPG"}, "rejected");
        HOLDS(m_photos->url(), after);
        SEES("photo 4");

        QVERIFY(closeWindow());
        QVERIFY(start());
        SEES("photo 0");
        press({XK_Right});
        SEES("photo 2");
        press({XK_Right});
        SEES("photo 4");
        press({XK_Right});
        SEES("photo 0");
        QCOMPARE(checksumsIn(m_photos->url()), after);
    }

    void nothingIsWrittenButTheSettings() {
        writePhotos(cameraNames(3));
        const QStringList before = checksumsIn(m_photos->url());
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        press({approveKey});
        m_screen->press(moveApprovedKeys);
        SEES("photo 1");
        QVERIFY(closeWindow());
        QCOMPARE(checksumsIn(m_photos->url()), moved(before, {cameraNames(1).front()}, "approved"));
        QStringList written;
        for (const QString& file : checksumsIn(m_home->url())) {
            written.append(file.section(u' ', 0, -2));
        }
        QCOMPARE(written, QStringList({".config/QtProject.conf", ".config/Vantrel/settings.json"}));
    }

    void theLastFolderIsRememberedForTheNextStart() {
        writePhotos({"a.jpg", "b.jpg"});
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        const FileURL settings = m_home->at(".config/Vantrel/settings.json");
        QVERIFY(exists(settings) && contentOf(settings).contains("\"LastFolderBookmark\": "));
        QVERIFY(closeWindow());
        QVERIFY(start());
        SEES("photo 0");
    }

    void aRememberedFolderThatIsGoneIsNotMentioned() {
        const FileURL folder = m_photos->makeFolder("card");
        m_photos->write("card/a.jpg", readablePhoto(0));
        QVERIFY(start());
        QVERIFY(openFolder(folder));
        SEES("photo 0");
        QVERIFY(closeWindow());
        std::filesystem::remove_all(folder.path());
        QVERIFY(start());
        SEES("open a folder");
    }

    void cancellingTheChooserChangesNothingAndTheKeysWorkAtOnce() {
        writePhotos({"a.jpg", "b.jpg", "c.jpg"});
        QVERIFY(start());
        QVERIFY(cancelChooser());
        SEES("open a folder");
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        press({XK_Right, approveKey});
        SEES("photo 1, approved");
        QVERIFY(cancelChooser());
        press({XK_Right});
        SEES("photo 2");
        press({XK_Left});
        SEES("photo 1, approved");
    }

    void anEmptyFolderSaysSoAndAnotherCanBeOpened() {
        const FileURL empty = m_photos->makeFolder("empty");
        writePhotos({"a.jpg"});
        QVERIFY(start());
        QVERIFY(openFolder(empty));
        SEES("no images");
        press({XK_Right, XK_Left, approveKey, rejectKey});
        for (const auto& command : {undoKeys, moveApprovedKeys, moveRejectedKeys}) {
            m_screen->press(command);
        }
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        QCOMPARE(namesIn(m_photos->url()), (std::vector<std::string>{"a.jpg", "empty"}));
        QVERIFY(namesIn(empty).empty());
    }

    void anUnreadableFolderGivesAMessageAndThePhotosStay() {
        writePhotos({"a.jpg", "b.jpg", "c.jpg"});
        const FileURL locked = m_photos->makeFolder("locked");
        const WithPermissions none(locked, std::filesystem::perms::none);
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        press({XK_Right});
        SEES("photo 1");
        QVERIFY(openFolder(locked));
        SEES("an alert");
        press({XK_Right, XK_Return, XK_Right}); // the first is the alert's, the last is the screen's again
        SEES("photo 2");

        QVERIFY(closeWindow()); // the folder is the last one all the same
        QVERIFY(start());
        SEES("an alert");
        press({XK_Escape});
        SEES("no images");
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
    }

    void aPhotoThatCannotBeDecodedShowsAsSuchAndIsPassedBy() {
        writePhotos({"a.jpg", "b.jpg", "c.jpg"});
        m_photos->write("b.jpg", "no picture");
        const QStringList before = checksumsIn(m_photos->url());
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        press({XK_Right});
        SEES("no images, panels below");
        press({XK_Right});
        SEES("photo 2");
        press({XK_Left});
        SEES("no images, panels below");
        press({rejectKey, XK_Left});
        SEES("photo 0");
        m_screen->press(moveRejectedKeys); // it can be sorted out like any other
        HOLDS(m_photos->url(), moved(before, {"b.jpg"}, "rejected"));
        press({XK_Right});
        SEES("photo 2");
    }

    void aMoveThatFailsGivesAMessageAndKeepsPhotosAndMarks() {
        writePhotos({"a.jpg", "b.jpg"});
        const QStringList before = checksumsIn(m_photos->url());
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        press({approveKey});
        SEES("photo 0, approved");
        {
            using std::filesystem::perms;
            const WithPermissions readOnly(m_photos->url(), perms::owner_read | perms::owner_exec);
            m_screen->press(moveApprovedKeys);
            SEES("an alert");
            QCOMPARE(checksumsIn(m_photos->url()), before);
        }
        press({XK_Escape, XK_Right});
        SEES("photo 1");
        press({XK_Left});
        SEES("photo 0, approved");
        m_screen->press(moveApprovedKeys);
        HOLDS(m_photos->url(), moved(before, {"a.jpg"}, "approved"));
        SEES("photo 1");
    }

    void anArrowKeyHeldDownEndsOnTheRightPhoto() {
        constexpr std::chrono::milliseconds interval(33);
        writePhotos(cameraNames(19));
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        m_screen->repeat(XK_Right, 48, interval);
        press({approveKey}); // tells the last photo from the same one passed by
        SEES("photo 10, approved");
        m_screen->repeat(XK_Left, 30, interval);
        press({rejectKey});
        SEES("photo 18, rejected");
    }

    void theWindowCarriesTheNameAndClosingItEndsTheApplicationWell() {
        QVERIFY(start());
        QCOMPARE(m_application->window().title, QStringLiteral("Vantrel"));
        QCOMPARE(m_application->window().className, QStringLiteral("vantrel"));
        SEES("open a folder");
        QVERIFY(closeWindow());
    }

    void killedWhileItMovesPhotosItLeavesEveryPhotoWholeAndStartsAgain() {
        constexpr int count = 501; // all but the last are moved
        for (int index = 0; index < count; ++index) {
            const QByteArray photo = readablePhoto(index % readablePhotoCount);
            m_photos->write(
                "VTR_" + std::to_string(1000 + index) + ".JPG", photo + QByteArray::number(index));
        }
        const QStringList before = checksumsIn(m_photos->url());
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        for (int marked = 0; marked < count - 1; ++marked) {
            press({approveKey, XK_Right});
        }
        m_screen->press(moveApprovedKeys);
        QVERIFY(waitForAnyIn(m_photos->at("approved")));
        m_application->kill();

        const QStringList after = checksumsIn(m_photos->url());
        QCOMPARE(withoutFolder(after, "approved"), before);
        const auto movedCount = static_cast<int>(namesIn(m_photos->at("approved")).size());
        qInfo("killed with %d of %d photos moved", movedCount, count - 1);

        QVERIFY(start());
        const QString expected =
            QStringLiteral("photo %1").arg(movedCount % readablePhotoCount); // the first that is left
        QTRY_COMPARE_WITH_TIMEOUT(seenIn(m_application->picture()), expected, patience);
        QCOMPARE(checksumsIn(m_photos->url()), after);
    }

private:
    /// Writes a photo under each name: photo 0, photo 1...
    void writePhotos(const std::vector<std::string>& names) {
        for (int index = 0; index < std::ssize(names); ++index) {
            m_photos->write(names[index], readablePhoto(index));
        }
    }

    bool cancelChooser() {
        if (!showChooser()) {
            return false;
        }
        press({XK_Escape});
        return isInFrontSoon();
    }

    /// Waits, without a moment's pause, until there is something in the folder.
    static bool waitForAnyIn(const FileURL& folder) {
        const QDeadlineTimer deadline(patience);
        while (!deadline.hasExpired()) {
            if (exists(folder) && !namesIn(folder).empty()) {
                return true;
            }
        }
        return false;
    }
};

QTEST_GUILESS_MAIN(SessionTest)
#include "SessionTest.moc"
