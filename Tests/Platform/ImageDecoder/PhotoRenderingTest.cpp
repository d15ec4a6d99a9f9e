#include "Platform/ImageDecoder/PhotoRendering.h"

#include <QTest>

#include <algorithm>

using namespace Platform;

namespace {

/// White rows that end before the picture does.
class EndingRows final : public RowSource {
public:
    explicit EndingRows(int count) : m_left(count) {}

    int readRows(uchar* rows, qsizetype bytesPerLine, int count) override {
        const int given = std::min(count, m_left);
        for (int row = 0; row < given; ++row) {
            std::fill_n(rows + row * bytesPerLine, width * bytesPerPixel, uchar{255});
        }
        m_left -= given;
        return given;
    }

    static constexpr int width = 40;

private:
    int m_left;
};

constexpr QSize size(EndingRows::width, 100);

Result<QImage> render(EndingRows& rows, QSize reduced, int orientation) {
    const ColorTransform colors(ColorTransform::Pixels::Rgb, {});
    ThreadTeam team(2);
    return Platform::render(
        {rows, size, QSizeF(size), orientation}, reduced, colors, "photo.jpg", Task(), team);
}

} // namespace

class PhotoRenderingTest : public QObject {
    Q_OBJECT

private slots:
    void rowsThatNeverCameAreBlack_data();
    void rowsThatNeverCameAreBlack();
    void rowsThatNeverCameAreBlackInAReducedPhotoToo();
    void withoutAnyRowThereIsNoPicture();
    void moreThanTheMemoryHoldsIsAnError();
};

void PhotoRenderingTest::rowsThatNeverCameAreBlack_data() {
    QTest::addColumn<int>("orientation");
    QTest::addColumn<QPoint>("firstRow");
    QTest::addColumn<QPoint>("lastRow");
    QTest::newRow("1") << 1 << QPoint(0, 0) << QPoint(0, 99);
    QTest::newRow("2") << 2 << QPoint(0, 0) << QPoint(0, 99);
    QTest::newRow("3") << 3 << QPoint(0, 99) << QPoint(0, 0);
    QTest::newRow("4") << 4 << QPoint(0, 99) << QPoint(0, 0);
    QTest::newRow("5") << 5 << QPoint(0, 0) << QPoint(99, 0);
    QTest::newRow("6") << 6 << QPoint(99, 0) << QPoint(0, 0);
    QTest::newRow("7") << 7 << QPoint(99, 0) << QPoint(0, 0);
    QTest::newRow("8") << 8 << QPoint(0, 0) << QPoint(99, 0);
}

void PhotoRenderingTest::rowsThatNeverCameAreBlack() {
    QFETCH(int, orientation);
    QFETCH(QPoint, firstRow);
    QFETCH(QPoint, lastRow);
    constexpr int rowsThere = 50;
    EndingRows rows(rowsThere);
    const auto image = render(rows, size, orientation);
    QCOMPARE(image->pixel(firstRow), 0xffffffff);
    QCOMPARE(image->pixel(lastRow), 0xff000000);
    int white = 0;
    for (int y = 0; y < image->height(); ++y) {
        for (int x = 0; x < image->width(); ++x) {
            white += image->pixel(x, y) == 0xffffffff;
        }
    }
    QCOMPARE(white, rowsThere * EndingRows::width);
}

void PhotoRenderingTest::rowsThatNeverCameAreBlackInAReducedPhotoToo() {
    EndingRows rows(50);
    const auto image = render(rows, QSize(10, 25), 1);
    QCOMPARE(image->pixel(5, 0), 0xffffffff);
    QCOMPARE(image->pixel(5, 9), 0xffffffff);
    QCOMPARE(image->pixel(5, 14), 0xff000000);
    QCOMPARE(image->pixel(5, 24), 0xff000000);
}

void PhotoRenderingTest::withoutAnyRowThereIsNoPicture() {
    EndingRows rows(0);
    const auto image = render(rows, size, 1);
    QVERIFY(image);
    QVERIFY(image->isNull());
}

void PhotoRenderingTest::moreThanTheMemoryHoldsIsAnError() {
    EndingRows rows(50);
    const auto image = render(rows, QSize(1 << 30, 1 << 30), 1);
    QVERIFY(!image);
    QCOMPARE(image.error().localizedDescription(),
        QStringLiteral("There is too little memory to show “photo.jpg”."));
}

QTEST_GUILESS_MAIN(PhotoRenderingTest)
#include "PhotoRenderingTest.moc"
