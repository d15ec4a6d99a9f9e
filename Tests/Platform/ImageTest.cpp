#include "Platform/Image.h"

#include "Platform/Halving.h"
#include "Tests/Support/Pictures.h"

#include <QTest>

#include <algorithm>
#include <vector>

using Platform::Image;
using Platform::Task;

namespace {

std::vector<QSize> levelSizes(const Image& image) {
    std::vector<QSize> sizes;
    for (const QImage& level : image.levels()) {
        sizes.push_back(level.size());
    }
    return sizes;
}

qsizetype totalBytes(const Image& image) {
    qsizetype bytes = 0;
    for (const QImage& level : image.levels()) {
        bytes += level.sizeInBytes();
    }
    return bytes;
}

} // namespace

class ImageTest : public QObject {
    Q_OBJECT

private slots:
    void noPictureHasNothing() {
        for (const Image& image : {Image(), Image(QImage()), Image().withSize({10, 10})}) {
            QVERIFY(image.isNull());
            QVERIFY(image.pixels().isNull());
            QVERIFY(image.levels().empty());
            QCOMPARE(image.size(), QSizeF(0, 0));
            QVERIFY(!image.origin().isReduced);
            QVERIFY(!image.origin().isPartial);
            QVERIFY(image == Image());
        }
    }

    void aPictureIsAsLargeAsItsPixels() {
        const Image image(plain({200, 133}, Qt::red));
        QVERIFY(!image.isNull());
        QCOMPARE(image.size(), QSizeF(200, 133));
        QCOMPARE(image.pixels(), plain({200, 133}, Qt::red));
    }

    void aPictureRemembersHowMuchOfItsPhotoItIs() {
        const Image reduced(plain({2, 2}, Qt::red), {.isReduced = true, .isPartial = false});
        QVERIFY(reduced.origin().isReduced && !reduced.origin().isPartial);
        const Image partial(plain({2, 2}, Qt::red), {.isReduced = false, .isPartial = true});
        QVERIFY(!partial.origin().isReduced && partial.origin().isPartial);
        QVERIFY(!partial.withSize({4, 4}).origin().isReduced && partial.withSize({4, 4}).origin().isPartial);
    }

    void theLevelsGoDownToALongerSideOf256_data() {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<std::vector<QSize>>("sizes");
        const auto row = [](QSize size, const std::vector<QSize>& halves) {
            std::vector<QSize> sizes{size};
            sizes.insert(sizes.end(), halves.begin(), halves.end());
            QTest::addRow("%d x %d", size.width(), size.height()) << size << sizes;
        };
        row({1, 1}, {});
        row({200, 133}, {});
        row({256, 256}, {});
        row({257, 1}, {{129, 1}});
        row({1, 513}, {{1, 257}, {1, 129}});
        row({1200, 801}, {{600, 401}, {300, 201}, {150, 101}});
        row({900, 1200}, {{450, 600}, {225, 300}, {113, 150}});
        row({2400, 1600}, {{1200, 800}, {600, 400}, {300, 200}, {150, 100}});
    }

    void theLevelsGoDownToALongerSideOf256() {
        QFETCH(QSize, size);
        QFETCH(std::vector<QSize>, sizes);
        QCOMPARE(levelSizes(Image(plain(size, Qt::red))), sizes);
    }

    void eachLevelIsTheHalfOfTheOneBefore() {
        const Image image(landscape({1201, 799}));
        QCOMPARE(image.levels().size(), std::size_t(4));
        QCOMPARE(image.levels().front(), image.pixels());
        for (std::size_t level = 1; level < image.levels().size(); ++level) {
            QCOMPARE(image.levels()[level], Platform::halved(image.levels()[level - 1]));
        }
    }

    void theLevelsAddAThirdToTheMemory() {
        for (const QSize size : {QSize(200, 133), QSize(257, 257), QSize(1200, 801), QSize(2400, 1600),
                 QSize(4096, 2731), QSize(300, 3000)}) {
            const Image image(plain(size, Qt::red));
            const double share =
                static_cast<double>(totalBytes(image)) / static_cast<double>(image.pixels().sizeInBytes());
            QVERIFY2(share <= 1.4, qPrintable(QString::number(share)));
        }
    }

    void theFirstLevelSharesThePixelsHandedIn() {
        const QImage pixels = plain({1200, 800}, Qt::red);
        QCOMPARE(Image(pixels).pixels().constBits(), pixels.constBits());
    }

    void aCancelledTaskLeavesThePictureWithFewerLevels() {
        const Task task;
        task.cancel();
        const Image image(plain({1200, 800}, Qt::red), {}, task);
        QCOMPARE(levelSizes(image), std::vector{QSize(1200, 800)});
        QCOMPARE(image.size(), QSizeF(1200, 800));
    }

    void atAnotherSizeThePixelsAreShared() {
        const Image image(landscape({1200, 800}));
        const Image smaller = image.withSize({600, 400});
        QCOMPARE(smaller.size(), QSizeF(600, 400));
        QCOMPARE(image.size(), QSizeF(1200, 800));
        QCOMPARE(smaller.levels().size(), image.levels().size());
        for (std::size_t level = 0; level < image.levels().size(); ++level) {
            QCOMPARE(smaller.levels()[level].constBits(), image.levels()[level].constBits());
        }
    }

    void onlyTheSameObjectIsEqual() {
        const QImage pixels = plain({20, 20}, Qt::red);
        const Image image(pixels);
        QVERIFY(Image(image) == image);
        QVERIFY(Image(pixels) != image);
        QVERIFY(image.withSize(image.size()) != image);
        QVERIFY(image != Image());
    }
};

QTEST_APPLESS_MAIN(ImageTest)
#include "ImageTest.moc"
