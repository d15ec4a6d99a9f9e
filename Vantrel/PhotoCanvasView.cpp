#include "Vantrel/PhotoCanvasView.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <memory>

namespace {

/// An image node that knows which image its texture was made of. Lives on the render thread.
class PhotoNode : public QSGNode {
public:
    explicit PhotoNode(QSGImageNode* imageNode) : m_imageNode(imageNode) {
        m_imageNode->setOwnsTexture(true);
        m_imageNode->setFiltering(QSGTexture::Linear);
        appendChildNode(m_imageNode);
    }

    void show(const Platform::Image& image, const QRectF& rect, QQuickWindow* window) {
        if (m_image != image) {
            m_imageNode->setTexture(
                window->createTextureFromImage(image.pixels(), QQuickWindow::TextureIsOpaque));
            m_image = image;
        }
        m_imageNode->setRect(rect);
    }

private:
    QSGImageNode* m_imageNode; // owned by the node tree
    Platform::Image m_image;
};

} // namespace

PhotoCanvasView::PhotoCanvasView(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    setClip(true);
}

void PhotoCanvasView::setImage(const Platform::Image& image) {
    if (m_image == image) {
        return;
    }
    m_image = image;
    m_geometry.imageSize = image.size();
    if (m_keepZoom) {
        m_geometry.clamp();
    } else {
        m_geometry.resetToFit();
    }
    update();
}

void PhotoCanvasView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    m_geometry.resizeView(newGeometry.size());
    update();
}

QRectF PhotoCanvasView::imageRect() const {
    const QSizeF shown = m_geometry.imageSize * m_geometry.zoomScale;
    // The geometry's vertical axis grows upward, the item's downward.
    const double top = m_geometry.viewSize.height() - m_geometry.imageOffset.y() - shown.height();
    return {QPointF(m_geometry.imageOffset.x(), top), shown};
}

QSGNode* PhotoCanvasView::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData*) {
    std::unique_ptr<PhotoNode> node(static_cast<PhotoNode*>(oldNode));
    if (m_image.isNull()) {
        return nullptr;
    }
    if (!node) {
        node = std::make_unique<PhotoNode>(window()->createImageNode());
    }
    node->show(m_image, imageRect(), window());
    return node.release();
}
