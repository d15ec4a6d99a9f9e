#include "Platform/ImageDecoder/ThreadTeam.h"

#include <QDir>
#include <QTest>

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <latch>
#include <mutex>
#include <new>
#include <random>
#include <set>
#include <thread>
#include <vector>

using Platform::ThreadTeam;

namespace {

unsigned long workFor(int steps) {
    std::minstd_rand random;
    random.discard(static_cast<unsigned long long>(steps));
    return random();
}

/// The helper of a team of two.
pthread_t helperOf(ThreadTeam& team) {
    pthread_t helper{};
    std::latch bothHaveCome(2);
    team.run([&, caller = pthread_self()] {
        if (pthread_self() != caller) {
            helper = pthread_self();
        }
        bothHaveCome.arrive_and_wait();
    });
    return helper;
}

/// Keeps a thread from running, in the handler of a signal, for as long as this object lives. One at a time.
class StoppedThread {
public:
    explicit StoppedThread(pthread_t thread) {
        isReleased = false;
        hasStopped = false;
        struct sigaction action {};
        action.sa_handler = [](int) {
            hasStopped = true;
            while (!isReleased) {
                usleep(100);
            }
        };
        sigaction(SIGUSR1, &action, nullptr);
        pthread_kill(thread, SIGUSR1);
        while (!hasStopped) {
            std::this_thread::yield();
        }
    }

    ~StoppedThread() { isReleased = true; }
    StoppedThread(const StoppedThread&) = delete;
    StoppedThread& operator=(const StoppedThread&) = delete;

private:
    static inline std::atomic<bool> isReleased;
    static inline std::atomic<bool> hasStopped;
};

bool worksOn(ThreadTeam& team) {
    std::atomic<int> calls = 0;
    team.forEach(100, [&](int) { ++calls; });
    return calls == 100;
}

} // namespace

class ThreadTeamTest : public QObject {
    Q_OBJECT

private slots:
    void everyMemberThatComesRunsTheBodyOnce_data();
    void everyMemberThatComesRunsTheBodyOnce();
    void nobodyWaitsForAHelperThatDoesNotCome();
    void aHelperThatHasBegunIsWaitedFor();
    void theCallerIsAMember();
    void eachIndexIsCalledOnce_data();
    void eachIndexIsCalledOnce();
    void whatAMemberDidIsSeenByTheNextPiece();
    void lackOfMemoryComesOutWhoeverHasIt();
    void aTeamThatHasSleptWorksOn();
    void aTeamThatHasNothingToDoTakesNoThreads();
    void thereIsACoreAtLeast();
};

void ThreadTeamTest::everyMemberThatComesRunsTheBodyOnce_data() {
    QTest::addColumn<int>("size");
    for (const int size : {1, 2, 3, 8}) {
        QTest::newRow(QByteArray::number(size)) << size;
    }
}

void ThreadTeamTest::everyMemberThatComesRunsTheBodyOnce() {
    QFETCH(int, size);
    ThreadTeam team(size);
    for (int time = 0; time < 100; ++time) {
        std::mutex mutex;
        std::multiset<std::thread::id> members;
        std::latch allHaveCome(size);
        team.run([&] {
            {
                const std::lock_guard lock(mutex);
                members.insert(std::this_thread::get_id());
            }
            allHaveCome.arrive_and_wait();
        });
        QCOMPARE(members.size(), static_cast<std::size_t>(size));
        QCOMPARE(std::set(members.begin(), members.end()).size(), static_cast<std::size_t>(size));
    }
}

void ThreadTeamTest::nobodyWaitsForAHelperThatDoesNotCome() {
    ThreadTeam team(2);
    const StoppedThread helper(helperOf(team));
    int pieces = 0;
    for (int time = 0; time < 10; ++time) {
        team.run([&] { ++pieces; });
    }
    QCOMPARE(pieces, 10);
}

void ThreadTeamTest::aHelperThatHasBegunIsWaitedFor() {
    ThreadTeam team(2);
    for (int time = 0; time < 20; ++time) {
        bool hasHelperFinished = false;
        std::latch hasHelperBegun(1);
        team.run([&, caller = pthread_self()] {
            if (pthread_self() == caller) {
                hasHelperBegun.wait();
            } else {
                hasHelperBegun.count_down();
                workFor(100'000);
                hasHelperFinished = true;
            }
        });
        QVERIFY(hasHelperFinished);
    }
}

void ThreadTeamTest::theCallerIsAMember() {
    for (const int size : {0, 1, 3}) {
        ThreadTeam team(size);
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

void ThreadTeamTest::lackOfMemoryComesOutWhoeverHasIt() {
    ThreadTeam team(2);
    std::latch bothLackIt(2);
    const auto lack = [&] {
        bothLackIt.arrive_and_wait();
        throw std::bad_alloc();
    };
    QVERIFY_THROWS_EXCEPTION(std::bad_alloc, team.run(lack));
    QVERIFY(worksOn(team));
    for (const bool isHelpers : {true, false}) {
        std::latch bothHaveCome(2);
        std::atomic<int> finished = 0;
        const auto body = [&, caller = pthread_self()] {
            bothHaveCome.arrive_and_wait();
            if ((pthread_self() != caller) == isHelpers) {
                throw std::bad_alloc();
            }
            finished += workFor(100'000) != 0 ? 1 : 0;
        };
        QVERIFY_THROWS_EXCEPTION(std::bad_alloc, team.run(body));
        QCOMPARE(finished.load(), 1);
        QVERIFY(worksOn(team));
    }
}

void ThreadTeamTest::aTeamThatHasSleptWorksOn() {
    ThreadTeam team(3);
    std::atomic<unsigned long> sum = 0;
    for (int time = 0; time < 5; ++time) {
        // One member has so much to do that the others fall asleep, and then nobody but the caller has.
        std::atomic<int> runs = 0;
        std::latch allHaveCome(3);
        team.run([&] {
            allHaveCome.arrive_and_wait();
            sum += workFor(runs++ == 0 ? 500'000 : 1);
        });
        QCOMPARE(runs.load(), 3);
        sum += workFor(500'000);
    }
    QVERIFY(sum != 0);
}

void ThreadTeamTest::aTeamThatHasNothingToDoTakesNoThreads() {
    const auto threads = [] {
        return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
    };
    const auto before = threads();
    ThreadTeam team(8);
    team.forEach(1, [](int) {});
    QCOMPARE(threads(), before);
    team.forEach(2, [](int) {});
    QCOMPARE(threads(), before + 7);
}

void ThreadTeamTest::thereIsACoreAtLeast() {
    QVERIFY(ThreadTeam::availableCores() >= 1);
}

QTEST_APPLESS_MAIN(ThreadTeamTest)
#include "ThreadTeamTest.moc"
