// Moves while the disk fails, or the process is killed, at every single system call in turn, but for those that copy
// attributes. The linker leads the calls of the code under test through the functions below (see CMakeLists.txt).
#include "Platform/FileManager.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

using Platform::FileURL;
namespace FileManager = Platform::FileManager;
namespace fs = std::filesystem;

namespace {

/// What is wrong with the machine while one exists.
struct Disturbance {
    bool otherDevice = false;    ///< the two folders count as being on two devices
    bool noHardLinks = false;    ///< as on a memory card
    bool shortTransfers = false; ///< read and write do a few bytes at a time
    bool damagesWrites = false;  ///< what is written is not what was given
    bool singleLinks = false;    ///< every file counts as having one name only
    bool twoMounts = false;      ///< each look at an open folder finds it on another device
    std::string call{};          ///< which calls count; all where empty
    int atCall = 0;              ///< at the call of this number, from 1
    std::function<int()> act{};  ///< this happens instead of it where errno is given, or before it where 0
    bool isDone = false;         ///< a change is made all the same, and then reported as failed
    bool isForever = false;      ///< it happens at all calls from that one on

    int calls = 0;
    dev_t mount = 0;         ///< the last that a folder was found on
    std::string disturbed{}; ///< the call at which it happened
};

Disturbance* current = nullptr;

/// Whether the call fails, errno being set then.
bool isDisturbed(const char* call) {
    if (!current || (!current->call.empty() && current->call != call)) {
        return false;
    }
    ++current->calls;
    if (current->isForever ? current->calls < current->atCall : current->calls != current->atCall) {
        return false;
    }
    current->disturbed = call;
    const int code = current->act();
    errno = code;
    return code != 0;
}

/// Makes a change of the disk, or not, as it is disturbed.
template <typename Change>
int disturbedChange(const char* call, Change change) {
    if (!isDisturbed(call)) {
        return change();
    }
    if (current->isDone) {
        const int code = errno;
        change();
        errno = code;
    }
    return -1;
}

std::size_t allowedSize(std::size_t size) {
    if (!current || !current->shortTransfers) {
        return size;
    }
    return std::min(size, static_cast<std::size_t>(11 + current->calls % 3));
}

} // namespace

// The linker prescribes the names. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real_openat(int folder, const char* name, int flags, mode_t mode);
ssize_t __real_read(int file, void* buffer, size_t size);
ssize_t __real_write(int file, const void* buffer, size_t size);
int __real_renameat(int fromFolder, const char* from, int toFolder, const char* to);
int __real_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags);
int __real_unlinkat(int folder, const char* name, int flags);
int __real_symlinkat(const char* content, int folder, const char* name);
ssize_t __real_readlinkat(int folder, const char* name, char* buffer, size_t size);
int __real_fstatat(int folder, const char* name, struct stat* status, int flags);
int __real_fstat(int file, struct stat* status);
int __real_faccessat(int folder, const char* name, int mode, int flags);
int __real_fchown(int file, uid_t user, gid_t group);
int __real_fchmod(int file, mode_t mode);
int __real_futimens(int file, const timespec* times);
off_t __real_lseek(int file, off_t offset, int whence);
ssize_t __real_flistxattr(int file, char* names, size_t size);

int __wrap_openat(int folder, const char* name, int flags, mode_t mode) {
    return isDisturbed("openat") ? -1 : __real_openat(folder, name, flags, mode);
}
ssize_t __wrap_read(int file, void* buffer, size_t size) {
    return isDisturbed("read") ? -1 : __real_read(file, buffer, allowedSize(size));
}
ssize_t __wrap_write(int file, const void* buffer, size_t size) {
    if (isDisturbed("write")) {
        return -1;
    }
    if (current && current->damagesWrites) {
        std::string damaged(static_cast<const char*>(buffer), size);
        damaged[size / 2] = static_cast<char>(damaged[size / 2] ^ 1);
        return __real_write(file, damaged.data(), size);
    }
    return __real_write(file, buffer, allowedSize(size));
}
int __wrap_renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    return disturbedChange("renameat", [&] {
        if (current && current->otherDevice && fromFolder != toFolder) {
            errno = EXDEV;
            return -1;
        }
        return __real_renameat(fromFolder, from, toFolder, to);
    });
}
int __wrap_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    return disturbedChange("linkat", [&] {
        if (current && current->noHardLinks) {
            errno = EPERM;
            return -1;
        }
        return __real_linkat(fromFolder, from, toFolder, to, flags);
    });
}
int __wrap_unlinkat(int folder, const char* name, int flags) {
    return disturbedChange("unlinkat", [&] { return __real_unlinkat(folder, name, flags); });
}
int __wrap_symlinkat(const char* content, int folder, const char* name) {
    return disturbedChange("symlinkat", [&] { return __real_symlinkat(content, folder, name); });
}
ssize_t __wrap_readlinkat(int folder, const char* name, char* buffer, size_t size) {
    return isDisturbed("readlinkat") ? -1 : __real_readlinkat(folder, name, buffer, size);
}
int __wrap_fstatat(int folder, const char* name, struct stat* status, int flags) {
    if (isDisturbed("fstatat")) {
        return -1;
    }
    const int result = __real_fstatat(folder, name, status, flags);
    if (current && current->singleLinks) {
        status->st_nlink = 1;
    }
    return result;
}
int __wrap_fstat(int file, struct stat* status) {
    if (isDisturbed("fstat")) {
        return -1;
    }
    const int result = __real_fstat(file, status);
    if (current && current->twoMounts && S_ISDIR(status->st_mode)) {
        status->st_dev = ++current->mount;
    }
    return result;
}
int __wrap_faccessat(int folder, const char* name, int mode, int flags) {
    return isDisturbed("faccessat") ? -1 : __real_faccessat(folder, name, mode, flags);
}
// No test cuts the power, so that there is nothing to wait for.
int __wrap_fsync(int) {
    return isDisturbed("fsync") ? -1 : 0;
}
int __wrap_posix_fadvise(int, off_t, off_t, int) {
    return 0;
}

int __wrap_fchown(int file, uid_t user, gid_t group) {
    return isDisturbed("fchown") ? -1 : __real_fchown(file, user, group);
}
int __wrap_fchmod(int file, mode_t mode) {
    return isDisturbed("fchmod") ? -1 : __real_fchmod(file, mode);
}
int __wrap_futimens(int file, const timespec* times) {
    return isDisturbed("futimens") ? -1 : __real_futimens(file, times);
}
off_t __wrap_lseek(int file, off_t offset, int whence) {
    return isDisturbed("lseek") ? -1 : __real_lseek(file, offset, whence);
}
ssize_t __wrap_flistxattr(int file, char* names, size_t size) {
    return isDisturbed("flistxattr") ? -1 : __real_flistxattr(file, names, size);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

/// What an entry is and holds, in words that can be compared: "" for none.
std::string descriptionOf(const FileURL& item) {
    const fs::file_status status = fs::symlink_status(item.path());
    switch (status.type()) {
    case fs::file_type::not_found:
        return "";
    case fs::file_type::symlink:
        return "link to " + fs::read_symlink(item.path()).native();
    case fs::file_type::directory:
        return fs::is_empty(item.path()) ? "empty folder" : "full folder";
    default:
        return "file of " + contentOf(item).toStdString();
    }
}

void make(const FileURL& item, const std::string& description) {
    if (description == "empty folder") {
        fs::create_directory(item.path());
    } else if (description == "full folder") {
        fs::create_directories(item.appendingPathComponent("inner").path());
    } else if (description.starts_with("link to ")) {
        fs::create_symlink(description.substr(8), item.path());
    } else if (description.starts_with("file of ")) {
        QFile file(QString::fromStdString(item.path().native()));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(description.substr(8).c_str());
    }
}

/// A photo to be moved into a folder where something else may stand in its place.
struct Scene {
    Scene(const std::string& photo, const std::string& old) {
        folder.makeFolder("approved");
        make(source, photo);
        make(target, old);
    }

    /// The move, disturbed.
    Platform::Result<void> move(Disturbance& disturbance) const {
        current = &disturbance;
        auto moved = FileManager::moveItem(source, target);
        current = nullptr;
        return moved;
    }

    /// What stands in the target's folder under any other name, each followed by a line feed.
    std::string leftOver() const {
        std::string all;
        for (const std::string& name : namesIn(folder.at("approved"))) {
            if (name != target.lastPathComponent()) {
                all += descriptionOf(folder.at("approved").appendingPathComponent(name)) + "\n";
            }
        }
        return all;
    }

    const TemporaryFolder folder;
    const FileURL source = folder.at("a.jpg");
    const FileURL target = folder.at("approved/a.jpg");
};

/// Runs the move in a process of its own. Gives its exit status.
int moveInChild(const Scene& scene, Disturbance& disturbance) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(scene.move(disturbance) ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

constexpr int killed = 42;
constexpr int mostCalls = 500; // more than any move makes

} // namespace

class FileMoveTest : public QObject {
    Q_OBJECT

private:
    static void addScenes() {
        QTest::addColumn<bool>("otherDevice");
        QTest::addColumn<bool>("noHardLinks");
        QTest::addColumn<QByteArray>("photo");
        QTest::addColumn<QByteArray>("old");
        const QByteArray file = "file of more than goes in one transfer";
        const auto addScene = [](bool otherDevice, bool noHardLinks, const QByteArray& photo,
                                  const char* old) {
            QTest::addRow("%s to %s device over <%s>%s", photo.constData(),
                otherDevice ? "another" : "the same", old, noHardLinks ? " without hard links" : "")
                << otherDevice << noHardLinks << photo << QByteArray(old);
        };
        for (const char* old : {"", "file of old", "link to old", "empty folder", "full folder"}) {
            addScene(true, false, file, old);
            addScene(true, false, "link to photo", old);
            addScene(false, false, file, old);
            addScene(false, false, "full folder", old);
        }
        for (const char* old : {"file of old", "link to old"}) {
            addScene(true, true, file, old);
            addScene(false, true, "full folder", old);
        }
    }

    /// What a test with these scenes is to do now.
    struct Row {
        bool otherDevice;
        bool noHardLinks;
        std::string photo;
        std::string old;
    };

    static Row row() {
        QFETCH(bool, otherDevice);
        QFETCH(bool, noHardLinks);
        QFETCH(QByteArray, photo);
        QFETCH(QByteArray, old);
        return {otherDevice, noHardLinks, photo.toStdString(), old.toStdString()};
    }

    /// Lets every call of the row's move fail in turn, with that errno.
    static void failEveryCall(int code) {
        const auto [otherDevice, noHardLinks, photo, old] = row();
        int number = 0;
        for (bool wasReached = true; wasReached && number < mostCalls;) {
            const Scene scene(photo, old);
            Disturbance disturbance{
                .otherDevice = otherDevice, .noHardLinks = noHardLinks, .shortTransfers = true};
            disturbance.atCall = ++number;
            disturbance.act = [code] { return code; };
            const auto moved = scene.move(disturbance);
            wasReached = disturbance.calls >= number;
            const auto where = "call " + std::to_string(number);
            if (moved) {
                QVERIFY2(descriptionOf(scene.source).empty(), where.c_str());
                QVERIFY2(descriptionOf(scene.target) == photo, where.c_str());
            } else {
                QVERIFY2(descriptionOf(scene.source) == photo, where.c_str());
                QVERIFY2(descriptionOf(scene.target) == old, where.c_str());
                // What cannot be removed is all that may stay behind.
                QVERIFY2(scene.leftOver().empty() || disturbance.disturbed == "unlinkat", where.c_str());
            }
            if (!wasReached) {
                QCOMPARE(bool(moved), old != "full folder");
                QCOMPARE(scene.leftOver(), std::string());
            }
        }
        QVERIFY(number > 4);
        QVERIFY(number < mostCalls);
    }

    /// Disturbs the row's move at every call in turn, with that errno: the photo stands whole at the one place or the other, and
    /// what it was to replace is there as long as the photo is not in its place.
    static void loseNothing(const Disturbance& kind, int code) {
        const auto [otherDevice, noHardLinks, photo, old] = row();
        int number = 0;
        for (bool wasReached = true; wasReached && number < mostCalls;) {
            const Scene scene(photo, old);
            Disturbance disturbance = kind;
            disturbance.otherDevice = otherDevice;
            disturbance.noHardLinks = noHardLinks;
            disturbance.atCall = ++number;
            disturbance.act = [code] { return code; };
            const bool isMoved = bool(scene.move(disturbance));
            wasReached = disturbance.calls >= number;
            const auto where = disturbance.disturbed + ", call " + std::to_string(number);
            const std::string source = descriptionOf(scene.source);
            const std::string target = descriptionOf(scene.target);
            const bool isInPlace = target == photo;
            QVERIFY2(isInPlace || source == photo, where.c_str());
            QVERIFY2(!isMoved || (isInPlace && source.empty()), where.c_str());
            if (!isInPlace && !old.empty()) {
                QVERIFY2(
                    target == old || scene.leftOver().find(old + "\n") != std::string::npos, where.c_str());
            }
        }
        QVERIFY(number > 4);
        QVERIFY(number < mostCalls);
    }

private slots:
    void initTestCase() {
        // Thousands of small files: in memory where there is a folder for that, lest the disk be waited for.
        if (access("/dev/shm", W_OK | X_OK) == 0) {
            qputenv("TMPDIR", "/dev/shm");
        }
    }

    void eachFailureLeavesEverythingAsItWas_data() { addScenes(); }
    void eachFailureLeavesEverythingAsItWas() { failEveryCall(EIO); }

    void eachLackOfPermissionLeavesEverythingAsItWas_data() { addScenes(); }
    void eachLackOfPermissionLeavesEverythingAsItWas() { failEveryCall(EPERM); }

    void eachInterruptionLeavesEverythingWhole_data() { addScenes(); }
    void eachInterruptionLeavesEverythingWhole() { failEveryCall(EINTR); }

    void eachChangeThatIsReportedAsFailedLosesNothing_data() { addScenes(); }
    void eachChangeThatIsReportedAsFailedLosesNothing() {
        loseNothing({.isDone = true}, EIO);
        loseNothing({.isDone = true}, ENOENT);
    }

    void aDiskThatIsGoneFromSomeCallOnLosesNothing_data() { addScenes(); }
    void aDiskThatIsGoneFromSomeCallOnLosesNothing() {
        loseNothing({.isForever = true}, EIO);
        loseNothing(
            {.isDone = true, .isForever = true}, ENODEV); // as a server whose answers do not come through
    }

    void eachKillLeavesThePhotoAndWhatItReplaces_data() { addScenes(); }
    void eachKillLeavesThePhotoAndWhatItReplaces() {
        const auto [otherDevice, noHardLinks, photo, old] = row();
        int number = 0;
        for (int status = killed; status == killed && number < mostCalls;) {
            const Scene scene(photo, old);
            Disturbance disturbance{.otherDevice = otherDevice, .noHardLinks = noHardLinks};
            disturbance.atCall = ++number;
            disturbance.act = []() -> int { _exit(killed); };
            status = moveInChild(scene, disturbance);
            const auto where = "call " + std::to_string(number);
            const std::string source = descriptionOf(scene.source);
            const std::string target = descriptionOf(scene.target);
            const bool isMoved = target == photo;
            QVERIFY2(source == photo || (source.empty() && isMoved), where.c_str());
            if (!source.empty() && !old.empty()) {
                const bool isOldKept =
                    target == old || scene.leftOver().find(old + "\n") != std::string::npos;
                QVERIFY2(isOldKept, where.c_str());
            }
            QVERIFY2(isMoved || target == old || target.empty(), where.c_str());
        }
        QVERIFY(number > 4);
        QVERIFY(number < mostCalls);
    }

    void aReplacedFileIsNeverAwayWhereItCanHaveTwoNames() {
        for (int number = 1, status = killed; status == killed; ++number) {
            const Scene scene("file of photo", "file of old");
            Disturbance disturbance{.otherDevice = true};
            disturbance.atCall = number;
            disturbance.act = []() -> int { _exit(killed); };
            status = moveInChild(scene, disturbance);
            QVERIFY(!descriptionOf(scene.target).empty());
        }
    }

    void anInterruptedTransferGoesOn() {
        for (const char* call : {"openat", "read", "write", "fsync"}) {
            const Scene scene("file of photo", "file of old");
            Disturbance disturbance{.otherDevice = true};
            disturbance.call = call;
            disturbance.atCall = 1;
            disturbance.act = [] { return EINTR; };
            QVERIFY2(scene.move(disturbance), call);
            QCOMPARE(descriptionOf(scene.target), std::string("file of photo"));
        }
    }

    void aCopyThatDiffersIsNotTakenForThePhoto() {
        const Scene scene("file of photo", "file of old");
        Disturbance disturbance{.otherDevice = true, .damagesWrites = true};
        const auto moved = scene.move(disturbance);
        QVERIFY(!moved);
        QCOMPARE(moved.error().localizedDescription(),
            QStringLiteral("“a.jpg” could not be copied to the other disk: the disk reported an error."));
        QCOMPARE(descriptionOf(scene.source), std::string("file of photo"));
        QCOMPARE(descriptionOf(scene.target), std::string("file of old"));
        QCOMPARE(scene.leftOver(), std::string());
    }

    void aPhotoThatIsWrittenMeanwhileStays() {
        // Written to, or replaced by another: at any of the times at which the disk is waited for.
        for (int number = 1; number <= 3; ++number) {
            const Scene scene("file of photo", "file of old");
            Disturbance disturbance{.otherDevice = true};
            disturbance.call = "fsync";
            disturbance.atCall = number;
            disturbance.act = [&] {
                current = nullptr;
                make(scene.folder.at("edited"), "file of photo");
                fs::rename(scene.folder.at("edited").path(), scene.source.path());
                return 0;
            };
            const auto moved = scene.move(disturbance);
            QVERIFY(!moved);
            QCOMPARE(descriptionOf(scene.source), std::string("file of photo"));
            QCOMPARE(descriptionOf(scene.target), std::string("file of old"));
            QCOMPARE(scene.leftOver(), std::string());
        }
    }

    void aFileThatHasTakenThePhotosNameIsNotMovedForIt() {
        const Scene scene("file of photo", "file of old");
        Disturbance disturbance{.otherDevice = true};
        disturbance.call = "faccessat"; // after the look at the photo, before it is opened
        disturbance.atCall = 1;
        disturbance.act = [&] {
            current = nullptr;
            make(scene.folder.at("another"), "file of another");
            fs::rename(scene.folder.at("another").path(), scene.source.path());
            current = &disturbance;
            return 0;
        };
        QVERIFY(!scene.move(disturbance));
        QCOMPARE(descriptionOf(scene.source), std::string("file of another"));
        QCOMPARE(descriptionOf(scene.target), std::string("file of old"));
        QCOMPARE(scene.leftOver(), std::string());
    }

    void aLockedDiskIsNoticedBeforeTheCopying() {
        const Scene scene("file of photo", "");
        Disturbance disturbance{.otherDevice = true};
        disturbance.call = "faccessat";
        disturbance.atCall = 1;
        disturbance.act = [] {
            current->call = "write";
            current->calls = 0;
            return EROFS;
        };
        const auto moved = scene.move(disturbance);
        QVERIFY(!moved);
        QCOMPARE(moved.error().localizedDescription(),
            QStringLiteral("“a.jpg” could not be moved: the disk is read-only."));
        QCOMPARE(disturbance.calls, 0);
    }

    void aFolderThatIsReachedByTwoMountsKeepsItsPhoto() {
        const TemporaryFolder folder;
        const FileURL photo = folder.write("a.jpg", "photo");
        fs::create_directory_symlink(".", folder.at("approved").path());
        Disturbance disturbance{.otherDevice = true, .twoMounts = true};
        current = &disturbance;
        const auto moved = FileManager::moveItem(photo, folder.at("approved/a.jpg"));
        current = nullptr;
        QVERIFY2(moved, moved ? "" : qPrintable(moved.error().localizedDescription()));
        QCOMPARE(contentOf(photo), QByteArray("photo"));
        QCOMPARE(namesIn(folder.url()), (std::vector<std::string>{"a.jpg", "approved"}));
    }

    void aPhotoThatStandsInBothPlacesStaysInOneWhateverFails() {
        for (const bool isDone : {false, true}) {
            int number = 0;
            for (bool wasReached = true; wasReached && number < mostCalls;) {
                const Scene scene("file of photo", "");
                fs::create_hard_link(scene.source.path(), scene.target.path());
                Disturbance disturbance{.isDone = isDone};
                disturbance.atCall = ++number;
                disturbance.act = [] { return EIO; };
                const bool isMoved = bool(scene.move(disturbance));
                wasReached = disturbance.calls >= number;
                QCOMPARE(descriptionOf(scene.target), std::string("file of photo"));
                QCOMPARE(descriptionOf(scene.source).empty(), isMoved);
            }
            QVERIFY(number > 4);
            QVERIFY(number < mostCalls);
        }
    }

    void oneNameInTwoSpellingsIsNotTakenForTwoLinks() {
        // As on a disk that ignores case: two names, and yet the file has a single one.
        const TemporaryFolder folder;
        const FileURL source = folder.write("A.JPG", "photo");
        const FileURL target = folder.at("a.jpg");
        fs::create_hard_link(source.path(), target.path());
        Disturbance disturbance{.singleLinks = true};
        disturbance.call = "unlinkat";
        current = &disturbance;
        const auto moved = FileManager::moveItem(source, target);
        current = nullptr;
        QVERIFY(moved);
        QCOMPARE(disturbance.calls, 0);
        QCOMPARE(contentOf(target), QByteArray("photo"));
    }
};

QTEST_GUILESS_MAIN(FileMoveTest)
#include "FileMoveTest.moc"
