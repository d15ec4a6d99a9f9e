#include "Platform/Heaps.h"

#include "Platform/SystemTaskScheduler.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/ResidentMemory.h"

#include <QTest>

#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr qint64 mebibyte = 1 << 20;

using Pieces = std::vector<std::unique_ptr<char[]>>;

/// Of 62.5 MiB together, written to, each too small to lie outside of the heaps.
Pieces manyPieces() {
    constexpr std::size_t size = 40 << 10;
    constexpr int count = 1600;
    Pieces pieces;
    for (int made = 0; made < count; ++made) {
        pieces.push_back(std::make_unique<char[]>(size));
    }
    return pieces;
}

/// Those that stay lie between those that go.
void freeMost(Pieces& pieces) {
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i % 4 != 3) {
            pieces[i].reset();
        }
    }
}

} // namespace

class HeapsTest : public QObject {
    Q_OBJECT

private slots:
    void whatIsFreedBetweenOthersGoesBackWhenTheHeapsAreTrimmed() {
        const qint64 before = residentMemory();
        Pieces pieces = manyPieces();
        freeMost(pieces);
        QVERIFY(residentMemory() - before > 50 * mebibyte);
        Platform::trimHeaps();
        QVERIFY(residentMemory() - before < 25 * mebibyte);
    }

    void whatWorkHasFreedGoesBackOnceNoMoreHasComeForAWhile_data() {
        QTest::addColumn<Platform::TaskPriority>("priority");
        QTest::newRow("user-initiated") << Platform::TaskPriority::UserInitiated;
        QTest::newRow("background") << Platform::TaskPriority::Background;
    }

    void whatWorkHasFreedGoesBackOnceNoMoreHasComeForAWhile() {
        QFETCH(Platform::TaskPriority, priority);
        const qint64 before = residentMemory();
        Pieces pieces = manyPieces();
        Platform::SystemTaskScheduler scheduler;
        bool isDone = false;
        scheduler.detached(
            priority,
            [&pieces](const Platform::Task&) {
                freeMost(pieces);
                return residentMemory();
            },
            [&](qint64 memory) { isDone = memory - before > 50 * mebibyte; });
        QTRY_VERIFY_WITH_TIMEOUT(isDone, patience);
        QTRY_VERIFY_WITH_TIMEOUT(residentMemory() - before < 25 * mebibyte, patience);
    }

    void whatTheEndOfASleepHasFreedGoesBack() {
        const qint64 before = residentMemory();
        Pieces pieces = manyPieces();
        Platform::SystemTaskScheduler scheduler;
        scheduler.sleep(std::chrono::milliseconds(1), [&pieces] { freeMost(pieces); });
        QVERIFY(residentMemory() - before > 50 * mebibyte);
        QTRY_VERIFY_WITH_TIMEOUT(residentMemory() - before < 25 * mebibyte, patience);
    }
};

QTEST_GUILESS_MAIN(HeapsTest)
#include "HeapsTest.moc"
