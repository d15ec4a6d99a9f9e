// soak [--minutes M] [--photos N] [--csv FILE]: the delivered program at work for an hour on a virtual screen.
//
// Walks, marks, takes back, zooms, moves and opens anew through 20,000 photos in one process, times each key until the
// screen shows what it does, and watches what the process holds. Prints both and whether they are as they must be, which the
// exit status tells, too: 0 where they are, 1 where not, 2 where the run could not be ended. FILE gets all samples of what
// the process held.
#include "Tests/EndToEnd/RunningApplication.h"
#include "Tests/EndToEnd/VirtualScreen.h"
#include "Tests/Soak/MachineClock.h"
#include "Tests/Soak/ResourceLog.h"
#include "Tests/Soak/SoakCriteria.h"
#include "Tests/Soak/SoakPhotos.h"
#include "Tests/Soak/WorkingUser.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <utility>

namespace {

enum ExitStatus { Met = 0, NotMet = 1, NotEnded = 2 };

struct Order {
    double hours = 1;
    int photos = 20'000;
    QString csvFile; // empty: none is written
};

/// What the process holds, as the hours go by.
class Watch {
public:
    explicit Watch(qint64 processId) : m_processId(processId) {}

    double hours() const {
        return std::chrono::duration<double, std::ratio<3600>>(Clock::now() - m_start).count();
    }

    /// Takes a sample where the last one is some seconds old.
    void sampleNowAndThen() {
        constexpr std::chrono::seconds interval(5);
        if (Clock::now() - m_lastSample >= interval) {
            m_lastSample = Clock::now();
            m_log.add({hours(), resourcesOf(m_processId)});
        }
    }

    /// Takes a sample once nothing is decoded ahead any more.
    void sampleAtRest() {
        waitForRest();
        m_log.add({hours(), resourcesOf(m_processId), true});
    }

    const ResourceLog& log() const { return m_log; }

private:
    using Clock = std::chrono::steady_clock;

    /// Returns when the process has done next to nothing for some seconds. Five seconds after the last photo that it decodes ahead,
    /// the list of them is let go; after two more, what was freed in its heaps is given back, and after two more, threads end.
    void waitForRest() const {
        constexpr std::chrono::seconds rest(10);
        constexpr std::chrono::minutes longestWork(2);
        constexpr std::chrono::milliseconds nextToNothing(30);
        const auto start = Clock::now();
        auto restsSince = start;
        for (auto used = processorTimeOf(m_processId); Clock::now() - restsSince < rest;) {
            QTest::qWait(100);
            if (const auto now = processorTimeOf(m_processId); now - used > nextToNothing) {
                used = now;
                restsSince = Clock::now();
            }
            if (Clock::now() - start > longestWork) {
                throw std::runtime_error("the application does not come to rest");
            }
        }
    }

    const qint64 m_processId;
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_lastSample;
    ResourceLog m_log;
};

std::optional<Order> orderOf(const QCoreApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The application at work for long on a virtual screen."));
    parser.addHelpOption();
    parser.addOptions({{"minutes", "How long (60).", "M", "60"},
        {"photos", "In a folder of so many, a multiple of 20 (20000).", "N", "20000"},
        {"csv", "Where to write what the process held, and when.", "FILE"}});
    parser.process(application);
    Order order;
    bool areMinutes = false;
    order.hours = parser.value("minutes").toDouble(&areMinutes) / 60;
    order.photos = parser.value("photos").toInt();
    order.csvFile = parser.value("csv");
    const bool isFine = areMinutes && order.hours > 0 && order.photos >= 2 * SoakPhotos::different &&
                        order.photos % SoakPhotos::different == 0 && parser.positionalArguments().isEmpty();
    return isFine ? std::optional(order) : std::nullopt;
}

void print(const QString& text) {
    std::fputs(qUtf8Printable(text), stdout);
    std::fflush(stdout);
}

void writeCsv(const QString& name, const ResourceLog& log) {
    if (name.isEmpty()) {
        return;
    }
    QFile file(name);
    const QByteArray text = log.asCsv().toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        throw std::runtime_error("cannot write " + name.toStdString());
    }
}

/// Ends the application as a user does; throws where it complained of anything or does not end well.
void close(VirtualScreen& screen, RunningApplication& application) {
    screen.close(application.window());
    const bool hasEnded = QTest::qWaitFor([&] { return application.hasEnded(); }, patience);
    const QString messages = application.messages();
    if (!hasEnded || !application.hasEndedWell() || messages.contains("qrc:")) {
        throw std::runtime_error(
            (QStringLiteral("the application ") + application.ending() + " and wrote:\n" + messages)
                .toStdString());
    }
}

/// Works until the time is over, and at least one round; gives the hours at which all caches had been filled for a quarter of it.
double workFor(double hours, WorkingUser& user, Watch& watch, const QString& csvFile) {
    constexpr int roundsPerOpening = 4; // the first fills the caches, which is no rest
    double warmUp = 0;
    user.openFolder();
    do {
        for (int round = 0; round == 0 || (round < roundsPerOpening && watch.hours() < hours); ++round) {
            user.work();
            if (round > 0) {
                watch.sampleAtRest();
            }
        }
        user.moveMarkedPhotos();
        user.openFolder();
        writeCsv(csvFile, watch.log());
        if (warmUp == 0 && watch.hours() >= hours / 4) {
            warmUp = watch.hours();
        }
    } while (watch.hours() < hours);
    return warmUp;
}

int run(const Order& order) {
    const SoakPhotos photos(order.photos);
    const TemporaryFolder home;
    VirtualScreen screen;
    RunningApplication application(screen, home.url(), Renderer::Chosen);
    if (!application.waitUntilReady()) {
        throw std::runtime_error("the application does not start");
    }
    Watch watch(application.window().processId);
    WorkingUser user(screen, application, photos, [&] { watch.sampleNowAndThen(); });
    const StolenTime stolenBefore = stolenTime();
    const double warmUp = workFor(order.hours, user, watch, order.csvFile);
    const auto stolen = stolenTime().average() - stolenBefore.average();
    close(screen, application);

    print(QStringLiteral("%1 minutes with %2 photos: %3 photos walked over, %4 moved and put back\n"
                         "of that time the host of this machine took %5 s, which do not count\n\n")
              .arg(watch.hours() * 60, 0, 'f', 1)
              .arg(photos.count())
              .arg(user.walkedPhotos())
              .arg(user.movedPhotos())
              .arg(std::chrono::duration<double>(stolen).count(), 0, 'f', 1));
    print(user.keys().table());
    print(QStringLiteral("of %1 photos gone to by a held key, the next overtook %2\n\n")
              .arg(user.heldPhotos())
              .arg(user.passedPhotos()));
    print(user.fileOperations().table() + '\n');
    bool areMet = true;
    for (const SoakCriterion& criterion : soakCriteria(user.keys(), watch.log(), warmUp)) {
        print((criterion.isMet ? "PASS  " : "FAIL  ") + criterion.sentence + '\n');
        areMet = areMet && criterion.isMet;
    }
    return areMet ? Met : NotMet;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const std::optional<Order> order = orderOf(application);
    if (!order) {
        std::fputs("usage: soak [--minutes M] [--photos N] [--csv FILE]; N is a multiple of 20, from 40 on\n",
            stderr);
        return NotEnded;
    }
    if (const QString lacking = VirtualScreen::lacking(); !lacking.isEmpty()) {
        std::fprintf(stderr, "soak: %s\n", qUtf8Printable(lacking));
        return NotEnded;
    }
    try {
        return run(*order);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return NotEnded;
    }
}
