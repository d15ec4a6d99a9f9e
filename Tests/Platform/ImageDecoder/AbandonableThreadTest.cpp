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

QTEST_GUILESS_MAIN(AbandonableThreadTest)
#include "AbandonableThreadTest.moc"
