// The operations on the user's files while the operating system fails, or the process is killed, at every single call of
// theirs in turn.
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
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
                found[contentOf(FileURL(path))].push_back(
                    path.substr(photos.url().path().native().size() + 1));
            }
        }
        return found;
    }

    /// A lock of the settings that could not be removed counts as held as long as the process lives that made it, which is this
    /// one, where it would be one that has ended.
    void endProcess() {
        viewModel.reset();
        fs::remove(home.at("settings.ini.lock").path());
    }

    bool hasHiddenFiles() const { return std::ranges::any_of(files(), &Scene::isHidden); }

private:
    static bool isHidden(const std::string& path) {
        return fs::path(path).filename().native().starts_with('.');
    }

    std::vector<std::string> files() const {
        std::vector<std::string> found;
        constexpr auto followed = fs::directory_options::follow_directory_symlink;
        for (const fs::directory_entry& entry :
            fs::recursive_directory_iterator(photos.url().path(), followed)) {
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
    bool changesList = false; ///< photos leave the folder
    bool crossesDevices = false;
    bool deletes = false; ///< RAW files
};

std::vector<Operation> operations() {
    const auto approve = [](Scene& scene) { scene.viewModel->moveApproved(); };
    const auto reject = [](Scene& scene) { scene.viewModel->moveRejected(); };
    std::vector<Operation> all{
        {"open a folder", [](Scene&) {}, [](Scene& scene) { scene.open(scene.photos.url()); }},
        {"open the folder of last time", [](Scene& scene) { scene.open(scene.photos.url()); },
            [](Scene& scene) { scene.start(); }},
        {"move approved", &Scene::openAndMark, approve, true},
        {"move approved over another",
            [](Scene& scene) {
                scene.putInTheWay("approved", "b.jpg");
                scene.openAndMark();
            },
            approve, true},
        {"move rejected", &Scene::openAndMark, reject, true},
        {"delete RAW files", &Scene::openAndMark,
            [](Scene& scene) {
                scene.viewModel->findOrphanRawFiles();
                scene.viewModel->deleteOrphanRawFiles();
            },
            false, false, true},
    };
    if (Scene::hasOtherDevice()) {
        all.push_back({"move approved to another device",
            [](Scene& scene) {
                scene.leadToOtherDevice("approved");
                scene.openAndMark();
            },
            approve, true, true});
        all.push_back({"move rejected to another device over another",
            [](Scene& scene) {
                scene.leadToOtherDevice("rejected");
                scene.photos.write("rejected/c.jpg", "old");
                scene.openAndMark();
            },
            reject, true, true});
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

    /// @param mayBeTwice  whether the process was killed: then a photo on its way to another device may be here and there
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
        for (const std::string& name : namesIn(m_scene.photos.url())) {
            if (name.ends_with(".jpg")) {
                there.push_back(name);
            }
        }
        if (listed != there &&
            !(listed.empty() && (model.hasErrorMessage() || model.folderURL().isEmpty()))) {
            return "the list is not the folder";
        }
        const bool isSomethingLeft = m_operation.changesList &&
                                     std::ranges::any_of(model.photoItems(), [this](const PhotoItem& photo) {
                                         return photo.state() == markMoved();
                                     });
        if (isSomethingLeft && !model.hasErrorMessage()) {
            return "nothing is said of what was not moved";
        }
        const bool isRawLeft = m_operation.deletes && (m_now.contains("raw x") || m_now.contains("raw y"));
        if (isRawLeft && !model.hasErrorMessage()) {
            return "nothing is said of what was not deleted";
        }
        return {};
    }

private:
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

/// Runs the operation as planned.
void runPlanned(const Operation& operation, Scene& scene, FaultPlan& plan) {
    injectFault(&plan);
    operation.run(scene);
    injectFault(nullptr);
}

/// Whether the next start of the application shows the folder as it is.
QString verdictOfNextStart(Scene& scene, const std::map<QByteArray, Names>& before) {
    scene.endProcess();
    const OpenViewModel& model = scene.start();
    if (model.hasErrorMessage()) {
        return "the next start says: " + *model.errorMessage();
    }
    return Verdict({"next start", {}, {}}, scene, before).ofList();
}

constexpr int mostCalls = 2000; // more than any operation makes

} // namespace

class FaultsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void nothingIsLostWhateverFails_data() { addOperations(); }
    void nothingIsLostWhateverFails();
    void shortReadsAndWritesChangeNothing_data() { addOperations(); }
    void shortReadsAndWritesChangeNothing();
    void nothingIsLostWheneverTheProcessIsKilled_data() { addOperations(); }
    void nothingIsLostWheneverTheProcessIsKilled();
    void cleanupTestCase() const;

private:
    void failEachCall(const Operation& operation, SystemCall call, int error);
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
    for (int call = 0; call < systemCallKinds; ++call) {
        for (const int error : {EIO, ENOSPC, EACCES, EROFS, EXDEV, EINTR, ENOENT, EDQUOT}) {
            failEachCall(operationOfRow(), static_cast<SystemCall>(call), error);
            if (QTest::currentTestFailed()) {
                return;
            }
        }
    }
}

void FaultsTest::failEachCall(const Operation& operation, SystemCall call, int error) {
    bool hasHappened = true;
    for (int number = 1; hasHappened; ++number) {
        QVERIFY(number < mostCalls);
        Scene scene;
        operation.prepare(scene);
        const auto before = scene.content();
        FaultPlan plan{.calls = maskOf(call), .atCall = number, .error = error};
        runPlanned(operation, scene, plan);
        hasHappened = plan.hasHappened;
        m_faults += hasHappened ? 1 : 0;
        const auto where = QStringLiteral("call %1 of kind %2, error %3: ")
                               .arg(number)
                               .arg(static_cast<int>(call))
                               .arg(error);
        const Verdict verdict(operation, scene, before);
        QVERIFY2(verdict.ofFiles(false).isEmpty(), qPrintable(where + verdict.ofFiles(false)));
        QVERIFY2(verdict.ofList().isEmpty(), qPrintable(where + verdict.ofList()));
        // What cannot be removed or renamed is all that may stay behind.
        QVERIFY2(!scene.hasHiddenFiles() ||
                     (hasHappened && (call == SystemCall::Unlink || call == SystemCall::Rename)),
            qPrintable(where + "something is left behind"));
        const QString next = verdictOfNextStart(scene, before);
        QVERIFY2(next.isEmpty(), qPrintable(where + next));
    }
}

void FaultsTest::shortReadsAndWritesChangeNothing() {
    const Operation& operation = operationOfRow();
    for (const SystemCall call : {SystemCall::Read, SystemCall::Write}) {
        bool hasHappened = true;
        for (int number = 1; hasHappened; ++number) {
            Scene scene;
            operation.prepare(scene);
            const auto before = scene.content();
            FaultPlan plan{.calls = maskOf(call), .atCall = number, .action = Action::Shorten};
            runPlanned(operation, scene, plan);
            hasHappened = plan.hasHappened;
            m_faults += hasHappened ? 1 : 0;
            const Verdict verdict(operation, scene, before);
            QVERIFY2(verdict.ofFiles(false).isEmpty(), qPrintable(verdict.ofFiles(false)));
            QVERIFY2(verdict.ofList().isEmpty(), qPrintable(verdict.ofList()));
            QVERIFY(!scene.viewModel->hasErrorMessage());
            QVERIFY(!scene.viewModel->currentImage().isNull());
            QVERIFY(!scene.hasHiddenFiles());
        }
    }
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
    const QString ofNextStart = verdictOfNextStart(scene, before);
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
