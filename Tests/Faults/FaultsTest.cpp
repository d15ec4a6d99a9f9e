// The operations on the user's files while the operating system fails, or the process is killed, at every call of theirs in turn
// that is of a kind that FaultInjection.h names.
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <vector>

using Platform::FileURL;
namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using Action = FaultPlan::Action;

namespace {

const std::string otherDevice = "/dev/shm";

/// A folder of photos and RAW files, some marked, and another folder on another device where there is one.
class Scene : public CullingFixture {
public:
    Scene() {
        writePhotos(photos, {"a.jpg", "b.jpg", "c.jpg", "d.jpg"}, QSize(16, 16));
        photos.write("a.arw", "raw a");
        photos.write("x.arw", "raw x");
        photos.write("y.arw", "raw y");
        if (hasOtherDevice()) {
            m_elsewhere = otherDevice + "/vantrel-faults-" + std::to_string(getpid());
            fs::remove_all(m_elsewhere);
            fs::create_directory(m_elsewhere);
        }
        start({.isSyncRawFeatureEnabled = true});
    }

    FileURL folder = photos.url(); ///< where the photos are

    ~Scene() {
        viewModel.reset();
        fs::remove_all(m_elsewhere);
    }

    static bool hasOtherDevice() {
        struct stat own = {};
        struct stat other = {};
        return stat(fs::temp_directory_path().c_str(), &own) == 0 && stat(otherDevice.c_str(), &other) == 0 &&
               own.st_dev != other.st_dev && access(otherDevice.c_str(), W_OK) == 0;
    }

    /// Opens the folder, approves a and b, and rejects c.
    void openAndMark() {
        open(photos.url());
        for (const int approved : {0, 1}) {
            viewModel->navigateTo(approved);
            viewModel->toggleApproved();
        }
        viewModel->navigateTo(2);
        viewModel->cycleState();
    }

    /// Has the photos in a folder below, which is renamed after it was opened.
    void openAndRename() {
        const FileURL first = photos.makeFolder("card");
        for (const std::string& name : namesIn(photos.url())) {
            if (name != "card") {
                fs::rename(photos.at(name).path(), photos.at("card/" + name).path());
            }
        }
        open(first);
        folder = photos.at("renamed");
        fs::rename(first.path(), folder.path());
    }

    /// Another photo of a name in the folder for those of that mark.
    void putInTheWay(const std::string& subfolder, const std::string& name) {
        fs::create_directory(photos.at(subfolder).path());
        photos.write(subfolder + "/" + name, "old");
    }

    void leadToOtherDevice(const std::string& subfolder) {
        fs::create_directory_symlink(m_elsewhere, photos.at(subfolder).path());
    }

    /// The names under which each content stands, hidden ones left out.
    std::map<QByteArray, Names> content() const {
        std::map<QByteArray, Names> found;
        for (const std::string& path : files()) {
            if (!isHidden(path)) {
                found[contentOf(FileURL(path))].push_back(path.substr(folder.path().native().size() + 1));
            }
        }
        return found;
    }

    bool hasHiddenFiles() const { return std::ranges::any_of(files(), &Scene::isHidden); }

private:
    static bool isHidden(const std::string& path) {
        return fs::path(path).filename().native().starts_with('.');
    }

    std::vector<std::string> files() const {
        std::vector<std::string> found;
        constexpr auto followed = fs::directory_options::follow_directory_symlink;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.path(), followed)) {
            if (!entry.is_directory()) {
                found.push_back(entry.path().native());
            }
        }
        return found;
    }

    std::string m_elsewhere;
};

/// What the user does, and what must be so afterwards, whatever failed.
struct Operation {
    const char* name;
    std::function<void(Scene&)> prepare;
    std::function<void(Scene&)> run;
    std::uint32_t calls = 0;  ///< kinds that it makes at the least
    bool changesList = false; ///< photos leave the folder
    bool crossesDevices = false;
    bool deletes = false;      ///< RAW files
    bool isFirst = false;      ///< no folder is remembered before it
    bool opensAnother = false; ///< than the folder of last time
};

/// The kinds of calls.
constexpr std::uint32_t kinds(std::initializer_list<SystemCall> calls) {
    std::uint32_t mask = 0;
    for (const SystemCall call : calls) {
        mask |= maskOf(call);
    }
    return mask;
}

std::vector<Operation> operations() {
    const auto approve = [](Scene& scene) { scene.viewModel->moveApproved(); };
    const auto reject = [](Scene& scene) { scene.viewModel->moveRejected(); };
    const auto startAnew = [](Scene& scene) { scene.start(); };
    using enum SystemCall;
    constexpr auto list = kinds({Open, OpenFolder, ReadFolder, Close});
    constexpr auto show = kinds({Open, Status, Read, Close});
    constexpr auto save = kinds({Open, Write, Rename, Status, Close});
    constexpr auto move = show | kinds({MakeFolder, Rename});
    constexpr auto copy = kinds({Open, Read, Write, Sync, Rename, Unlink, Status, Close});
    std::vector<Operation> all{
        {.name = "open a folder",
            .prepare = [](Scene&) {},
            .run = [](Scene& scene) { scene.open(scene.photos.url()); },
            .calls = list | show | kinds({Write}),
            .isFirst = true},
        {.name = "open the folder of last time",
            .prepare = [](Scene& scene) { scene.open(scene.photos.url()); },
            .run = startAnew,
            .calls = list | show},
        {.name = "open the folder of last time, which was renamed",
            .prepare = &Scene::openAndRename,
            .run = startAnew,
            .calls = list | show | save},
        {.name = "open another folder",
            .prepare =
                [](Scene& scene) {
                    scene.openAndMark();
                    scene.photos.makeFolder("other");
                    scene.photos.write("other/e.jpg", flatPhoto(Qt::green, QSize(16, 16)));
                },
            .run = [](Scene& scene) { scene.open(scene.photos.at("other")); },
            .calls = list | show | save,
            .opensAnother = true},
        {.name = "move approved",
            .prepare = &Scene::openAndMark,
            .run = approve,
            .calls = move,
            .changesList = true},
        {.name = "move approved over another",
            .prepare =
                [](Scene& scene) {
                    scene.putInTheWay("approved", "b.jpg");
                    scene.openAndMark();
                },
            .run = approve,
            .calls = list | show | kinds({Rename}),
            .changesList = true},
        {.name = "move rejected",
            .prepare = &Scene::openAndMark,
            .run = reject,
            .calls = move,
            .changesList = true},
        {.name = "delete RAW files",
            .prepare = &Scene::openAndMark,
            .run =
                [](Scene& scene) {
                    scene.viewModel->findOrphanRawFiles();
                    scene.viewModel->deleteOrphanRawFiles();
                },
            .calls = list | kinds({Unlink}),
            .deletes = true},
    };
    if (Scene::hasOtherDevice()) {
        all.push_back({.name = "move approved to another device",
            .prepare =
                [](Scene& scene) {
                    scene.leadToOtherDevice("approved");
                    scene.openAndMark();
                },
            .run = approve,
            .calls = copy,
            .changesList = true,
            .crossesDevices = true});
        all.push_back({.name = "move rejected to another device over another",
            .prepare =
                [](Scene& scene) {
                    scene.leadToOtherDevice("rejected");
                    scene.photos.write("rejected/c.jpg", "old");
                    scene.openAndMark();
                },
            .run = reject,
            .calls = copy | kinds({Link}),
            .changesList = true,
            .crossesDevices = true});
    }
    return all;
}

const Operation& operationOfRow() {
    static const std::vector<Operation> all = operations();
    return all[static_cast<std::size_t>(*static_cast<int*>(QTest::qData("operation", QMetaType::Int)))];
}

void addOperations() {
    QTest::addColumn<int>("operation");
    int index = 0;
    for (const Operation& operation : operations()) {
        QTest::newRow(operation.name) << index++;
    }
}

/// What is wrong after an operation; empty where nothing is.
class Verdict {
public:
    Verdict(const Operation& operation, const Scene& scene, const std::map<QByteArray, Names>& before)
        : m_operation(operation), m_scene(scene), m_before(before), m_now(scene.content()) {}

    /// @param mayBeTwice  whether the process was killed or the disk is gone: then a photo on its way to another device may be
    ///                    here and there
    QString ofFiles(bool mayBeTwice) const {
        for (const auto& [content, places] : m_before) {
            const bool isReplaceable = content == "old";
            const bool isDeletable = m_operation.deletes && (content == "raw x" || content == "raw y");
            const auto now = m_now.find(content);
            if (now == m_now.end()) {
                if (!isReplaceable && !isDeletable) {
                    return "lost: " + placesText(places);
                }
            } else if (now->second.size() > (mayBeTwice && m_operation.crossesDevices ? 2U : 1U)) {
                return "twice: " + placesText(now->second);
            }
        }
        for (const auto& [content, places] : m_now) {
            if (!m_before.contains(content)) {
                return "half-written: " + placesText(places);
            }
        }
        return isOldGoneForNothing() ? "replaced by nothing" : QString();
    }

    /// Whether the list and the message say what is on the disk.
    QString ofList() const {
        const CullingViewModel& model = *m_scene.viewModel;
        const Names listed = names(model);
        Names there;
        for (const std::string& name : model.hasFolder() ? namesIn(model.folderURL()) : Names()) {
            if (name.ends_with(".jpg")) {
                there.push_back(name);
            }
        }
        const bool isExpected = model.folderURL() == m_scene.folder ||
                                (m_operation.opensAnother && model.folderURL() == m_scene.photos.at("other"));
        if (model.hasFolder() && !isExpected) {
            return "another folder is open";
        }
        // Of a folder that cannot be listed an error is told, and the list is that of before.
        const bool isNotListed = model.hasErrorMessage() && (listed.empty() || m_operation.opensAnother);
        if (listed != there && !isNotListed) {
            return "the list is not the folder";
        }
        return ofMessage();
    }

private:
    /// Whether the message names exactly what was to be moved or deleted and is still there, or says why nothing was.
    QString ofMessage() const {
        const Names left = namesLeft();
        const QString text = m_scene.viewModel->errorText();
        if (!m_operation.changesList && !m_operation.deletes) {
            return {};
        }
        if (left.empty() != text.isEmpty()) {
            return "it says “" + text + "” where there is left: " + placesText(left);
        }
        const QStringList lines = text.split(u'\n');
        if (lines.size() == 1) {
            const bool saysWhy = text.startsWith(u"Failed to move a") ||
                                 text.startsWith(u"Failed to move r") || text.startsWith(u"Failed to scan");
            return left.empty() || saysWhy ? QString() : "it does not say what is left: " + text;
        }
        const auto names = [](const QString& line, const std::string& name) {
            const QString beginning = QString::fromStdString(name) + QStringLiteral(": ");
            return line.startsWith(beginning) && line.size() > beginning.size();
        };
        const bool isEachNamed = std::ranges::equal(lines.mid(1), left, names);
        return isEachNamed ? QString() : "it does not name what is left: " + text;
    }

    Names namesLeft() const {
        Names left;
        for (const PhotoItem& photo : m_scene.viewModel->photoItems()) {
            if (m_operation.changesList && photo.state() == markMoved()) {
                left.push_back(photo.filename());
            }
        }
        for (const char* raw : {"x", "y"}) {
            if (m_operation.deletes && m_now.contains(QByteArray("raw ") + raw)) {
                left.push_back(std::string(raw) + ".arw");
            }
        }
        return left;
    }

    static QString placesText(const Names& places) {
        QString text;
        for (const std::string& place : places) {
            text += QString::fromStdString(place) + ' ';
        }
        return text;
    }

    ReviewState markMoved() const {
        return QLatin1String(m_operation.name).contains(QLatin1String("approved")) ? ReviewState::approved
                                                                                   : ReviewState::rejected;
    }

    /// Whether the photo that was in the way is gone although nothing stands in its place.
    bool isOldGoneForNothing() const {
        const auto old = m_before.find("old");
        if (old == m_before.end() || m_now.contains("old")) {
            return false;
        }
        return std::ranges::none_of(m_now, [&](const auto& entry) {
            return std::ranges::find(entry.second, old->second.front()) != entry.second.end();
        });
    }

    const Operation& m_operation;
    const Scene& m_scene;
    const std::map<QByteArray, Names>& m_before;
    const std::map<QByteArray, Names> m_now;
};

/// Runs the operation as planned, and what it sets going.
void runPlanned(const Operation& operation, Scene& scene, FaultPlan& plan) {
    injectFault(&plan);
    operation.run(scene);
    scene.scheduler.runAll();
    injectFault(nullptr);
}

/// Whether the next start of the application shows the folder as it is.
QString verdictOfNextStart(
    const Operation& operation, Scene& scene, const std::map<QByteArray, Names>& before) {
    const OpenViewModel& model = scene.start();
    if (model.hasErrorMessage()) {
        return "the next start says: " + *model.errorMessage();
    }
    if (!model.hasFolder() && !operation.isFirst) {
        return "the next start does not know the folder";
    }
    const Operation nextStart{
        .name = "next start", .prepare = {}, .run = {}, .opensAnother = operation.opensAnother};
    return Verdict(nextStart, scene, before).ofList();
}

constexpr std::array errors{EIO, ENOSPC, EACCES, EROFS, EXDEV, EINTR, ENOENT, EDQUOT};
constexpr int leastCalls = 10;  // that any operation makes
constexpr int mostCalls = 2000; // more than any does

} // namespace

class FaultsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void nothingIsLostWhateverFails_data() { addOperations(); }
    void nothingIsLostWhateverFails();
    void nothingIsLostWhereWhatIsDoneIsSaidToHaveFailed_data() { addOperations(); }
    void nothingIsLostWhereWhatIsDoneIsSaidToHaveFailed();
    void nothingIsLostWhereTheDiskIsGone_data() { addOperations(); }
    void nothingIsLostWhereTheDiskIsGone();
    void shortReadsAndWritesChangeNothing_data() { addOperations(); }
    void shortReadsAndWritesChangeNothing();
    void nothingIsLostWheneverTheProcessIsKilled_data() { addOperations(); }
    void nothingIsLostWheneverTheProcessIsKilled();
    void movesToAnotherDeviceAreAmongThem() {
        if (!Scene::hasOtherDevice()) {
            QSKIP("there is no other device here");
        }
        QVERIFY(std::ranges::any_of(operations(), &Operation::crossesDevices));
    }
    void cleanupTestCase() const;

private:
    int failAtEachCall(FaultPlan plan);
    bool failAtCall(const Operation& operation, FaultPlan plan);
    bool killAtCall(const Operation& operation, int call, Action action);

    int m_faults = 0;
    int m_kills = 0;
};

void FaultsTest::initTestCase() {
    if (!injectFault) {
        QFAIL("the library that injects faults is not preloaded; start the test by CTest");
    }
}

void FaultsTest::nothingIsLostWhateverFails() {
    std::uint32_t failed = 0;
    for (int kind = 0; kind < systemCallKinds; ++kind) {
        const std::uint32_t calls = maskOf(static_cast<SystemCall>(kind));
        for (const int error : errors) {
            failed |= failAtEachCall({.calls = calls, .error = error}) > 0 ? calls : 0;
        }
    }
    QCOMPARE(failed & operationOfRow().calls, operationOfRow().calls);
}

void FaultsTest::nothingIsLostWhereWhatIsDoneIsSaidToHaveFailed() {
    using enum SystemCall;
    std::uint32_t failed = 0;
    constexpr std::array changing{Open, Rename, Link, Unlink, MakeFolder, Sync}; // an open may make a file
    for (const SystemCall call : changing) {
        for (const int error : errors) {
            // Of a file that is gone before, that is said.
            if (error != ENOENT || !operationOfRow().deletes) {
                const FaultPlan plan{.calls = maskOf(call), .action = Action::FailDone, .error = error};
                failed |= failAtEachCall(plan) > 0 ? maskOf(call) : 0;
            }
        }
    }
    const std::uint32_t expected =
        operationOfRow().calls & kinds({Open, Rename, Link, Unlink, MakeFolder, Sync});
    QCOMPARE(failed & expected, expected);
}

void FaultsTest::nothingIsLostWhereTheDiskIsGone() {
    for (const int error : {EIO, ENOENT}) {
        QVERIFY(failAtEachCall({.error = error, .isLasting = true}) > leastCalls);
    }
}

/// Runs the operation of the row once for each call that the plan is about, until one comes where nothing happens.
/// @return how many there were
int FaultsTest::failAtEachCall(FaultPlan plan) {
    while (failAtCall(operationOfRow(), plan)) {
        ++plan.atCall;
    }
    return plan.atCall - 1;
}

/// @return whether the operation came to that call, and nothing went wrong
bool FaultsTest::failAtCall(const Operation& operation, FaultPlan plan) {
    Scene scene;
    operation.prepare(scene);
    const auto before = scene.content();
    runPlanned(operation, scene, plan);
    m_faults += plan.hasHappened ? 1 : 0;
    const auto where = QStringLiteral("call %1 of kinds %2, error %3: ")
                           .arg(plan.atCall)
                           .arg(plan.calls, 0, 2)
                           .arg(plan.error);
    // What cannot be removed or renamed is all that may stay behind.
    const bool mayLeaveSomething = plan.hasHappened && plan.action == Action::Fail &&
                                   (plan.calls & kinds({SystemCall::Unlink, SystemCall::Rename})) != 0;
    const Verdict verdict(operation, scene, before);
    const QString ofFiles = verdict.ofFiles(plan.isLasting);
    const QString ofList = verdict.ofList();
    const bool isTidy = mayLeaveSomething || !scene.hasHiddenFiles();
    const QString ofNextStart = verdictOfNextStart(operation, scene, before);
    const auto check = [&] {
        QVERIFY(plan.atCall < mostCalls);
        QVERIFY2(ofFiles.isEmpty(), qPrintable(where + ofFiles));
        QVERIFY2(ofList.isEmpty(), qPrintable(where + ofList));
        QVERIFY2(isTidy, qPrintable(where + "something is left behind"));
        QVERIFY2(ofNextStart.isEmpty(), qPrintable(where + ofNextStart));
    };
    check();
    return plan.hasHappened && !QTest::currentTestFailed();
}

void FaultsTest::shortReadsAndWritesChangeNothing() {
    const Operation& operation = operationOfRow();
    int happened = 0;
    for (const SystemCall call : {SystemCall::Read, SystemCall::Write}) {
        bool hasHappened = true;
        for (int number = 1; hasHappened; ++number) {
            Scene scene;
            operation.prepare(scene);
            const auto before = scene.content();
            FaultPlan plan{.calls = maskOf(call), .atCall = number, .action = Action::Shorten};
            runPlanned(operation, scene, plan);
            hasHappened = plan.hasHappened;
            happened += hasHappened ? 1 : 0;
            const Verdict verdict(operation, scene, before);
            QVERIFY2(verdict.ofFiles(false).isEmpty(), qPrintable(verdict.ofFiles(false)));
            QVERIFY2(verdict.ofList().isEmpty(), qPrintable(verdict.ofList()));
            QVERIFY(!scene.viewModel->hasErrorMessage());
            QVERIFY(!scene.viewModel->currentImage().isNull());
            QVERIFY(!scene.hasHiddenFiles());
        }
    }
    QVERIFY(happened > 0);
    m_faults += happened;
}

void FaultsTest::nothingIsLostWheneverTheProcessIsKilled() {
    for (const Action action : {Action::KillBefore, Action::KillAfter}) {
        int call = 1;
        while (killAtCall(operationOfRow(), call, action)) {
            ++call;
            if (QTest::currentTestFailed()) {
                return;
            }
            QVERIFY(call < mostCalls);
        }
        QVERIFY(call > leastCalls);
    }
}

/// @return whether the operation came to that call
bool FaultsTest::killAtCall(const Operation& operation, int call, Action action) {
    Scene scene;
    operation.prepare(scene);
    const auto before = scene.content();
    const pid_t child = fork();
    if (child == 0) {
        FaultPlan plan{.atCall = call, .action = action};
        runPlanned(operation, scene, plan);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const bool isKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    m_kills += isKilled ? 1 : 0;
    const auto where = QStringLiteral("killed at call %1: ").arg(call);
    const QString ofFiles = Verdict(operation, scene, before).ofFiles(true);
    const QString ofNextStart = verdictOfNextStart(operation, scene, before);
    const auto check = [&] {
        QVERIFY2(ofFiles.isEmpty(), qPrintable(where + ofFiles));
        QVERIFY2(ofNextStart.isEmpty(), qPrintable(where + ofNextStart));
        QVERIFY(isKilled || (WIFEXITED(status) && WEXITSTATUS(status) == 0));
    };
    check();
    return isKilled;
}

void FaultsTest::cleanupTestCase() const {
    qInfo("faults injected: %d, kills: %d", m_faults, m_kills);
}

QTEST_GUILESS_MAIN(FaultsTest)
#include "FaultsTest.moc"
