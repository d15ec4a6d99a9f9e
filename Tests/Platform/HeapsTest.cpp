#include "Platform/Heaps.h"

#include "Platform/SystemTaskScheduler.h"
#include "Tests/Support/ChildProcess.h"

#include <QTest>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <utility>
#include <vector>

namespace {

constexpr qint64 mebibyte = 1 << 20;

/// Resident memory of this process, in bytes.
qint64 residentMemory() {
    qint64 pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

/// Memory of the heaps that has been written to, until the end of the scope or release().
class Piece {
public:
    explicit Piece(std::size_t bytes) : m_start(std::malloc(bytes)) { std::memset(m_start, 1, bytes); }
    ~Piece() { std::free(m_start); }
    Piece(const Piece&) = delete;
    Piece& operator=(const Piece&) = delete;
    Piece(Piece&& other) noexcept : m_start(std::exchange(other.m_start, nullptr)) {}
    Piece& operator=(Piece&& other) noexcept {
        std::swap(m_start, other.m_start);
        return *this;
    }

    void release() { std::free(std::exchange(m_start, nullptr)); }

private:
    void* m_start;
};

/// Of 62.5 MiB together, each too small to lie outside of the heaps.
std::vector<Piece> manyPieces() {
    constexpr std::size_t size = 40 << 10;
    constexpr int count = 1600;
    std::vector<Piece> pieces;
    pieces.reserve(count);
    for (int made = 0; made < count; ++made) {
        pieces.emplace_back(size);
    }
    return pieces;
}

/// Those that stay lie between those that go.
void freeMost(std::vector<Piece>& pieces) {
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i % 4 != 3) {
            pieces[i].release();
        }
    }
}

} // namespace

class HeapsTest : public QObject {
    Q_OBJECT

private slots:
    void whatIsFreedBetweenOthersGoesBackWhenTheHeapsAreTrimmed() {
        const qint64 before = residentMemory();
        std::vector<Piece> pieces = manyPieces();
        freeMost(pieces);
        QVERIFY(residentMemory() - before > 50 * mebibyte);
        Platform::trimHeaps();
        QVERIFY(residentMemory() - before < 25 * mebibyte);
    }

    void whatWorkHasFreedGoesBackOnceNoMoreHasComeForAWhile() {
        const qint64 before = residentMemory();
        std::vector<Piece> pieces;
        Platform::SystemTaskScheduler scheduler;
        bool isDone = false;
        scheduler.detached(
            Platform::TaskPriority::UserInitiated,
            [&pieces](const Platform::Task&) {
                pieces = manyPieces();
                freeMost(pieces);
                return residentMemory();
            },
            [&](qint64 memory) { isDone = memory - before > 50 * mebibyte; });
        QTRY_VERIFY_WITH_TIMEOUT(isDone, patience);
        QTRY_VERIFY_WITH_TIMEOUT(residentMemory() - before < 25 * mebibyte, patience);
    }
};

QTEST_GUILESS_MAIN(HeapsTest)
#include "HeapsTest.moc"
