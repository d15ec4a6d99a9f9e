#include "Vantrel/ZoomableImageView.h"

#include "Vantrel/PhotoCanvasView.h"

ZoomableImageView::ZoomableImageView(QQuickItem* parent)
    : QQuickItem(parent), m_canvas(new PhotoCanvasView(this)) {}

void ZoomableImageView::setImage(const Platform::Image& image) {
    if (m_image == image) {
        return;
    }
    m_image = image;
    emit imageChanged();
    polish();
}

void ZoomableImageView::setKeepZoom(bool keepZoom) {
    if (m_keepZoom == keepZoom) {
        return;
    }
    m_keepZoom = keepZoom;
    emit keepZoomChanged();
    polish();
}

void ZoomableImageView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    m_canvas->setSize(newGeometry.size());
}

void ZoomableImageView::updatePolish() {
    m_canvas->setKeepZoom(m_keepZoom);
    m_canvas->setImage(m_image);
}
