#include "Platform/PixelMemory.h"

#include "Tests/Support/ResidentMemory.h"
#include "Tests/Support/Sanitizers.h"

#include <QTest>

#include <vector>

using Platform::undefinedPicture;

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

    void itsMemoryGoesBackWithIt_data() {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("count");
        QTest::newRow("large") << QSize(4000, 3000) << 4;
        QTest::newRow("small") << QSize(200, 133) << 500;
        QTest::newRow("half of a small one") << QSize(100, 67) << 2000;
    }

    void itsMemoryGoesBackWithIt() {
        if (isThreadSanitized) {
            QSKIP("ThreadSanitizer keeps memory of its own for every mapping");
        }
        QFETCH(QSize, size);
        QFETCH(int, count);
        const qint64 bytes = qint64{size.width()} * size.height() * 4 * count;
        std::vector<QImage> pictures;
        const qint64 before = residentMemory();
        for (int made = 0; made < count; ++made) {
            pictures.push_back(undefinedPicture(size));
            pictures.back().fill(Qt::red);
        }
        QVERIFY(residentMemory() - before > bytes * 9 / 10);
        for (int i = 0; i < count; ++i) {
            pictures[i] = i % 4 == 3 ? pictures[i] : QImage(); // those that stay lie between those that go
        }
        QVERIFY(residentMemory() - before < bytes / 2);
    }

    void anEmptySizeAndOneBeyondAllMemoryGiveNone() {
        QVERIFY(undefinedPicture({}).isNull());
        QVERIFY(undefinedPicture({0, 5000}).isNull());
        QVERIFY(undefinedPicture({1 << 30, 1 << 30}).isNull());
    }
};

QTEST_APPLESS_MAIN(PixelMemoryTest)
#include "PixelMemoryTest.moc"
