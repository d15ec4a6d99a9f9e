#include "Tests/EndToEnd/MessageBus.h"

#include "Tests/Support/ChildProcess.h"

#include <QStandardPaths>
#include <QTest>

#include <stdexcept>

namespace {

const QString program = QStringLiteral("dbus-daemon");

} // namespace

QString MessageBus::lacking() {
    if (QStandardPaths::findExecutable(program).isEmpty()) {
        return program + QStringLiteral(" is not installed");
    }
    const QString service = QStringLiteral("dbus-1/services/org.a11y.Bus.service");
    if (QStandardPaths::locate(QStandardPaths::GenericDataLocation, service).isEmpty()) {
        return QStringLiteral("at-spi2-core is not installed");
    }
    return {};
}

MessageBus::MessageBus(const VirtualScreen& screen) {
    const QString home = QString::fromStdString(m_home.url().path().native());
    m_daemon.setProcessEnvironment(environmentFor(m_home.url(), screen.displayName()));
    endWithThisProcess(m_daemon);
    m_daemon.setStandardErrorFile(QProcess::nullDevice()); // the services' chatter
    m_daemon.start(program, {"--session", "--nofork", "--print-address", "--address=unix:dir=" + home});
    if (!QTest::qWaitFor([&] { return m_daemon.canReadLine(); }, patience)) {
        throw std::runtime_error("the message bus does not start");
    }
    m_address = QString::fromLatin1(m_daemon.readLine().trimmed());
}

MessageBus::~MessageBus() {
    endProcess(m_daemon);
}
