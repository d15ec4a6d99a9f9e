#pragma once

#include "Vantrel/CullingViewModel.h"

#include <QQuickItem>
#include <qqmlregistration.h>

class QKeyEvent;

/// The screen's five bare keys: the arrows walk, "x" rejects, space approves, "l" keeps the zoom. They are the screen's
/// while it, or an item in it that leaves them alone, has the keyboard focus.
class ReviewKeys : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

    Q_PROPERTY(
        CullingViewModel* viewModel READ viewModel WRITE setViewModel NOTIFY viewModelChanged REQUIRED FINAL)

public:
    using QQuickItem::QQuickItem;

    CullingViewModel* viewModel() const { return m_viewModel; }
    void setViewModel(CullingViewModel* viewModel);

signals:
    void viewModelChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool handle(int key);

    CullingViewModel* m_viewModel = nullptr; // outlives the screen
};
