#pragma once

#include <QQuickItem>
#include <qqmlregistration.h>

class QKeyEvent;

/// An alert as the keyboard sees it: a focus scope that lets no key out to what it covers. Main thread.
class AlertKeys : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit AlertKeys(QQuickItem* parent = nullptr);

signals:
    /// Escape, Return or Enter was pressed, and no item in it took it for itself; not by a key that is still held since it
    /// opened the alert.
    void dismissed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
