#include "Platform/ImageDecoder/ThreadTeam.h"

#include <QTest>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

using Platform::ThreadTeam;

class ThreadTeamTest : public QObject {
    Q_OBJECT

private slots:
    void everyMemberRunsTheBodyOnce_data();
    void everyMemberRunsTheBodyOnce();
    void theCallerIsAMember();
    void eachIndexIsCalledOnce_data();
    void eachIndexIsCalledOnce();
    void whatAMemberDidIsSeenByTheNextPiece();
    void aTeamThatHasSleptWorksOn();
    void aTeamMayGoUnused();
    void thereIsACoreAtLeast();
};

void ThreadTeamTest::everyMemberRunsTheBodyOnce_data() {
    QTest::addColumn<int>("size");
    for (const int size : {1, 2, 3, 8}) {
        QTest::newRow(QByteArray::number(size)) << size;
    }
}

void ThreadTeamTest::everyMemberRunsTheBodyOnce() {
    QFETCH(int, size);
    ThreadTeam team(size);
    QCOMPARE(team.size(), size);
    for (int time = 0; time < 100; ++time) {
        std::mutex mutex;
        std::multiset<std::thread::id> members;
        team.run([&] {
            const std::lock_guard lock(mutex);
            members.insert(std::this_thread::get_id());
        });
        QCOMPARE(members.size(), static_cast<std::size_t>(size));
        QCOMPARE(std::set(members.begin(), members.end()).size(), static_cast<std::size_t>(size));
    }
}

void ThreadTeamTest::theCallerIsAMember() {
    for (const int size : {0, 1, 3}) {
        ThreadTeam team(size);
        QCOMPARE(team.size(), std::max(size, 1));
        std::atomic<bool> hasRunHere = false;
        team.run([&, caller = std::this_thread::get_id()] {
            if (std::this_thread::get_id() == caller) {
                hasRunHere = true;
            }
        });
        QVERIFY(hasRunHere);
    }
}

void ThreadTeamTest::eachIndexIsCalledOnce_data() {
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("count");
    for (const int size : {1, 2, 8}) {
        for (const int count : {0, 1, 2, 7, 1000}) {
            QTest::newRow(QByteArray::number(count) + " on " + QByteArray::number(size)) << size << count;
        }
    }
}

void ThreadTeamTest::eachIndexIsCalledOnce() {
    QFETCH(int, size);
    QFETCH(int, count);
    ThreadTeam team(size);
    for (int time = 0; time < 20; ++time) {
        std::vector<std::atomic<int>> calls(static_cast<std::size_t>(count));
        team.forEach(count, [&](int index) { ++calls[static_cast<std::size_t>(index)]; });
        QVERIFY(std::ranges::all_of(calls, [](int times) { return times == 1; }));
    }
}

void ThreadTeamTest::whatAMemberDidIsSeenByTheNextPiece() {
    ThreadTeam team(4);
    std::vector<int> values(64, 0);
    constexpr int pieces = 2000;
    for (int piece = 0; piece < pieces; ++piece) {
        // Each is taken over from another index, most likely of another member.
        std::vector<int> next(values.size());
        team.forEach(static_cast<int>(values.size()), [&](int index) {
            const auto i = static_cast<std::size_t>(index);
            next[i] = values[(i + 7) % values.size()] + 1;
        });
        values.swap(next);
    }
    QCOMPARE(values, std::vector<int>(values.size(), pieces));
}

void ThreadTeamTest::aTeamThatHasSleptWorksOn() {
    const auto workFor = [](int steps) {
        std::minstd_rand random;
        random.discard(static_cast<unsigned long long>(steps));
        return random();
    };
    ThreadTeam team(3);
    std::atomic<unsigned long> sum = 0;
    for (int time = 0; time < 5; ++time) {
        // One member has so much to do that the others fall asleep, and then nobody but the caller has.
        std::atomic<int> runs = 0;
        team.run([&] { sum += workFor(runs++ == 0 ? 500'000 : 1); });
        QCOMPARE(runs.load(), 3);
        sum += workFor(500'000);
    }
    QVERIFY(sum != 0);
}

void ThreadTeamTest::aTeamMayGoUnused() {
    for (int time = 0; time < 50; ++time) {
        const ThreadTeam team(1 + time % 8);
    }
}

void ThreadTeamTest::thereIsACoreAtLeast() {
    QVERIFY(ThreadTeam::availableCores() >= 1);
}

QTEST_APPLESS_MAIN(ThreadTeamTest)
#include "ThreadTeamTest.moc"
