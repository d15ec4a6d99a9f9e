#include "Tests/EndToEnd/RunningApplication.h"

#include "Tests/Support/Sanitizers.h"

#include <QTest>

using Platform::FileURL;

RunningApplication::RunningApplication(
    const Desktop& desktop, const FileURL& home, Renderer renderer, const QString& program)
    : m_desktop(desktop) {
    auto environment = desktop.environment(home);
    if (renderer == Renderer::Software) {
        environment.insert("QT_QUICK_BACKEND", "software");
    } else if (renderer == Renderer::OpenGL) {
        environment.insert("QSG_RHI_BACKEND", "opengl");
        environment.insert("LIBGL_ALWAYS_SOFTWARE", "1");
        environment.insert("QML_DISABLE_DISTANCEFIELD", "1"); // letters as the painter draws them, to be read
    }
    if (isThreadSanitized) {
        environment.insert("QSG_RENDER_LOOP", "basic"); // it cannot see how Qt's threads wait for each other
    }
    if (isAddressSanitized) {
        environment.insert(
            "QT_NO_GLIB", "1"); // what leaks beneath its functions is let pass: nothing of ours may be there
    }
    environment.insert(
        "TMPDIR", QString::fromStdString(home.path().native())); // so that all that it writes is seen
    environment.insert("QSG_INFO", "1");                         // tells what really draws
    environment.insert("QT_FORCE_STDERR_LOGGING", "1");
    m_process.setProcessEnvironment(environment);
    endWithThisProcessAndHeedPermissions(m_process);
    m_process.start(program, QStringList());
}

RunningApplication::~RunningApplication() {
    kill();
}

QString RunningApplication::deliveredProgram() {
    return QStringLiteral(VANTREL_PROGRAM);
}

bool RunningApplication::waitUntilReady() {
    const bool isReady = QTest::qWaitFor([&] { return isInFront() || hasEnded(); }, patience) && !hasEnded();
    m_window = m_desktop.activeWindow();
    return isReady;
}

bool RunningApplication::isInFront(QStringView title) const {
    const ScreenWindow window = m_desktop.activeWindow(); // may still be one of a process that has just ended
    return window.processId == m_process.processId() && window.title == title && !window.content.isEmpty();
}

void RunningApplication::kill() {
    m_isKilled = !hasEnded();
    endProcess(m_process);
}

QString RunningApplication::ending() {
    if (!hasEnded()) {
        return QStringLiteral("runs");
    }
    if (m_isKilled) {
        return QStringLiteral("was killed");
    }
    const bool isSignal = m_process.exitStatus() == QProcess::CrashExit;
    return QStringLiteral("ended %1 %2").arg(isSignal ? u"by signal" : u"with").arg(m_process.exitCode());
}

QString RunningApplication::messages() {
    m_messages += m_process.readAllStandardError();
    return QString::fromUtf8(m_messages);
}
