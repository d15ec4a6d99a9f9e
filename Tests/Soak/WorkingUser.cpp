#include "Tests/Soak/WorkingUser.h"

#include "Tests/EndToEnd/OpeningFolders.h"
#include "Tests/Soak/ResourceLog.h"
#include "Tests/Support/TemporaryFolder.h"

#include <QTest>
#include <QTime>

#include <X11/keysym.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <utility>

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr Key approveKey = XK_space;
constexpr Key rejectKey = XK_x;

template <typename Clock>
double millisecondsSince(std::chrono::time_point<Clock> start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Between two looks at the screen, whose time is part of every figure.
void blink() {
    std::this_thread::sleep_for(500us);
}

} // namespace

WorkingUser::WorkingUser(VirtualScreen& screen, RunningApplication& application, const SoakPhotos& photos,
    std::function<void()> betweenKeys)
    : m_screen(screen),
      m_application(application),
      m_photos(photos),
      m_betweenKeys(std::move(betweenKeys)),
      m_expected(photos.count()) {}

// What the user sees

QPoint WorkingUser::onScreen(QPoint inWindow) const {
    return m_application.window().content.topLeft() + inWindow;
}

QRect WorkingUser::onScreen(const QRect& inWindow) const {
    return {onScreen(inWindow.topLeft()), inWindow.size()};
}

/// Some lines of the photo, below the middle.
QRect WorkingUser::detail() const {
    const QSize window = m_application.window().content.size();
    return onScreen(QRect(window.width() * 3 / 10, window.height() * 6 / 10, window.width() * 4 / 10, 4));
}

/// Some lines of the panel at the bottom right, which begins with the number of the photo.
QRect WorkingUser::counter() const {
    const QSize window = m_application.window().content.size();
    return onScreen(QRect(window.width() / 2, window.height() - 30, window.width() / 2, 10));
}

bool WorkingUser::showsExpected() const {
    const QRect part = SoakPhotos::readPart(m_application.window().content.size());
    return SoakPhotos::shows(m_screen.picture(onScreen(part)), m_expected.photo(), m_expected.verdict());
}

void WorkingUser::waitFor(const QString& what, const std::function<bool()>& isSo) const {
    const auto start = SteadyClock::now();
    while (!isSo()) {
        if (millisecondsSince(start) > patience) {
            throw std::runtime_error(QStringLiteral("%1: photo %2 is not to be seen; the application %3")
                                         .arg(what, QString::fromStdString(m_photos.name(m_expected.photo())),
                                             m_application.ending())
                                         .toStdString());
        }
        blink();
    }
}

/// Larger decodes come by themselves; what a key does is told from them by letting them come first.
void WorkingUser::waitUntilStill(const QRect& part) const {
    constexpr double stillness = 600; // ms: a decode begins 400 ms after the last turn of the wheel
    QImage seen = m_screen.picture(part);
    auto since = SteadyClock::now();
    while (millisecondsSince(since) < stillness) {
        pause(20ms);
        const QImage now = m_screen.picture(part);
        if (now != seen) {
            seen = now;
            since = SteadyClock::now();
        }
    }
}

/// The user looks, or thinks.
void WorkingUser::pause(std::chrono::milliseconds time) const {
    QTest::qWait(static_cast<int>(time.count()));
    m_betweenKeys();
}

/// What the screen shows now was asked for then. Slow keys are told at once, to whoever watches, with what the disk may have to do
/// with them.
void WorkingUser::note(const QString& kind, Clock::time_point asked) {
    constexpr double slow = 100;
    const double time = millisecondsSince(asked);
    m_keys.add(kind, time);
    const double readBefore = std::exchange(m_readFromDisk, readFromDiskBy(m_application.window().processId));
    if (time > slow) {
        std::fprintf(stderr,
            "%s: %s took %.0f ms at %s; %.0f KiB were read from the disk since the key before\n",
            qPrintable(QTime::currentTime().toString("HH:mm:ss.zzz")), qPrintable(kind), time,
            m_photos.name(m_expected.photo()).c_str(), m_readFromDisk - readBefore);
    }
}

// What the user does

/// Presses a key after which the screen is to show what is expected now.
void WorkingUser::press(const QString& kind, const std::vector<Key>& chord) {
    if (showsExpected()) {
        throw std::logic_error("a key whose effect could not be seen: " + kind.toStdString());
    }
    const auto start = Clock::now();
    m_screen.press(chord);
    waitFor(kind, [&] { return showsExpected(); });
    note(kind, start);
    m_betweenKeys();
}

/// Does what changes that part of the screen.
void WorkingUser::change(const QString& kind, const QRect& part, const std::function<void()>& act) {
    waitUntilStill(part);
    const QImage before = m_screen.picture(part);
    const auto start = Clock::now();
    act();
    waitFor(kind, [&] { return m_screen.picture(part) != before; });
    note(kind, start);
}

void WorkingUser::walk(int steps, std::chrono::milliseconds look) {
    for (int step = 0; step < std::abs(steps); ++step) {
        m_expected.walk(steps > 0 ? 1 : -1);
        press(steps > 0 ? QStringLiteral("right") : QStringLiteral("left"),
            {steps > 0 ? Key{XK_Right} : Key{XK_Left}});
        pause(look);
    }
    m_walkedPhotos += std::abs(steps);
}

/// Presses the key thirty times a second. A photo that the next one overtakes counts as shown when that is.
void WorkingUser::hold(const QString& kind, Key key, int step, int count) {
    constexpr auto interval = 33ms;
    std::deque<Awaited> awaited;
    auto due = SteadyClock::now();
    for (int pressed = 0; pressed < count; ++pressed) {
        m_expected.walk(step);
        awaited.push_back({Clock::now(), m_expected.photo(), m_expected.verdict()});
        m_screen.press({key});
        for (due += interval; SteadyClock::now() < due; blink()) {
            awaitPhotos(kind, awaited);
        }
        m_betweenKeys();
    }
    waitFor(kind, [&] {
        awaitPhotos(kind, awaited);
        return awaited.empty();
    });
    m_heldPhotos += count;
    m_walkedPhotos += count;
}

void WorkingUser::awaitPhotos(const QString& kind, std::deque<Awaited>& awaited) {
    const QRect part = SoakPhotos::readPart(m_application.window().content.size());
    const QImage line = m_screen.picture(onScreen(part));
    const auto seen = std::find_if(awaited.rbegin(), awaited.rend(),
        [&](const Awaited& photo) { return SoakPhotos::shows(line, photo.photo, photo.verdict); });
    if (seen != awaited.rend()) {
        std::for_each(awaited.begin(), seen.base(), [&](const Awaited& photo) { note(kind, photo.since); });
        m_passedPhotos += static_cast<int>(awaited.rend() - seen) - 1;
        awaited.erase(awaited.begin(), seen.base());
    } else if (std::ssize(awaited) ==
               SoakPhotos::different - 1) { // from here on, they could not be told apart
        note(kind, awaited.front().since);
        awaited.pop_front();
    }
}

/// By the shorter way, and with a key that repeats as fast as that can be set.
void WorkingUser::goTo(int photo) {
    constexpr int atOnce =
        199; // no multiple of the photos that differ, so that the last is told from the first
    constexpr auto interval = 5ms;
    const int toTheRight = (photo - m_expected.photo() + m_photos.count()) % m_photos.count();
    const bool isRight = toTheRight <= m_photos.count() / 2;
    int left = isRight ? toTheRight : m_photos.count() - toTheRight;
    while (left > 0) {
        const int steps = std::min(left, atOnce);
        m_expected.walk(isRight ? steps : -steps);
        m_screen.repeat(isRight ? XK_Right : XK_Left, steps, interval);
        waitFor(QStringLiteral("going on"), [&] { return showsExpected(); });
        pause(1ms);
        left -= steps;
    }
}

void WorkingUser::mark(Verdict verdict) {
    m_expected.mark(verdict);
    if (verdict == Verdict::Approved) {
        press(QStringLiteral("approve"), {approveKey});
    } else {
        press(QStringLiteral("reject"), {rejectKey});
    }
    pause(60ms);
}

void WorkingUser::markSome() {
    mark(Verdict::Approved);
    walk(1, 100ms);
    mark(Verdict::Rejected);
    walk(1, 100ms);
    mark(Verdict::Rejected); // thinks better of it
    mark(Verdict::Approved);
    walk(2, 100ms);
    mark(Verdict::Approved);
    mark(Verdict::Approved);
    walk(-1, 100ms);
}

void WorkingUser::undo() {
    m_expected.undo();
    press(QStringLiteral("undo"), {XK_Control_L, XK_z});
    pause(200ms);
}

void WorkingUser::zoomAndPan() {
    const QSize window = m_application.window().content.size();
    const QPoint center(window.width() / 2, window.height() / 2);
    const auto turn = [&](int notches) {
        return [this, notches] { m_screen.turnWheel(notches, {XK_Control_L}); };
    };
    const auto type = [&](Key key) { return [this, key] { m_screen.press({XK_Control_L, key}); }; };
    m_screen.movePointer(onScreen(center));
    for (int notch = 0; notch < 4; ++notch) {
        change(QStringLiteral("zoom in, wheel"), detail(), turn(1));
        change(QStringLiteral("zoom in"), detail(), type(XK_equal));
    }
    m_screen.turnWheel(8, {XK_Control_L}); // on to the photo's own pixels
    for (const Key arrow : {XK_Right, XK_Down, XK_Left, XK_Up}) {
        change(QStringLiteral("pan"), detail(), type(arrow));
    }
    m_screen.drag(onScreen(center), {-120, 70});
    for (const int notches : {-1, 1}) {
        change(QStringLiteral("pan, wheel"), detail(), [&] { m_screen.turnWheel(notches); });
    }
    change(QStringLiteral("zoom out, wheel"), detail(), turn(-1));
    change(QStringLiteral("zoom out"), detail(), type(XK_minus));
    press(QStringLiteral("whole photo"), {XK_Control_L, XK_0});
}

void WorkingUser::openFolder() {
    const int photo = m_expected.photo();
    m_expected = ExpectedCulling(m_photos.count());
    const auto start = Clock::now();
    if (!::openFolder(m_screen, m_application, m_photos.folder())) {
        throw std::runtime_error("the folder chooser does not come, or does not go");
    }
    waitFor(QStringLiteral("opening"), [&] { return showsExpected(); });
    m_fileOperations.add(QStringLiteral("open, with the chooser"), millisecondsSince(start));
    goTo(photo);
}

void WorkingUser::work() {
    constexpr int largePictures = 15; // that the application keeps
    walk(15, 60ms);
    walk(-5, 60ms);
    for (int time = 0; time < 3; ++time) {
        markSome();
    }
    for (int time = 0; time < 4; ++time) {
        undo();
    }
    hold(QStringLiteral("right, held"), XK_Right, 1, 330);
    hold(QStringLiteral("left, held"), XK_Left, -1, 30);
    walk(1, 400ms);
    zoomAndPan();
    while ((m_expected.photo() + largePictures + 1) % SoakPhotos::different != 0) {
        walk(1, 60ms);
    }
    walk(largePictures + 1, 400ms);
}

void WorkingUser::move(Verdict verdict, Key key, const std::string& subfolder) {
    std::vector<std::string> names;
    for (const int photo : m_expected.photosWith(verdict)) {
        names.push_back(m_photos.name(photo));
    }
    if (names.empty() || std::ssize(names) == m_expected.count()) {
        return;
    }
    std::ranges::sort(names);
    m_expected.move(verdict);
    const Platform::FileURL folder = m_photos.folder().appendingPathComponent(subfolder);
    const QImage numbers = m_screen.picture(counter()); // change with every move; the photo may look the same
    const auto start = Clock::now();
    m_screen.press({XK_Control_L, key});
    const QString kind = QStringLiteral("move ") + QString::fromStdString(subfolder);
    waitFor(kind, [&] { return m_screen.picture(counter()) != numbers; });
    note(kind, start);
    waitFor(kind, [&] { return exists(folder) && namesIn(folder) == names && showsExpected(); });
    m_fileOperations.add(kind + QStringLiteral(", and the photo"), millisecondsSince(start));
    m_movedPhotos += static_cast<int>(names.size());
}

/// After a move, a photo may first show as the one that stood in its place before, until its large picture comes. What
/// a key does is seen by the number of the photo at once.
void WorkingUser::moveMarkedPhotos() {
    constexpr int steps = 5;
    const std::pair<Verdict, std::pair<Key, std::string>> moves[] = {
        {Verdict::Approved, {XK_a, "approved"}}, {Verdict::Rejected, {XK_r, "rejected"}}};
    for (const auto& [verdict, command] : moves) {
        move(verdict, command.first, command.second);
        for (int step = 0; step < steps; ++step) {
            m_expected.walk(1);
            change(QStringLiteral("right, after a move"), counter(), [&] { m_screen.press({XK_Right}); });
            waitFor(QStringLiteral("right, after a move"), [&] { return showsExpected(); });
        }
    }
    for (const auto& [verdict, command] : moves) {
        m_photos.putBack(command.second);
    }
}
