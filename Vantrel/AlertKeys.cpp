#include "Vantrel/AlertKeys.h"

#include <QKeyEvent>

AlertKeys::AlertKeys(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemIsFocusScope);
}

void AlertKeys::keyPressEvent(QKeyEvent* event) {
    const bool asksToDismiss =
        event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (asksToDismiss && !event->isAutoRepeat()) {
        emit dismissed();
    }
    event->accept();
}
