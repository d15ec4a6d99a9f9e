#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Support/FolderContent.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <X11/keysym.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using Platform::FileURL;

/// The folder holds, at once or soon, these files of these contents.
#define HOLDS(folder, files) QTRY_COMPARE_WITH_TIMEOUT(checksumsIn(folder), files, patience)

namespace {

const std::vector<Key> moveApprovedKeys = {XK_Control_L, XK_a};
const std::vector<Key> moveRejectedKeys = {XK_Control_L, XK_r};
constexpr Key approveKey = XK_space;
constexpr Key rejectKey = XK_x;

/// "10.jpg", "11.jpg"...
std::string nameOf(int index) {
    return std::to_string(10 + index) + ".jpg";
}

/// Does to the photos of a folder, one after the other and again and again, what other programs do, until its end. Then
/// each is what it was.
class Meddler {
public:
    /// @param photos  the folder's, as they are at first
    Meddler(const TemporaryFolder& folder, std::vector<QByteArray> photos)
        : m_folder(folder),
          m_photos(std::move(photos)),
          m_written(byIndex(m_photos)),
          m_thread([this](const std::stop_token& stop) { meddle(stop); }) {}
    ~Meddler() { leaveAlone(); }
    Meddler(const Meddler&) = delete;
    Meddler& operator=(const Meddler&) = delete;

    int changes() const { return m_changes; }

    /// Ends it. Again does nothing.
    void leaveAlone() {
        if (!m_thread.joinable()) {
            return;
        }
        m_thread.request_stop();
        m_thread.join();
        std::filesystem::remove(m_folder.at("away").path());
        for (int index = 0; index < std::ssize(m_photos); ++index) {
            remove(index);
            m_folder.write(nameOf(index), m_photos[index]);
        }
    }

    /// What it had written under the name of a photo and did not find there again, by the photo's index; once it has ended.
    const std::map<int, QByteArray>& taken() const { return m_taken; }

private:
    static std::map<int, QByteArray> byIndex(const std::vector<QByteArray>& photos) {
        std::map<int, QByteArray> all;
        for (const QByteArray& photo : photos) {
            all.emplace(static_cast<int>(all.size()), photo);
        }
        return all;
    }

    std::filesystem::path path(int index) const { return m_folder.at(nameOf(index)).path(); }

    void meddle(const std::stop_token& stop) {
        std::minstd_rand random; // the same numbers each time
        while (!stop.stop_requested()) {
            const auto index = static_cast<int>(random() % m_photos.size());
            change(index, static_cast<int>(random() % 8));
            ++m_changes;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    /// What was there before, and whether somebody has taken it away.
    void remove(int index) {
        const bool isThere = std::filesystem::remove_all(path(index)) > 0;
        if (const auto written = m_written.find(index); written != m_written.end()) {
            if (!isThere) {
                m_taken[index] = written->second;
            }
            m_written.erase(written);
        }
    }

    void write(int index, const QByteArray& content) {
        m_folder.write(nameOf(index), content);
        m_written[index] = content;
    }

    /// Writes a photo bit by bit.
    void writeSlowly(int index) {
        constexpr int pieces = 8;
        const QByteArray& photo = m_photos[index];
        QFile file(QString::fromStdString(path(index).native()));
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
            return;
        }
        for (qsizetype begin = 0; begin < photo.size(); begin += photo.size() / pieces + 1) {
            file.write(photo.mid(begin, photo.size() / pieces + 1));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        m_written[index] = photo;
    }

    void change(int index, int kind) {
        const QByteArray& photo = m_photos[index];
        remove(index);
        switch (kind) {
        case 0:
            break;
        case 1:
            write(index, photo.first(photo.size() / 2));
            break;
        case 2:
            write(index, "no picture");
            break;
        case 3:
            std::filesystem::create_directory(path(index));
            break;
        case 4:
            mkfifo(path(index).c_str(), 0600);
            break;
        case 5:
            m_folder.write("away", photo);
            std::filesystem::rename(m_folder.at("away").path(), path(index));
            m_written[index] = photo;
            break;
        case 6:
            writeSlowly(index);
            break;
        default:
            write(index, photo);
            break;
        }
    }

    const TemporaryFolder& m_folder;
    const std::vector<QByteArray> m_photos;
    std::map<int, QByteArray> m_written; // and not removed again
    std::map<int, QByteArray> m_taken;
    std::atomic<int> m_changes = 0;
    std::jthread m_thread; // to which the maps belong
};

} // namespace

/// A folder that other programs change while it is open.
class LiveFolderTest : public SessionFixture {
    Q_OBJECT

private slots:
    void photosShowAsWhatHasBecomeOfThem() {
        using std::filesystem::perms;
        writePhotos(15);
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");

        std::filesystem::remove(path(1));
        std::filesystem::rename(path(3), m_photos->at("other.jpg").path());
        m_photos->write("new", readablePhoto(16));
        std::filesystem::rename(m_photos->at("new").path(), path(4));
        std::filesystem::resize_file(path(5), 0);
        std::filesystem::permissions(path(7), perms::none);
        std::filesystem::remove(path(9));
        std::filesystem::create_directory(path(9));
        std::filesystem::resize_file(path(11), 100); // still being written
        std::filesystem::remove(path(13));
        QCOMPARE(mkfifo(path(13).c_str(), 0600), 0);
        QVERIFY(walk(XK_Right, {"no images, panels below", "photo 2", "no images, panels below", "photo 16",
                                   "no images, panels below", "photo 6", "no images, panels below", "photo 8",
                                   "no images, panels below", "photo 10", "no images, panels below",
                                   "photo 12", "no images, panels below", "photo 14"}));

        m_photos->write(nameOf(11), readablePhoto(11));
        std::filesystem::permissions(path(7), perms::owner_all);
        m_photos->write(nameOf(1), readablePhoto(1));
        QVERIFY(walk(XK_Left,
            {"no images, panels below", "photo 12", "photo 11", "photo 10", "no images, panels below",
                "photo 8", "photo 7", "photo 6", "no images, panels below", "photo 16",
                "no images, panels below", "photo 2", "photo 1", "photo 0"}));
    }

    void photosThatAreGoneFailToMoveAndTheOthersMove() {
        writePhotos(6);
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        press({approveKey, XK_Right, approveKey, XK_Right, approveKey, XK_Right, approveKey});
        SEES("photo 3, approved");
        std::filesystem::remove(path(1));
        std::filesystem::rename(path(2), m_photos->at("other.jpg").path());
        m_photos->write(nameOf(3), readablePhoto(13));
        const QStringList before = checksumsIn(m_photos->url());

        m_screen->press(moveApprovedKeys);
        SEES("an alert");
        QStringList after = moved(before, {nameOf(0), nameOf(3)}, "approved");
        HOLDS(m_photos->url(), after);
        press({XK_Escape});
        SEES("photo 5"); // the last of what is left
        QVERIFY(walk(XK_Left, {"photo 4", "no images, panels below"}));

        m_photos->write(nameOf(1), readablePhoto(1)); // has kept its mark
        after = moved(checksumsIn(m_photos->url()), {nameOf(1)}, "approved");
        m_screen->press(moveApprovedKeys);
        SEES("an alert");
        HOLDS(m_photos->url(), after);
        press({XK_Escape, XK_Right});
        SEES("photo 5");
    }

    void aFolderThatIsRenamedOrRemovedIsLeftForAnother() {
        const FileURL card = m_photos->makeFolder("card");
        const FileURL renamed = m_photos->at("renamed");
        m_photos->makeFolder("other");
        for (int index = 0; index < 3; ++index) {
            m_photos->write("card/" + nameOf(index), readablePhoto(index));
            m_photos->write("other/" + nameOf(index), readablePhoto(index + 5));
        }
        const QStringList before = checksumsIn(card);
        QVERIFY(start());
        QVERIFY(openFolder(card));
        SEES("photo 0");
        press({approveKey});
        SEES("photo 0, approved");

        std::filesystem::rename(card.path(), renamed.path());
        QVERIFY(walk(XK_Right, {"no images, panels below"}));
        m_screen->press(moveApprovedKeys);
        SEES("an alert");
        QCOMPARE(checksumsIn(renamed), before);
        press({XK_Escape});
        QVERIFY(openFolder(renamed));
        SEES("photo 0");

        press({rejectKey});
        SEES("photo 0, rejected");
        std::filesystem::remove_all(renamed.path());
        QVERIFY(walk(XK_Right, {"no images, panels below"}));
        m_screen->press(moveRejectedKeys);
        SEES("an alert");
        press({XK_Escape});
        QVERIFY(openFolder(m_photos->at("other")));
        SEES("photo 5");
        QVERIFY(walk(XK_Right, {"photo 6", "photo 7"}));
    }

    void aFolderThatChangesAllTheTimeIsWalkedThrough() {
        constexpr int count = 60;
        constexpr std::chrono::milliseconds interval{33};
        std::vector<QByteArray> photos;
        for (int index = 0; index < count; ++index) {
            photos.push_back(
                flatPhoto(readablePhotoColor(index % readablePhotoCount), readablePhotoSize * 4));
            m_photos->write(nameOf(index), photos.back());
        }
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        {
            const Meddler meddler(*m_photos, photos);
            m_screen->movePointer(m_application->window().content.center());
            m_screen->repeat(XK_Right, 20, interval);
            m_screen->turnWheel(16, {XK_Control_L});
            m_screen->repeat(XK_Right, 20, interval);
            m_screen->turnWheel(16, {XK_Control_L});
            m_screen->repeat(XK_Left, 27, interval);
            press({approveKey});
            constexpr int enough = 1500;
            QTRY_VERIFY_WITH_TIMEOUT(meddler.changes() > enough, patience);
        }
        QVERIFY(walk(XK_Left, {"photo 12"})); // decoded anew
        QVERIFY(walk(XK_Right, {"photo 13, approved", "photo 14"}));
    }

    void movesOutOfAFolderThatChangesAllTheTimeLoseNothing() {
        constexpr int changing = 12;
        constexpr int steady = 5;
        std::vector<QByteArray> photos;
        photos.reserve(changing);
        for (int index = 0; index < changing; ++index) {
            photos.push_back(readablePhoto(index));
        }
        writePhotos(changing + steady);
        const QStringList steadyPhotos = checksumsIn(m_photos->url()).mid(changing);
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        Meddler meddler(*m_photos, photos);
        for (int index = 0; index < changing + steady; ++index) {
            press({approveKey, XK_Right});
        }
        const auto areMoved = [&] {
            const QStringList now = checksumsIn(m_photos->at("approved"));
            return std::ranges::all_of(
                steadyPhotos, [&](const QString& photo) { return now.contains(photo); });
        };
        m_screen->press(moveApprovedKeys);
        QTRY_VERIFY_WITH_TIMEOUT(areMoved(), patience);
        const int changes = meddler.changes();
        QTRY_VERIFY_WITH_TIMEOUT(meddler.changes() > changes + 100, patience);
        meddler.leaveAlone();
        // Whatever of the others is not where it was written has come there, as it was written; and nothing else has.
        for (const auto& [index, content] : meddler.taken()) {
            QCOMPARE(contentOf(m_photos->at("approved/" + nameOf(index))), content);
        }
        int come = 0;
        for (const std::string& name : namesIn(m_photos->at("approved"))) {
            come += std::filesystem::is_regular_file(m_photos->at("approved/" + name).path()) ? 1 : 0;
        }
        QCOMPARE(come, steady + std::ssize(meddler.taken()));
        press({XK_Escape}); // of the alert, where one of those that change could not be moved
        m_photos->makeFolder("other");
        m_photos->write("other/1.jpg", readablePhoto(3));
        QVERIFY(openFolder(m_photos->at("other")));
        SEES("photo 3");
    }

private:
    std::filesystem::path path(int index) const { return m_photos->at(nameOf(index)).path(); }

    void writePhotos(int count) {
        for (int index = 0; index < count; ++index) {
            m_photos->write(nameOf(index), readablePhoto(index));
        }
    }
};

QTEST_GUILESS_MAIN(LiveFolderTest)
#include "LiveFolderTest.moc"
