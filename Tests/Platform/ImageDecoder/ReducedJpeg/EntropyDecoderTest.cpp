#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Tests/Platform/ImageDecoder/ReducedJpeg/CoefficientComparison.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QPainter>
#include <QTest>
#include <QtEndian>

#include <random>
#include <vector>

using namespace Platform;

namespace {

using Factors = std::vector<JpegOptions::Factors>;

/// Segments so small that most searches begin in the middle of a block, and windows that end within an MCU.
EntropyDecoder::Cut cut(std::size_t windowBytes, std::size_t segmentBytes, int valuesPerBand) {
    return {windowBytes, segmentBytes, valuesPerBand};
}

const std::vector<DecodingWay>& decodingWays() {
    static const std::vector<DecodingWay> ways = {
        {8, 1, {}},
        {8, 2, cut(3, 1, 1)},
        {8, 3, cut(70, 7, 100)},
        {8, 8, cut(400, 50, 1000)},
        {4, 8, {}},
        {4, 1, cut(11, 2, 1)},
        {4, 2, cut(300, 3, 500)},
        {2, 3, {}},
        {2, 1, cut(40, 7, 1)},
        {2, 8, cut(1000, 1, 300)},
        {2, 2, cut(50, 50, 2000)},
    };
    return ways;
}

QByteArray nameOf(const DecodingWay& way) {
    return QStringLiteral("1/%1, %2 threads, segments of %3 bytes: ")
        .arg(way.denominator)
        .arg(way.threads)
        .arg(way.cut.segmentBytes)
        .toUtf8();
}

JpegOptions withFactors(const Factors& factors, int restartInterval = 0) {
    JpegOptions options;
    options.colors = factors.size() == 1 ? JpegOptions::Colors::Grey : JpegOptions::Colors::YCbCr;
    options.factors = factors;
    options.restartInterval = restartInterval;
    return options;
}

QByteArray nameOf(const Factors& factors) {
    QByteArray name;
    for (const JpegOptions::Factors& factor : factors) {
        name += (name.isEmpty() ? "" : " ") + QByteArray::number(factor.horizontal) + "x" +
                QByteArray::number(factor.vertical);
    }
    return name;
}

QByteArray nameOf(QSize size) {
    return QByteArray::number(size.width()) + "x" + QByteArray::number(size.height());
}

/// Squares of eight pixels, each a little brighter or darker than the one before.
QImage randomSteps(QSize size, std::minstd_rand& random) {
    QImage picture(size, QImage::Format_RGB32);
    QPainter painter(&picture);
    const auto most = static_cast<int>(random() % 40) + 1;
    int level = 128;
    for (int y = 0; y < size.height(); y += 8) {
        for (int x = 0; x < size.width(); x += 8) {
            const auto step = static_cast<int>(random() % (2 * static_cast<unsigned>(most) + 1)) - most;
            level = std::clamp(level + step, 0, 255);
            painter.fillRect(x, y, 8, 8, QColor(level, level, level));
        }
    }
    return picture;
}

/// One colour, so that with codes of its own each block takes two bits.
QByteArray fileOfTinyMcus() {
    JpegOptions options;
    options.colors = JpegOptions::Colors::Grey;
    options.hasOptimisedCodes = true;
    return jpegFile(plain(QSize(129, 65), QColor(128, 128, 128)), options);
}

/// Three components of one code and no factors: a search that is off by a block never comes right.
QByteArray fileThatNeverSynchronises(QSize size) {
    JpegOptions options;
    options.colors = JpegOptions::Colors::Rgb;
    return jpegFile(landscape(size), options);
}

/// Where the scan's data begin in a file of one scan.
qsizetype dataOf(const QByteArray& file) {
    const qsizetype scan = file.indexOf(QByteArray("\xff\xda"));
    return scan + 2 + qFromBigEndian<quint16>(file.constData() + scan + 2);
}

/// Where the restart markers are.
std::vector<qsizetype> restartsOf(const QByteArray& file) {
    std::vector<qsizetype> restarts;
    for (qsizetype at = dataOf(file); at + 1 < file.size(); ++at) {
        if (static_cast<uchar>(file[at]) == 0xff && (static_cast<uchar>(file[at + 1]) & 0xf8) == 0xd0) {
            restarts.push_back(at);
        }
    }
    return restarts;
}

/// Whether a photo's header is read, and the photo is then not for this decoder.
bool isRefused(const FileURL& photo) {
    Result<ReadOnlyFile> file = ReadOnlyFile::open(photo);
    JpegDecompressor jpeg(*file, Task());
    return jpeg.readHeader() && !jpeg.frame(8) && !jpeg.frame(4) && !jpeg.frame(2);
}

QByteArray fileWithRestarts() {
    return jpegFile(landscape(QSize(70, 50)), withFactors({{2, 1}, {1, 1}, {1, 1}}, 2));
}

} // namespace

/// What is compared is every coefficient that is kept of every block that is part of the picture.
class EntropyDecoderTest : public QObject {
    Q_OBJECT

private slots:
    void theCoefficientsAreThoseOfTheLibrary_data();
    void theCoefficientsAreThoseOfTheLibrary();
    void shortRestartIntervalsAreFoundOneByOne();
    void aWindowMayEndAnywhere_data();
    void aWindowMayEndAnywhere();
    void damagedRestartsAreNotFinished_data();
    void damagedRestartsAreNotFinished();
    void truncatedDataAreNotFinished();
    void changedDataAreNeverFinishedWithOtherCoefficients_data();
    void changedDataAreNeverFinishedWithOtherCoefficients();
    void moreDataThanThePictureTakesAreNotFinished();
    void aScanOfSomeBitsOnlyIsNotTaken();
    void factorsThatAreNotAllowedAreNotTaken();
    void aProgressiveOrArithmeticFileIsNotTaken();

private:
    static void addSizesAndSamplings();
    static void addRestartIntervals();
    static void addCodesAndQualities();
    static void addUnusualContents();

    TemporaryFolder m_folder;
};

void EntropyDecoderTest::theCoefficientsAreThoseOfTheLibrary_data() {
    QTest::addColumn<QByteArray>("file");
    addSizesAndSamplings();
    addRestartIntervals();
    addCodesAndQualities();
    addUnusualContents();
}

void EntropyDecoderTest::addSizesAndSamplings() {
    const std::vector<Factors> samplings = {{{1, 1}, {1, 1}, {1, 1}}, {{2, 1}, {1, 1}, {1, 1}},
        {{2, 2}, {1, 1}, {1, 1}}, {{1, 2}, {1, 1}, {1, 1}}, {{4, 1}, {1, 1}, {1, 1}}, {{1, 1}}, {{2, 2}},
        {{4, 3}}, {{3, 1}, {1, 1}, {1, 1}}, {{1, 3}, {1, 1}, {1, 1}}, {{3, 2}, {1, 1}, {1, 1}},
        {{1, 4}, {1, 2}, {1, 1}}, {{4, 2}, {1, 1}, {1, 1}}, {{4, 1}, {2, 1}, {1, 1}},
        {{2, 2}, {2, 1}, {1, 2}}, {{2, 2}, {2, 2}, {1, 1}}, {{1, 1}, {2, 2}, {1, 1}},
        {{2, 1}, {2, 1}, {2, 1}}, {{3, 1}, {1, 1}, {3, 1}}};
    const std::vector<QSize> sizes = {{1, 1}, {129, 64}, {7, 40}, {8, 8}, {33, 9}, {100, 1}, {16, 17},
        {1, 97}, {64, 48}, {31, 129}, {17, 16}, {90, 70}};
    for (int side = 1; side <= 129; ++side) {
        const Factors& factors = samplings[static_cast<std::size_t>(side) % samplings.size()];
        const QSize size(side, 130 - side);
        QTest::newRow(nameOf(factors) + " and " + nameOf(size))
            << jpegFile(landscape(size), withFactors(factors));
    }
    std::size_t next = 0;
    for (const Factors& factors : samplings) {
        for (int i = 0; i < 4; ++i) {
            const QSize size = sizes[next++ % sizes.size()];
            QTest::newRow(nameOf(factors) + ", " + nameOf(size))
                << jpegFile(i % 2 == 0 ? landscape(size) : randomPixels(size), withFactors(factors));
        }
        ++next;
    }
}

void EntropyDecoderTest::addRestartIntervals() {
    const QImage picture = landscape(QSize(101, 75));
    const auto add = [&](const Factors& factors, int interval, const QImage& content) {
        QTest::newRow(nameOf(factors) + ", restart interval " + QByteArray::number(interval))
            << jpegFile(content, withFactors(factors, interval));
    };
    const Factors all{{1, 1}, {1, 1}, {1, 1}};
    const Factors quarter{{2, 2}, {1, 1}, {1, 1}};
    const int rowOfAll = 13;
    const int rowOfQuarter = 7;
    for (const int interval : {1, 2, 7, rowOfAll, 130, 1000}) {
        add(all, interval, picture);
    }
    for (const int interval : {1, rowOfQuarter, 8}) {
        add(quarter, interval, picture);
    }
    for (const int interval : {1, 3, 100}) {
        add({{1, 1}}, interval, randomPixels(QSize(65, 80)));
    }
    add({{3, 1}, {1, 1}, {3, 1}}, 5, randomPixels(QSize(120, 40)));
}

void EntropyDecoderTest::addCodesAndQualities() {
    for (const int quality : {1, 3, 10, 40, 75, 90, 98, 100}) {
        for (const bool isOptimised : {false, true}) {
            JpegOptions options;
            options.quality = quality;
            options.hasOptimisedCodes = isOptimised;
            options.isSubsampled = quality != 100;
            QTest::newRow(
                "quality " + QByteArray::number(quality) + (isOptimised ? ", codes of its own" : ""))
                << jpegFile(landscape(QSize(80, 60)), options);
        }
    }
    JpegOptions largeQuantisers;
    largeQuantisers.quality = 1;
    largeQuantisers.hasLargeQuantisers = true;
    QTest::newRow("16-bit quantisers") << jpegFile(randomPixels(QSize(80, 60)), largeQuantisers);
    for (const int quality : {50, 100}) {
        JpegOptions longCodes;
        longCodes.quality = quality;
        longCodes.hasLongCodes = true;
        QTest::newRow("16-bit codes, quality " + QByteArray::number(quality))
            << jpegFile(randomPixels(QSize(80, 60)), longCodes);
    }
}

void EntropyDecoderTest::addUnusualContents() {
    JpegOptions best;
    best.quality = 100;
    best.isSubsampled = false;
    QTest::newRow("extreme DC") << jpegFile(blackAndWhiteBlocks(QSize(129, 65)), best);
    QTest::newRow("noise") << jpegFile(randomPixels(QSize(129, 65)), best);
    best.colors = JpegOptions::Colors::Grey;
    best.hasOptimisedCodes = true;
    QTest::newRow("extreme DC, grey, codes of its own")
        << jpegFile(blackAndWhiteBlocks(QSize(129, 65)), best);
    QTest::newRow("one colour") << jpegFile(plain(QSize(129, 65), QColor(200, 30, 90)));
    QTest::newRow("one colour at the edge of the range") << jpegFile(plain(QSize(33, 65), Qt::white), best);
    QTest::newRow("tiny MCUs") << fileOfTinyMcus();
    QTest::newRow("codes that never synchronise") << fileThatNeverSynchronises(QSize(97, 65));
    QTest::newRow("two thousand blocks in a row") << jpegFile(landscape(QSize(16001, 9)));
    QTest::newRow("a thousand rows of blocks") << jpegFile(landscape(QSize(3, 8001)));
    QTest::newRow("more than four megapixels")
        << jpegFile(randomPixels(QSize(256, 256)).scaled(2048, 1954), JpegOptions());
}

void EntropyDecoderTest::theCoefficientsAreThoseOfTheLibrary() {
    QFETCH(QByteArray, file);
    const FileURL photo = m_folder.write("photo.jpg", file);
    LibraryCoefficients library(file);
    QVERIFY(library.areValid());
    for (DecodingWay way : decodingWays()) {
        if (file.size() > 20'000 && way.cut.windowBytes < 100'000) {
            way.cut.windowBytes = 5003;
            way.cut.valuesPerBand *= 100;
        }
        const Comparison comparison = decodeBeside(library, photo, way);
        QVERIFY2(comparison.difference.isEmpty(), nameOf(way) + comparison.difference.toUtf8());
        QVERIFY2(comparison.isTaken, nameOf(way) + "not taken");
        QVERIFY2(comparison.isFinished, nameOf(way) + "not finished");
    }
}

/// Blocks of a few bits, so that a search is far beyond a restart when it looks for it.
void EntropyDecoderTest::shortRestartIntervalsAreFoundOneByOne() {
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::minstd_rand random(seed + 1);
        const auto upTo = [&random](unsigned most) { return static_cast<int>(random() % most) + 1; };
        JpegOptions options;
        options.colors = seed % 3 == 0 ? JpegOptions::Colors::YCbCr : JpegOptions::Colors::Grey;
        options.isSubsampled = seed % 2 == 0;
        options.hasOptimisedCodes = true;
        options.quality = upTo(30);
        options.restartInterval = upTo(4);
        const QSize size(upTo(400), upTo(200));
        const QByteArray file = jpegFile(randomSteps(size, random), options);
        LibraryCoefficients library(file);
        const FileURL photo = m_folder.write("photo.jpg", file);
        for (const DecodingWay& way : {DecodingWay{8, 1, {}}, DecodingWay{8, 2, cut(300, 40, 1000)}}) {
            const Comparison comparison = decodeBeside(library, photo, way);
            QVERIFY2(comparison.isFinished && comparison.difference.isEmpty(),
                QByteArray::number(seed) + ": " + comparison.difference.toUtf8());
        }
    }
}

void EntropyDecoderTest::aWindowMayEndAnywhere_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("restarts") << jpegFile(landscape(QSize(40, 24)), withFactors({{2, 1}, {1, 1}, {1, 1}}, 2));
    QTest::newRow("a restart before each MCU")
        << jpegFile(landscape(QSize(24, 16)), withFactors({{1, 1}}, 1));
    const QByteArray file = jpegFile(landscape(QSize(40, 24)));
    QTest::newRow("no restarts") << file;
    QTest::newRow("fill bytes before the end")
        << QByteArray(file).insert(file.size() - 2, QByteArray(3000, '\xff'));
    QTest::newRow("tiny MCUs") << fileOfTinyMcus();
}

void EntropyDecoderTest::aWindowMayEndAnywhere() {
    QFETCH(QByteArray, file);
    const FileURL photo = m_folder.write("photo.jpg", file);
    LibraryCoefficients library(file);
    const qsizetype length = file.size() - dataOf(file);
    for (qsizetype window = 1; window <= length + 1; ++window) {
        const auto bytes = static_cast<std::size_t>(window);
        const DecodingWay way{8, static_cast<int>(1 + window % 2), cut(bytes, 1 + bytes / 3, 100)};
        const Comparison comparison = decodeBeside(library, photo, way);
        QVERIFY2(comparison.isFinished && comparison.difference.isEmpty(), QByteArray::number(window));
    }
}

void EntropyDecoderTest::damagedRestartsAreNotFinished_data() {
    QTest::addColumn<QByteArray>("file");
    const QByteArray file = fileWithRestarts();
    const std::vector<qsizetype> restarts = restartsOf(file);
    for (const std::size_t index : {std::size_t{0}, restarts.size() / 2, restarts.size() - 1}) {
        const QByteArray number = " " + QByteArray::number(index);
        const qsizetype at = restarts[index];
        QTest::newRow("missing" + number) << QByteArray(file).remove(at, 2);
        QTest::newRow("twice" + number) << QByteArray(file).insert(at, file.mid(at, 2));
        QTest::newRow("missing with its interval" + number) << QByteArray(file).remove(
            at, (index + 1 < restarts.size() ? restarts[index + 1] : file.size() - 2) - at);
        QByteArray other = file;
        other[at + 1] = static_cast<char>(0xd0 | ((file[at + 1] + 3) & 7));
        QTest::newRow("another number" + number) << other;
        QByteArray restart("\xff\xd0");
        restart[1] = file[at + 1];
        QTest::newRow("a byte too early" + number) << QByteArray(file).remove(at, 2).insert(at - 3, restart);
        const qsizetype before = index == 0 ? dataOf(file) : restarts[index - 1] + 2;
        QTest::newRow("an interval too early" + number)
            << QByteArray(file).remove(at, 2).insert(before, restart);
        QTest::newRow("nothing before" + number) << QByteArray(file).remove(before, at - before);
    }
    const char next = static_cast<char>(0xd0 | ((file[restarts.back() + 1] + 1) & 7));
    QTest::newRow("one too many") << QByteArray(file).insert(file.size() - 2, QByteArray("\xff") + next);
    QTest::newRow("where there are none")
        << jpegFile(landscape(QSize(70, 50)))
               .insert(dataOf(jpegFile(landscape(QSize(70, 50)))) + 100, "\xff\xd0");
    QByteArray swapped = file;
    std::swap(swapped[restarts[1] + 1], swapped[restarts[2] + 1]);
    QTest::newRow("out of order") << swapped;
}

void EntropyDecoderTest::damagedRestartsAreNotFinished() {
    QFETCH(QByteArray, file);
    const FileURL photo = m_folder.write("photo.jpg", file);
    LibraryCoefficients library(file);
    for (const DecodingWay& way : decodingWays()) {
        const Comparison comparison = decodeBeside(library, photo, way);
        QVERIFY2(comparison.isTaken && !comparison.isFinished, nameOf(way) + "finished");
    }
}

void EntropyDecoderTest::truncatedDataAreNotFinished() {
    for (const QByteArray& file :
        {fileWithRestarts(), jpegFile(randomPixels(QSize(40, 30))), fileOfTinyMcus()}) {
        const qsizetype data = dataOf(file);
        LibraryCoefficients library(file);
        for (qsizetype length = data; length < file.size(); length += 1 + (file.size() - data) / 40) {
            const FileURL photo = m_folder.write("photo.jpg", file.first(length));
            const QByteArray ended = file.first(length) + QByteArray("\xff\xd9");
            const FileURL endedPhoto = m_folder.write("ended.jpg", ended);
            LibraryCoefficients endedLibrary(ended);
            for (std::size_t way = 0; way < decodingWays().size(); way += 3) {
                QVERIFY2(!decodeBeside(library, photo, decodingWays()[way]).isFinished,
                    QByteArray::number(length));
                const Comparison comparison = decodeBeside(endedLibrary, endedPhoto, decodingWays()[way]);
                QVERIFY2(
                    !comparison.isFinished || (endedLibrary.areValid() && comparison.difference.isEmpty()),
                    QByteArray::number(length));
            }
        }
    }
}

void EntropyDecoderTest::changedDataAreNeverFinishedWithOtherCoefficients_data() {
    QTest::addColumn<QByteArray>("file");
    JpegOptions longCodes;
    longCodes.hasLongCodes = true;
    QTest::newRow("restarts") << fileWithRestarts();
    QTest::newRow("noise") << jpegFile(randomPixels(QSize(30, 20)));
    QTest::newRow("smooth") << jpegFile(landscape(QSize(90, 60)));
    QTest::newRow("16-bit codes") << jpegFile(landscape(QSize(40, 30)), longCodes);
    QTest::newRow("never synchronises") << fileThatNeverSynchronises(QSize(40, 30));
    QTest::newRow("tiny MCUs") << fileOfTinyMcus();
}

void EntropyDecoderTest::changedDataAreNeverFinishedWithOtherCoefficients() {
    QFETCH(QByteArray, file);
    const qsizetype begin = dataOf(file);
    const qsizetype end = file.size() - 2;
    const qsizetype step = 1 + (end - begin) / 60;
    std::size_t turn = 0;
    for (qsizetype at = begin; at < end; at += step) {
        QByteArray flipped = file;
        flipped[at] = static_cast<char>(flipped[at] ^ (1 << at % 8));
        QByteArray set = file;
        set[at] = '\xff';
        for (const QByteArray& changed : {flipped, set, QByteArray(file).remove(at, 1),
                 QByteArray(file).insert(at, 'x'), QByteArray(file).remove(at, 7)}) {
            const DecodingWay& way = decodingWays()[turn++ % decodingWays().size()];
            LibraryCoefficients library(changed);
            const Comparison comparison = decodeBeside(library, m_folder.write("photo.jpg", changed), way);
            QVERIFY2(!comparison.isFinished || (library.areValid() && comparison.difference.isEmpty()),
                nameOf(way) + "changed at " + QByteArray::number(at) + " " + comparison.difference.toUtf8());
        }
    }
}

void EntropyDecoderTest::moreDataThanThePictureTakesAreNotFinished() {
    const QByteArray file = jpegFile(landscape(QSize(90, 60)));
    const QByteArray longer = QByteArray(file).insert(file.size() - 2, "more");
    const FileURL photo = m_folder.write("photo.jpg", longer);
    LibraryCoefficients library(longer);
    for (const DecodingWay& way : decodingWays()) {
        QVERIFY2(!decodeBeside(library, photo, way).isFinished, nameOf(way));
    }
}

void EntropyDecoderTest::aScanOfSomeBitsOnlyIsNotTaken() {
    QByteArray file = jpegFile(landscape(QSize(90, 60)));
    file[dataOf(file) - 1] = 8; // the bits of each coefficient that come with other scans
    QVERIFY(isRefused(m_folder.write("photo.jpg", file)));
}

void EntropyDecoderTest::factorsThatAreNotAllowedAreNotTaken() {
    const auto refusesThird = [&](const Factors& factors, char third) {
        QByteArray file = jpegFile(landscape(QSize(90, 60)), withFactors(factors));
        constexpr int thirdFactors = 17; // in a frame's segment
        file[file.indexOf(QByteArray("\xff\xc0")) + thirdFactors] = third;
        return isRefused(m_folder.write("photo.jpg", file));
    };
    const Factors wide{{4, 1}, {1, 1}, {1, 1}};
    QVERIFY(!refusesThird({{2, 2}, {2, 2}, {1, 1}}, 0x12));
    QVERIFY(refusesThird({{2, 2}, {2, 2}, {1, 1}}, 0x22)); // twelve blocks in an MCU
    const Factors tall{{1, 4}, {1, 1}, {1, 1}};
    QVERIFY(!refusesThird(wide, 0x21));
    QVERIFY(refusesThird(wide, 0x31));
    QVERIFY(!refusesThird(tall, 0x12));
    QVERIFY(refusesThird(tall, 0x13));
}

void EntropyDecoderTest::aProgressiveOrArithmeticFileIsNotTaken() {
    JpegOptions progressive;
    progressive.isProgressive = true;
    JpegOptions arithmetic;
    arithmetic.isArithmetic = true;
    JpegOptions inks;
    inks.colors = JpegOptions::Colors::Cmyk;
    for (const JpegOptions& options : {progressive, arithmetic, inks}) {
        const QByteArray file = jpegFile(landscape(QSize(90, 60)), options);
        LibraryCoefficients library(file);
        QVERIFY(!decodeBeside(library, m_folder.write("photo.jpg", file), {}).isTaken);
    }
}

QTEST_GUILESS_MAIN(EntropyDecoderTest)
#include "EntropyDecoderTest.moc"
