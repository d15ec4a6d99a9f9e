#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/ProgramRun.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

/// The program decode-photo, by its command line.
class DecodePhotoTest : public QObject {
    Q_OBJECT

private slots:
    void itPrintsTheSizeAndTheTime();
    void itRepeatsTheDecode();
    void itWritesThePicture();
    void aFileThatCannotBeDecodedIsAFailure();
    void aPictureThatCannotBeWrittenIsAFailure();
    void aWrongCommandLineIsAnsweredWithTheUsage_data();
    void aWrongCommandLineIsAnsweredWithTheUsage();

private:
    static ProgramRun run(const QStringList& arguments) {
        return runProgram(QStringLiteral(DECODE_PHOTO), arguments);
    }
    QString photo() const { return path(m_folder.write("photo.jpg", jpegFile(quadrants(QSize(900, 600))))); }
    static QString path(const Platform::FileURL& url) { return QString::fromStdString(url.path().native()); }

    TemporaryFolder m_folder;
};

void DecodePhotoTest::itPrintsTheSizeAndTheTime() {
    const ProgramRun outcome = run({photo(), "200"});
    QCOMPARE(outcome.status, 0);
    QVERIFY(QRegularExpression("^200x133 [0-9]+\\.[0-9]\n$").match(outcome.output).hasMatch());
    QCOMPARE(outcome.errors, QString());
    QVERIFY(run({photo(), "0"}).output.startsWith("900x600 "));
}

void DecodePhotoTest::itRepeatsTheDecode() {
    const ProgramRun outcome = run({"--repeat", "3", photo(), "200"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output.count('\n'), 1);
}

void DecodePhotoTest::itWritesThePicture() {
    const Platform::FileURL written = m_folder.at("Gr\xfc\xdf"
                                                  "e.png");
    // Through a link, since a QProcess takes names as text.
    const Platform::FileURL link = m_folder.at("link.png");
    std::filesystem::create_symlink(written.path(), link.path());
    QCOMPARE(run({photo(), "200", path(link)}).status, 0);
    const QImage picture = QImage::fromData(contentOf(written));
    QCOMPARE(picture.size(), QSize(200, 133));
    QVERIFY(isNear(picture.pixelColor(10, 10), Qt::red));
}

void DecodePhotoTest::aFileThatCannotBeDecodedIsAFailure() {
    const ProgramRun outcome = run({path(m_folder.write("notes.jpg", "It rained.\n")), "200"});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(
        outcome.errors, QStringLiteral("decode-photo: “notes.jpg” is not a picture that can be read.\n"));
}

void DecodePhotoTest::aPictureThatCannotBeWrittenIsAFailure() {
    const ProgramRun outcome = run({photo(), "200", path(m_folder.at("no folder/picture.png"))});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, QString());
    QVERIFY(outcome.errors.contains("could not be written"));
}

void DecodePhotoTest::aWrongCommandLineIsAnsweredWithTheUsage_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("no size") << QStringList{"photo.jpg"};
    QTest::newRow("no number") << QStringList{"photo.jpg", "big"};
    QTest::newRow("negative") << QStringList{"photo.jpg", "-1"};
    QTest::newRow("too many") << QStringList{"photo.jpg", "1", "out.png", "more"};
    QTest::newRow("no repetitions") << QStringList{"--repeat", "0", "photo.jpg", "1"};
    QTest::newRow("unknown option") << QStringList{"--again", "2", "photo.jpg", "1"};
}

void DecodePhotoTest::aWrongCommandLineIsAnsweredWithTheUsage() {
    QFETCH(QStringList, arguments);
    const ProgramRun outcome = run(arguments);
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.output, QString());
    QVERIFY(outcome.errors.contains("usage:"));
}

QTEST_GUILESS_MAIN(DecodePhotoTest)
#include "DecodePhotoTest.moc"
