#include "Vantrel/ScreenKeys.h"

#include <QKeyEvent>

namespace {

/// The key as a layout of Latin letters would give it: letters of other scripts are matched by their place on the
/// keyboard. Key codes are those of the X11 and Wayland keyboards (Linux evdev codes + 8).
int latinKey(const QKeyEvent& event) {
    constexpr int endOfLatinLetters = 0x250;
    const bool isLatin = event.key() < endOfLatinLetters || event.key() >= Qt::Key_Escape;
    if (isLatin) {
        return event.key();
    }
    switch (event.nativeScanCode()) {
    case 27:
        return Qt::Key_R;
    case 32:
        return Qt::Key_O;
    case 38:
        return Qt::Key_A;
    case 46:
        return Qt::Key_L;
    case 52:
        return Qt::Key_Z;
    case 53:
        return Qt::Key_X;
    default:
        return event.key();
    }
}

} // namespace

ScreenKeys::ScreenKeys(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemIsFocusScope);
    setFiltersChildMouseEvents(true);
}

void ScreenKeys::keyPressEvent(QKeyEvent* event) {
    const int key = latinKey(*event);
    const bool isShifted = event->modifiers().testFlag(Qt::ShiftModifier);
    const auto commandModifiers =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (!commandModifiers) {
        event->setAccepted(handleBareKey(key));
    } else if (commandModifiers == Qt::ControlModifier || commandModifiers == Qt::MetaModifier) {
        event->setAccepted(
            handleViewKey(key) || (!isShifted && handleCommandKey(key, event->isAutoRepeat())));
    } else {
        event->ignore();
    }
}

bool ScreenKeys::handleBareKey(int key) {
    switch (key) {
    case Qt::Key_Right:
        m_viewModel->nextPhoto();
        return true;
    case Qt::Key_Left:
        m_viewModel->previousPhoto();
        return true;
    case Qt::Key_X:
        m_viewModel->cycleState();
        return true;
    case Qt::Key_Space:
        m_viewModel->toggleApproved();
        return true;
    case Qt::Key_L:
        return handleCommandKey(key, false);
    case Qt::Key_Escape:
        return focusPhoto();
    default:
        return false;
    }
}

/// The shortcuts of the buttons. Held, only the one that takes back goes on.
bool ScreenKeys::handleCommandKey(int key, bool isRepeated) {
    const auto run = [&](bool isEnabled, auto command) {
        if (isEnabled && (!isRepeated || key == Qt::Key_Z)) {
            (m_viewModel->*command)();
        }
        return isEnabled;
    };
    switch (key) {
    case Qt::Key_O:
        return run(true, &CullingViewModel::openFolder);
    case Qt::Key_Z:
        return run(m_viewModel->canUndo(), &CullingViewModel::undo);
    case Qt::Key_L:
        return run(m_viewModel->isLockZoomFeatureEnabled(), &CullingViewModel::toggleKeepZoom);
    case Qt::Key_A:
        return run(m_viewModel->canMoveApproved(), &CullingViewModel::moveApproved);
    case Qt::Key_R:
        return run(m_viewModel->canMoveRejected(), &CullingViewModel::moveRejected);
    default:
        return false;
    }
}

bool ScreenKeys::handleViewKey(int key) {
    switch (key) {
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the key of "+" without Shift
        m_imageView->zoom(1);
        return true;
    case Qt::Key_Minus:
        m_imageView->zoom(-1);
        return true;
    case Qt::Key_0:
        m_imageView->fit();
        return true;
    case Qt::Key_Left:
        m_imageView->pan(1, 0);
        return true;
    case Qt::Key_Right:
        m_imageView->pan(-1, 0);
        return true;
    case Qt::Key_Up:
        m_imageView->pan(0, 1);
        return true;
    case Qt::Key_Down:
        m_imageView->pan(0, -1);
        return true;
    default:
        return false;
    }
}

bool ScreenKeys::focusPhoto() {
    const bool isNew = !m_photo->hasActiveFocus();
    m_photo->forceActiveFocus();
    return isNew;
}

/// The focus falls back on the scope itself where the item that had it is disabled or hidden.
void ScreenKeys::focusInEvent(QFocusEvent*) {
    if (m_photo->isEnabled()) {
        focusPhoto();
    }
}

bool ScreenKeys::childMouseEventFilter(QQuickItem*, QEvent* event) {
    const bool isPress = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin;
    if (isPress && m_photo->isEnabled()) {
        focusPhoto();
    }
    return false;
}
