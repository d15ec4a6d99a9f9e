#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QTest>

using Platform::decodeImage;
using Platform::FileURL;

namespace {

/// What the stored picture looks like upright.
QImage turned(const QImage& stored, int orientation) {
    QTransform transform;
    switch (orientation) {
    case 2:
        return stored.mirrored(true, false);
    case 3:
        return stored.mirrored(true, true);
    case 4:
        return stored.mirrored(false, true);
    case 5:
        return stored.transformed(transform.rotate(90)).mirrored(true, false);
    case 6:
        return stored.transformed(transform.rotate(90));
    case 7:
        return stored.transformed(transform.rotate(90)).mirrored(false, true);
    case 8:
        return stored.transformed(transform.rotate(-90));
    default:
        return stored;
    }
}

} // namespace

class DecodedSizeTest : public QObject {
    Q_OBJECT

private slots:
    void theLongerSideIsExactlyWhatIsAskedFor_data();
    void theLongerSideIsExactlyWhatIsAskedFor();
    void aSmallPhotoIsNeverEnlarged();
    void theShorterSideIsNeverLessThanOnePixel();
    void theSizeInPointsIsTheSizeInPixels();
    void thePixelsAreOpaqueRgb32();
    void everyOrientationIsShownUpright_data();
    void everyOrientationIsShownUpright();
    void anOrientationThatExifDoesNotKnowIsUpright_data();
    void anOrientationThatExifDoesNotKnowIsUpright();
    void anOrientationOfAnotherWholeNumberTypeCounts_data();
    void anOrientationOfAnotherWholeNumberTypeCounts();
    void aLineOfPixelsIsTurnedAsWell();
    void theReducedPhotoIsTheWholePhotoReduced_data();
    void theReducedPhotoIsTheWholePhotoReduced();
    void aReducedPhotoIsNotShifted_data();
    void aReducedPhotoIsNotShifted();
    void onePlainColourStaysItselfToTheEdges();
    void aPhotoThinnerThanAPixelOfItsReductionKeepsItsColour();
    void theEmbeddedPreviewIsNeverUsed();

private:
    QImage decode(const QByteArray& file, int maxPixelSize) const;

    TemporaryFolder m_folder;
};

QImage DecodedSizeTest::decode(const QByteArray& file, int maxPixelSize) const {
    const auto image = decodeImage(m_folder.write("photo.jpg", file), maxPixelSize);
    return image ? image->pixels() : QImage();
}

void DecodedSizeTest::theLongerSideIsExactlyWhatIsAskedFor_data() {
    QTest::addColumn<QSize>("stored");
    QTest::addColumn<int>("maxPixelSize");
    QTest::addColumn<QSize>("shown");
    QTest::newRow("whole") << QSize(900, 600) << 0 << QSize(900, 600);
    QTest::newRow("one less") << QSize(900, 600) << 899 << QSize(899, 599);
    QTest::newRow("below a half") << QSize(900, 600) << 449 << QSize(449, 299);
    QTest::newRow("a half exactly") << QSize(900, 600) << 450 << QSize(450, 300);
    QTest::newRow("above a half") << QSize(900, 600) << 451 << QSize(451, 301);
    QTest::newRow("a quarter") << QSize(900, 600) << 225 << QSize(225, 150);
    QTest::newRow("an eighth, and not of whole blocks") << QSize(1601, 1067) << 200 << QSize(200, 133);
    QTest::newRow("just short of eight times") << QSize(1599, 1067) << 200 << QSize(200, 133);
    QTest::newRow("portrait") << QSize(601, 1803) << 200 << QSize(67, 200);
    QTest::newRow("square") << QSize(333, 333) << 200 << QSize(200, 200);
    QTest::newRow("tiny") << QSize(1803, 601) << 1 << QSize(1, 1);
}

void DecodedSizeTest::theLongerSideIsExactlyWhatIsAskedFor() {
    QFETCH(QSize, stored);
    QFETCH(int, maxPixelSize);
    QFETCH(QSize, shown);
    QCOMPARE(decode(jpegFile(plain(stored, Qt::gray)), maxPixelSize).size(), shown);
}

void DecodedSizeTest::aSmallPhotoIsNeverEnlarged() {
    const QByteArray file = jpegFile(plain(QSize(90, 60), Qt::gray));
    QCOMPARE(decode(file, 90).size(), QSize(90, 60));
    QCOMPARE(decode(file, 91).size(), QSize(90, 60));
    QCOMPARE(decode(file, 1200).size(), QSize(90, 60));
}

void DecodedSizeTest::theShorterSideIsNeverLessThanOnePixel() {
    QCOMPARE(decode(jpegFile(plain(QSize(3000, 2), Qt::gray)), 200).size(), QSize(200, 1));
    QCOMPARE(decode(jpegFile(plain(QSize(1, 3000), Qt::gray)), 200).size(), QSize(1, 200));
}

void DecodedSizeTest::theSizeInPointsIsTheSizeInPixels() {
    const FileURL photo = m_folder.write("photo.jpg", jpegFile(plain(QSize(900, 600), Qt::gray)));
    QCOMPARE(decodeImage(photo, 200)->size(), QSizeF(200, 133));
}

void DecodedSizeTest::thePixelsAreOpaqueRgb32() {
    for (const int maxPixelSize : {0, 100}) {
        const QImage pixels = decode(jpegFile(landscape(QSize(300, 200))), maxPixelSize);
        QCOMPARE(pixels.format(), QImage::Format_RGB32);
        for (int y = 0; y < pixels.height(); ++y) {
            const auto* row = reinterpret_cast<const quint32*>(pixels.constScanLine(y));
            QVERIFY(std::all_of(row, row + pixels.width(), [](quint32 pixel) { return pixel >> 24 == 255; }));
        }
    }
}

void DecodedSizeTest::everyOrientationIsShownUpright_data() {
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("maxPixelSize");
    for (int orientation = 1; orientation <= 8; ++orientation) {
        for (const int maxPixelSize : {0, 200, 150, 48}) {
            QTest::addRow("%d at %d", orientation, maxPixelSize) << orientation << maxPixelSize;
        }
    }
}

void DecodedSizeTest::everyOrientationIsShownUpright() {
    QFETCH(int, orientation);
    QFETCH(int, maxPixelSize);
    JpegOptions options;
    options.orientation = orientation;
    const QImage stored = quadrants(QSize(304, 208));
    const QImage shown = decode(jpegFile(stored, options), maxPixelSize);
    const QImage expected = turned(stored, orientation);

    const QSize size = maxPixelSize == 0
                           ? expected.size()
                           : expected.size().scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio);
    QVERIFY(std::abs(shown.width() - size.width()) <= 1);
    QVERIFY(std::abs(shown.height() - size.height()) <= 1);
    for (const QPointF part :
        {QPointF(0.25, 0.25), QPointF(0.75, 0.25), QPointF(0.25, 0.75), QPointF(0.75, 0.75)}) {
        const auto pixel = [part](const QImage& image) {
            return image.pixelColor(
                static_cast<int>(part.x() * image.width()), static_cast<int>(part.y() * image.height()));
        };
        QVERIFY(isNear(pixel(shown), pixel(expected)));
    }
}

void DecodedSizeTest::anOrientationThatExifDoesNotKnowIsUpright_data() {
    QTest::addColumn<int>("orientation");
    for (const int orientation : {9, 255, 65535}) {
        QTest::addRow("%d", orientation) << orientation;
    }
}

void DecodedSizeTest::anOrientationThatExifDoesNotKnowIsUpright() {
    QFETCH(int, orientation);
    JpegOptions options;
    options.orientation = orientation;
    const QImage shown = decode(jpegFile(quadrants(QSize(304, 208)), options), 0);
    QCOMPARE(shown.size(), QSize(304, 208));
    QVERIFY(isNear(shown.pixelColor(0, 0), Qt::red));
}

void DecodedSizeTest::anOrientationOfAnotherWholeNumberTypeCounts_data() {
    QTest::addColumn<char>("type");
    QTest::addColumn<QSize>("size");
    QTest::newRow("byte") << '\1' << QSize(208, 304);
    QTest::newRow("long") << '\4' << QSize(208, 304);
    QTest::newRow("signed long") << '\11' << QSize(208, 304);
    QTest::newRow("text") << '\2' << QSize(304, 208);
}

void DecodedSizeTest::anOrientationOfAnotherWholeNumberTypeCounts() {
    QFETCH(char, type);
    QFETCH(QSize, size);
    JpegOptions options;
    options.orientation = 6;
    QByteArray file = jpegFile(quadrants(QSize(304, 208)), options);
    const qsizetype tag = file.indexOf(QByteArray("\x12\x01\x03\x00", 4));
    file[tag + 2] = type;
    QCOMPARE(decode(file, 0).size(), size);
}

void DecodedSizeTest::aLineOfPixelsIsTurnedAsWell() {
    QImage line(QSize(1, 100), QImage::Format_RGB32);
    for (int y = 0; y < line.height(); ++y) {
        line.setPixel(0, y, y < 50 ? 0xff000000 : 0xffffffff);
    }
    JpegOptions options;
    options.orientation = 6;
    const QImage shown = decode(jpegFile(line, options), 0);
    QCOMPARE(shown.size(), QSize(100, 1));
    QVERIFY(isNear(shown.pixelColor(0, 0), Qt::white));
    QVERIFY(isNear(shown.pixelColor(99, 0), Qt::black));
}

void DecodedSizeTest::theReducedPhotoIsTheWholePhotoReduced_data() {
    QTest::addColumn<int>("maxPixelSize");
    for (const int maxPixelSize : {1500, 1067, 800, 799, 500, 333, 200, 64}) {
        QTest::addRow("%d", maxPixelSize) << maxPixelSize;
    }
}

void DecodedSizeTest::theReducedPhotoIsTheWholePhotoReduced() {
    QFETCH(int, maxPixelSize);
    const QByteArray file = jpegFile(landscape(QSize(1601, 1067)));
    const QImage shown = decode(file, maxPixelSize);
    const QImage reference =
        decode(file, 0).scaled(shown.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const double difference = meanDifference(shown, reference);
    QVERIFY2(difference < 2.0, qPrintable(QString::number(difference)));
}

void DecodedSizeTest::aReducedPhotoIsNotShifted_data() {
    QTest::addColumn<int>("maxPixelSize");
    for (const int maxPixelSize : {900, 800, 500, 400, 250, 200, 120}) {
        QTest::addRow("%d", maxPixelSize) << maxPixelSize;
    }
}

void DecodedSizeTest::aReducedPhotoIsNotShifted() {
    QFETCH(int, maxPixelSize);
    // The edge between black and white is in the middle of the photo, so that of the reduced one's columns
    // just as much must be light as dark, to a small part of a pixel.
    QImage halves(QSize(1602, 64), QImage::Format_RGB32);
    for (int y = 0; y < halves.height(); ++y) {
        for (int x = 0; x < halves.width(); ++x) {
            halves.setPixel(x, y, 2 * x < halves.width() ? 0xff000000 : 0xffffffff);
        }
    }
    const QImage shown = decode(jpegFile(halves), maxPixelSize);
    double light = 0;
    for (int x = 0; x < shown.width(); ++x) {
        light += qGray(shown.pixel(x, 0)) / 255.0;
    }
    QVERIFY2(std::abs(light - shown.width() / 2.0) < 0.1, qPrintable(QString::number(light)));
}

void DecodedSizeTest::onePlainColourStaysItselfToTheEdges() {
    const QColor color(200, 100, 50);
    const QImage shown = decode(jpegFile(plain(QSize(1603, 901), color)), 200);
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            QVERIFY(isNear(shown.pixelColor(x, y), color, 3));
        }
    }
}

void DecodedSizeTest::aPhotoThinnerThanAPixelOfItsReductionKeepsItsColour() {
    const QColor color(200, 100, 50);
    for (const QSize size : {QSize(1, 30000), QSize(30000, 1), QSize(30000, 60)}) {
        for (const int maxPixelSize : {200, 1200, 20000}) {
            const QImage shown = decode(jpegFile(plain(size, color)), maxPixelSize);
            QVERIFY(isNear(shown.pixelColor(shown.rect().center()), color, 3));
        }
    }
}

void DecodedSizeTest::theEmbeddedPreviewIsNeverUsed() {
    JpegOptions options;
    options.preview = jpegFile(plain(QSize(160, 120), Qt::red));
    const QByteArray file = jpegFile(plain(QSize(640, 480), Qt::blue), options);
    for (const int maxPixelSize : {0, 200, 160, 100}) {
        QVERIFY(isNear(decode(file, maxPixelSize).pixelColor(50, 50), Qt::blue));
    }
}

QTEST_GUILESS_MAIN(DecodedSizeTest)
#include "DecodedSizeTest.moc"
