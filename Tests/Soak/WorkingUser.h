#pragma once

#include "Tests/EndToEnd/RunningApplication.h"
#include "Tests/EndToEnd/VirtualScreen.h"
#include "Tests/Soak/ExpectedCulling.h"
#include "Tests/Soak/KeyTimes.h"
#include "Tests/Soak/MachineClock.h"
#include "Tests/Soak/SoakPhotos.h"

#include <QRect>

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <vector>

/// Somebody who culls a folder with the application, by keys and wheel, and times with a watch in the hand how long the
/// screen takes to show what each key does. Whatever the screen does not show within `patience` is thrown, as a
/// std::runtime_error.
class WorkingUser {
public:
    /// @param betweenKeys  is called again and again while the user works
    WorkingUser(VirtualScreen& screen, RunningApplication& application, const SoakPhotos& photos,
        std::function<void()> betweenKeys);

    /// Opens the folder, for the first time or anew, and goes on to the photo where the work stopped.
    void openFolder();

    /// Walks through some hundreds of photos, holds the arrows, marks, takes back and zooms; ends on a photo that is as
    /// large as it becomes unzoomed, with as many behind it as the application keeps: the same ones each time.
    void work();

    /// Moves what is marked into its folders, looks at what comes next, and puts all of it back on the disk.
    void moveMarkedPhotos();

    const KeyTimes& keys() const { return m_keys; }

    /// What takes longer the more there is to do: moves and openings.
    const KeyTimes& fileOperations() const { return m_fileOperations; }

    /// Photos that were gone to while the key was held, and those of them that the next key came before.
    int heldPhotos() const { return m_heldPhotos; }
    int passedPhotos() const { return m_passedPhotos; }

    /// Photos moved, and put back.
    int movedPhotos() const { return m_movedPhotos; }

    /// How many photos were walked over at work.
    int walkedPhotos() const { return m_walkedPhotos; }

private:
    using Clock = MachineClock;
    struct Awaited { // a photo that a held key has gone to
        Clock::time_point since;
        int photo;
        Verdict verdict;
    };

    QRect onScreen(const QRect& inWindow) const;
    QPoint onScreen(QPoint inWindow) const;
    QRect detail() const;
    QRect counter() const;
    bool showsExpected() const;
    void waitFor(const QString& what, const std::function<bool()>& isSo) const;
    void waitUntilStill(const QRect& part) const;
    void pause(std::chrono::milliseconds time) const;
    void note(const QString& kind, Clock::time_point asked);

    void press(const QString& kind, const std::vector<Key>& chord);
    void change(const QString& kind, const QRect& part, const std::function<void()>& act);
    void walk(int steps, std::chrono::milliseconds look);
    void hold(const QString& kind, Key key, int step, int count);
    void awaitPhotos(const QString& kind, std::deque<Awaited>& awaited);
    void goTo(int photo);
    void mark(Verdict verdict);
    void markSome();
    void undo();
    void zoomAndPan();
    void move(Verdict verdict, Key key, const std::string& subfolder);

    VirtualScreen& m_screen;
    RunningApplication& m_application;
    const SoakPhotos& m_photos;
    const std::function<void()> m_betweenKeys;
    ExpectedCulling m_expected;
    KeyTimes m_keys;
    KeyTimes m_fileOperations;
    double m_readFromDisk = 0; ///< by the application, in KiB, up to the last key
    int m_heldPhotos = 0;
    int m_passedPhotos = 0;
    int m_movedPhotos = 0;
    int m_walkedPhotos = 0;
};
