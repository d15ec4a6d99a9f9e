#include "Tests/Soak/KeyTimes.h"

#include <QStringList>
#include <QTest>

class KeyTimesTest : public QObject {
    Q_OBJECT

private slots:
    void theWorstIsTheLongestOfAllKinds() {
        KeyTimes times;
        QCOMPARE(times.worst(), 0.0);
        times.add("right", 8);
        times.add("approve", 31.5);
        times.add("approve", 2);
        times.add("right", 12);
        QCOMPARE(times.worst(), 31.5);
    }

    void theTableCountsTheTimesOfEachKind() {
        KeyTimes times;
        for (int i = 0; i < 99; ++i) {
            times.add("right", 7);
        }
        times.add("right", 250);
        times.add("approve", 10); // a bound belongs to what lies above it
        const QStringList lines = times.table().trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[1].simplified(), QStringLiteral("approve 1 10.0 10.0 10.0 | 0 0 1 0 0 0 0 0"));
        QCOMPARE(lines[2].simplified(), QStringLiteral("right 100 7.0 7.0 250.0 | 0 99 0 0 0 0 0 1"));
    }
};

QTEST_APPLESS_MAIN(KeyTimesTest)
#include "KeyTimesTest.moc"
