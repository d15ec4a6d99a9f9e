#include "Tests/Soak/SoakCriteria.h"

#include <QStringList>
#include <QTest>

/// What a long run must be like to pass, and that each way to be unlike it is noticed.
class SoakCriteriaTest : public QObject {
    Q_OBJECT

private slots:
    void whatIsNotMetIsSaid_data() {
        QTest::addColumn<double>("slowestKey");
        QTest::addColumn<double>("mebibytesPerHour");
        QTest::addColumn<double>("descriptorsPerHour");
        QTest::addColumn<double>("threadsPerHour");
        QTest::addColumn<QStringList>("notMet");
        QTest::newRow("all is well") << 99.0 << 0.9 << 0.0 << 0.0 << QStringList();
        QTest::newRow("memory shrinks") << 99.0 << -30.0 << 0.0 << 0.0 << QStringList();
        QTest::newRow("a slow key") << 100.5 << 0.0 << 0.0 << 0.0 << QStringList{"keys"};
        QTest::newRow("memory leaks") << 20.0 << 1.1 << 0.0 << 0.0 << QStringList{"resident memory"};
        QTest::newRow("files stay open") << 20.0 << 0.0 << 4.0 << 0.0 << QStringList{"file descriptors"};
        QTest::newRow("threads stay") << 20.0 << 0.0 << 0.0 << 2.0 << QStringList{"threads"};
    }

    void whatIsNotMetIsSaid() {
        QFETCH(double, slowestKey);
        QFETCH(double, mebibytesPerHour);
        QFETCH(double, descriptorsPerHour);
        QFETCH(double, threadsPerHour);
        KeyTimes keys;
        keys.add("right", 9);
        keys.add("right", slowestKey);
        ResourceLog log;
        log.add(
            {0, {.resident = 40, .fileDescriptors = 3, .threads = 1}, true}); // before the caches are full
        for (double hours = 0.25; hours <= 1; hours += 0.05) {
            log.add({hours,
                {.resident = 400 + mebibytesPerHour * hours,
                    .fileDescriptors = 30 + descriptorsPerHour * hours,
                    .threads = 7 + threadsPerHour * hours},
                true});
        }
        QTEST(notMet(soakCriteria(keys, log, 0.25)), "notMet");
    }

    void aRunWithTooFewSamplesAfterTheWarmUpIsNotPassed() {
        KeyTimes keys;
        keys.add("right", 9);
        ResourceLog log;
        for (const double hours : {0.1, 0.2, 0.3, 0.4}) {
            log.add({hours, {}, true});
        }
        QCOMPARE(notMet(soakCriteria(keys, log, 0.25)),
            (QStringList{"resident memory", "file descriptors", "threads"}));
    }

private:
    /// What the sentences begin with.
    static QStringList notMet(const std::vector<SoakCriterion>& criteria) {
        QStringList subjects;
        for (const SoakCriterion& criterion : criteria) {
            if (!criterion.isMet) {
                subjects.append(criterion.sentence.section(':', 0, 0));
            }
        }
        return subjects;
    }
};

QTEST_APPLESS_MAIN(SoakCriteriaTest)
#include "SoakCriteriaTest.moc"
