#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>

class QKeyEvent;
class QQuickWindow;

/// Sees to it that a held key that presses things (Space, Return, Enter, Escape) belongs to the item that had the focus when
/// it was pressed: its repeats reach no other. Thus a key that closed an alert, or pressed a button which then went away,
/// does not go on to mark a photo. Main thread.
class HeldKeys : public QObject {
public:
    /// Watches the keys of the window, which owns it.
    explicit HeldKeys(QQuickWindow& window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isForAnotherItem(const QKeyEvent& press);
    bool isRepeat(const QKeyEvent& press) const;

    QQuickWindow& m_window;
    int m_key = 0;               // pressed last
    QPointer<QQuickItem> m_item; // that had the focus then
    quint64 m_releaseTime = 0;   // of the key released last, in the window system's milliseconds
};
