#include "Tests/Soak/MachineClock.h"

#include <QTest>

#include <sstream>

using namespace std::chrono_literals;

class MachineClockTest : public QObject {
    Q_OBJECT

private slots:
    void whatTheHostTookIsSummedUp() {
        std::istringstream stat("cpu  100 0 50 900 5 0 1 350 0 0\n"
                                "cpu0 60 0 25 450 5 0 1 250 0 0\n"
                                "cpu1 40 0 25 450 0 0 0 100 0 0\n"
                                "intr 12345 8\n");
        const StolenTime stolen = stolenTime(stat);
        QCOMPARE(stolen.processors, 2);
        QVERIFY(stolen.total == 3500ms); // of ticks of 10 ms
        QVERIFY(stolen.average() == 1750ms);
    }

    void whereNothingIsToldNothingWasTaken() {
        std::istringstream stat("cpu  100 0 50 900\ncpu0 100 0 50 900\n");
        QVERIFY(stolenTime(stat).average() == 0s);
    }

    void thisMachineHasProcessors() {
        QVERIFY(stolenTime().processors > 0);
        QVERIFY(
            MachineClock::now().time_since_epoch() <= std::chrono::steady_clock::now().time_since_epoch());
    }
};

QTEST_APPLESS_MAIN(MachineClockTest)
#include "MachineClockTest.moc"
