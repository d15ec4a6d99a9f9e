#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QTest>

#include <X11/keysym.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

using Platform::FileURL;

/// The window shows, at once or soon, what the picture shows, but for the way it was resampled.
#define SHOWS(expected)                                                                                      \
    QVERIFY2(showsSoon(expected), qPrintable(QStringLiteral("differs by %1").arg(m_difference)))

namespace {

constexpr double resamplingError = 1.5; // mean difference of the channels, out of 255
constexpr int handedInPixels = 1200;

/// Where the whole photo belongs in the window, by the rules for zooming and moving. Vertical coordinates grow
/// downward.
class PhotoPlace {
public:
    /// Fitted and centred.
    PhotoPlace(QSizeF photo, QSizeF window)
        : m_window(window), m_size(photo.scaled(window, Qt::KeepAspectRatio)) {
        clamp();
    }

    /// Each notch of the wheel makes it larger, or smaller, by a tenth, and leaves what is at that point there.
    void zoom(int notches, QPointF point) {
        const double factor = notches > 0 ? 1.1 : 0.9;
        for (int notch = 0; notch < std::abs(notches); ++notch) {
            m_corner = point + (m_corner - point) * factor;
            m_size *= factor;
            clamp();
        }
    }

    void move(QPointF way) {
        m_corner += way;
        clamp();
    }

    QRectF rect() const { return {m_corner, m_size}; }

private:
    void clamp() {
        m_corner = {clamped(m_corner.x(), m_size.width(), m_window.width()),
            clamped(m_corner.y(), m_size.height(), m_window.height())};
    }

    static double clamped(double start, double length, double window) {
        return length > window ? std::clamp(start, window - length, 0.0) : (window - length) / 2;
    }

    QSizeF m_window;
    QSizeF m_size;
    QPointF m_corner;
};

/// The window with nothing but that picture in that place.
QImage drawn(const QImage& picture, const QRectF& place, QSize window) {
    QImage drawing(window, QImage::Format_RGB32);
    drawing.fill(Qt::black);
    QPainter painter(&drawing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, picture);
    return drawing;
}

/// The part of the window that no panel covers.
QImage clearPart(const QImage& window) {
    constexpr int panels = 60;
    return window.copy(window.rect().adjusted(0, panels, 0, -panels));
}

/// The whole of a photo with its longer side in so many pixels; 0: all that it has.
QImage decoded(const FileURL& photo, int longerSide) {
    const auto image = Platform::decodeImage(photo, longerSide);
    return image ? image->pixels() : QImage();
}

/// Large, and with detail so fine that a smaller decode has nothing of it.
QByteArray detailedPhoto() {
    static const QByteArray photo = jpegFile(landscape({5000, 3334}));
    return photo;
}

/// The largest file of the collection's; nothing where there is no collection.
QByteArray cameraPhoto() {
    const QDir folder(QStringLiteral(PHOTO_COLLECTION "/camera"));
    const QFileInfoList photos = folder.entryInfoList(QDir::Files, QDir::Size);
    QFile photo(photos.isEmpty() ? QString() : photos.first().filePath());
    return photo.open(QIODevice::ReadOnly) ? photo.readAll() : QByteArray();
}

} // namespace

/// Zooming and moving with the mouse, and the pixels that the zoom then brings to the screen.
class ZoomTest : public SessionFixture {
    Q_OBJECT

private slots:
    void aPhotoZoomedInShowsThePixelsOfItsFile_data() {
        QTest::addColumn<QByteArray>("photo");
        QTest::newRow("drawn") << detailedPhoto();
        QTest::newRow("of a camera") << cameraPhoto();
    }

    void aPhotoZoomedInShowsThePixelsOfItsFile() {
        QFETCH(QByteArray, photo);
        if (photo.isEmpty()) {
            QSKIP("there is no collection of photos beside the checkout");
        }
        const FileURL file = m_photos->write("a.jpg", photo);
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        PhotoPlace place = fitted(file);
        SHOWS(drawn(decoded(file, handedInPixels), place.rect(), windowSize()));
        READS_RESOLUTION("1.6K");

        zoom(place, 18, {420, 330});
        drag(place, {700, 500}, {-150, 97});
        drag(place, {300, 300}, {40, -30});
        READS_RESOLUTION("Full");
        const QImage fullSize = decoded(file, 0);
        SHOWS(drawn(fullSize, place.rect(), windowSize()));

        // Neither another place nor fewer pixels would pass.
        for (const QPointF shift : {QPointF(3, 0), QPointF(-3, 0), QPointF(0, 3), QPointF(0, -3)}) {
            const double difference =
                differenceTo(drawn(fullSize, place.rect().translated(shift), windowSize()));
            QVERIFY2(difference > resamplingError, qPrintable(QString::number(difference)));
        }
        const double difference =
            differenceTo(drawn(decoded(file, handedInPixels), place.rect(), windowSize()));
        QVERIFY2(difference > resamplingError, qPrintable(QString::number(difference)));
    }

    void theNextPhotoIsFittedWhateverTheZoomWas() {
        const FileURL first = m_photos->write("a.jpg", detailedPhoto());
        const FileURL second = m_photos->write("b.jpg", jpegFile(landscape({600, 900})));
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SHOWS(fittedPicture(first));
        PhotoPlace place = fitted(first);
        zoom(place, 16, {800, 300});
        READS_RESOLUTION("Full");

        zoom(place, -9, {200, 500});
        READS_RESOLUTION("2.4K");
        SHOWS(drawn(decoded(first, 2400), place.rect(), windowSize()));
        press({XK_Right});
        READS_RESOLUTION("1.6K");
        SHOWS(fittedPicture(second));
        press({XK_Left});
        SHOWS(fittedPicture(first));
        READS_RESOLUTION("1.6K");
    }

    void aDragOnAPanelLeavesThePhotoAlone() {
        const FileURL file = m_photos->write("a.jpg", detailedPhoto());
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SHOWS(fittedPicture(file));
        PhotoPlace place = fitted(file);
        zoom(place, 18, {500, 400});
        READS_RESOLUTION("Full");

        const QPoint statusBar(100, windowSize().height() - 25);
        const QPoint movePanel(windowSize().width() - 60, windowSize().height() - 25);
        const QPoint leftToolbar(40, 28);
        for (const QPoint panel : {statusBar, movePanel, leftToolbar}) {
            m_screen->drag(onScreen(panel), {90, panel.y() < 100 ? 70 : -70});
        }
        drag(place, {600, 300}, {-20, -35}); // comes after them, and has its way
        SHOWS(drawn(decoded(file, 0), place.rect(), windowSize()));
    }

    void theWheelAloneMovesAZoomedPhoto() {
        const FileURL file = m_photos->write("a.jpg", detailedPhoto());
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SHOWS(fittedPicture(file));
        PhotoPlace place = fitted(file);
        zoom(place, 18, {500, 400});
        READS_RESOLUTION("Full");
        const QImage fullSize = decoded(file, 0);

        m_screen->turnWheel(1);
        place.move({0, 48});
        SHOWS(drawn(fullSize, place.rect(), windowSize()));
        m_screen->turnWheel(-3);
        place.move({0, -3 * 48});
        SHOWS(drawn(fullSize, place.rect(), windowSize()));
        m_screen->tiltWheelLeft(2);
        place.move({2 * 48, 0});
        SHOWS(drawn(fullSize, place.rect(), windowSize()));
    }

    void heldArrowKeysLeaveAZoomedPhotoForAFittedOne() {
        constexpr int count = 12;
        constexpr std::chrono::milliseconds interval{33};
        for (int index = 0; index < count; ++index) {
            m_photos->write("photo" + std::to_string(index + 10) + ".jpg",
                flatPhoto(readablePhotoColor(index), readablePhotoSize * 8));
        }
        QVERIFY(start());
        QVERIFY(openFolder(m_photos->url()));
        SEES("photo 0");
        m_screen->movePointer(onScreen({300, 300}));
        m_screen->turnWheel(16, {XK_Control_L});
        READS_RESOLUTION("Full");

        m_screen->repeat(XK_Right, 10, interval);
        SEES("photo 10");
        READS_RESOLUTION("1.6K");
        m_screen->turnWheel(16, {XK_Control_L}); // and while the larger decode is still to come
        m_screen->repeat(XK_Left, 10, interval);
        SEES("photo 0");
        READS_RESOLUTION("1.6K");
    }

    void openGLDrawsTheSamePicture() {
        const FileURL file = m_photos->write("a.jpg", detailedPhoto());
        std::vector<QImage> pictures;
        QVERIFY(start(Renderer::Software));
        QVERIFY(openFolder(m_photos->url()));
        PhotoPlace place = fitted(file);
        SHOWS(fittedPicture(file));
        pictures.push_back(m_application->picture());
        zoom(place, 5, {420, 330});
        READS_RESOLUTION("2.4K");
        SHOWS(drawn(decoded(file, 2400), place.rect(), windowSize()));
        pictures.push_back(m_application->picture());
        zoom(place, 13, {420, 330});
        READS_RESOLUTION("Full");
        SHOWS(drawn(decoded(file, 0), place.rect(), windowSize()));
        pictures.push_back(m_application->picture());

        const bool isReady = start(Renderer::OpenGL);
        const QString messages = m_application->messages();
        if (!isReady && messages.contains("Failed to initialize graphics backend")) {
            QSKIP("there is no OpenGL on the virtual screen");
        }
        QVERIFY(isReady);
        QVERIFY2(messages.contains("OpenGL"), qPrintable(messages));
        SHOWS(pictures[0]);
        m_screen->movePointer(onScreen({420, 330}));
        m_screen->turnWheel(5, {XK_Control_L});
        READS_RESOLUTION("2.4K");
        SHOWS(pictures[1]);
        m_screen->turnWheel(13, {XK_Control_L});
        READS_RESOLUTION("Full");
        SHOWS(pictures[2]);
    }

private:
    QSize windowSize() const { return m_application->window().content.size(); }
    QPoint onScreen(QPoint inWindow) const { return m_application->window().content.topLeft() + inWindow; }

    PhotoPlace fitted(const FileURL& photo) const {
        return {decoded(photo, handedInPixels).size(), windowSize()};
    }

    QImage fittedPicture(const FileURL& photo) const {
        return drawn(decoded(photo, handedInPixels), fitted(photo).rect(), windowSize());
    }

    bool showsSoon(const QImage& expected) {
        const auto shows = [&] {
            m_difference = differenceTo(expected);
            return m_difference < resamplingError;
        };
        return QTest::qWaitFor(shows, patience);
    }

    double differenceTo(const QImage& expected) const {
        return meanDifference(clearPart(m_application->picture()), clearPart(expected));
    }

    /// Turns the wheel with Control held.
    void zoom(PhotoPlace& place, int notches, QPoint inWindow) {
        m_screen->movePointer(onScreen(inWindow));
        m_screen->turnWheel(notches, {XK_Control_L});
        place.zoom(notches, inWindow);
    }

    void drag(PhotoPlace& place, QPoint from, QPoint way) {
        m_screen->drag(onScreen(from), way);
        place.move(way);
    }

    double m_difference = 0; // between the window and what was last expected of it
};

QTEST_MAIN(ZoomTest)
#include "ZoomTest.moc"
