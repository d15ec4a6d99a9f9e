#include "Platform/Halving.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

using Platform::halved;
using Platform::Task;

namespace {

QImage noise(QSize size, unsigned seed) {
    std::mt19937 random(seed);
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, 0xff000000 | static_cast<QRgb>(random()));
        }
    }
    return image;
}

/// The mean of those of the two by two that there are; half and more goes up.
int meanOf(const QImage& picture, int x, int y, int (*channel)(QRgb)) {
    int sum = 0;
    int count = 0;
    for (int row = 2 * y; row < std::min(2 * y + 2, picture.height()); ++row) {
        for (int column = 2 * x; column < std::min(2 * x + 2, picture.width()); ++column) {
            sum += channel(picture.pixel(column, row));
            ++count;
        }
    }
    return (2 * sum + count) / (2 * count);
}

/// What halving gives, worked out pixel by pixel.
QImage expectedHalf(const QImage& picture) {
    QImage half((picture.width() + 1) / 2, (picture.height() + 1) / 2, QImage::Format_RGB32);
    for (int y = 0; y < half.height(); ++y) {
        for (int x = 0; x < half.width(); ++x) {
            half.setPixel(x, y,
                qRgb(meanOf(picture, x, y, qRed), meanOf(picture, x, y, qGreen),
                    meanOf(picture, x, y, qBlue)));
        }
    }
    return half;
}

QImage twoByTwo(const std::array<QRgb, 4>& pixels) {
    QImage image(2, 2, QImage::Format_RGB32);
    for (int i = 0; i < 4; ++i) {
        image.setPixel(i % 2, i / 2, pixels[static_cast<std::size_t>(i)]);
    }
    return image;
}

} // namespace

class HalvingTest : public QObject {
    Q_OBJECT

private slots:
    void eachPixelIsTheRoundedMeanOfFour_data() {
        QTest::addColumn<QRgb>("one");
        QTest::addColumn<QRgb>("other");
        QTest::addColumn<int>("ones");
        QTest::addColumn<QRgb>("mean");
        const QRgb black = qRgb(0, 0, 0);
        const QRgb white = qRgb(255, 255, 255);
        QTest::newRow("a quarter goes down") << qRgb(1, 1, 1) << black << 1 << black;
        QTest::newRow("a half goes up") << qRgb(1, 1, 1) << black << 2 << qRgb(1, 1, 1);
        QTest::newRow("three quarters go up") << qRgb(1, 1, 1) << black << 3 << qRgb(1, 1, 1);
        QTest::newRow("black and white") << white << black << 2 << qRgb(128, 128, 128);
        QTest::newRow("nearly white") << white << qRgb(254, 254, 254) << 1 << qRgb(254, 254, 254);
        QTest::newRow("red stays red") << qRgb(255, 0, 0) << black << 3 << qRgb(191, 0, 0);
        QTest::newRow("green stays green") << qRgb(0, 255, 0) << black << 3 << qRgb(0, 191, 0);
        QTest::newRow("blue stays blue") << qRgb(0, 0, 255) << black << 3 << qRgb(0, 0, 191);
    }

    void eachPixelIsTheRoundedMeanOfFour() {
        QFETCH(QRgb, one);
        QFETCH(QRgb, other);
        QFETCH(int, ones);
        QFETCH(QRgb, mean);
        std::array<QRgb, 4> pixels{other, other, other, other};
        std::fill_n(pixels.begin(), ones, one);
        for (int turn = 0; turn < 4; ++turn) {
            std::rotate(pixels.begin(), pixels.begin() + 1, pixels.end());
            const QImage half = halved(twoByTwo(pixels));
            QCOMPARE(half.size(), QSize(1, 1));
            QCOMPARE(half.pixel(0, 0), mean);
        }
    }

    void everySizeIsHalvedAndRoundedUp_data() {
        QTest::addColumn<QSize>("size");
        for (const QSize size : {QSize(1, 1), QSize(1, 2), QSize(1, 9), QSize(2, 1), QSize(9, 1), QSize(2, 3),
                 QSize(3, 2), QSize(3, 3), QSize(8, 6), QSize(7, 200), QSize(201, 5), QSize(131, 133)}) {
            QTest::addRow("%d x %d", size.width(), size.height()) << size;
        }
    }

    void everySizeIsHalvedAndRoundedUp() {
        QFETCH(QSize, size);
        const QImage picture = noise(size, 1);
        const QImage half = halved(picture);
        QCOMPARE(half.size(), QSize((size.width() + 1) / 2, (size.height() + 1) / 2));
        QCOMPARE(half, expectedHalf(picture));
        QCOMPARE(half.format(), QImage::Format_RGB32);
    }

    void everyFlatColourStaysAsItIs() {
        QImage picture(5, 3, QImage::Format_RGB32);
        for (int value = 0; value < 256; ++value) {
            for (const QRgb colour : {qRgb(value, 255 - value, 7), qRgb(255 - value, 7, value),
                     qRgb(7, value, 255 - value), qRgb(value, value, value)}) {
                picture.fill(colour);
                QImage half(3, 2, QImage::Format_RGB32);
                half.fill(colour);
                QCOMPARE(halved(picture), half);
            }
        }
    }

    void rowsMayHaveBytesBehindTheirPixels() {
        const QImage picture = noise({5, 4}, 2);
        std::vector<uchar> bytes(256, 0xff);
        for (int y = 0; y < 4; ++y) {
            std::copy_n(picture.constScanLine(y), 5 * 4, bytes.data() + static_cast<std::size_t>(y) * 64);
        }
        const QImage padded(bytes.data(), 5, 4, 64, QImage::Format_RGB32);
        QCOMPARE(halved(padded), expectedHalf(picture));
    }

    void thePictureItselfIsLeftAsItWas() {
        const QImage picture = noise({6, 6}, 3);
        const QImage before = picture.copy();
        halved(picture);
        QCOMPARE(picture, before);
    }

    void aCancelledTaskGivesNoPicture() {
        const Task task;
        QVERIFY(!halved(noise({4, 4}, 4), task).isNull());
        task.cancel();
        QVERIFY(halved(noise({4, 4}, 4), task).isNull());
    }

    void noPictureHasNoHalf() { QVERIFY(halved(QImage()).isNull()); }
};

QTEST_APPLESS_MAIN(HalvingTest)
#include "HalvingTest.moc"
