#include "Tests/EndToEnd/SessionFixture.h"

#include "Tests/EndToEnd/OpeningFolders.h"
#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/Support/Sanitizers.h"
#include "Tests/Vantrel/CullingFixture.h"

#include <QDir>
#include <QTest>

#include <utility>

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
    if (QTest::currentTestFailed() && m_application) {
        keepScreenshot();
        qInfo("the application %s and wrote: %s", qPrintable(m_application->ending()),
            qPrintable(m_application->messages()));
    }
    endApplication();
    m_photos.reset();
    m_home.reset();
    const QString complaints = std::exchange(m_complaints, QString());
    QVERIFY2(complaints.isEmpty(), qPrintable(complaints));
}

/// By closing its window where a sanitizer then tells of leaks; a test may have left it in a state in which it takes no such wish.
void SessionFixture::endApplication() {
    if (!m_application) {
        return;
    }
    if (isAddressSanitized && &desktop() == &*m_screen && !m_application->hasEnded()) {
        constexpr int leavePatience = 5000; // ms
        m_screen->close(m_application->window());
        (void)QTest::qWaitFor([&] { return m_application->hasEnded(); }, leavePatience);
    }
    const QString messages = m_application->messages();
    const auto writes = [&](const char* complaint) { return messages.contains(QLatin1String(complaint)); };
    if (writes("qrc:") || writes("Sanitizer: ") ||
        writes("runtime error: ")) { // "qrc:": of the screen's code
        m_complaints += messages;
    }
    const QString ending = m_application->ending();
    if (ending != u"runs" && ending != u"ended with 0" && ending != u"was killed") {
        m_complaints += QStringLiteral("the application ") + ending + u'\n' + messages;
    }
    m_application.reset();
}

bool SessionFixture::start(Renderer renderer, const QString& program) {
    endApplication();
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
