#pragma once

#include "Tests/Support/TemporaryFolder.h"

#include <QImage>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QString>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

struct _XDisplay; // NOLINT(bugprone-reserved-identifier): the name is Xlib's

/// A key by its X name: a keysym, such as XK_Right or XK_a.
using Key = unsigned long;

/// A window on the screen as a pager sees it.
struct ScreenWindow {
    unsigned long id = 0; ///< 0: no window
    QString title;
    QString className; ///< the instance part of WM_CLASS
    qint64 processId = 0;
    QRect content; ///< in pixels of the screen, without the frame
};

/// An X screen of its own, seen by nobody, with a window manager on it: windows become active, carry frames
/// and are closed as on a desktop. Ends with its scope. One at a time in a process, on the main thread.
class VirtualScreen {
public:
    /// What this machine lacks to have one, as a sentence; empty where it has all.
    static QString lacking();

    /// Starts it and waits until the window manager is in charge; throws std::runtime_error where that fails.
    VirtualScreen();
    ~VirtualScreen();

    /// The value of DISPLAY for programs that are to appear on it.
    QString displayName() const { return m_displayName; }

    /// What is seen on the whole screen now.
    QImage picture() const;

    /// The window that has the keyboard, frame and title as they are now.
    ScreenWindow activeWindow() const;

    /// Presses the keys in order and lets them go in reverse order: {XK_Control_L, XK_o}.
    void press(const std::vector<Key>& chord);

    /// Presses a key that many times with that time between the presses, as a held key does. Returns at once;
    /// the screen presses in its own time, and keys pressed later wait for it.
    void repeat(Key key, int count, std::chrono::milliseconds interval);

    /// Types a text that has only characters of an English keyboard.
    void type(const std::string& text);

    /// Moves the pointer there, in pixels of the screen.
    void movePointer(QPoint position);

    /// Presses the left button of the mouse, moves the pointer by that way as a hand does, and lets go.
    void drag(QPoint from, QPoint way);

    /// Turns the wheel by so many notches, away from the hand; with keys held meanwhile.
    void turnWheel(int notches, const std::vector<Key>& held = {});

    /// Tilts the wheel to the left so many times.
    void tiltWheelLeft(int notches);

    /// Closes a window as the button in its frame does: its program is asked to.
    void close(const ScreenWindow& window);

private:
    struct Closer {
        void operator()(_XDisplay* display) const;
    };

    void startServer();
    void startWindowManager();
    void key(Key key, bool isDown, std::chrono::milliseconds delay = {});
    void click(unsigned int button, int count);
    bool hasWindowManager() const;

    TemporaryFolder m_home; // the window manager's, so that it finds nobody's settings
    QProcess m_server;
    QProcess m_windowManager;
    QString m_displayName;
    std::unique_ptr<_XDisplay, Closer> m_display;
};
