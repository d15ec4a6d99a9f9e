#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/Platform/ImageDecoder/FaultyPlugin.h"
#include "Tests/Support/IccProfile.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QDataStream>
#include <QImageReader>
#include <QImageWriter>
#include <QTest>
#include <QtEndian>

#include <filesystem>
#include <thread>
#include <utility>

using Platform::decodeImage;

class OtherFormatTest : public QObject {
    Q_OBJECT

private slots:
    void aPictureOfAnotherFormatIsShown_data();
    void aPictureOfAnotherFormatIsShown();
    void itIsReducedLikeAPhoto_data();
    void itIsReducedLikeAPhoto();
    void theFirstFrameOfAnAnimationIsShown();
    void transparentPartsAreShownOverBlack();
    void greyAndPalettesAreShown();
    void itsProfileIsApplied();
    void anEndlessProfileIsNot();
    void aPictureOverQtsOwnLimitIsShown();
    void itIsTurnedUpright_data();
    void itIsTurnedUpright();
    void tooManyPixelsAreRefused_data();
    void tooManyPixelsAreRefused();
    void tooLargeAFileIsRefused();
    void whatNobodyHasUnderThatNameIsNoPhoto_data();
    void whatNobodyHasUnderThatNameIsNoPhoto();
    void aPluginThatHangsIsAbandonedWithThePhoto();
    void aPluginThatThrowsShowsNothing();

private:
    QImage decode(const QByteArray& file, int maxPixelSize = 0) const;
    bool isPartial(const QByteArray& file) const {
        return decodeImage(m_folder.write("photo.jpg", file), 0)->origin().isPartial;
    }

    TemporaryFolder m_folder;
};

namespace {

QByteArray encoded(const QImage& picture, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, format);
    writer.setQuality(95);
    writer.write(picture);
    return bytes;
}

/// 2 x 1 pixels: a red frame, then a blue one.
QByteArray animation() {
    return QByteArray::fromHex("474946383961"         // GIF89a
                               "02000100800000"       // 2 x 1, a palette of two
                               "ff00000000ff"         // red, blue
                               "21f904000a000000"     // shown for 0.1 s
                               "2c000000000200010000" // a frame of 2 x 1
                               "0202040a00"           // first colour twice
                               "21f904000a000000"     // the next
                               "2c000000000200010000"
                               "02024c0a00" // second colour twice
                               "3b");
}

/// As PNG has it: the polynomial of IEEE 802.3, lowest bit first.
quint32 cyclicRedundancyCheck(const QByteArray& bytes) {
    quint32 check = ~quint32{0};
    for (const char byte : bytes) {
        check ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            check = (check >> 1) ^ ((check & 1) != 0 ? 0xedb88320 : 0);
        }
    }
    return ~check;
}

/// The header of a PNG file, which says how large its picture is, and the beginning of the pixels.
QByteArray pngHeader(QSize size, int bits, int colorType) {
    QByteArray content("IHDR");
    QDataStream stream(&content, QIODevice::Append);
    stream << quint32(size.width()) << quint32(size.height()) << quint8(bits) << quint8(colorType);
    stream << quint8(0) << quint8(0) << quint8(0); // the only methods, not interlaced
    QByteArray file("\x89PNG\r\n\x1a\n");
    QDataStream chunk(&file, QIODevice::Append);
    chunk << quint32(content.size() - 4);
    chunk.writeRawData(content.constData(), static_cast<int>(content.size()));
    chunk << cyclicRedundancyCheck(content) << quint32(1000);
    return file + "IDAT" + QByteArray(1000, '\x55');
}

} // namespace

QImage OtherFormatTest::decode(const QByteArray& file, int maxPixelSize) const {
    const auto image = decodeImage(m_folder.write("photo.jpg", file), maxPixelSize);
    return image ? image->pixels() : QImage();
}

void OtherFormatTest::aPictureOfAnotherFormatIsShown_data() {
    QTest::addColumn<QByteArray>("format");
    for (const char* format : {"png", "webp", "tiff", "bmp"}) {
        QTest::newRow(format) << QByteArray(format);
    }
}

void OtherFormatTest::aPictureOfAnotherFormatIsShown() {
    QFETCH(QByteArray, format);
    if (!QImageWriter::supportedImageFormats().contains(format)) {
        QSKIP("Qt has no plugin for this format here");
    }
    const QImage picture = landscape(QSize(160, 120));
    const QImage shown = decode(encoded(picture, format));
    QCOMPARE(shown.size(), picture.size());
    QCOMPARE(shown.format(), QImage::Format_RGB32);
    QVERIFY(meanDifference(shown, picture) < 4);
    QVERIFY(!isPartial(encoded(picture, format)));
}

void OtherFormatTest::itIsReducedLikeAPhoto_data() {
    aPictureOfAnotherFormatIsShown_data();
}

void OtherFormatTest::itIsReducedLikeAPhoto() {
    QFETCH(QByteArray, format);
    if (!QImageWriter::supportedImageFormats().contains(format)) {
        QSKIP("Qt has no plugin for this format here");
    }
    const QImage picture = landscape(QSize(450, 301));
    const QImage shown = decode(encoded(picture, format), 200);
    QCOMPARE(shown.size(), QSize(200, 134));
    QVERIFY(
        meanDifference(shown, picture.scaled(200, 134, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)) < 4);
}

void OtherFormatTest::theFirstFrameOfAnAnimationIsShown() {
    if (!QImageReader::supportedImageFormats().contains("gif")) {
        QSKIP("Qt has no plugin for this format here");
    }
    const QImage shown = decode(animation());
    QCOMPARE(shown.size(), QSize(2, 1));
    QCOMPARE(shown.pixelColor(0, 0), QColor(Qt::red));
    QCOMPARE(shown.pixelColor(1, 0), QColor(Qt::red));
    QVERIFY(!isPartial(animation()));
}

void OtherFormatTest::transparentPartsAreShownOverBlack() {
    QImage picture(QSize(30, 10), QImage::Format_ARGB32);
    picture.fill(qRgba(200, 100, 50, 255));
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 10; x < 20; ++x) {
            picture.setPixel(x, y, qRgba(200, 100, 50, 0));
        }
        for (int x = 20; x < 30; ++x) {
            picture.setPixel(x, y, qRgba(200, 100, 50, 128));
        }
    }
    const QImage shown = decode(encoded(picture, "png"));
    QCOMPARE(shown.pixel(5, 5), qRgb(200, 100, 50));
    QCOMPARE(shown.pixel(15, 5), qRgb(0, 0, 0));
    QVERIFY(isNear(shown.pixelColor(25, 5), QColor(100, 50, 25), 1));
}

void OtherFormatTest::greyAndPalettesAreShown() {
    const QImage picture = plain(QSize(20, 10), QColor(77, 77, 77));
    for (const QImage::Format format : {QImage::Format_Grayscale8, QImage::Format_Grayscale16,
             QImage::Format_Indexed8, QImage::Format_RGBX64}) {
        const QImage shown = decode(encoded(picture.convertToFormat(format), "png"));
        QCOMPARE(shown.pixel(5, 5), qRgb(77, 77, 77));
    }
}

void OtherFormatTest::itsProfileIsApplied() {
    QImage picture = plain(QSize(20, 10), Qt::red);
    picture.setColorSpace(QColorSpace::fromIccProfile(IccProfile::rotatedRgb()));
    QVERIFY(isNear(decode(encoded(picture, "png")).pixelColor(5, 5), Qt::green, 8));
}

void OtherFormatTest::anEndlessProfileIsNot() {
    for (const auto& [size, color] : {std::pair(1, Qt::green), std::pair(20, Qt::red)}) {
        QByteArray profile = IccProfile::rotatedRgb();
        profile.append(QByteArray(qsizetype{size} << 20, '\0'));
        qToBigEndian(static_cast<quint32>(profile.size()), profile.data()); // ICC.1, 7.2.2
        QImage picture = plain(QSize(20, 10), Qt::red);
        picture.setColorSpace(QColorSpace::fromIccProfile(profile));
        QVERIFY(picture.colorSpace().isValid());
        QVERIFY(isNear(decode(encoded(picture, "tiff")).pixelColor(5, 5), color, 8));
    }
}

void OtherFormatTest::aPictureOverQtsOwnLimitIsShown() {
    QImage picture(QSize(7000, 5000), QImage::Format_Grayscale8);
    picture.fill(200);
    const QByteArray file =
        encoded(picture.convertToFormat(QImage::Format_RGB32), "png"); // 134 MiB of pixels
    QCOMPARE(decode(file, 200).size(), QSize(200, 143));
}

void OtherFormatTest::itIsTurnedUpright_data() {
    QTest::addColumn<int>("transformation");
    for (int transformation = 0; transformation < 8; ++transformation) {
        QTest::addRow("%d", transformation) << transformation;
    }
}

void OtherFormatTest::itIsTurnedUpright() {
    QFETCH(int, transformation);
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    QImageWriter writer(&buffer, "tiff");
    writer.setTransformation(QImageIOHandler::Transformations(transformation));
    if (!writer.write(quadrants(QSize(40, 20)))) {
        QSKIP("Qt has no plugin for this format here");
    }
    buffer.seek(0);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    QCOMPARE(decode(buffer.data()), reader.read().convertToFormat(QImage::Format_RGB32));
}

void OtherFormatTest::tooManyPixelsAreRefused_data() {
    constexpr int grey = 0;
    constexpr int colorAndAlpha = 6;
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("more than any camera gives") << pngHeader(QSize(30000, 20000), 1, grey);
    QTest::newRow("too much memory") << pngHeader(QSize(15000, 10000), 16, colorAndAlpha);
    QTest::newRow("too wide") << pngHeader(QSize(1'000'000, 512), 1, grey);
    QTest::newRow("too high") << pngHeader(QSize(1, 1'000'000), 1, grey);
}

void OtherFormatTest::tooManyPixelsAreRefused() {
    QFETCH(QByteArray, file);
    const auto image = decodeImage(m_folder.write("photo.jpg", file), 200);
    QVERIFY(!image);
    QCOMPARE(
        image.error().localizedDescription(), QStringLiteral("“photo.jpg” has too many pixels to be shown."));
}

void OtherFormatTest::tooLargeAFileIsRefused() {
    const auto photo = m_folder.write("photo.jpg", encoded(landscape(QSize(160, 120)), "png"));
    QVERIFY(decodeImage(photo, 200));
    std::filesystem::resize_file(photo.path(), (std::uintmax_t{1} << 30) + 1);
    QVERIFY(!decodeImage(photo, 200));
}

void OtherFormatTest::whatNobodyHasUnderThatNameIsNoPhoto_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("drawing") << QByteArray(
        "<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10'/>");
    for (const char* format : {"ppm", "xbm", "ico"}) {
        QTest::newRow(format) << encoded(landscape(QSize(160, 120)), format);
    }
}

void OtherFormatTest::whatNobodyHasUnderThatNameIsNoPhoto() {
    QFETCH(QByteArray, file);
    QVERIFY(decode(file).isNull());
}

void OtherFormatTest::aPluginThatHangsIsAbandonedWithThePhoto() {
    const auto photo = m_folder.write("photo.jpg", FaultyPlugin::hangingSignature());
    const Platform::Task task;
    std::thread canceller([&task] {
        while (FaultyPlugin::hangingThreads() == 0) {
        }
        task.cancel();
    });
    const auto image = decodeImage(photo, 200, task);
    QVERIFY(!image);
    QCOMPARE(
        image.error().localizedDescription(), QStringLiteral("The decoding of “photo.jpg” was cancelled."));
    QCOMPARE(FaultyPlugin::hangingThreads(), 1);
    canceller.join();
    FaultyPlugin::release();
    QTRY_COMPARE(FaultyPlugin::hangingThreads(), 0);
}

void OtherFormatTest::aPluginThatThrowsShowsNothing() {
    const auto image = decodeImage(m_folder.write("photo.jpg", FaultyPlugin::throwingSignature()), 200);
    QVERIFY(!image);
    QCOMPARE(image.error().localizedDescription(),
        QStringLiteral("“photo.jpg” is not a picture that can be read."));
}

QTEST_GUILESS_MAIN(OtherFormatTest)
#include "OtherFormatTest.moc"
