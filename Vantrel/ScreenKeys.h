#pragma once

#include "Vantrel/CullingViewModel.h"
#include "Vantrel/ZoomableImageView.h"

#include <QQuickItem>
#include <qqmlregistration.h>

class QKeyEvent;

/// The screen as the keyboard sees it: a focus scope that has the keys which no item in it takes for itself.
///
/// The bare keys: the arrows walk, "x" rejects, space approves, "l" keeps the zoom. With Control or Super: the
/// shortcuts of the buttons, which do nothing while their button is disabled, and "+", "-", "0" and the arrows, which
/// zoom, fit and move the photo. Escape, and a press of the pointer anywhere, give the focus back to the photo. Main thread.
class ScreenKeys : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

    Q_PROPERTY(CullingViewModel* viewModel MEMBER m_viewModel NOTIFY viewModelChanged REQUIRED FINAL)
    Q_PROPERTY(ZoomableImageView* imageView MEMBER m_imageView NOTIFY imageViewChanged REQUIRED FINAL)
    /// The item that has the focus while no control has it.
    Q_PROPERTY(QQuickItem* photo MEMBER m_photo NOTIFY photoChanged REQUIRED FINAL)

public:
    explicit ScreenKeys(QQuickItem* parent = nullptr);

signals:
    void viewModelChanged();
    void imageViewChanged();
    void photoChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    bool childMouseEventFilter(QQuickItem* item, QEvent* event) override;

private:
    bool handleBareKey(int key);
    bool handleCommandKey(int key, bool isRepeated);
    bool handleViewKey(int key);
    bool focusPhoto();

    CullingViewModel* m_viewModel = nullptr;  // outlives the screen
    ZoomableImageView* m_imageView = nullptr; // a part of the screen
    QQuickItem* m_photo = nullptr;            // a part of the screen
};
