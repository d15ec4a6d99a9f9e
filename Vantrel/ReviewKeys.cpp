#include "Vantrel/ReviewKeys.h"

#include <QKeyEvent>

namespace {

/// The key as a layout of Latin letters would give it: letters of other scripts are matched by their place on the
/// keyboard. Key codes are those of the X11 and Wayland keyboards (Linux evdev codes + 8).
int latinKey(const QKeyEvent& event) {
    constexpr quint32 placeOfX = 53;
    constexpr quint32 placeOfL = 46;
    const bool isLatin = event.key() < 0x100 || event.key() >= Qt::Key_Escape;
    if (isLatin) {
        return event.key();
    }
    switch (event.nativeScanCode()) {
    case placeOfX:
        return Qt::Key_X;
    case placeOfL:
        return Qt::Key_L;
    default:
        return event.key();
    }
}

} // namespace

void ReviewKeys::setViewModel(CullingViewModel* viewModel) {
    if (m_viewModel == viewModel) {
        return;
    }
    m_viewModel = viewModel;
    emit viewModelChanged();
}

void ReviewKeys::keyPressEvent(QKeyEvent* event) {
    constexpr auto commandModifiers = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const bool isBare = !(event->modifiers() & commandModifiers);
    event->setAccepted(isBare && handle(latinKey(*event)));
}

bool ReviewKeys::handle(int key) {
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
        if (!m_viewModel->isLockZoomFeatureEnabled()) {
            return false;
        }
        m_viewModel->setKeepZoom(!m_viewModel->keepZoom());
        return true;
    default:
        return false;
    }
}
