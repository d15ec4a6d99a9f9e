#include "Vantrel/ZoomableImageView.h"

#include "Vantrel/PhotoCanvasView.h"

ZoomableImageView::ZoomableImageView(QQuickItem* parent) : QQuickItem(parent) {}

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

void ZoomableImageView::setFullResURL(const Platform::FileURL& url) {
    if (m_fullResURL == url) {
        return;
    }
    m_fullResURL = url;
    emit fullResURLChanged();
    polish();
}

void ZoomableImageView::zoom(double notches) {
    if (m_canvas) {
        m_canvas->scrollWheel(ScrollEvent::ofNotches({0, notches}, true, boundingRect().center()));
    }
}

void ZoomableImageView::pan(double notchesRight, double notchesDown) {
    if (m_canvas) {
        m_canvas->scrollWheel(
            ScrollEvent::ofNotches({notchesRight, notchesDown}, false, boundingRect().center()));
    }
}

void ZoomableImageView::fit() {
    if (m_canvas) {
        m_canvas->resetToFit();
    }
}

void ZoomableImageView::setResolutionInfo(const QString& label) {
    if (m_resolutionInfo == label) {
        return;
    }
    m_resolutionInfo = label;
    emit resolutionInfoChanged();
}

void ZoomableImageView::writeResolutionInfo(const QString& label) {
    if (m_coordinator.parent) {
        m_coordinator.parent->setResolutionInfo(label);
    }
}

void ZoomableImageView::makeCanvas() {
    m_canvas = new PhotoCanvasView(*m_taskScheduler, this);
    m_canvas->setZ(-1); // behind what the screen lays over it
    m_canvas->setOnResolutionChange([this](const QString& label) {
        QMetaObject::invokeMethod(
            this, [this, label] { writeResolutionInfo(label); }, Qt::QueuedConnection);
    });
}

void ZoomableImageView::dropCanvas() {
    delete m_canvas;
    m_canvas = nullptr;
    m_coordinator.parent = nullptr;
}

void ZoomableImageView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (m_canvas) {
        m_canvas->setSize(newGeometry.size());
    }
}

void ZoomableImageView::updatePolish() {
    if (m_image.isNull()) {
        dropCanvas();
        return;
    }
    if (!m_canvas) {
        makeCanvas();
    }
    m_coordinator.parent = this;
    m_canvas->setKeepZoom(m_keepZoom);
    m_canvas->setFullResImageURL(m_fullResURL);
    m_canvas->setImage(m_image);
    m_canvas->setSize(size()); // a new canvas gets its size after its first photo, and so fits it
}
