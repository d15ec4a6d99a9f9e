#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/Support/IccProfile.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QImageWriter>
#include <QTest>

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
    void aPictureOverQtsOwnLimitIsShown();
    void tooManyPixelsAreRefused();
    void aDrawingIsNoPhoto();

private:
    QImage decode(const QByteArray& file, int maxPixelSize = 0) const;

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

void OtherFormatTest::aPictureOverQtsOwnLimitIsShown() {
    QImage picture(QSize(7000, 5000), QImage::Format_Grayscale8);
    picture.fill(200);
    const QByteArray file =
        encoded(picture.convertToFormat(QImage::Format_RGB32), "png"); // 134 MiB of pixels
    QCOMPARE(decode(file, 200).size(), QSize(200, 143));
}

void OtherFormatTest::tooManyPixelsAreRefused() {
    const auto image = decodeImage(m_folder.write("photo.jpg", "P6\n30000 30000\n255\n\1\2\3"), 200);
    QVERIFY(!image);
    QCOMPARE(
        image.error().localizedDescription(), QStringLiteral("“photo.jpg” has too many pixels to be shown."));
}

void OtherFormatTest::aDrawingIsNoPhoto() {
    QVERIFY(decode("<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10'/>").isNull());
}

QTEST_GUILESS_MAIN(OtherFormatTest)
#include "OtherFormatTest.moc"
