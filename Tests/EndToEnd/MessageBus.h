#pragma once

#include "Tests/EndToEnd/VirtualScreen.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QProcess>
#include <QString>

/// A session's message bus with nobody on it but those who are told its address. The services that they ask for there,
/// as the one of assistive technology, are started with it and end with it, which is at the end of its scope.
class MessageBus {
public:
    /// What this machine lacks to have one with assistive technology, as a sentence; empty where it has all.
    static QString lacking();

    /// Starts it for the programs of that screen; throws std::runtime_error where that fails.
    explicit MessageBus(const VirtualScreen& screen);
    ~MessageBus();

    /// The value of DBUS_SESSION_BUS_ADDRESS for programs that are to talk over it.
    QString address() const { return m_address; }

private:
    TemporaryFolder m_home; // the services'; holds the sockets as well
    QProcess m_daemon;
    QString m_address;
};
