#include "Tests/EndToEnd/VirtualScreen.h"

#include "Tests/Support/ChildProcess.h"

#include <QStandardPaths>
#include <QTest>

#include <cstdlib>
#include <stdexcept>
#include <utility>

// Last, since they define names as macros.
#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

namespace {

const QString serverProgram = QStringLiteral("Xvfb");
const QString windowManagerProgram = QStringLiteral("openbox");
const QString layoutProgram = QStringLiteral("setxkbmap");

/// Windows come and go while they are asked about: what is asked of one that is gone has no answer, and that
/// is all.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

struct XFreer {
    void operator()(void* data) const { XFree(data); }
};

struct ImageDestroyer {
    void operator()(XImage* image) const { XDestroyImage(image); }
};

struct Property {
    std::unique_ptr<void, XFreer> data; // nullptr where there is none
    unsigned long count = 0;
};

Property property(Display* display, Window window, const char* name, Atom type) {
    constexpr long longest = 65'536; // units of four bytes
    Atom foundType = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, longest, False, type,
        &foundType, &format, &count, &left, &data);
    return {std::unique_ptr<void, XFreer>(data), data ? count : 0};
}

QString textOf(const Property& property) {
    return property.data ? QString::fromUtf8(static_cast<const char*>(property.data.get())) : QString();
}

qint64 numberOf(const Property& property) {
    return property.count == 0 ? 0
                               : static_cast<qint64>(*static_cast<const unsigned long*>(property.data.get()));
}

QRect contentRect(Display* display, Window window) {
    XWindowAttributes attributes = {};
    Window child = 0;
    int x = 0;
    int y = 0;
    if (!XGetWindowAttributes(display, window, &attributes) || attributes.map_state != IsViewable ||
        !XTranslateCoordinates(display, window, attributes.root, 0, 0, &x, &y, &child)) {
        return {};
    }
    return {x, y, attributes.width, attributes.height};
}

} // namespace

void VirtualScreen::Closer::operator()(_XDisplay* display) const {
    XCloseDisplay(display);
}

QString VirtualScreen::lacking() {
    for (const QString& program : {serverProgram, windowManagerProgram, layoutProgram}) {
        if (QStandardPaths::findExecutable(program).isEmpty()) {
            return program + QStringLiteral(" is not installed");
        }
    }
    return {};
}

VirtualScreen::VirtualScreen() {
    startServer();
    startWindowManager();
}

VirtualScreen::~VirtualScreen() {
    m_display.reset();
    endProcess(m_windowManager);
    endProcess(m_server);
}

void VirtualScreen::startServer() {
    endWithThisProcess(m_server);
    m_server.setStandardErrorFile(QProcess::nullDevice()); // the keyboard compiler's warnings
    m_server.start(serverProgram, {"-displayfd", "1", "-screen", "0", "1280x900x24", "-nolisten", "tcp",
                                      "-noreset"}); // display: any free
    if (!QTest::qWaitFor([&] { return m_server.canReadLine(); }, patience)) {
        throw std::runtime_error("the virtual screen does not start");
    }
    m_displayName = QStringLiteral(":") + QString::fromLatin1(m_server.readLine().trimmed());
    m_display.reset(XOpenDisplay(m_displayName.toLatin1().constData()));
    if (!m_display) {
        throw std::runtime_error("the virtual screen cannot be reached");
    }
    XSetErrorHandler(ignoreError);
    learnKeys();
}

void VirtualScreen::learnKeys() {
    int first = 0;
    int last = 0;
    XDisplayKeycodes(m_display.get(), &first, &last);
    for (const bool isShifted : {false, true}) {
        for (int code = first; code <= last; ++code) {
            const auto keyCode = static_cast<KeyCode>(code);
            m_places.try_emplace(
                XkbKeycodeToKeysym(m_display.get(), keyCode, 0, isShifted), Place{keyCode, isShifted});
        }
    }
}

VirtualScreen::Place VirtualScreen::placeOf(Key sign) const {
    const auto found = m_places.find(sign);
    if (sign == NoSymbol || found == m_places.end()) {
        throw std::logic_error("the keyboard has no such key");
    }
    return found->second;
}

void VirtualScreen::startWindowManager() {
    endWithThisProcess(m_windowManager);
    m_windowManager.setProcessEnvironment(environmentFor(m_home.url(), m_displayName));
    m_windowManager.setStandardErrorFile(QProcess::nullDevice());
    m_windowManager.start(windowManagerProgram, {"--sm-disable"});
    if (!QTest::qWaitFor([&] { return hasWindowManager(); }, patience)) {
        throw std::runtime_error("the window manager does not start");
    }
}

QProcessEnvironment VirtualScreen::environment(const Platform::FileURL& home) const {
    auto environment = environmentFor(home, m_displayName);
    environment.insert("QT_QPA_PLATFORM", "xcb");
    return environment;
}

QImage VirtualScreen::picture() const {
    Display* display = m_display.get();
    const int screen = DefaultScreen(display);
    return picture({0, 0, DisplayWidth(display, screen), DisplayHeight(display, screen)});
}

QImage VirtualScreen::picture(const QRect& part) const {
    Display* display = m_display.get();
    const std::unique_ptr<XImage, ImageDestroyer> image(
        XGetImage(display, DefaultRootWindow(display), part.x(), part.y(),
            static_cast<unsigned>(part.width()), static_cast<unsigned>(part.height()), AllPlanes, ZPixmap));
    if (!image || image->bits_per_pixel != 32) {
        throw std::runtime_error("the virtual screen shows no picture");
    }
    const QImage borrowed(reinterpret_cast<const uchar*>(image->data), image->width, image->height,
        image->bytes_per_line, QImage::Format_RGB32);
    return borrowed.copy();
}

bool VirtualScreen::hasWindowManager() const {
    Display* display = m_display.get();
    return property(display, DefaultRootWindow(display), "_NET_SUPPORTING_WM_CHECK", XA_WINDOW).count > 0;
}

ScreenWindow VirtualScreen::activeWindow() const {
    Display* display = m_display.get();
    Window id = 0;
    int revertTo = 0;
    // Not _NET_ACTIVE_WINDOW, which names a window already before it is given the keyboard.
    XGetInputFocus(display, &id, &revertTo);
    if (id == None || id == PointerRoot) {
        return {};
    }
    const Atom utf8 = XInternAtom(display, "UTF8_STRING", False);
    ScreenWindow window;
    window.id = id;
    window.title = textOf(property(display, id, "_NET_WM_NAME", utf8));
    window.className = textOf(property(display, id, "WM_CLASS", XA_STRING));
    window.processId = numberOf(property(display, id, "_NET_WM_PID", XA_CARDINAL));
    window.content = contentRect(display, id);
    return window;
}

void VirtualScreen::key(Key key, bool isDown, std::chrono::milliseconds delay) {
    XTestFakeKeyEvent(
        m_display.get(), placeOf(key).keyCode, isDown, static_cast<unsigned long>(delay.count()));
}

void VirtualScreen::setLayout(const QString& layouts) {
    if (QProcess::execute(layoutProgram, {"-display", m_displayName, "-layout", layouts}) != 0) {
        throw std::runtime_error("the keyboard does not take the layouts");
    }
}

void VirtualScreen::setKeyRepeat(std::chrono::milliseconds delay, std::chrono::milliseconds interval) {
    XkbSetAutoRepeatRate(m_display.get(), XkbUseCoreKbd, static_cast<unsigned int>(delay.count()),
        static_cast<unsigned int>(interval.count()));
}

void VirtualScreen::hold(Key held) {
    key(held, true);
    XFlush(m_display.get());
}

void VirtualScreen::letGo(Key held) {
    key(held, false);
    XFlush(m_display.get());
}

void VirtualScreen::press(const std::vector<Key>& chord) {
    hold(chord);
    letGo(chord);
    XFlush(m_display.get());
}

void VirtualScreen::hold(const std::vector<Key>& keys) {
    for (const Key held : keys) {
        key(held, true);
    }
}

void VirtualScreen::letGo(const std::vector<Key>& keys) {
    for (auto held = keys.rbegin(); held != keys.rend(); ++held) {
        key(*held, false);
    }
}

void VirtualScreen::repeat(Key repeated, int count, std::chrono::milliseconds interval) {
    for (int pressed = 0; pressed < count; ++pressed) {
        key(repeated, true, interval);
        key(repeated, false);
    }
    XFlush(m_display.get());
}

void VirtualScreen::type(const std::string& text) {
    for (const unsigned char character : text) {
        const Key sign = character; // the keysyms of ASCII are its codes
        if (placeOf(sign).isShifted) {
            press({XK_Shift_L, sign});
        } else {
            press({sign});
        }
    }
}

void VirtualScreen::movePointer(QPoint position) {
    XTestFakeMotionEvent(
        m_display.get(), DefaultScreen(m_display.get()), position.x(), position.y(), CurrentTime);
    XFlush(m_display.get());
}

void VirtualScreen::click(QPoint position) {
    movePointer(position);
    click(Button1, 1);
    XFlush(m_display.get());
}

void VirtualScreen::drag(QPoint from, QPoint way, const std::vector<Key>& held) {
    constexpr int steps = 10;
    constexpr unsigned long stepTime = 8; // ms, as mice report
    Display* display = m_display.get();
    hold(held);
    movePointer(from);
    XTestFakeButtonEvent(display, Button1, True, CurrentTime);
    for (int step = 1; step <= steps; ++step) {
        const QPoint position = from + way * step / steps;
        XTestFakeMotionEvent(display, DefaultScreen(display), position.x(), position.y(), stepTime);
    }
    XTestFakeButtonEvent(display, Button1, False, CurrentTime);
    letGo(held);
    XFlush(display);
}

void VirtualScreen::turnWheel(int notches, const std::vector<Key>& held) {
    hold(held);
    click(notches > 0 ? Button4 : Button5, std::abs(notches));
    letGo(held);
    XFlush(m_display.get());
}

void VirtualScreen::tiltWheelLeft(int notches) {
    constexpr unsigned int tiltedLeft = 6; // has no name in Xlib
    click(tiltedLeft, notches);
    XFlush(m_display.get());
}

void VirtualScreen::click(unsigned int button, int count) {
    for (int clicked = 0; clicked < count; ++clicked) {
        XTestFakeButtonEvent(m_display.get(), button, True, CurrentTime);
        XTestFakeButtonEvent(m_display.get(), button, False, CurrentTime);
    }
}

void VirtualScreen::close(const ScreenWindow& window) {
    Display* display = m_display.get();
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window.id;
    event.xclient.message_type = XInternAtom(display, "_NET_CLOSE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[1] = 2; // the request comes from the user
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
        &event);
    XFlush(display);
}
