#pragma once

#include "Platform/Image.h"

#include <QQuickItem>
#include <qqmlregistration.h>

class PhotoCanvasView;

/// The place of the photo canvas in the screen. Takes what the screen binds to it and pushes it into the canvas once
/// per update and in a fixed order, since bindings themselves have none.
class ZoomableImageView : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

    Q_PROPERTY(Platform::Image image READ image WRITE setImage NOTIFY imageChanged FINAL)
    Q_PROPERTY(bool keepZoom READ keepZoom WRITE setKeepZoom NOTIFY keepZoomChanged FINAL)

public:
    explicit ZoomableImageView(QQuickItem* parent = nullptr);

    /// The photo to show.
    const Platform::Image& image() const { return m_image; }
    void setImage(const Platform::Image& image);

    /// Whether zoom and position stay when the photo changes.
    bool keepZoom() const { return m_keepZoom; }
    void setKeepZoom(bool keepZoom);

signals:
    void imageChanged();
    void keepZoomChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void updatePolish() override;

private:
    PhotoCanvasView* const m_canvas; // a child item
    Platform::Image m_image;
    bool m_keepZoom = false;
};
