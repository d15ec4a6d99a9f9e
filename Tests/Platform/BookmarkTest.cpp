#include "Platform/Bookmark.h"

#include "Tests/Support/TemporaryFolder.h"

#include <QTest>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace Bookmark = Platform::Bookmark;
using Platform::FileURL;

namespace {

QByteArray bookmarkOf(const FileURL& folder) {
    const auto data = Bookmark::create(folder);
    return data ? *data : QByteArray();
}

void rename(const FileURL& from, const FileURL& to) {
    std::filesystem::rename(from.path(), to.path());
}

/// When the folder was made, in nanoseconds; none where its file system does not tell.
std::optional<std::int64_t> birthOf(const FileURL& folder) {
    struct statx status = {};
    if (statx(AT_FDCWD, folder.path().c_str(), 0, STATX_BTIME, &status) != 0 ||
        !(status.stx_mask & STATX_BTIME)) {
        return std::nullopt;
    }
    return status.stx_btime.tv_sec * 1'000'000'000LL + status.stx_btime.tv_nsec;
}

/// Waits until the clock of the file system, which ticks a few hundred times a second, has gone on.
void waitForLaterBirth(const TemporaryFolder& parent, std::optional<std::int64_t> birth) {
    std::optional<std::int64_t> now = birth;
    while (birth && now == birth) {
        const FileURL probe = parent.makeFolder("probe");
        now = birthOf(probe);
        std::filesystem::remove(probe.path());
    }
}

constexpr const char* noBirths = "the file system of the temporary folder does not tell times of birth";

} // namespace

class BookmarkTest : public QObject {
    Q_OBJECT

private slots:
    void aFolderThatIsWhereItWasIsNotStale() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const auto found = Bookmark::resolve(bookmarkOf(folder));
        QVERIFY(found);
        QVERIFY(found->url == folder);
        QVERIFY(!found->isStale);
    }

    void aFolderNamedInAnyBytesIsFound() {
        const TemporaryFolder parent;
        for (const std::string& name :
            {std::string("\xe4\xff"), std::string("a\nb"), std::string(255, 'x')}) {
            const FileURL folder = parent.makeFolder(name);
            const auto found = Bookmark::resolve(bookmarkOf(folder));
            QVERIFY(found);
            QVERIFY(found->url == folder);
            QVERIFY(!found->isStale);
        }
    }

    void theRootIsFound() {
        const auto found = Bookmark::resolve(bookmarkOf(FileURL("/")));
        QVERIFY(found);
        QVERIFY(found->url == FileURL("/"));
    }

    void aFolderRenamedInPlaceIsFoundAndStale() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const QByteArray data = bookmarkOf(folder);
        parent.makeFolder("another");
        parent.write("a.jpg", "x");
        rename(folder, parent.at("chosen photos"));
        const auto found = Bookmark::resolve(data);
        QVERIFY(found);
        QVERIFY(found->url == parent.at("chosen photos"));
        QVERIFY(found->isStale);
        const auto again = Bookmark::resolve(bookmarkOf(found->url));
        QVERIFY(again);
        QVERIFY(!again->isStale);
    }

    void aRenamedFolderIsPreferredToANewOneOfItsOldName() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const QByteArray data = bookmarkOf(folder);
        rename(folder, parent.at("old photos"));
        parent.makeFolder("photos");
        const auto found = Bookmark::resolve(data);
        QVERIFY(found);
        QVERIFY(found->isStale);
        // Elsewhere the number alone is too little to go away from the path for.
        QVERIFY(found->url == (birthOf(folder) ? parent.at("old photos") : folder));
    }

    void aFolderMadeAnewAtThePathIsFoundAndStale() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const QByteArray data = bookmarkOf(folder);
        rename(folder, parent.at("elsewhere"));
        const TemporaryFolder other;
        rename(parent.at("elsewhere"), other.at("elsewhere"));
        parent.makeFolder("photos");
        const auto found = Bookmark::resolve(data);
        QVERIFY(found);
        QVERIFY(found->url == folder);
        QVERIFY(found->isStale);
    }

    void aNewFolderWithTheNumberOfADeletedOneIsNotTakenForIt() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const QByteArray data = bookmarkOf(folder);
        const auto birth = birthOf(folder);
        if (!birth) {
            QSKIP(noBirths);
        }
        std::filesystem::remove(folder.path());
        waitForLaterBirth(parent, birth);
        // File systems give a number again at once; of many new folders one has it.
        for (int count = 0; count < 200; ++count) {
            parent.makeFolder("new " + std::to_string(count));
        }
        const auto found = Bookmark::resolve(data);
        QVERIFY(!found);
        QCOMPARE(found.error().code(), ENOENT);
    }

    void aFolderMadeAnewWithTheSameNumberIsStale() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const QByteArray data = bookmarkOf(folder);
        const auto birth = birthOf(folder);
        if (!birth) {
            QSKIP(noBirths);
        }
        std::filesystem::remove(folder.path());
        waitForLaterBirth(parent, birth);
        parent.makeFolder("photos");
        const auto found = Bookmark::resolve(data);
        QVERIFY(found);
        QVERIFY(found->url == folder);
        QVERIFY(found->isStale);
    }

    void aDeletedFolderIsAnError() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const QByteArray data = bookmarkOf(folder);
        std::filesystem::remove(folder.path());
        const auto found = Bookmark::resolve(data);
        QVERIFY(!found);
        QCOMPARE(found.error().code(), ENOENT);
        QCOMPARE(found.error().localizedDescription(),
            QStringLiteral("The folder “photos” could not be found: it does not exist any more."));
    }

    void aFolderDeletedWithItsParentIsAnError() {
        const TemporaryFolder parent;
        parent.makeFolder("disk");
        const QByteArray data = bookmarkOf(parent.makeFolder("disk/photos"));
        std::filesystem::remove_all(parent.at("disk").path());
        QVERIFY(!Bookmark::resolve(data));
    }

    void aFileAtThePathIsAnError() {
        const TemporaryFolder parent;
        const FileURL folder = parent.makeFolder("photos");
        const QByteArray data = bookmarkOf(folder);
        std::filesystem::remove(folder.path());
        parent.write("photos", "x");
        const auto found = Bookmark::resolve(data);
        QVERIFY(!found);
        QCOMPARE(found.error().code(), ENOTDIR);
    }

    void aFolderReachedByALinkIsFoundByTheLink() {
        const TemporaryFolder parent;
        parent.makeFolder("photos");
        std::filesystem::create_directory_symlink("photos", parent.at("link").path());
        const auto found = Bookmark::resolve(bookmarkOf(parent.at("link")));
        QVERIFY(found);
        QVERIFY(found->url == parent.at("link"));
        QVERIFY(!found->isStale);
    }

    void onlyAFolderThatIsThereHasABookmark() {
        const TemporaryFolder parent;
        const auto ofNothing = Bookmark::create(parent.at("nothing"));
        QVERIFY(!ofNothing);
        QCOMPARE(ofNothing.error().code(), ENOENT);
        const auto ofFile = Bookmark::create(parent.write("a.jpg", "x"));
        QVERIFY(!ofFile);
        QCOMPARE(ofFile.error().code(), ENOTDIR);
        QVERIFY(!Bookmark::create(FileURL()));
    }

    void foreignDataIsAnError_data() {
        QTest::addColumn<QByteArray>("data");
        const QByteArray valid = bookmarkOf(FileURL("/"));
        const QByteArray head = valid.chopped(1);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("/home/somebody/photos");
        QTest::newRow("without a path") << head;
        QTest::newRow("relative path") << head + ".";
        QTest::newRow("path with a zero") << head + QByteArray("/\0x", 3);
        QTest::newRow("path too long") << head + "/" + QByteArray("./").repeated(PATH_MAX / 2);
        QTest::newRow("hundred megabytes") << head + QByteArray("/.").repeated(50'000'000);
        QTest::newRow("another version") << QByteArray(valid).replace(3, 1, "2");
        QTest::newRow("all ones") << QByteArray(64, '\xff');
        for (qsizetype size = 1; size < valid.size(); ++size) {
            QTest::addRow("cut after %d bytes", static_cast<int>(size)) << valid.first(size);
        }
    }

    void foreignDataIsAnError() {
        QFETCH(QByteArray, data);
        QVERIFY(!Bookmark::resolve(data));
    }

    void everySingleDamagedByteIsSurvived() {
        const TemporaryFolder parent;
        const QByteArray valid = bookmarkOf(parent.makeFolder("photos"));
        for (qsizetype position = 0; position < valid.size(); ++position) {
            for (const char damage : {'\x01', '\x80', '\xff'}) {
                QByteArray data = valid;
                data[position] = static_cast<char>(data[position] ^ damage);
                const auto found = Bookmark::resolve(data);
                QVERIFY(!found || found->url.path().is_absolute());
            }
        }
    }
};

QTEST_GUILESS_MAIN(BookmarkTest)
#include "BookmarkTest.moc"
