#pragma once

#include "Tests/Vantrel/CullingFixture.h"
#include "Vantrel/CanvasGeometry.h"

#include <QQuickItem>
#include <QQuickView>

class PhotoCanvasView;

/// The main window on a view model whose clock and background work are in the test's hand.
struct ScreenFixture : CullingFixture {
    /// Starts the view model, shows the window, and opens a folder with photos of these names; none opens no folder.
    explicit ScreenFixture(
        const std::vector<std::string>& photoNames = {}, CullingViewModel::FeatureFlags features = {});
    ~ScreenFixture();

    OpenViewModel& model() { return *viewModel; }

    /// Shows a new window on the view model as it is, in place of one made before; waits until it is exposed and
    /// active.
    void showWindow();

    /// Gives the window that size.
    void resize(QSize size);

    /// The item of that objectName, rather one that is on the screen; nullptr where there is none.
    QQuickItem* item(const char* objectName) const;

    /// Whether the item of that name is on the screen.
    bool isShown(const char* objectName) const;

    /// Whether a text that reads so is on the screen within the item of that name.
    bool hasText(const char* objectName, const QString& text) const;

    /// Whether the alert of that name is open.
    bool isOpen(const char* objectName) const;

    /// What the window shows once it has drawn all that has changed.
    QImage picture();

    /// Where the photo stands once the window has drawn all that has changed.
    const CanvasGeometry& geometry();

    /// Presses and releases a key.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// Presses a key as its system's window would; whether the screen takes it.
    bool takes(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, bool isRepeated = false,
        quint32 scanCode = 0);

    /// Clicks the button with that text; fails the test where no such button is on the screen.
    void click(const QString& buttonText);

    /// The button with that text, rather one that is on the screen; nullptr where there is none.
    QQuickItem* button(const QString& text) const;

    /// The objectName of what has the keyboard focus, or the text of the button that has it.
    QString focused() const;

    /// Presses Tab until the button with that text, or the item of that name, has the focus; fails the test where Tab
    /// does not get there.
    void focus(const QString& name);

    /// Turns the wheel so many notches up in the middle of the window.
    void turnWheel(int notches, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void turnWheelAt(QPointF place, int notches, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// All that keys and pointer can do to the photos and to how they are shown, for comparing.
    QString account();

    std::unique_ptr<QQuickView> window;

private:
    template <typename Predicate>
    QQuickItem* shownItem(Predicate isWanted) const;

    quint64 m_lastWheelStep = 0; // milliseconds
};

/// Middle of an item in its window.
QPoint centreOf(const QQuickItem& item);

/// Where an item stands in its window.
QRectF placeOf(const QQuickItem& item);

extern const std::vector<std::string> threePhotos;
