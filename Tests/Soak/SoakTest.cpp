#include "Tests/EndToEnd/VirtualScreen.h"
#include "Tests/Support/ProgramRun.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QRegularExpression>
#include <QTest>

/// The program soak, by its command line, for less than a minute.
class SoakTest : public QObject {
    Q_OBJECT

private slots:
    void aShortRunDoesAllThatALongOneDoes();
    void aWrongCommandLineIsAnsweredWithTheUsage_data();
    void aWrongCommandLineIsAnsweredWithTheUsage();

private:
    static ProgramRun run(const QStringList& arguments) {
        return runProgram(QStringLiteral(SOAK), arguments);
    }
};

void SoakTest::aShortRunDoesAllThatALongOneDoes() {
    if (const QString lacking = VirtualScreen::lacking(); !lacking.isEmpty()) {
        QSKIP(qPrintable(lacking));
    }
    const TemporaryFolder folder;
    const Platform::FileURL csv = folder.at("held.csv");
    const ProgramRun outcome = run({"--minutes", "0.01", "--photos", "60", "--csv", csv.path().c_str()});
    QVERIFY2(outcome.status == 1, qPrintable(outcome.errors)); // too short to be judged by its memory
    QVERIFY(outcome.output.contains("FAIL  resident memory: too few samples to judge by"));
    for (const char* kind : {"right", "left", "right, held", "left, held", "right, after a move", "approve",
             "reject", "undo", "zoom in", "zoom in, wheel", "zoom out", "zoom out, wheel", "pan",
             "pan, wheel", "whole photo", "move approved", "move rejected", "open, with the chooser"}) {
        const QRegularExpression line(QStringLiteral("\n%1 +[1-9][0-9]* +[0-9.]+ ").arg(kind));
        QVERIFY2(line.match(outcome.output).hasMatch(), kind);
    }
    const QByteArray table = contentOf(csv);
    QVERIFY(table.startsWith("seconds,"));
    QVERIFY(table.count(",0\n") > 3); // samples at work
}

void SoakTest::aWrongCommandLineIsAnsweredWithTheUsage_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no time") << QStringList{"--minutes", "0"};
    QTest::newRow("no number") << QStringList{"--minutes", "long"};
    QTest::newRow("photos that do not go round") << QStringList{"--photos", "50"};
    QTest::newRow("too few photos") << QStringList{"--photos", "20"};
    QTest::newRow("more") << QStringList{"60"};
}

void SoakTest::aWrongCommandLineIsAnsweredWithTheUsage() {
    QFETCH(QStringList, arguments);
    const ProgramRun outcome = run(arguments);
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.output, QString());
    QVERIFY(outcome.errors.contains("usage:"));
}

QTEST_GUILESS_MAIN(SoakTest)
#include "SoakTest.moc"
