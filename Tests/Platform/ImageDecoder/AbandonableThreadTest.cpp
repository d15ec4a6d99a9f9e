#include "Platform/ImageDecoder/AbandonableThread.h"

#include <QTest>

#include <sched.h>

#include <atomic>
#include <memory>
#include <thread>

using Platform::runAbandonably;
using Platform::Task;
using namespace std::chrono_literals;

class AbandonableThreadTest : public QObject {
    Q_OBJECT

private slots:
    void workThatEndsHasEnded();
    void workIsAbandonedOnceNobodyWantsIt();
    void workIsAbandonedOnceItHasTakenTooMuchProcessorTime();
    void workThatWaitsTakesNoProcessorTime();
    void abandonedWorkRunsWhereNothingElseWantsTo();
    void whereManyHangTheNextWaitsForOneToEnd();
};

namespace {

/// What work and test know of each other, whichever ends first.
struct Shared {
    std::atomic<bool> hasBegun = false;
    std::atomic<bool> hasEnded = false;
    std::atomic<int> policy = -1; ///< how the thread was scheduled when the work ended
};

/// Work that does nothing else than to take processor time until it is abandoned.
auto endless(const std::shared_ptr<Shared>& shared) {
    return [shared](const Task& own) {
        shared->hasBegun = true;
        while (!own.isCancelled()) {
        }
        while (sched_getscheduler(0) != SCHED_IDLE) { // it is told first
        }
        shared->policy = sched_getscheduler(0);
        shared->hasEnded = true;
    };
}

} // namespace

void AbandonableThreadTest::workThatEndsHasEnded() {
    const auto shared = std::make_shared<Shared>();
    QVERIFY(runAbandonably([shared](const Task&) { shared->hasEnded = true; }, Task(), 10s));
    QVERIFY(shared->hasEnded);
}

void AbandonableThreadTest::workIsAbandonedOnceNobodyWantsIt() {
    const auto shared = std::make_shared<Shared>();
    const Task task;
    std::thread canceller([shared, task] {
        while (!shared->hasBegun) {
        }
        task.cancel();
    });
    QVERIFY(!runAbandonably(endless(shared), task, 1h));
    canceller.join();
    QTRY_VERIFY(shared->hasEnded);
}

void AbandonableThreadTest::workIsAbandonedOnceItHasTakenTooMuchProcessorTime() {
    const auto shared = std::make_shared<Shared>();
    QVERIFY(!runAbandonably(endless(shared), Task(), 10ms));
    QTRY_VERIFY(shared->hasEnded);
}

void AbandonableThreadTest::workThatWaitsTakesNoProcessorTime() {
    const auto wait = [](const Task&) { std::this_thread::sleep_for(50ms); };
    QVERIFY(runAbandonably(wait, Task(), 40ms));
}

void AbandonableThreadTest::abandonedWorkRunsWhereNothingElseWantsTo() {
    const auto shared = std::make_shared<Shared>();
    QVERIFY(!runAbandonably(endless(shared), Task(), 1ms));
    QTRY_VERIFY(shared->hasEnded);
    QCOMPARE(shared->policy, SCHED_IDLE);
}

void AbandonableThreadTest::whereManyHangTheNextWaitsForOneToEnd() {
    const auto release = std::make_shared<std::atomic<bool>>(false);
    const auto hanging = std::make_shared<std::atomic<int>>(0);
    const auto hang = [=](const Task&) {
        ++*hanging;
        release->wait(false);
        --*hanging;
    };
    Task left;
    left.cancel();
    constexpr int most = 64;
    for (int thread = 0; thread < most; ++thread) {
        QVERIFY(!runAbandonably(hang, left, 1h));
    }
    QTRY_COMPARE(hanging->load(), most);
    QVERIFY(!runAbandonably(hang, Task(), 10ms)); // in vain
    QVERIFY(!runAbandonably(hang, left, 1h));     // nobody wants it
    QCOMPARE(hanging->load(), most);
    *release = true;
    release->notify_all();
    QVERIFY(runAbandonably([](const Task&) {}, Task(), 1h));
    QTRY_COMPARE(hanging->load(), 0);
}

QTEST_GUILESS_MAIN(AbandonableThreadTest)
#include "AbandonableThreadTest.moc"
