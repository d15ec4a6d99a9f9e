#include "Tests/EndToEnd/SessionFixture.h"

#include "Tests/EndToEnd/OpeningFolders.h"
#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QDir>
#include <QTest>

using Platform::FileURL;

void SessionFixture::initTestCase() {
    if (const QString lacking = VirtualScreen::lacking(); !lacking.isEmpty()) {
        QSKIP(qPrintable(lacking));
    }
    m_screen.emplace();
}

void SessionFixture::init() {
    m_home.emplace();
    m_photos.emplace();
}

void SessionFixture::cleanup() {
    const QString messages = m_application ? m_application->messages() : QString();
    if (QTest::currentTestFailed() && m_application) {
        keepScreenshot();
        qInfo("the application %s and wrote: %s", qPrintable(m_application->ending()), qPrintable(messages));
    }
    m_application.reset();
    m_photos.reset();
    m_home.reset();
    QVERIFY2(!messages.contains("qrc:"), qPrintable(messages)); // the screen's code complains of nothing
}

bool SessionFixture::start(Renderer renderer, const QString& program) {
    m_application.reset();
    m_application = std::make_unique<RunningApplication>(desktop(), m_home->url(), renderer, program);
    return m_application->waitUntilReady();
}

void SessionFixture::press(const std::vector<Key>& keys) {
    for (const Key key : keys) {
        m_screen->press({key});
    }
}

bool SessionFixture::walk(Key key, const QStringList& sights) {
    for (const QString& sight : sights) {
        press({key});
        if (!QTest::qWaitFor([&] { return seenIn(m_application->picture()) == sight; }, patience)) {
            const QString seen = seenIn(m_application->picture());
            qWarning("“%s” is expected, “%s” is seen", qPrintable(sight), qPrintable(seen));
            return false;
        }
    }
    return true;
}

bool SessionFixture::showChooser() {
    return ::showChooser(*m_screen, *m_application);
}

bool SessionFixture::isInFrontSoon() {
    return QTest::qWaitFor([&] { return m_application->isInFront(); }, patience);
}

bool SessionFixture::openFolder(const FileURL& folder) {
    return ::openFolder(*m_screen, *m_application, folder);
}

bool SessionFixture::closeWindow() {
    m_screen->close(m_application->window());
    return QTest::qWaitFor([&] { return m_application->hasEnded(); }, patience) &&
           m_application->hasEndedWell();
}

QByteArray SessionFixture::readablePhoto(int index) {
    return flatPhoto(readablePhotoColor(index), readablePhotoSize);
}

void SessionFixture::keepScreenshot() {
    const QDir folder(QStringLiteral(SCREENSHOT_FOLDER));
    const QString file = folder.filePath(QLatin1String(QTest::currentTestFunction()) + ".png");
    if (m_screen && folder.mkpath(".") && m_screen->picture().save(file)) {
        qInfo("screenshot: %s", qPrintable(file));
    }
}
