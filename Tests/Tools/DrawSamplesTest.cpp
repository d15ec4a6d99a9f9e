#include "Tests/Support/ProgramRun.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QFileInfo>
#include <QImageIOHandler>
#include <QImageReader>
#include <QTest>

/// The program draw-samples, by its command line. Pictures are kept tiny: what is drawn does not depend on
/// the size.
class DrawSamplesTest : public QObject {
    Q_OBJECT

private slots:
    void filesAreNamedAsACameraNamesThem();
    void neighboursDiffer();
    void portraitsStandUprightOnceTheirOrientationIsApplied();
    void theSameSeedDrawsTheSameAndAnotherSeedAnother();
    void afterTheLastMotifTheFirstReturnsAtAnotherPlace();
    void pictureSizesThatAreOddOrExtremeAreDrawn_data();
    void pictureSizesThatAreOddOrExtremeAreDrawn();
    void theFolderIsMadeWhereItIsMissing();
    void aFolderThatCannotBeMadeIsAFailure();
    void aPictureThatCannotBeWrittenIsAFailureThatLeavesNothingHalfDone();
    void aWrongCommandLineIsAnsweredWithTheUsage_data();
    void aWrongCommandLineIsAnsweredWithTheUsage();

private:
    static ProgramRun run(const QStringList& arguments) {
        return runProgram(QStringLiteral(DRAW_SAMPLES), arguments);
    }
    static QString path(const Platform::FileURL& url) { return QString::fromStdString(url.path().native()); }
    static QImage picture(const Platform::FileURL& file);
};

/// As it is to be seen, upright.
QImage DrawSamplesTest::picture(const Platform::FileURL& file) {
    QImageReader reader(path(file));
    reader.setAutoTransform(true);
    return reader.read().convertToFormat(QImage::Format_RGB32);
}

void DrawSamplesTest::filesAreNamedAsACameraNamesThem() {
    const TemporaryFolder folder;
    QCOMPARE(run({path(folder.url()), "3", "--size", "24x16"}).status, 0);
    QCOMPARE(
        namesIn(folder.url()), (std::vector<std::string>{"VTR_0001.JPG", "VTR_0002.JPG", "VTR_0003.JPG"}));
}

void DrawSamplesTest::neighboursDiffer() {
    const TemporaryFolder folder;
    QCOMPARE(run({path(folder.url()), "24", "--size", "24x16"}).status, 0);
    const std::vector<std::string> names = namesIn(folder.url());
    QCOMPARE(names.size(), std::size_t{24});
    QImage before;
    for (const std::string& name : names) {
        const QImage now = picture(folder.at(name)).scaled(8, 8);
        QVERIFY2(!now.isNull(), name.c_str());
        int difference = 0;
        for (int i = 0; !before.isNull() && i < 64; ++i) {
            const QRgb a = before.pixel(i % 8, i / 8);
            const QRgb b = now.pixel(i % 8, i / 8);
            difference +=
                std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
        }
        QVERIFY2(before.isNull() || difference > 64 * 3 * 20, name.c_str());
        before = now;
    }
}

void DrawSamplesTest::portraitsStandUprightOnceTheirOrientationIsApplied() {
    const TemporaryFolder folder;
    QCOMPARE(run({path(folder.url()), "12", "--size", "48x32"}).status, 0);
    const QImageIOHandler::Transformations expected[] = {QImageIOHandler::TransformationNone,
        QImageIOHandler::TransformationRotate90, QImageIOHandler::TransformationRotate270};
    const char* names[] = {"VTR_0002.JPG", "VTR_0008.JPG", "VTR_0012.JPG"};
    for (int i = 0; i < 3; ++i) {
        const QImageReader reader(path(folder.at(names[i])));
        QCOMPARE(reader.transformation(), expected[i]);
        const QImage seen = picture(folder.at(names[i]));
        QCOMPARE(seen.size(), QSize(32, 48));
        QVERIFY(qGray(seen.pixel(16, 4)) > qGray(seen.pixel(16, 46))); // the sky is above, and brighter
    }
}

void DrawSamplesTest::theSameSeedDrawsTheSameAndAnotherSeedAnother() {
    const TemporaryFolder folder;
    const auto drawn = [&folder](const char* name, const char* seed) {
        const Platform::FileURL target = folder.at(name);
        [&] { QCOMPARE(run({path(target), "1", "--size", "48x32", "--seed", seed}).status, 0); }();
        return contentOf(target.appendingPathComponent("VTR_0001.JPG"));
    };
    const QByteArray first = drawn("first", "5");
    QCOMPARE(drawn("again", "5"), first);
    QVERIFY(drawn("other", "6") != first);
}

void DrawSamplesTest::afterTheLastMotifTheFirstReturnsAtAnotherPlace() {
    const TemporaryFolder folder;
    QCOMPARE(run({path(folder.url()), "25", "--size", "24x16"}).status, 0);
    QVERIFY(contentOf(folder.at("VTR_0001.JPG")) != contentOf(folder.at("VTR_0025.JPG")));
}

void DrawSamplesTest::pictureSizesThatAreOddOrExtremeAreDrawn_data() {
    QTest::addColumn<QSize>("size");
    QTest::newRow("one pixel") << QSize(1, 1);
    QTest::newRow("odd") << QSize(33, 19);
    QTest::newRow("panorama") << QSize(4000, 8);
    QTest::newRow("tower") << QSize(4, 1100);
    QTest::newRow("as wide as a JPEG can be") << QSize(65500, 1);
}

void DrawSamplesTest::pictureSizesThatAreOddOrExtremeAreDrawn() {
    QFETCH(const QSize, size);
    const TemporaryFolder folder;
    const QString text = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    QCOMPARE(run({path(folder.url()), "1", "--size", text}).status, 0);
    QCOMPARE(picture(folder.at("VTR_0001.JPG")).size(), size);
}

void DrawSamplesTest::theFolderIsMadeWhereItIsMissing() {
    const TemporaryFolder folder;
    QCOMPARE(run({path(folder.at("a/b")), "1", "--size", "3x2"}).status, 0);
    QVERIFY(exists(folder.at("a/b/VTR_0001.JPG")));
}

void DrawSamplesTest::aFolderThatCannotBeMadeIsAFailure() {
    const TemporaryFolder folder;
    const Platform::FileURL file = folder.write("file", "in the way");
    const ProgramRun outcome = run({path(file), "1", "--size", "3x2"});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.contains(path(file)));
}

void DrawSamplesTest::aPictureThatCannotBeWrittenIsAFailureThatLeavesNothingHalfDone() {
    const TemporaryFolder folder;
    folder.makeFolder("VTR_0001.JPG/full");
    const ProgramRun outcome = run({path(folder.url()), "1", "--size", "3x2"});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.contains("VTR_0001.JPG"));
    QCOMPARE(namesIn(folder.url()), std::vector<std::string>{"VTR_0001.JPG"});
}

void DrawSamplesTest::aWrongCommandLineIsAnsweredWithTheUsage_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("a count that is none") << QStringList{"folder", "many"};
    QTest::newRow("a negative count") << QStringList{"folder", "-1"};
    QTest::newRow("too much") << QStringList{"folder", "1", "2"};
    QTest::newRow("a size without a cross") << QStringList{"folder", "--size", "3000"};
    QTest::newRow("a size of nothing") << QStringList{"folder", "--size", "0x2000"};
    QTest::newRow("a size beyond what a JPEG can be") << QStringList{"folder", "--size", "65501x10"};
    QTest::newRow("an option without its value") << QStringList{"folder", "--seed"};
    QTest::newRow("an option that there is not") << QStringList{"folder", "--quality", "9"};
}

void DrawSamplesTest::aWrongCommandLineIsAnsweredWithTheUsage() {
    QFETCH(const QStringList, arguments);
    const ProgramRun outcome = run(arguments);
    QCOMPARE(outcome.status, 2);
    QVERIFY(outcome.errors.startsWith("usage: draw-samples "));
    QVERIFY(!QFileInfo::exists("folder"));
}

QTEST_GUILESS_MAIN(DrawSamplesTest)
#include "DrawSamplesTest.moc"
