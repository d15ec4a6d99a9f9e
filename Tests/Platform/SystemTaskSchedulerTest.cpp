#include "Platform/SystemTaskScheduler.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTest>

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <latch>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

using namespace std::chrono_literals;
using Platform::SystemTaskScheduler;
using Platform::Task;
using Platform::TaskPriority;

#if !defined(__has_feature)
namespace {
std::atomic<bool> givesThreads = true;
}

/// Stands before the C library's.
extern "C" int pthread_create(
    pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*), void* argument) noexcept {
    static auto* const libraryFunction =
        reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return givesThreads ? libraryFunction(thread, attributes, function, argument) : EAGAIN;
}
#endif

namespace {

/// What a piece of work can tell of the thread that runs it.
struct Seen {
    std::thread::id thread;
    int policy = 0;
};

Seen lookAround(const Task&) {
    return {std::this_thread::get_id(), sched_getscheduler(0)};
}

/// A result that, when it is moved for the first time, waits until it is released.
class SlowToMove {
public:
    struct Latches {
        std::latch isMoving{1};
        std::latch release{1};
    };

    SlowToMove(std::shared_ptr<int> value, Latches& latches)
        : m_value(std::move(value)), m_latches(&latches) {}
    SlowToMove(SlowToMove&& other) noexcept : m_value(std::move(other.m_value)) {
        if (Latches* const latches = std::exchange(other.m_latches, nullptr)) {
            latches->isMoving.count_down();
            latches->release.wait();
        }
    }
    SlowToMove(const SlowToMove&) = default;

private:
    std::shared_ptr<int> m_value;
    Latches* m_latches = nullptr; // until it is moved
};

/// Whether this process has such a thread.
bool isThere(pid_t thread) {
    return QFileInfo::exists(QStringLiteral("/proc/self/task/%1").arg(thread));
}

} // namespace

class SystemTaskSchedulerTest : public QObject {
    Q_OBJECT

private slots:
    void workRunsElsewhereAndItsResultComesBackToTheMainThread() {
        SystemTaskScheduler scheduler;
        std::optional<Seen> seen;
        std::thread::id deliveredOn;
        scheduler.detached(TaskPriority::UserInitiated, lookAround, [&](const Seen& result) {
            seen = result;
            deliveredOn = std::this_thread::get_id();
        });
        QVERIFY(!seen);
        QTRY_VERIFY(seen);
        QVERIFY(seen->thread != std::this_thread::get_id());
        QVERIFY(deliveredOn == std::this_thread::get_id());
    }

    void backgroundWorkHasTheLowestPriorityAndOtherWorkItsOwn() {
        const int ownPolicy = sched_getscheduler(0);
        SystemTaskScheduler scheduler;
        std::optional<Seen> background;
        std::optional<Seen> userInitiated;
        scheduler.detached(
            TaskPriority::Background, lookAround, [&](const Seen& seen) { background = seen; });
        scheduler.detached(
            TaskPriority::UserInitiated, lookAround, [&](const Seen& seen) { userInitiated = seen; });
        QTRY_VERIFY(background && userInitiated);
        QCOMPARE(background->policy, SCHED_IDLE);
        QCOMPARE(userInitiated->policy, ownPolicy);
    }

    void aTaskCancelledBeforeItsDeliveryIsNotDelivered() {
        SystemTaskScheduler scheduler;
        std::latch done(1);
        bool isDelivered = false;
        const Task task = scheduler.detached(
            TaskPriority::UserInitiated,
            [&](const Task&) {
                done.count_down();
                return 1;
            },
            [&](int) { isDelivered = true; });
        done.wait(); // the delivery needs this thread's event loop
        task.cancel();
        bool isLaterDelivered = false;
        scheduler.detached(
            TaskPriority::UserInitiated, [](const Task&) { return 2; },
            [&](int) { isLaterDelivered = true; });
        QTRY_VERIFY(isLaterDelivered);
        QVERIFY(!isDelivered);
    }

    void workSeesThatItsTaskWasCancelled() {
        SystemTaskScheduler scheduler;
        std::latch started(1);
        std::latch ended(1);
        const auto untilCancelled = [&](const Task& task) {
            started.count_down();
            while (!task.isCancelled()) {
                std::this_thread::yield();
            }
            ended.count_down();
            return 0;
        };
        const Task task = scheduler.detached(TaskPriority::UserInitiated, untilCancelled, [](int) {});
        started.wait();
        task.cancel();
        ended.wait();
    }

    void eachTaskHasAMarkOfItsOwn() {
        const Task first;
        const Task second;
        Task sameAsFirst;
        sameAsFirst = first;
        first.cancel();
        QVERIFY(sameAsFirst.isCancelled());
        QVERIFY(!second.isCancelled());
        QVERIFY(first == sameAsFirst);
        QVERIFY(!(first == second));
    }

    void workThatIsStuckDoesNotHoldUpOtherWork() {
        constexpr int manyStuck = 900; // photos that a held key has gone over in half a minute
        SystemTaskScheduler scheduler;
        const auto release =
            std::make_shared<std::latch>(1); // those that wait may look at it after the test has ended
        for (int stuck = 0; stuck < manyStuck; ++stuck) {
            scheduler.detached(
                TaskPriority::UserInitiated,
                [release](const Task&) {
                    release->wait();
                    return 0;
                },
                [](int) {});
        }
        bool isDelivered = false;
        scheduler.detached(
            TaskPriority::UserInitiated, [](const Task&) { return 0; }, [&](int) { isDelivered = true; });
        QTRY_VERIFY(isDelivered);
        release->count_down();
    }

#if !defined(__has_feature) // a sanitizer wants to know of every thread that is made
    void whereTheSystemGivesNoThreadWorkIsForThoseThatThereAre() {
        SystemTaskScheduler scheduler;
        int delivered = 0;
        const auto work = [](const Task&) { return 0; };
        const auto count = [&](int) { ++delivered; };
        givesThreads = false;
        scheduler.detached(TaskPriority::UserInitiated, work, count);
        givesThreads = true;
        scheduler.detached(TaskPriority::UserInitiated, work, count);
        QTRY_COMPARE(delivered, 2);
        givesThreads = false;
        scheduler.detached(TaskPriority::UserInitiated, work, count);
        scheduler.detached(TaskPriority::UserInitiated, work, count);
        QTRY_COMPARE(delivered, 4);
        givesThreads = true;
    }
#endif

    void threadsThatHaveNothingToDoEndButForOne() {
        SystemTaskScheduler scheduler;
        constexpr int count = 8;
        std::latch allRun(count);
        std::vector<pid_t> threads;
        const auto whenAllRun = [&](const Task&) {
            allRun.arrive_and_wait();
            return gettid();
        };
        const auto keep = [&](pid_t thread) { threads.push_back(thread); };
        for (int i = 0; i < count; ++i) {
            scheduler.detached(TaskPriority::UserInitiated, whenAllRun, keep);
        }
        QTRY_COMPARE(std::ssize(threads), count);
        constexpr int patience = 20'000;
        QTRY_COMPARE_WITH_TIMEOUT(std::ranges::count_if(threads, isThere), 1, patience);
        const pid_t left = *std::ranges::find_if(threads, isThere);
        scheduler.detached(
            TaskPriority::UserInitiated, [](const Task&) { return gettid(); }, keep);
        QTRY_COMPARE(std::ssize(threads), count + 1);
        QCOMPARE(threads.back(), left);
    }

    void aSleepEndsAfterItsDurationAndNotBefore() {
        SystemTaskScheduler scheduler;
        QElapsedTimer timer;
        timer.start();
        qint64 slept = -1;
        scheduler.sleep(20ms, [&] { slept = timer.nsecsElapsed(); });
        QTRY_VERIFY(slept >= 0);
        QVERIFY(slept >= 20'000'000);
    }

    void aCancelledSleepIsNotDelivered() {
        SystemTaskScheduler scheduler;
        bool isCancelledDelivered = false;
        bool isOtherDelivered = false;
        scheduler.sleep(1ms, [&] { isCancelledDelivered = true; }).cancel();
        scheduler.sleep(2ms, [&] { isOtherDelivered = true; });
        QTRY_VERIFY(isOtherDelivered);
        QVERIFY(!isCancelledDelivered);
    }

    void workThatIsStuckDoesNotKeepTheSchedulerFromEnding() {
        std::latch started(1);
        std::latch release(1);
        std::latch ended(1);
        bool isDelivered = false;
        {
            SystemTaskScheduler scheduler;
            const auto stuck = [&](const Task&) {
                started.count_down();
                release.wait();
                ended.count_down();
                return 0;
            };
            scheduler.detached(TaskPriority::UserInitiated, stuck, [&](int) { isDelivered = true; });
            started.wait();
        } // comes to an end although the work does not
        release.count_down();
        ended.wait();
        QCoreApplication::processEvents();
        QVERIFY(!isDelivered);
    }

    void aResultThatComesAfterTheSchedulerHasEndedIsDropped() {
        SlowToMove::Latches latches;
        std::weak_ptr<int> result;
        bool isDelivered = false;
        {
            SystemTaskScheduler scheduler;
            const auto work = [&](const Task&) {
                auto value = std::make_shared<int>(1);
                result = value;
                return SlowToMove(std::move(value), latches);
            };
            scheduler.detached(
                TaskPriority::Background, work, [&](const SlowToMove&) { isDelivered = true; });
            latches.isMoving.wait();
        } // ends although the result is already on its way
        latches.release.count_down();
        QTRY_VERIFY(result.expired());
        QCoreApplication::processEvents();
        QVERIFY(!isDelivered);
    }

    void theEndOfTheSchedulerCancelsAndDeliversNothing() {
        std::latch started(1);
        bool isDelivered = false;
        Task running;
        {
            SystemTaskScheduler scheduler;
            const auto untilCancelled = [&](const Task& task) {
                started.count_down();
                while (!task.isCancelled()) {
                    std::this_thread::yield();
                }
                return 0;
            };
            running = scheduler.detached(
                TaskPriority::Background, untilCancelled, [&](int) { isDelivered = true; });
            started.wait();
            scheduler.sleep(0ms, [&] { isDelivered = true; });
        }
        QVERIFY(running.isCancelled());
        QCoreApplication::processEvents();
        QVERIFY(!isDelivered);
    }
};

QTEST_GUILESS_MAIN(SystemTaskSchedulerTest)
#include "SystemTaskSchedulerTest.moc"
