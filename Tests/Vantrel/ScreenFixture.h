#pragma once

#include "Tests/Vantrel/CullingFixture.h"

#include <QQuickItem>
#include <QQuickView>

/// The main window on a view model whose clock and background work are in the test's hand.
struct ScreenFixture : CullingFixture {
    /// Starts the view model and shows the window; waits until it is exposed and active.
    explicit ScreenFixture(CullingViewModel::FeatureFlags features = {});
    ~ScreenFixture();

    OpenViewModel& model() { return *viewModel; }

    /// The item of that objectName that is in the scene, visible or not; nullptr where there is none.
    QQuickItem* item(const char* objectName) const;

    /// Whether the item of that name is on the screen.
    bool isShown(const char* objectName) const;

    /// Whether the alert of that name is open.
    bool isOpen(const char* objectName) const;

    /// What the window shows once it has drawn all that has changed.
    QImage picture();

    /// Presses and releases a key.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// Clicks the button with that text; fails the test where no such button is on the screen.
    void click(const QString& buttonText);

    /// The button with that text, rather one that is on the screen; nullptr where there is none.
    QQuickItem* button(const QString& text) const;

    std::unique_ptr<QQuickView> window;

private:
    template <typename Predicate>
    QQuickItem* firstItem(Predicate isWanted) const;
};
