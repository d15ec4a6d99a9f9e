#include "Tests/EndToEnd/WaylandScreen.h"

#include "Tests/Support/ChildProcess.h"

#include <QDir>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QSize>
#include <QStandardPaths>
#include <QTest>

#include <stdexcept>

using Platform::FileURL;

namespace {

const QString compositorProgram = QStringLiteral("weston");
const QString inspectorProgram = QStringLiteral("weston-debug");
constexpr const char* socketName = "desktop";
constexpr QSize desktopSize(1210, 860); // with its frame, it fits into the X screen

/// Windows come and go at once, and nothing covers them.
constexpr const char* settings = "[shell]\n"
                                 "panel-position=none\n"
                                 "startup-animation=none\n"
                                 "close-animation=none\n";

QString pathOf(const FileURL& file) {
    return QString::fromStdString(file.path().native());
}

bool hasQtPlugin() {
    const QDir platforms(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms");
    return !platforms.entryList({"libqwayland*"}, QDir::Files).isEmpty();
}

/// A rectangle as the compositor writes it: "(29, 34) -> (1187, 877)".
QRect rectOf(const QRegularExpressionMatch& match, int firstGroup) {
    const auto number = [&](int group) { return match.captured(firstGroup + group).toInt(); };
    return {QPoint(number(0), number(1)), QPoint(number(2) - 1, number(3) - 1)};
}

} // namespace

QString WaylandScreen::lacking() {
    for (const QString& program : {compositorProgram, inspectorProgram}) {
        if (QStandardPaths::findExecutable(program).isEmpty()) {
            return program + QStringLiteral(" is not installed");
        }
    }
    return hasQtPlugin() ? QString() : QStringLiteral("Qt's plugin for Wayland is not installed");
}

WaylandScreen::WaylandScreen(VirtualScreen& host) : m_host(host) {
    const QString settingsFile = pathOf(m_home.write("weston.ini", settings));
    endWithThisProcess(m_compositor);
    m_compositor.setProcessEnvironment(environmentOfDesktop());
    m_compositor.setStandardOutputFile(QProcess::nullDevice());
    m_compositor.setStandardErrorFile(QProcess::nullDevice());
    m_compositor.start(
        compositorProgram, {"--backend=x11-backend.so", "--use-pixman", "--idle-time=0", "--debug",
                               "--config=" + settingsFile, QStringLiteral("--socket=%1").arg(socketName),
                               QStringLiteral("--width=%1").arg(desktopSize.width()),
                               QStringLiteral("--height=%1").arg(desktopSize.height())});
    // A window manager that has only just started gives the keyboard to no window by itself.
    const QPoint middle = host.picture().rect().center();
    const auto hasKeyboardByClick = [&] {
        host.click(middle);
        return hasKeyboard();
    };
    if (!QTest::qWaitFor(hasKeyboardByClick, patience)) {
        throw std::runtime_error("the Wayland desktop does not start");
    }
}

WaylandScreen::~WaylandScreen() {
    endProcess(m_compositor);
}

QProcessEnvironment WaylandScreen::environmentOfDesktop() const {
    return environmentFor(m_home.url(), m_host.displayName());
}

QProcessEnvironment WaylandScreen::environment(const FileURL& home) const {
    auto environment = environmentFor(home, QString());
    environment.remove("DISPLAY"); // there is no way around Wayland
    environment.insert("QT_QPA_PLATFORM", "wayland");
    environment.insert("WAYLAND_DISPLAY", pathOf(m_home.at(socketName)));
    return environment;
}

bool WaylandScreen::hasKeyboard() const {
    return m_host.activeWindow().title.startsWith(u"Weston");
}

QString WaylandScreen::windowsInOrder() const {
    auto environment = environmentOfDesktop();
    environment.insert("WAYLAND_DISPLAY", socketName);
    QProcess inspector;
    inspector.setProcessEnvironment(environment);
    inspector.setStandardErrorFile(QProcess::nullDevice());
    inspector.start(inspectorProgram, {"scene-graph"});
    inspector.waitForFinished(patience);
    return QString::fromUtf8(inspector.readAllStandardOutput());
}

ScreenWindow WaylandScreen::activeWindow() const {
    // The first that is told of is in front, and has the keyboard. What is opaque of it is what the frame surrounds.
    static const QRegularExpression windowInFront(
        "xdg_toplevel, PID (\\d+), .*top-level window '(.*)' of (.*), 0x.*\\n"
        ".*position: .*\\n"
        ".*opaque: \\((-?\\d+), (-?\\d+)\\) -> \\((-?\\d+), (-?\\d+)\\)");
    const QRegularExpressionMatch match = windowInFront.match(windowsInOrder());
    if (!match.hasMatch() || !hasKeyboard()) {
        return {};
    }
    ScreenWindow window;
    window.processId = match.captured(1).toLongLong();
    window.title = match.captured(2);
    window.className = match.captured(3);
    window.content = rectOf(match, 4).translated(m_host.activeWindow().content.topLeft());
    return window;
}
