#pragma once

#include "Tests/EndToEnd/Desktop.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QImage>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QString>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct _XDisplay; // NOLINT(bugprone-reserved-identifier): the name is Xlib's

/// A key by the X name of the sign that an English keyboard has on it: a keysym, such as XK_Right or XK_a.
using Key = unsigned long;

/// An X screen of its own, seen by nobody, with a window manager on it: windows become active, carry frames
/// and are closed as on a desktop. Ends with its scope. One at a time in a process, on the main thread.
class VirtualScreen : public Desktop {
public:
    /// What this machine lacks to have one, as a sentence; empty where it has all.
    static QString lacking();

    /// Starts it and waits until the window manager is in charge; throws std::runtime_error where that fails.
    VirtualScreen();
    ~VirtualScreen() override;

    /// The value of DISPLAY for programs that are to appear on it.
    QString displayName() const { return m_displayName; }

    QProcessEnvironment environment(const Platform::FileURL& home) const override;
    QImage picture() const override;

    /// What is seen in that part of it now, in pixels; the smaller the part, the faster.
    QImage picture(const QRect& part) const;

    ScreenWindow activeWindow() const override;

    /// Gives the keyboard these layouts, the first of them in use: "ru,us". The keys are where they were. Throws
    /// std::runtime_error where there are none such.
    void setLayout(const QString& layouts);

    /// Has a key that is held repeat after the delay, in that interval.
    void setKeyRepeat(std::chrono::milliseconds delay, std::chrono::milliseconds interval);

    /// Presses a key and holds it, until it is let go.
    void hold(Key held);
    void letGo(Key held);

    /// Presses the keys in order and lets them go in reverse order: {XK_Control_L, XK_o}.
    void press(const std::vector<Key>& chord);

    /// Presses a key that many times with that time between the presses, as a held key does. Returns at once;
    /// the screen presses in its own time, and keys pressed later wait for it.
    void repeat(Key key, int count, std::chrono::milliseconds interval);

    /// Types a text that has only characters of an English keyboard.
    void type(const std::string& text);

    /// Moves the pointer there, in pixels of the screen.
    void movePointer(QPoint position);

    /// Moves the pointer there and clicks with the left button of the mouse.
    void click(QPoint position);

    /// Presses the left button of the mouse, moves the pointer by that way as a hand does, and lets go; with keys
    /// held meanwhile.
    void drag(QPoint from, QPoint way, const std::vector<Key>& held = {});

    /// Turns the wheel by so many notches, away from the hand; with keys held meanwhile.
    void turnWheel(int notches, const std::vector<Key>& held = {});

    /// Tilts the wheel to the left so many times.
    void tiltWheelLeft(int notches);

    /// Closes a window as the button in its frame does: its program is asked to.
    void close(const ScreenWindow& window);

private:
    /// Where a sign is on the keyboard.
    struct Place {
        unsigned char keyCode = 0;
        bool isShifted = false;
    };

    struct Closer {
        void operator()(_XDisplay* display) const;
    };

    void startServer();
    void learnKeys();
    void startWindowManager();
    Place placeOf(Key sign) const;
    void key(Key key, bool isDown, std::chrono::milliseconds delay = {});
    void hold(const std::vector<Key>& keys);
    void letGo(const std::vector<Key>& keys);
    void click(unsigned int button, int count);
    bool hasWindowManager() const;

    TemporaryFolder m_home; // the window manager's, so that it finds nobody's settings
    QProcess m_server;
    QProcess m_windowManager;
    QString m_displayName;
    std::map<Key, Place> m_places; // on the English keyboard that it starts with
    std::unique_ptr<_XDisplay, Closer> m_display;
};
