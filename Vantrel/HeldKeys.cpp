#include "Vantrel/HeldKeys.h"

#include "Vantrel/WindowSystem.h"

#include <QKeyEvent>
#include <QQuickWindow>

#include <algorithm>
#include <array>

namespace {

bool pressesThings(int key) {
    constexpr std::array keys{Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape};
    return std::ranges::find(keys, key) != keys.end();
}

} // namespace

HeldKeys::HeldKeys(QQuickWindow& window) : QObject(&window), m_window(window) {
    window.installEventFilter(this);
}

bool HeldKeys::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::KeyRelease) {
        m_releaseTime = static_cast<QKeyEvent*>(event)->timestamp();
    }
    return event->type() == QEvent::KeyPress && isForAnotherItem(*static_cast<QKeyEvent*>(event));
}

bool HeldKeys::isForAnotherItem(const QKeyEvent& press) {
    if (press.key() == m_key && isRepeat(press)) {
        return pressesThings(m_key) && m_item != m_window.activeFocusItem();
    }
    m_key = press.key();
    m_item = m_window.activeFocusItem();
    return false;
}

/// An X server repeats a key by a release and a press of one time, which the toolkit takes for a repeat only where the
/// press is there already when it looks.
bool HeldKeys::isRepeat(const QKeyEvent& press) const {
    return press.isAutoRepeat() || (isOnX11() && press.timestamp() == m_releaseTime);
}
