#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/Support/IccProfile.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QTest>

using Platform::decodeImage;

class DecodedColorTest : public QObject {
    Q_OBJECT

private slots:
    void aPhotoWithoutProfileIsSrgb();
    void anEmbeddedProfileIsApplied_data();
    void anEmbeddedProfileIsApplied();
    void aWideGamutIsBroughtIntoSrgb();
    void anSrgbProfileChangesNothing();
    void aGreyProfileIsApplied();
    void greyWithoutProfileIsShownAsItIs();
    void inksWithoutProfileLeaveWhatLightTheyLeave();
    void anInkProfileIsApplied();
    void aProfileForOtherPixelsIsIgnored_data();
    void aProfileForOtherPixelsIsIgnored();
    void aDamagedProfileIsIgnored_data();
    void aDamagedProfileIsIgnored();
    void exifMayCallAPhotoWithoutProfileAdobeRgb();
    void anEmbeddedProfileCountsMoreThanExif();
    void noColourJumpsBetweenSizes_data();
    void noColourJumpsBetweenSizes();
    void everyOrientationHasItsColoursConverted();

private:
    QImage decode(const QByteArray& file, int maxPixelSize = 0) const;
    QColor shown(const QColor& stored, const JpegOptions& options, int maxPixelSize = 0) const;

    TemporaryFolder m_folder;
};

namespace {

JpegOptions withProfile(const QByteArray& profile, JpegOptions::Colors colors = JpegOptions::Colors::YCbCr) {
    JpegOptions options;
    options.colors = colors;
    options.iccProfile = profile;
    return options;
}

} // namespace

QImage DecodedColorTest::decode(const QByteArray& file, int maxPixelSize) const {
    const auto image = decodeImage(m_folder.write("photo.jpg", file), maxPixelSize);
    return image ? image->pixels() : QImage();
}

QColor DecodedColorTest::shown(const QColor& stored, const JpegOptions& options, int maxPixelSize) const {
    return decode(jpegFile(plain(QSize(32, 32), stored), options), maxPixelSize).pixelColor(8, 8);
}

void DecodedColorTest::aPhotoWithoutProfileIsSrgb() {
    for (const QColor color :
        {QColor(10, 200, 90), QColor(255, 255, 255), QColor(1, 2, 3), QColor(250, 20, 250)}) {
        QVERIFY(isNear(shown(color, {}), color, 3));
    }
}

void DecodedColorTest::anEmbeddedProfileIsApplied_data() {
    QTest::addColumn<QByteArray>("profile");
    QTest::newRow("primaries and curves") << IccProfile::rotatedRgb();
    QTest::newRow("table") << IccProfile::rotatedRgbTable();
}

void DecodedColorTest::anEmbeddedProfileIsApplied() {
    QFETCH(QByteArray, profile);
    const JpegOptions options = withProfile(profile);
    QVERIFY(isNear(shown(Qt::red, options), Qt::green, 16));
    QVERIFY(isNear(shown(Qt::green, options), Qt::blue, 16));
    QVERIFY(isNear(shown(Qt::blue, options), Qt::red, 16));
    QVERIFY(isNear(shown(QColor(128, 128, 128), options), QColor(128, 128, 128), 4));
}

void DecodedColorTest::aWideGamutIsBroughtIntoSrgb() {
    // Figures from Adobe RGB (1998) and IEC 61966-2-1 by hand: linear light through both matrices.
    const JpegOptions options = withProfile(IccProfile::adobeRgb());
    QVERIFY(isNear(shown(QColor(200, 100, 100), options), QColor(227, 100, 100), 4));
    QVERIFY(isNear(shown(QColor(128, 128, 128), options), QColor(129, 129, 129), 3));
    QVERIFY(isNear(shown(QColor(100, 200, 100), options), QColor(0, 201, 92), 6));
}

void DecodedColorTest::anSrgbProfileChangesNothing() {
    const QImage picture = landscape(QSize(200, 150));
    QCOMPARE(decode(jpegFile(picture, withProfile(IccProfile::srgb()))), decode(jpegFile(picture)));
}

void DecodedColorTest::aGreyProfileIsApplied() {
    const JpegOptions options = withProfile(IccProfile::linearGrey(), JpegOptions::Colors::Grey);
    QVERIFY(isNear(shown(QColor(55, 55, 55), options), QColor(128, 128, 128), 4)); // 0.216 of the light
    QVERIFY(isNear(shown(Qt::white, options), Qt::white, 2));
    QVERIFY(isNear(shown(Qt::black, options), Qt::black, 2));
}

void DecodedColorTest::greyWithoutProfileIsShownAsItIs() {
    JpegOptions options;
    options.colors = JpegOptions::Colors::Grey;
    QVERIFY(isNear(shown(QColor(55, 55, 55), options), QColor(55, 55, 55), 2));
}

void DecodedColorTest::inksWithoutProfileLeaveWhatLightTheyLeave() {
    JpegOptions options;
    options.colors = JpegOptions::Colors::Cmyk;
    for (const QColor color :
        {QColor(Qt::cyan), QColor(Qt::white), QColor(Qt::black), QColor(200, 100, 50)}) {
        QVERIFY(isNear(shown(color, options), color, 4));
    }
}

void DecodedColorTest::anInkProfileIsApplied() {
    const JpegOptions options = withProfile(IccProfile::redCyan(), JpegOptions::Colors::Cmyk);
    QVERIFY(isNear(shown(Qt::cyan, options), Qt::red, 16));
    QVERIFY(isNear(shown(Qt::white, options), Qt::white, 4));
    const QImage pixels = decode(jpegFile(plain(QSize(32, 32), QColor(40, 40, 40)), options));
    QCOMPARE(*reinterpret_cast<const quint32*>(pixels.constScanLine(0)) >> 24, 255U);
}

void DecodedColorTest::aProfileForOtherPixelsIsIgnored_data() {
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<int>("colors");
    const auto number = [](JpegOptions::Colors colors) { return static_cast<int>(colors); };
    QTest::newRow("inks on RGB") << IccProfile::redCyan() << number(JpegOptions::Colors::YCbCr);
    QTest::newRow("grey on RGB") << IccProfile::linearGrey() << number(JpegOptions::Colors::YCbCr);
    QTest::newRow("RGB on grey") << IccProfile::rotatedRgb() << number(JpegOptions::Colors::Grey);
    QTest::newRow("RGB on inks") << IccProfile::rotatedRgb() << number(JpegOptions::Colors::Cmyk);
}

void DecodedColorTest::aProfileForOtherPixelsIsIgnored() {
    QFETCH(QByteArray, profile);
    QFETCH(int, colors);
    const QColor color(90, 90, 90);
    QVERIFY(isNear(shown(color, withProfile(profile, static_cast<JpegOptions::Colors>(colors))), color, 4));
}

void DecodedColorTest::aDamagedProfileIsIgnored_data() {
    QTest::addColumn<QByteArray>("profile");
    QTest::newRow("noise") << QByteArray(3000, 'x');
    QTest::newRow("cut short") << IccProfile::rotatedRgb().left(140);
    QTest::newRow("one byte") << QByteArray(1, '\0');
}

void DecodedColorTest::aDamagedProfileIsIgnored() {
    QFETCH(QByteArray, profile);
    QVERIFY(isNear(shown(QColor(200, 60, 30), withProfile(profile)), QColor(200, 60, 30), 4));
}

void DecodedColorTest::exifMayCallAPhotoWithoutProfileAdobeRgb() {
    JpegOptions options;
    options.isAdobeRgb = true;
    const QColor stored(200, 100, 100);
    QVERIFY(isNear(shown(stored, options), shown(stored, withProfile(IccProfile::adobeRgb())), 1));
    QVERIFY(!isNear(shown(stored, options), stored, 10));
}

void DecodedColorTest::anEmbeddedProfileCountsMoreThanExif() {
    JpegOptions options = withProfile(IccProfile::srgb());
    options.isAdobeRgb = true;
    QVERIFY(isNear(shown(QColor(200, 100, 100), options), QColor(200, 100, 100), 3));
}

void DecodedColorTest::noColourJumpsBetweenSizes_data() {
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<bool>("isAdobeRgb");
    QTest::addColumn<int>("colors");
    const auto number = [](JpegOptions::Colors colors) { return static_cast<int>(colors); };
    QTest::newRow("none") << QByteArray() << false << number(JpegOptions::Colors::YCbCr);
    QTest::newRow("wide gamut") << IccProfile::adobeRgb() << false << number(JpegOptions::Colors::YCbCr);
    QTest::newRow("table") << IccProfile::rotatedRgbTable() << false << number(JpegOptions::Colors::YCbCr);
    QTest::newRow("by EXIF") << QByteArray() << true << number(JpegOptions::Colors::YCbCr);
    QTest::newRow("grey") << IccProfile::linearGrey() << false << number(JpegOptions::Colors::Grey);
    QTest::newRow("inks") << IccProfile::redCyan() << false << number(JpegOptions::Colors::Cmyk);
}

void DecodedColorTest::noColourJumpsBetweenSizes() {
    QFETCH(QByteArray, profile);
    QFETCH(bool, isAdobeRgb);
    QFETCH(int, colors);
    JpegOptions options = withProfile(profile, static_cast<JpegOptions::Colors>(colors));
    options.isAdobeRgb = isAdobeRgb;
    const QByteArray file = jpegFile(plain(QSize(1300, 700), QColor(180, 90, 140)), options);
    const QColor whole = decode(file, 0).pixelColor(600, 300);
    for (const int maxPixelSize : {200, 650, 1200}) {
        const QImage reduced = decode(file, maxPixelSize);
        QVERIFY(isNear(reduced.pixelColor(reduced.width() / 2, reduced.height() / 2), whole, 1));
    }
}

void DecodedColorTest::everyOrientationHasItsColoursConverted() {
    JpegOptions options = withProfile(IccProfile::rotatedRgb());
    for (int orientation = 1; orientation <= 8; ++orientation) {
        options.orientation = orientation;
        QVERIFY(isNear(shown(Qt::red, options), Qt::green, 16));
    }
}

QTEST_GUILESS_MAIN(DecodedColorTest)
#include "DecodedColorTest.moc"
