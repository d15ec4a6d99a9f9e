#pragma once

#include "Tests/EndToEnd/RunningApplication.h"
#include "Tests/EndToEnd/VirtualScreen.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QObject>

#include <memory>
#include <optional>
#include <vector>

/// What the user sees in the main window is, at once or soon, what the words say.
#define SEES(words)                                                                                          \
    QTRY_COMPARE_WITH_TIMEOUT(seenIn(m_application->picture()), QStringLiteral(words), patience)

/// The status bar names, at once or soon, that resolution.
#define READS_RESOLUTION(label)                                                                              \
    QTRY_COMPARE_WITH_TIMEOUT(resolutionIn(m_application->picture()), QStringLiteral(label), patience)

/// Whole sessions with the program as it is delivered: real keys and a real pointer on a virtual screen, and then
/// what is seen on that screen and what lies on the disk. Each test has a fresh home and a fresh folder for photos;
/// a failed one leaves a picture of the screen.
class SessionFixture : public QObject {
    Q_OBJECT

protected slots:
    void initTestCase();
    void init();
    void cleanup();

protected:
    /// Where the application appears.
    virtual const Desktop& desktop() const { return *m_screen; }

    /// Starts the application, for the first time or again; the delivered program, or another make of it.
    bool start(Renderer renderer = Renderer::Software,
        const QString& program = RunningApplication::deliveredProgram());

    /// Presses one key after the other.
    void press(const std::vector<Key>& keys);

    /// Presses the key once for each of the sights, and tells whether the main window then shows it, at once or soon.
    bool walk(Key key, const QStringList& sights);

    bool showChooser();
    bool isInFrontSoon();

    /// Opens a folder by way of the chooser, which has the keys until the screen shows what is in the folder.
    bool openFolder(const Platform::FileURL& folder);

    /// Closes the main window by its frame, and tells whether that ended the application as it should.
    bool closeWindow();

    /// A photo that can be recognised on the screen as that one.
    static QByteArray readablePhoto(int index);

    std::optional<VirtualScreen> m_screen;
    std::optional<TemporaryFolder> m_home;
    std::optional<TemporaryFolder> m_photos;
    std::unique_ptr<RunningApplication> m_application;

private:
    void keepScreenshot();
    void endApplication();

    QString m_complaints; ///< what the applications of a test wrote or did that none may
};
