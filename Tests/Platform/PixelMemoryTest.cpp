#include "Platform/PixelMemory.h"

#include <QTest>

#include <unistd.h>

#include <fstream>
#include <vector>

using Platform::undefinedPicture;

namespace {

/// Resident memory of this process, in bytes.
qint64 residentMemory() {
    qint64 pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

} // namespace

class PixelMemoryTest : public QObject {
    Q_OBJECT

private slots:
    void everyPixelCanBeWrittenAndRead() {
        for (const QSize size :
            {QSize(1, 1), QSize(723, 725), QSize(725, 725), QSize(1200, 900), QSize(30000, 41)}) {
            QImage picture = undefinedPicture(size);
            QCOMPARE(picture.size(), size);
            QCOMPARE(picture.format(), QImage::Format_RGB32);
            picture.fill(Qt::black);
            picture.setPixel(size.width() - 1, size.height() - 1, 0xff123456);
            QCOMPARE(picture.pixel(size.width() - 1, size.height() - 1), 0xff123456);
            QCOMPARE(picture.pixel(0, 0), size == QSize(1, 1) ? 0xff123456 : 0xff000000);
        }
    }

    void writingDoesNotCopyIt() {
        QImage picture = undefinedPicture({2000, 2000});
        const uchar* const place = picture.constBits();
        picture.fill(Qt::red);
        QCOMPARE(picture.constBits(), place);
    }

    void aCopyOutlivesTheOriginal() {
        QImage copy;
        {
            QImage picture = undefinedPicture({2000, 2000});
            picture.fill(Qt::red);
            copy = picture;
        }
        QCOMPARE(copy.pixelColor(1999, 1999), QColor(Qt::red));
    }

    void itsMemoryGoesBackWithIt() {
        constexpr QSize size(4000, 3000);
        constexpr qint64 bytes = qint64{4000} * 3000 * 4;
        std::vector<QImage> pictures;
        const qint64 before = residentMemory();
        for (int count = 0; count < 4; ++count) {
            pictures.push_back(undefinedPicture(size));
            pictures.back().fill(Qt::red);
        }
        QVERIFY(residentMemory() - before > 4 * bytes * 9 / 10);
        pictures.erase(pictures.begin(), pictures.begin() + 3); // the newest stays
        QVERIFY(residentMemory() - before < 2 * bytes);
    }

    void anEmptySizeAndOneBeyondAllMemoryGiveNone() {
        QVERIFY(undefinedPicture({}).isNull());
        QVERIFY(undefinedPicture({0, 5000}).isNull());
        QVERIFY(undefinedPicture({1 << 30, 1 << 30}).isNull());
    }
};

QTEST_APPLESS_MAIN(PixelMemoryTest)
#include "PixelMemoryTest.moc"
