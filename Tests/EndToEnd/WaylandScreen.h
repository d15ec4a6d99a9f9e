#pragma once

#include "Tests/EndToEnd/VirtualScreen.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QProcess>
#include <QString>

/// A Wayland desktop in a window of an X screen: what is pressed and seen there is pressed and seen by its windows.
/// Ends with its scope.
class WaylandScreen : public Desktop {
public:
    /// What this machine lacks to have one, as a sentence; empty where it has all.
    static QString lacking();

    /// Starts it and waits until it has the keyboard; throws std::runtime_error where that fails.
    explicit WaylandScreen(VirtualScreen& host);
    ~WaylandScreen() override;

    QProcessEnvironment environment(const Platform::FileURL& home) const override;

    /// The whole X screen, the desktop in it.
    QImage picture() const override { return m_host.picture(); }

    /// As the compositor tells it, in pixels of the X screen.
    ScreenWindow activeWindow() const override;

private:
    QProcessEnvironment environmentOfDesktop() const;
    bool hasKeyboard() const;
    QString windowsInOrder() const;

    const VirtualScreen& m_host;
    TemporaryFolder m_home; // holds the settings and the socket
    QProcess m_compositor;
};
