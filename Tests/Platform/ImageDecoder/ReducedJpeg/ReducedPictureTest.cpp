#include "Platform/ImageDecoder/ExifTags.h"
#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Platform/ImageDecoder/PhotoRendering.h"
#include "Platform/ImageDecoder/ReducedJpeg/ReducedJpeg.h"
#include "Platform/ImageDecoder/RowResampler.h"
#include "Tests/Support/IccProfile.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QImageReader>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>

using namespace Platform;

namespace {

/// Smooth shapes, some detail, some noise and a few edges.
QImage photo(QSize size) {
    QImage picture = landscape(size);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(0.05);
    const QImage noise = randomPixels(QSize(128, 128));
    for (int y = 0; y < size.height(); y += noise.height()) {
        for (int x = 0; x < size.width(); x += noise.width()) {
            painter.drawImage(x, y, noise);
        }
    }
    painter.setOpacity(1);
    painter.setPen(QPen(Qt::black, size.width() / 60.0));
    painter.setBrush(QColor(230, 220, 200));
    painter.drawEllipse(
        QRectF(size.width() * 0.2, size.height() * 0.3, size.width() * 0.3, size.height() * 0.5));
    painter.fillRect(
        QRectF(size.width() * 0.6, size.height() * 0.1, size.width() * 0.21, size.height() * 0.63),
        QColor(30, 60, 120));
    return picture;
}

/// Each pixel the mean of two by two: no lens draws edges as sharp as the pixels of a large photo.
QImage softened(const QImage& picture) {
    QImage result = picture;
    for (int y = 0; y + 1 < picture.height(); ++y) {
        for (int x = 0; x + 1 < picture.width(); ++x) {
            const std::array<QRgb, 4> pixels{picture.pixel(x, y), picture.pixel(x + 1, y),
                picture.pixel(x, y + 1), picture.pixel(x + 1, y + 1)};
            const auto mean = [&](int (*channel)(QRgb)) {
                return std::accumulate(pixels.begin(), pixels.end(), 0, [channel](int sum, QRgb pixel) {
                    return sum + channel(pixel);
                }) / 4;
            };
            result.setPixel(x, y, qRgb(mean(qRed), mean(qGreen), mean(qBlue)));
        }
    }
    return result;
}

int denominatorOf(QSize size, int maxPixelSize) {
    for (const int denominator : {8, 4, 2}) {
        if (std::max(size.width(), size.height()) >= maxPixelSize * denominator) {
            return denominator;
        }
    }
    return 1;
}

/// The picture as libjpeg decodes it at the same scale, and then reduced and shown in the same way.
QImage libraryPicture(const FileURL& url, int maxPixelSize) {
    Result<ReadOnlyFile> file = ReadOnlyFile::open(url);
    const Task task;
    ThreadTeam team(1);
    JpegDecompressor jpeg(*file, task);
    if (!jpeg.readHeader()) {
        return {};
    }
    const int denominator = denominatorOf(jpeg.size(), maxPixelSize);
    const ExifTags exif = readExifTags(jpeg.exif());
    const auto pixels = jpeg.components() == JpegDecompressor::Components::Grey ? ColorTransform::Pixels::Grey
                                                                                : ColorTransform::Pixels::Rgb;
    const ColorTransform colors(pixels, jpeg.iccProfile(), exif.isAdobeRgb);
    if (!jpeg.start(denominator, 0)) {
        return {};
    }
    const StoredPicture picture{jpeg, jpeg.scaledSize(), QSizeF(jpeg.size()) / denominator, exif.orientation};
    return *render(
        picture, fittedSize(jpeg.size(), maxPixelSize), colors, url.lastPathComponent(), task, team);
}

/// All rows of a file by our own decoder, so many at a time; empty where it does not decode it to its end.
std::vector<uchar> rowsOf(
    const FileURL& url, int denominator, int atATime, const EntropyDecoder::Cut& cut = {}, int threads = 2) {
    Result<ReadOnlyFile> file = ReadOnlyFile::open(url);
    JpegDecompressor jpeg(*file, Task());
    const std::optional<JpegFrame> frame = jpeg.readHeader() ? jpeg.frame(denominator) : std::nullopt;
    const std::optional<McuCodes> codes = frame ? McuCodes::make(*frame) : std::nullopt;
    if (!codes) {
        return {};
    }
    ThreadTeam team(threads);
    ReducedJpeg rows(
        *frame, *codes, [&jpeg](std::span<uchar> buffer) { return jpeg.readData(buffer); }, team, Task(),
        cut);
    const qsizetype bytesPerLine = qsizetype{frame->scaledSize.width()} * bytesPerPixel;
    const int height = frame->scaledSize.height();
    std::vector<uchar> pixels(static_cast<std::size_t>(bytesPerLine * height));
    int read = 0;
    while (const int count = rows.readRows(
               pixels.data() + read * bytesPerLine, bytesPerLine, std::min(atATime, height - read))) {
        read += count;
    }
    return rows.isFinished() && read == height ? pixels : std::vector<uchar>();
}

int largestDifference(const QImage& a, const QImage& b) {
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return largest;
}

/// Nobody sees it.
void verifyAlike(const QImage& picture, const QImage& reference) {
    QVERIFY(!picture.isNull());
    QCOMPARE(picture.size(), reference.size());
    const double mean = meanDifference(picture, reference);
    const int largest = largestDifference(picture, reference);
    QVERIFY2(mean <= 1 && largest <= 8,
        qPrintable(QStringLiteral("mean difference %1, largest %2").arg(mean).arg(largest)));
}

/// Where the n-th marker of a kind is, counted from 1; the end where there are fewer.
qsizetype markerIn(const QByteArray& file, char code, int n) {
    qsizetype at = -1;
    for (int i = 0; i < n; ++i) {
        at = file.indexOf(QByteArray("\xff") + code, at + 1);
        if (at < 0) {
            return file.size();
        }
    }
    return at;
}

constexpr char startOfScan = '\xda';

JpegOptions withFactors(const std::vector<JpegOptions::Factors>& factors) {
    JpegOptions options;
    options.factors = factors;
    return options;
}

JpegOptions progressive(int quality) {
    JpegOptions options;
    options.isProgressive = true;
    options.quality = quality;
    return options;
}

} // namespace

class ReducedPictureTest : public QObject {
    Q_OBJECT

private slots:
    void aPictureIsAlikeThatOfTheLibrary_data();
    void aPictureIsAlikeThatOfTheLibrary();
    void aLargePictureIsAlikeThatOfTheLibrary_data();
    void aLargePictureIsAlikeThatOfTheLibrary();
    void aDamagedFileGivesThePictureOfTheLibrary_data();
    void aDamagedFileGivesThePictureOfTheLibrary();
    void aWholePictureIsNotPartial_data();
    void aWholePictureIsNotPartial();
    void aTruncatedPictureIsPartial();
    void aProgressivePictureIsAlikeThatOfAllItsScans_data();
    void aProgressivePictureIsAlikeThatOfAllItsScans();
    void theFirstScansAreEnoughForASmallPicture();
    void moreScansAreReadWhereTheFirstDoNotSuffice();
    void rowsAreTheSameHoweverManyAreReadAtATime_data();
    void rowsAreTheSameHoweverManyAreReadAtATime();

private:
    TemporaryFolder m_folder;
};

void ReducedPictureTest::aPictureIsAlikeThatOfTheLibrary_data() {
    QTest::addColumn<QByteArray>("file");
    const auto add = [](const QByteArray& name, QSize size, const JpegOptions& options) {
        QTest::newRow(name + " " + QByteArray::number(size.width()) + "x" + QByteArray::number(size.height()))
            << jpegFile(photo(size), options);
    };
    for (const QSize size :
        {QSize(401, 300), QSize(500, 777), QSize(1001, 667), QSize(1500, 999), QSize(1203, 1609)}) {
        add("4:2:0", size, {});
    }
    const std::vector<std::pair<QByteArray, std::vector<JpegOptions::Factors>>> samplings = {
        {"4:4:4", {{1, 1}, {1, 1}, {1, 1}}}, {"4:2:2", {{2, 1}, {1, 1}, {1, 1}}},
        {"4:4:0", {{1, 2}, {1, 1}, {1, 1}}}, {"4:1:1", {{4, 1}, {1, 1}, {1, 1}}},
        {"3x1", {{3, 1}, {1, 1}, {1, 1}}}, {"1x4", {{1, 4}, {1, 1}, {1, 1}}},
        {"4x2", {{4, 2}, {1, 1}, {1, 1}}}, {"chroma of its own", {{2, 2}, {2, 1}, {1, 2}}}};
    for (const auto& [name, factors] : samplings) {
        for (const QSize size : {QSize(501, 333), QSize(605, 901), QSize(1611, 400)}) {
            add(name, size, withFactors(factors));
        }
    }
    for (const QSize size : {QSize(501, 333), QSize(901, 605), QSize(1611, 400)}) {
        JpegOptions grey;
        grey.colors = JpegOptions::Colors::Grey;
        add("grey", size, grey);
        grey.factors = {{2, 2}};
        grey.iccProfile = IccProfile::linearGrey();
        add("grey with a profile", size, grey);
        JpegOptions rgb;
        rgb.colors = JpegOptions::Colors::Rgb;
        add("RGB", size, rgb);
        JpegOptions profile;
        profile.iccProfile = IccProfile::rotatedRgb();
        add("with a profile", size, profile);
    }
    for (int orientation = 1; orientation <= 8; ++orientation) {
        JpegOptions turned;
        turned.orientation = orientation;
        add("orientation " + QByteArray::number(orientation), QSize(823, 611), turned);
    }
    for (const int quality : {20, 60, 100}) {
        JpegOptions options;
        options.quality = quality;
        add("quality " + QByteArray::number(quality), QSize(901, 605), options);
    }
    JpegOptions restarts;
    restarts.restartInterval = 9;
    add("restarts", QSize(901, 605), restarts);
}

void ReducedPictureTest::aPictureIsAlikeThatOfTheLibrary() {
    QFETCH(QByteArray, file);
    const FileURL url = m_folder.write("photo.jpg", file);
    const auto image = decodeImage(url, 200);
    QVERIFY(image);
    verifyAlike(image->pixels(), libraryPicture(url, 200));
    const int denominator = denominatorOf(QImageReader(url.path().c_str()).size(), 200);
    QVERIFY2(!rowsOf(url, denominator, 1000).empty(), "not decoded by our own decoder");
}

void ReducedPictureTest::aLargePictureIsAlikeThatOfTheLibrary_data() {
    QTest::addColumn<int>("maxPixelSize");
    QTest::newRow("200") << 200;
    QTest::newRow("600") << 600;
    QTest::newRow("1200") << 1200;
}

void ReducedPictureTest::aLargePictureIsAlikeThatOfTheLibrary() {
    QFETCH(int, maxPixelSize);
    static const QByteArray file = jpegFile(softened(photo(QSize(2450, 1700))));
    const FileURL url = m_folder.write("photo.jpg", file);
    const auto image = decodeImage(url, maxPixelSize);
    QVERIFY(image);
    verifyAlike(image->pixels(), libraryPicture(url, maxPixelSize));
    const int denominator = denominatorOf(QSize(2450, 1700), maxPixelSize);
    QVERIFY2(!rowsOf(url, denominator, 1000).empty(), "not decoded by our own decoder");
}

void ReducedPictureTest::aDamagedFileGivesThePictureOfTheLibrary_data() {
    QTest::addColumn<QByteArray>("file");
    JpegOptions options;
    options.restartInterval = 11;
    const QByteArray plain = jpegFile(photo(QSize(823, 611)));
    const QByteArray restarts = jpegFile(photo(QSize(823, 611)), options);
    for (const auto& [name, file] :
        {std::pair(QByteArray("plain"), plain), std::pair(QByteArray("restarts"), restarts)}) {
        const qsizetype scan = markerIn(file, startOfScan, 1) + 14;
        const qsizetype middle = (scan + file.size()) / 2;
        QTest::newRow(name + ", truncated early") << file.first(scan + 500);
        QTest::newRow(name + ", truncated") << file.first(middle);
        QTest::newRow(name + ", without its end") << file.first(file.size() - 2);
        QTest::newRow(name + ", a byte missing") << QByteArray(file).remove(middle, 1);
        QTest::newRow(name + ", bytes missing") << QByteArray(file).remove(middle, 1000);
        QTest::newRow(name + ", zeros") << QByteArray(file).replace(middle, 300, QByteArray(300, '\0'));
        QTest::newRow(name + ", marker") << QByteArray(file).insert(middle, "\xff\xc4");
        QTest::newRow(name + ", bytes before its end") << QByteArray(file).insert(file.size() - 2, "more");
    }
    QTest::newRow("a restart missing") << QByteArray(restarts).remove(markerIn(restarts, '\xd2', 2), 2);
}

void ReducedPictureTest::aDamagedFileGivesThePictureOfTheLibrary() {
    QFETCH(QByteArray, file);
    const FileURL url = m_folder.write("photo.jpg", file);
    for (const int maxPixelSize : {100, 200, 400}) {
        const auto image = decodeImage(url, maxPixelSize);
        QVERIFY(image);
        const QImage reference = libraryPicture(url, maxPixelSize);
        if (rowsOf(url, denominatorOf(QSize(823, 611), maxPixelSize), 1000).empty()) {
            QCOMPARE(image->pixels(), reference);
        } else {
            verifyAlike(image->pixels(), reference);
        }
    }
}

void ReducedPictureTest::aWholePictureIsNotPartial_data() {
    QTest::addColumn<QByteArray>("file");
    const QByteArray file = jpegFile(photo(QSize(823, 611)));
    QTest::newRow("whole") << file;
    QTest::newRow("larger than what is read at a time") << jpegFile(randomPixels(QSize(900, 700)));
    QTest::newRow("progressive") << jpegFile(photo(QSize(823, 611)), progressive(95));
    QTest::newRow("more behind its end") << file + QByteArray(1000, 'x');
    QTest::newRow("bytes before its end") << QByteArray(file).insert(file.size() - 2, "more");
    QTest::newRow("a byte changed") << QByteArray(file).replace(file.size() / 2, 4, "chng");
}

void ReducedPictureTest::aWholePictureIsNotPartial() {
    QFETCH(QByteArray, file);
    const FileURL url = m_folder.write("photo.jpg", file);
    for (const int maxPixelSize : {100, 200, 400, 0}) {
        const auto image = decodeImage(url, maxPixelSize);
        QVERIFY(image);
        QVERIFY2(!image->origin().isPartial, QByteArray::number(maxPixelSize));
    }
}

void ReducedPictureTest::aTruncatedPictureIsPartial() {
    const QByteArray file = jpegFile(photo(QSize(823, 611)));
    const FileURL url = m_folder.write("photo.jpg", file.first(file.size() / 2));
    for (const int maxPixelSize : {100, 200, 400, 0}) {
        const auto image = decodeImage(url, maxPixelSize);
        QVERIFY(image);
        QVERIFY2(image->origin().isPartial, QByteArray::number(maxPixelSize));
    }
}

void ReducedPictureTest::aProgressivePictureIsAlikeThatOfAllItsScans_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("inOneScan"); // of the same coefficients
    const QImage picture = photo(QSize(1700, 1000));
    const auto add = [&](const QByteArray& name, JpegOptions options) {
        for (const int quality : {10, 80, 95}) {
            options.quality = quality;
            options.isProgressive = false;
            const QByteArray inOneScan = jpegFile(picture, options);
            options.isProgressive = true;
            QTest::newRow(name + ", quality " + QByteArray::number(quality))
                << jpegFile(picture, options) << inOneScan;
        }
    };
    JpegOptions grey;
    grey.colors = JpegOptions::Colors::Grey;
    add("grey", grey);
    add("4:4:4", withFactors({{1, 1}, {1, 1}, {1, 1}}));
    add("4:2:2", withFactors({{2, 1}, {1, 1}, {1, 1}}));
    add("4:2:0", {});
}

void ReducedPictureTest::aProgressivePictureIsAlikeThatOfAllItsScans() {
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, inOneScan);
    const auto image = decodeImage(m_folder.write("photo.jpg", file), 200);
    QVERIFY(image);
    verifyAlike(image->pixels(), libraryPicture(m_folder.write("whole.jpg", inOneScan), 200));
}

void ReducedPictureTest::theFirstScansAreEnoughForASmallPicture() {
    JpegOptions options = progressive(95);
    options.isSubsampled = false;
    const QByteArray file = jpegFile(photo(QSize(1700, 1000)), options);
    const auto whole = decodeImage(m_folder.write("whole.jpg", file), 200);
    QVERIFY(whole);
    // The DC coefficients come first, but for a bit that counts for less than a level. What follows is missing.
    const qsizetype second = markerIn(file, startOfScan, 2);
    const FileURL url = m_folder.write("first.jpg", file.first(second));
    const auto first = decodeImage(url, 200);
    QVERIFY(first);
    QVERIFY(!first->origin().isPartial);
    QCOMPARE(first->pixels(), whole->pixels());
    // Of a larger picture it is a part.
    const auto larger = decodeImage(url, 400);
    QVERIFY(larger);
    QVERIFY(larger->origin().isPartial);

    // And what is wrong behind them does not matter.
    const auto damaged = decodeImage(
        m_folder.write("damaged.jpg", QByteArray(file).replace(second, 2, "\xff\xff\x01\x02")), 200);
    QVERIFY(damaged);
    QCOMPARE(damaged->pixels(), whole->pixels());
}

void ReducedPictureTest::moreScansAreReadWhereTheFirstDoNotSuffice() {
    const QByteArray file = jpegFile(photo(QSize(1700, 1000)), progressive(20));
    const auto whole = decodeImage(m_folder.write("whole.jpg", file), 200);
    QVERIFY(whole);
    const auto first =
        decodeImage(m_folder.write("first.jpg", file.first(markerIn(file, startOfScan, 2))), 200);
    QVERIFY(first);
    QVERIFY(first->origin().isPartial);
    QVERIFY(first->pixels() != whole->pixels());
}

void ReducedPictureTest::rowsAreTheSameHoweverManyAreReadAtATime_data() {
    QTest::addColumn<QByteArray>("file");
    const QImage picture = photo(QSize(333, 251));
    JpegOptions grey;
    grey.colors = JpegOptions::Colors::Grey;
    QTest::newRow("grey") << jpegFile(picture, grey);
    QTest::newRow("4:2:0") << jpegFile(picture);
    QTest::newRow("4:4:4") << jpegFile(picture, withFactors({{1, 1}, {1, 1}, {1, 1}}));
    QTest::newRow("4:2:2") << jpegFile(picture, withFactors({{2, 1}, {1, 1}, {1, 1}}));
    QTest::newRow("4:4:0") << jpegFile(picture, withFactors({{1, 2}, {1, 1}, {1, 1}}));
    QTest::newRow("1x4") << jpegFile(picture, withFactors({{1, 4}, {1, 1}, {1, 1}}));
    QTest::newRow("2x2 2x1 1x2") << jpegFile(picture, withFactors({{2, 2}, {2, 1}, {1, 2}}));
}

void ReducedPictureTest::rowsAreTheSameHoweverManyAreReadAtATime() {
    QFETCH(QByteArray, file);
    const FileURL url = m_folder.write("photo.jpg", file);
    const EntropyDecoder::Cut small{.windowBytes = 300, .segmentBytes = 20, .valuesPerBand = 1};
    const EntropyDecoder::Cut medium{.windowBytes = 3000, .segmentBytes = 200, .valuesPerBand = 3000};
    for (const int denominator : {8, 4, 2}) {
        const std::vector<uchar> all = rowsOf(url, denominator, 1000, {}, 1);
        QVERIFY(!all.empty());
        for (const int atATime : {1, 3, 1000}) {
            for (const EntropyDecoder::Cut& cut : {EntropyDecoder::Cut(), small, medium}) {
                QVERIFY(rowsOf(url, denominator, atATime, cut, 3) == all);
            }
        }
    }
}

QTEST_GUILESS_MAIN(ReducedPictureTest)
#include "ReducedPictureTest.moc"
