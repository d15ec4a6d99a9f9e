#include "Tests/EndToEnd/SessionFixture.h"
#include "Tests/Support/JpegWriter.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QDir>
#include <QPainter>
#include <QTest>

#include <algorithm>

using Platform::FileURL;

namespace {

/// Upright bars, black and white, ten of the photo's pixels wide.
QByteArray barredPhoto(QSize size) {
    constexpr int width = 10;
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    for (int x = 0; x < picture.width(); x += 2 * width) {
        painter.fillRect(x, 0, width, picture.height(), Qt::black);
    }
    painter.end();
    return jpegFile(picture);
}

/// How much the brightness changes along the top of the left toolbar, above its button.
int unevenness(const QImage& window) {
    constexpr QRect strip(40, 11, 100, 1);
    int darkest = 255;
    int brightest = 0;
    for (int x = strip.left(); x <= strip.right(); ++x) {
        const int green = window.pixelColor(x, strip.top()).green();
        darkest = std::min(darkest, green);
        brightest = std::max(brightest, green);
    }
    return brightest - darkest;
}

} // namespace

/// What draws the screen, and what that makes of it.
class RendererTest : public SessionFixture {
    Q_OBJECT

private slots:
    void withoutAGraphicsProcessorThePainterIsChosen() {
        if (!QDir("/dev/dri").isEmpty() || QFile::exists("/dev/nvidiactl")) {
            QSKIP("there is a graphics processor");
        }
        QVERIFY(start(Renderer::Chosen));
        const QString messages = m_application->messages();
        QVERIFY2(messages.contains("Loading backend software"), qPrintable(messages));
    }

    void thePainterLetsThePhotoShineThroughThePanels() {
        QVERIFY(start(Renderer::Software));
        QVERIFY(openBarredPhoto());
        // Nine hundredths of white shine through.
        QTRY_VERIFY_WITH_TIMEOUT(unevenness(m_application->picture()) >= 18, patience);
        QVERIFY(unevenness(m_application->picture()) <= 26);
    }

    void openGLBlursWhatIsBehindThePanels() {
        const bool isReady = start(Renderer::OpenGL);
        if (!isReady && m_application->messages().contains("Failed to initialize graphics backend")) {
            QSKIP("there is no OpenGL on the virtual screen");
        }
        QVERIFY(isReady);
        QVERIFY(openBarredPhoto());
        const auto panel = [&] { return m_application->picture().pixelColor(90, 11).green(); };
        QTRY_VERIFY_WITH_TIMEOUT(panel() > 26, patience); // lighter than over the black before
        QTRY_VERIFY_WITH_TIMEOUT(unevenness(m_application->picture()) <= 3, patience);
    }

private:
    /// A photo that just fills the window.
    bool openBarredPhoto() {
        m_photos->write("a.jpg", barredPhoto(m_application->window().content.size()));
        return openFolder(m_photos->url());
    }
};

QTEST_MAIN(RendererTest)
#include "RendererTest.moc"
