#include "Platform/FileManager.h"

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WithoutPrivileges.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>

using Platform::FileURL;
namespace FileManager = Platform::FileManager;
namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

struct stat statusOf(const FileURL& item) {
    struct stat status = {};
    lstat(item.path().c_str(), &status);
    return status;
}

/// A folder on a disk other than that of the temporary folders; none where this machine has no such place to
/// write to.
std::unique_ptr<QTemporaryDir> folderOnAnotherDevice() {
    const QString here = QDir::tempPath();
    for (const QString& place :
        {QStringLiteral("/dev/shm"), QStringLiteral("/var/tmp"), QDir::homePath(), QDir::currentPath()}) {
        if (statusOf(FileURL(place.toStdString())).st_dev == statusOf(FileURL(here.toStdString())).st_dev) {
            continue;
        }
        auto folder = std::make_unique<QTemporaryDir>(place + QStringLiteral("/vantrel-test-XXXXXX"));
        if (folder->isValid()) {
            return folder;
        }
    }
    return nullptr;
}

Names namesOf(const std::vector<FileURL>& entries) {
    Names names;
    for (const FileURL& entry : entries) {
        names.push_back(entry.lastPathComponent());
    }
    std::ranges::sort(names);
    return names;
}

} // namespace

class FileManagerTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_otherDevice;
    std::optional<FileURL> m_other;

private slots:
    void init() {
        m_otherDevice = folderOnAnotherDevice();
        m_other.reset();
        if (m_otherDevice) {
            m_other = FileURL(m_otherDevice->path().toStdString());
        }
    }

    // Listing

    void aFolderIsListedOneLevelDeepWithAllThatIsInIt() {
        const TemporaryFolder folder;
        folder.write("a.jpg", "x");
        folder.write(".hidden", "x");
        folder.makeFolder("sub");
        folder.write("sub/inner.jpg", "x");
        fs::create_symlink("nowhere", folder.at("dangling").path());
        QCOMPARE(mkfifo(folder.at("pipe").path().c_str(), 0600), 0);
        const auto entries = FileManager::contentsOfDirectory(folder.url());
        QVERIFY(entries);
        QCOMPARE(namesOf(*entries), (Names{".hidden", "a.jpg", "dangling", "pipe", "sub"}));
        QVERIFY(std::ranges::find(*entries, folder.at("a.jpg")) != entries->end());
    }

    void namesAreListedInTheirBytes() {
        const TemporaryFolder folder;
        const Names names = {"a\nb.jpg", std::string(251, 'x') + ".jpg", "\xe4.jpg"};
        for (const std::string& name : names) {
            folder.write(name, "x");
        }
        const auto entries = FileManager::contentsOfDirectory(folder.url());
        QVERIFY(entries);
        QCOMPARE(namesOf(*entries), names);
    }

    void anEmptyFolderHasNoContents() {
        const TemporaryFolder folder;
        const auto entries = FileManager::contentsOfDirectory(folder.url());
        QVERIFY(entries);
        QVERIFY(entries->empty());
    }

    void aFolderIsListedThroughALink() {
        const TemporaryFolder folder;
        folder.makeFolder("real");
        folder.write("real/a.jpg", "x");
        fs::create_directory_symlink("real", folder.at("link").path());
        const auto entries = FileManager::contentsOfDirectory(folder.at("link"));
        QVERIFY(entries);
        QCOMPARE(entries->size(), std::size_t{1});
        QVERIFY(entries->front() == folder.at("link").appendingPathComponent("a.jpg"));
    }

    void whatIsNoFolderCannotBeListed() {
        const TemporaryFolder folder;
        const auto ofNothing = FileManager::contentsOfDirectory(folder.at("photos"));
        QVERIFY(!ofNothing);
        QCOMPARE(ofNothing.error().localizedDescription(),
            QStringLiteral("The folder “photos” could not be read: it does not exist any more."));
        const auto ofFile = FileManager::contentsOfDirectory(folder.write("a.jpg", "x"));
        QVERIFY(!ofFile);
        QCOMPARE(ofFile.error().code(), ENOTDIR);
        QCOMPARE(mkfifo(folder.at("pipe").path().c_str(), 0600), 0);
        QVERIFY(!FileManager::contentsOfDirectory(folder.at("pipe")));
        QVERIFY(!FileManager::contentsOfDirectory(FileURL()));
    }

    void aFolderWithoutTheRightToReadCannotBeListed() {
        const WithoutPrivileges asAnyone;
        const TemporaryFolder folder;
        const FileURL closed = folder.makeFolder("closed");
        QCOMPARE(chmod(closed.path().c_str(), 0), 0);
        const auto entries = FileManager::contentsOfDirectory(closed);
        chmod(closed.path().c_str(), 0700);
        QVERIFY(!entries);
        QCOMPARE(entries.error().code(), EACCES);
    }

    // Making folders

    void aFolderIsMadeWithThoseAboveIt() {
        const TemporaryFolder folder;
        QVERIFY(FileManager::createDirectory(folder.at("a/b/c")));
        QVERIFY(fs::is_directory(folder.at("a/b/c").path()));
    }

    void aFolderThatIsThereIsKeptAsItIs() {
        const TemporaryFolder folder;
        folder.makeFolder("sub");
        folder.write("sub/a.jpg", "x");
        QVERIFY(FileManager::createDirectory(folder.at("sub")));
        QCOMPARE(namesIn(folder.at("sub")), Names{"a.jpg"});
        fs::create_directory_symlink("sub", folder.at("link").path());
        QVERIFY(FileManager::createDirectory(folder.at("link")));
        QVERIFY(FileManager::createDirectory(FileURL("/")));
    }

    void aFileInTheWayOfAFolderIsAnError() {
        const TemporaryFolder folder;
        folder.write("approved", "x");
        const auto made = FileManager::createDirectory(folder.at("approved"));
        QVERIFY(!made);
        QCOMPARE(made.error().localizedDescription(),
            QStringLiteral("The folder “approved” could not be made: a file is in the way where a folder is "
                           "needed."));
        QCOMPARE(contentOf(folder.at("approved")), QByteArray("x"));
        QVERIFY(!FileManager::createDirectory(folder.at("approved/inner")));
    }

    void aLinkToNothingInTheWayOfAFolderIsAnError() {
        const TemporaryFolder folder;
        fs::create_symlink("nowhere", folder.at("approved").path());
        QVERIFY(!FileManager::createDirectory(folder.at("approved")));
        QCOMPARE(namesIn(folder.url()), Names{"approved"});
    }

    void aFolderCannotBeMadeWhereNothingCanBeWritten() {
        QVERIFY(!FileManager::createDirectory(FileURL("/proc/approved")));
    }

    // Removing

    void aFileALinkAndAnEmptyFolderAreRemoved() {
        const TemporaryFolder folder;
        const FileURL file = folder.write("a.jpg", "x");
        fs::create_symlink("kept", folder.at("link").path());
        folder.write("kept", "x");
        folder.makeFolder("empty");
        QVERIFY(FileManager::removeItem(file));
        QVERIFY(FileManager::removeItem(folder.at("link")));
        QVERIFY(FileManager::removeItem(folder.at("empty")));
        QCOMPARE(namesIn(folder.url()), Names{"kept"});
    }

    void whatIsNotThereCannotBeRemoved() {
        const TemporaryFolder folder;
        const auto removed = FileManager::removeItem(folder.at("a.ARW"));
        QVERIFY(!removed);
        QCOMPARE(removed.error().localizedDescription(),
            QStringLiteral("“a.ARW” could not be removed: it does not exist any more."));
    }

    void aFolderWithSomethingInItCannotBeRemoved() {
        const TemporaryFolder folder;
        folder.makeFolder("full");
        folder.write("full/a", "x");
        const auto removed = FileManager::removeItem(folder.at("full"));
        QVERIFY(!removed);
        QCOMPARE(removed.error().code(), ENOTEMPTY);
        QVERIFY(exists(folder.at("full/a")));
    }

    // Moving on one device

    void aFileMovesWithAllThatBelongsToIt() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        const struct stat before = statusOf(source);
        folder.makeFolder("approved");
        QVERIFY(FileManager::moveItem(source, folder.at("approved/a.jpg")));
        QVERIFY(!exists(source));
        QCOMPARE(contentOf(folder.at("approved/a.jpg")), QByteArray("photo"));
        QCOMPARE(statusOf(folder.at("approved/a.jpg")).st_ino, before.st_ino);
    }

    void aFileOfTheSameNameIsReplaced() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "new");
        folder.makeFolder("approved");
        folder.write("approved/a.jpg", "old");
        QVERIFY(FileManager::moveItem(source, folder.at("approved/a.jpg")));
        QCOMPARE(contentOf(folder.at("approved/a.jpg")), QByteArray("new"));
        QCOMPARE(namesIn(folder.at("approved")), Names{"a.jpg"});
        QCOMPARE(namesIn(folder.url()), Names{"approved"});
    }

    void anyNameMoves() {
        const TemporaryFolder folder;
        folder.makeFolder("approved");
        const FileURL approved = folder.at("approved");
        for (const std::string& name :
            {std::string("\xe4.jpg"), std::string("a\nb.jpg"), std::string(251, 'x') + ".jpg"}) {
            const FileURL source = folder.write(name, "photo");
            QVERIFY(FileManager::moveItem(source, approved.appendingPathComponent(name)));
            QCOMPARE(contentOf(approved.appendingPathComponent(name)), QByteArray("photo"));
        }
        QCOMPARE(namesIn(folder.url()), Names{"approved"});
    }

    void aLinkMovesAsALinkAlsoWhereItLeadsNowhere() {
        const TemporaryFolder folder;
        folder.makeFolder("approved");
        fs::create_symlink("nowhere", folder.at("a.jpg").path());
        QVERIFY(FileManager::moveItem(folder.at("a.jpg"), folder.at("approved/a.jpg")));
        QCOMPARE(fs::read_symlink(folder.at("approved/a.jpg").path()), fs::path("nowhere"));
        QVERIFY(!exists(folder.at("a.jpg")));
    }

    void aLinkInTheWayIsReplacedAndNotFollowed() {
        const TemporaryFolder folder;
        folder.makeFolder("approved");
        folder.write("kept", "kept");
        const FileURL source = folder.write("a.jpg", "photo");
        fs::create_symlink("../kept", folder.at("approved/a.jpg").path());
        QVERIFY(FileManager::moveItem(source, folder.at("approved/a.jpg")));
        QVERIFY(!fs::is_symlink(folder.at("approved/a.jpg").path()));
        QCOMPARE(contentOf(folder.at("approved/a.jpg")), QByteArray("photo"));
        QCOMPARE(contentOf(folder.at("kept")), QByteArray("kept"));
    }

    void aFolderMovesWithItsContents() {
        const TemporaryFolder folder;
        folder.makeFolder("a.jpg");
        folder.write("a.jpg/inner", "x");
        folder.makeFolder("approved");
        QVERIFY(FileManager::moveItem(folder.at("a.jpg"), folder.at("approved/a.jpg")));
        QCOMPARE(contentOf(folder.at("approved/a.jpg/inner")), QByteArray("x"));
    }

    void anEmptyDirectoryInTheWayIsReplaced() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        folder.makeFolder("approved");
        folder.makeFolder("approved/a.jpg");
        QVERIFY(FileManager::moveItem(source, folder.at("approved/a.jpg")));
        QCOMPARE(contentOf(folder.at("approved/a.jpg")), QByteArray("photo"));
        QCOMPARE(namesIn(folder.at("approved")), Names{"a.jpg"});
        QVERIFY(!exists(source));
    }

    void aFolderReplacesAFile() {
        const TemporaryFolder folder;
        folder.makeFolder("a.jpg");
        folder.write("a.jpg/inner", "x");
        folder.makeFolder("approved");
        folder.write("approved/a.jpg", "old");
        QVERIFY(FileManager::moveItem(folder.at("a.jpg"), folder.at("approved/a.jpg")));
        QCOMPARE(contentOf(folder.at("approved/a.jpg/inner")), QByteArray("x"));
        QCOMPARE(namesIn(folder.at("approved")), Names{"a.jpg"});
    }

    void aDirectoryInTheWayThatIsNotEmptyIsAnError() {
        const TemporaryFolder folder;
        folder.makeFolder("approved");
        folder.makeFolder("approved/a.jpg");
        folder.write("approved/a.jpg/inner", "kept");
        const FileURL file = folder.write("a.jpg", "photo");
        const auto movedFile = FileManager::moveItem(file, folder.at("approved/a.jpg"));
        QVERIFY(!movedFile);
        QCOMPARE(movedFile.error().localizedDescription(),
            QStringLiteral(
                "The “a.jpg” that is there already could not be replaced: the folder is not empty."));
        QCOMPARE(contentOf(file), QByteArray("photo"));
        folder.makeFolder("b.jpg");
        const auto movedFolder = FileManager::moveItem(folder.at("b.jpg"), folder.at("approved/a.jpg"));
        QVERIFY(!movedFolder);
        QCOMPARE(movedFolder.error().code(), ENOTEMPTY);
        QCOMPARE(contentOf(folder.at("approved/a.jpg/inner")), QByteArray("kept"));
        QCOMPARE(namesIn(folder.at("approved")), Names{"a.jpg"});
    }

    void aSourceThatIsGoneIsAnErrorAndNothingIsReplaced() {
        const TemporaryFolder folder;
        folder.makeFolder("approved");
        folder.makeFolder("approved/a.jpg");
        folder.write("approved/b.jpg", "old");
        const auto moved = FileManager::moveItem(folder.at("a.jpg"), folder.at("approved/a.jpg"));
        QVERIFY(!moved);
        QCOMPARE(moved.error().localizedDescription(),
            QStringLiteral("“a.jpg” could not be moved: it does not exist any more."));
        QVERIFY(!FileManager::moveItem(folder.at("b.jpg"), folder.at("approved/b.jpg")));
        QVERIFY(fs::is_directory(folder.at("approved/a.jpg").path()));
        QCOMPARE(contentOf(folder.at("approved/b.jpg")), QByteArray("old"));
    }

    void aFolderThatIsGoneIsAnError() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        const auto moved = FileManager::moveItem(source, folder.at("approved/a.jpg"));
        QVERIFY(!moved);
        QCOMPARE(moved.error().localizedDescription(),
            QStringLiteral("The folder “approved” could not be opened: it does not exist any more."));
        QCOMPARE(contentOf(source), QByteArray("photo"));
        QVERIFY(!FileManager::moveItem(folder.at("gone/a.jpg"), folder.at("a.jpg")));
        QCOMPARE(contentOf(source), QByteArray("photo"));
        QVERIFY(!FileManager::moveItem(FileURL(), source));
    }

    void aPlaceThatCannotBeWrittenIsAnError() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        QVERIFY(!FileManager::moveItem(source, FileURL("/proc/a.jpg")));
        QCOMPARE(contentOf(source), QByteArray("photo"));
        QCOMPARE(namesIn(folder.url()), Names{"a.jpg"});
    }

    void aMoveOntoItselfLeavesTheFileAlone() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        QVERIFY(FileManager::moveItem(source, source));
        QCOMPARE(contentOf(source), QByteArray("photo"));
        fs::create_directory_symlink(".", folder.at("approved").path());
        const struct stat before = statusOf(source);
        QVERIFY(FileManager::moveItem(source, folder.at("approved/a.jpg")));
        QCOMPARE(contentOf(source), QByteArray("photo"));
        QCOMPARE(statusOf(source).st_ino, before.st_ino);
        QCOMPARE(statusOf(source).st_ctim.tv_nsec, before.st_ctim.tv_nsec);
        QCOMPARE(namesIn(folder.url()), (Names{"a.jpg", "approved"}));
    }

    void aMoveOntoItselfLeavesAFileOfSeveralNamesAlone() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        fs::create_hard_link(source.path(), folder.at("other name").path());
        fs::create_directory_symlink(".", folder.at("approved").path());
        QVERIFY(FileManager::moveItem(source, folder.at("approved/a.jpg")));
        QCOMPARE(namesIn(folder.url()), (Names{"a.jpg", "approved", "other name"}));
    }

    void aFileWithAlsoTheNameOfTheTargetLeavesItsOldName() {
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        folder.makeFolder("approved");
        fs::create_hard_link(source.path(), folder.at("approved/a.jpg").path());
        QVERIFY(FileManager::moveItem(source, folder.at("approved/a.jpg")));
        QVERIFY(!exists(source));
        QCOMPARE(contentOf(folder.at("approved/a.jpg")), QByteArray("photo"));
    }

    // Moving to another device

    void aFileMovesToAnotherDeviceWithItsTimesAndMode() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        const QByteArray content = QByteArray("photo ").repeated(500'000) + "end";
        const FileURL source = folder.write("a.jpg", content);
        QCOMPARE(chmod(source.path().c_str(), 0440), 0);
        const timespec times[] = {{1'000'000'000, 123'456'789}, {1'100'000'000, 987'654'321}};
        QCOMPARE(utimensat(AT_FDCWD, source.path().c_str(), times, 0), 0);
        const FileURL target = m_other->appendingPathComponent("a.jpg");
        const auto moved = FileManager::moveItem(source, target);
        QVERIFY2(moved, moved ? "" : qPrintable(moved.error().localizedDescription()));
        const struct stat after = statusOf(target);
        QVERIFY(!exists(source));
        QCOMPARE(after.st_mode & 07777, 0440U);
        QCOMPARE(after.st_atim.tv_sec, times[0].tv_sec);
        QCOMPARE(after.st_atim.tv_nsec, times[0].tv_nsec);
        QCOMPARE(after.st_mtim.tv_sec, times[1].tv_sec);
        QCOMPARE(after.st_mtim.tv_nsec, times[1].tv_nsec);
        QCOMPARE(contentOf(target), content);
        QCOMPARE(namesIn(*m_other), Names{"a.jpg"});
    }

    void aFileKeepsItsUserAttributesOnAnotherDevice() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        const FileURL target = m_other->appendingPathComponent("a.jpg");
        const auto setAttribute = [](const char* path) {
            return setxattr(path, "user.rating", "5", 1, 0) == 0;
        };
        if (!setAttribute(source.path().c_str()) || !setAttribute(m_other->path().c_str())) {
            QVERIFY(FileManager::moveItem(source, target)); // must move all the same
            QSKIP("one of the file systems knows no user attributes");
        }
        QVERIFY(FileManager::moveItem(source, target));
        char value = 0;
        QCOMPARE(getxattr(target.path().c_str(), "user.rating", &value, 1), ssize_t{1});
        QCOMPARE(value, '5');
    }

    void anEmptyFileMovesToAnotherDevice() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "");
        QVERIFY(FileManager::moveItem(source, m_other->appendingPathComponent("a.jpg")));
        QCOMPARE(contentOf(m_other->appendingPathComponent("a.jpg")), QByteArray());
        QVERIFY(!exists(source));
    }

    void aFileReplacesWhatIsOnAnotherDevice() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        const std::string name = std::string(251, 'x') + ".jpg";
        const FileURL target = m_other->appendingPathComponent(name);
        const auto moveNew = [&] { return FileManager::moveItem(folder.write(name, "new"), target); };
        QVERIFY(FileManager::moveItem(folder.write("old", "old"), target));
        QVERIFY(moveNew());
        QCOMPARE(contentOf(target), QByteArray("new"));
        fs::remove(target.path());
        fs::create_symlink("nowhere", target.path());
        QVERIFY(moveNew());
        QCOMPARE(contentOf(target), QByteArray("new"));
        fs::remove(target.path());
        fs::create_directory(target.path());
        QVERIFY(moveNew());
        QCOMPARE(contentOf(target), QByteArray("new"));
        QCOMPARE(namesIn(*m_other), Names{name});
        QVERIFY(namesIn(folder.url()).empty());
    }

    void aLinkMovesToAnotherDeviceAsALink() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        fs::create_symlink("nowhere", folder.at("a.jpg").path());
        QVERIFY(FileManager::moveItem(folder.at("a.jpg"), m_other->appendingPathComponent("a.jpg")));
        QCOMPARE(fs::read_symlink(m_other->appendingPathComponent("a.jpg").path()), fs::path("nowhere"));
        QVERIFY(namesIn(folder.url()).empty());
    }

    void aFileMovesThroughALinkToAFolderOnAnotherDevice() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        fs::create_directory_symlink(m_other->path(), folder.at("approved").path());
        QVERIFY(FileManager::moveItem(folder.write("a.jpg", "photo"), folder.at("approved/a.jpg")));
        QCOMPARE(contentOf(m_other->appendingPathComponent("a.jpg")), QByteArray("photo"));
        QCOMPARE(namesIn(folder.url()), Names{"approved"});
    }

    void aFolderInTheWayOnAnotherDeviceThatIsNotEmptyIsAnError() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        const FileURL target = m_other->appendingPathComponent("a.jpg");
        fs::create_directories(target.appendingPathComponent("inner").path());
        const auto moved = FileManager::moveItem(source, target);
        QVERIFY(!moved);
        QCOMPARE(moved.error().code(), ENOTEMPTY);
        QCOMPARE(contentOf(source), QByteArray("photo"));
        QCOMPARE(namesIn(*m_other), Names{"a.jpg"});
        QCOMPARE(namesIn(target), Names{"inner"});
    }

    void whatIsNeitherFileNorLinkStaysOnItsDevice() {
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        folder.makeFolder("a.jpg");
        QCOMPARE(mkfifo(folder.at("b.jpg").path().c_str(), 0600), 0);
        for (const char* name : {"a.jpg", "b.jpg"}) {
            const auto moved = FileManager::moveItem(folder.at(name), m_other->appendingPathComponent(name));
            QVERIFY(!moved);
            QVERIFY(moved.error().localizedDescription().endsWith(
                QStringLiteral("could not be moved to the other disk: it is neither a file nor a link.")));
        }
        QCOMPARE(namesIn(folder.url()), (Names{"a.jpg", "b.jpg"}));
        QVERIFY(namesIn(*m_other).empty());
    }

    void aFileThatCannotBeReadStaysOnItsDevice() {
        const WithoutPrivileges asAnyone;
        if (!m_other) {
            QSKIP("no two devices to write to on this machine");
        }
        const TemporaryFolder folder;
        const FileURL source = folder.write("a.jpg", "photo");
        chmod(source.path().c_str(), 0);
        const auto moved = FileManager::moveItem(source, m_other->appendingPathComponent("a.jpg"));
        QVERIFY(!moved);
        QCOMPARE(moved.error().code(), EACCES);
        QVERIFY(exists(source));
        QVERIFY(namesIn(*m_other).empty());
    }
};

QTEST_GUILESS_MAIN(FileManagerTest)
#include "FileManagerTest.moc"
