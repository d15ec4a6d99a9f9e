#pragma once

#include "Platform/Image.h"
#include "Vantrel/CanvasGeometry.h"

#include <QQuickItem>

/// Draws one photo where its geometry puts it. Paints no background of its own.
///
/// Main thread; updatePaintNode runs on the scene graph's render thread while the main thread waits.
class PhotoCanvasView : public QQuickItem {
    Q_OBJECT

public:
    explicit PhotoCanvasView(QQuickItem* parent = nullptr);

    /// Whether the next photos keep zoom and position instead of being fitted.
    void setKeepZoom(bool keepZoom) { m_keepZoom = keepZoom; }

    /// The photo to show. The same object again changes nothing.
    void setImage(const Platform::Image& image);

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;

private:
    QRectF imageRect() const;

    CanvasGeometry m_geometry;
    Platform::Image m_image;
    bool m_keepZoom = false;
};
