#pragma once

#include "Tests/EndToEnd/Desktop.h"
#include "Tests/Support/ChildProcess.h"

/// What draws the application's windows: Qt's painter, OpenGL, which the processor computes here, or what the application
/// itself chooses.
enum class Renderer { Software, OpenGL, Chosen };

/// The application as users start it, on a desktop of the tests. It is killed at the end of its scope where it
/// still runs.
class RunningApplication {
public:
    /// The program as users get it.
    static QString deliveredProgram();

    /// Starts it with that home folder, where its settings are found and left. The program is the delivered one, or
    /// another make of it.
    RunningApplication(const Desktop& desktop, const Platform::FileURL& home, Renderer renderer,
        const QString& program = deliveredProgram());
    ~RunningApplication();
    RunningApplication(const RunningApplication&) = delete;
    RunningApplication& operator=(const RunningApplication&) = delete;

    /// Waits until its main window has the keyboard; false where that does not come.
    bool waitUntilReady();

    /// Whether its main window has the keyboard.
    bool isInFront() const { return isInFront(u"Vantrel"); }

    /// Whether its window of that title has the keyboard.
    bool isInFront(QStringView title) const;

    /// What its main window shows, without the frame.
    QImage picture() const { return m_desktop.picture().copy(m_window.content); }

    /// The main window as it was when it became ready.
    const ScreenWindow& window() const { return m_window; }

    bool hasEnded() { return m_process.state() == QProcess::NotRunning; }

    /// By itself, and with 0.
    bool hasEndedWell() { return ending() == u"ended with 0"; }

    /// "runs", "ended with 0" (its exit status), "ended by signal 11", or "was killed" where that was done here.
    QString ending();

    /// Ends it by SIGKILL and returns when it is gone.
    void kill();

    /// What it has written to its standard error so far.
    QString messages();

private:
    const Desktop& m_desktop;
    QProcess m_process;
    bool m_isKilled = false;
    ScreenWindow m_window;
    QByteArray m_messages;
};
