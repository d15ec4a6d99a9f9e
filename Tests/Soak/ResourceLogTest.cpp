#include "Tests/Soak/ResourceLog.h"

#include "Tests/Support/Sanitizers.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QStringList>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <stdexcept>
#include <thread>

class ResourceLogTest : public QObject {
    Q_OBJECT

private slots:
    void whatAProcessHoldsIsCounted() {
        const qint64 self = getpid();
        const Resources before = resourcesOf(self);
        constexpr std::size_t megabytes = 64;
        const auto memory = std::make_unique<char[]>(megabytes << 20);
        std::memset(memory.get(), 1, megabytes << 20);
        const int descriptor = dup(STDERR_FILENO);
        std::jthread thread([](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                std::this_thread::yield();
            }
        });
        const Resources after = resourcesOf(self);
        close(descriptor);
        QCOMPARE(after.fileDescriptors, before.fileDescriptors + 1);
        QCOMPARE(after.threads, before.threads + 1);
        if (!isSanitized) {
            QVERIFY(std::abs(after.resident - before.resident - megabytes) < 4);
            QVERIFY(std::abs(after.anonymous - before.anonymous - megabytes) < 4);
        }
        QVERIFY(after.anonymous < after.resident);
    }

    void aReadFromTheDiskIsCounted() {
        const TemporaryFolder folder;
        constexpr qsizetype kibibytes = 512;
        const auto file = folder.write("file", QByteArray(kibibytes * 1024, 'x'));
        const int descriptor = open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
        fsync(descriptor);
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED); // out of memory
        const double before = readFromDiskBy(getpid());
        QCOMPARE(contentOf(file).size(), kibibytes * 1024);
        const double read = readFromDiskBy(getpid()) - before;
        close(descriptor);
        if (read == 0) {
            QSKIP("the temporary folder is not on a disk");
        }
        QVERIFY2(read >= kibibytes && read < 2 * kibibytes, qPrintable(QString::number(read)));
    }

    void theTimeOnAProcessorIsThatOfAllThreads() {
        using namespace std::chrono_literals;
        const auto before = processorTimeOf(getpid());
        const std::clock_t start = std::clock(); // of all threads, too
        const auto passed = [start] {
            return std::chrono::milliseconds((std::clock() - start) * 1000 / CLOCKS_PER_SEC);
        };
        const auto work = [&] {
            while (passed() < 200ms) {
            }
        };
        std::thread(work).join();
        const auto counted = processorTimeOf(getpid()) - before;
        QVERIFY2(
            counted >= 180ms && counted <= passed() + 20ms, qPrintable(QString::number(counted.count())));
    }

    void aProcessThatIsGoneIsAFailure() {
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, resourcesOf(std::numeric_limits<int>::max()));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, readFromDiskBy(std::numeric_limits<int>::max()));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, processorTimeOf(std::numeric_limits<int>::max()));
    }

    void theTrendIsTheLineThroughTheSamplesAtRestSinceThen() {
        ResourceLog log;
        log.add(rest(0, 900));
        log.add({0.6, {.resident = 4000}}); // something is being decoded
        for (int i = 1; i <= 5; ++i) {
            log.add(rest(i / 2.0, 100 + 3 * i));
        }
        QCOMPARE(log.restsSince(0.5), 5);
        const auto [perHour, error] = log.trend(&Resources::resident, 0.5);
        QVERIFY(std::abs(perHour - 6) < 1e-9);
        QVERIFY(error < 1e-6);
    }

    void theErrorOfTheTrendIsThatOfTheTextbooks() {
        ResourceLog log;
        const double values[] = {1, 3, 2, 5}; // slope 1.1, residuals -0.1 0.8 -1.3 0.6
        for (int i = 0; i < 4; ++i) {
            log.add(rest(i, values[i]));
        }
        const auto [perHour, error] = log.trend(&Resources::resident, 0);
        QVERIFY(std::abs(perHour - 1.1) < 1e-9);
        QVERIFY(std::abs(error - std::sqrt(2.7 / 2 / 5)) < 1e-9);
    }

    void allSamplesAreWritten() {
        ResourceLog log;
        log.add({0.5, {.resident = 300.25, .anonymous = 250.5, .fileDescriptors = 31, .threads = 7}});
        log.add(rest(1, 200));
        const QStringList lines = log.asCsv().split('\n');
        QCOMPARE(lines, (QStringList{"seconds,resident MiB,anonymous MiB,file descriptors,threads,at rest",
                            "1800.0,300.25,250.50,31,7,0", "3600.0,200.00,0.00,0,0,1", ""}));
    }

private:
    static ResourceLog::Sample rest(double hours, double resident) {
        return {hours, {.resident = resident}, true};
    }
};

QTEST_APPLESS_MAIN(ResourceLogTest)
#include "ResourceLogTest.moc"
