#pragma once

#include "Platform/Image.h"

#include <QRectF>
#include <QSGNode>
#include <QSizeF>

#include <vector>

class QQuickWindow;

/// Draws a photo in the scene graph: its handed-in image, and in front of it, tile by tile as they reach the graphics
/// memory, its larger decode. Holds textures only of what the view shows and a little around it. Lives on the render
/// thread.
class PhotoNode final : public QSGNode {
public:
    /// The window outlives it.
    explicit PhotoNode(QQuickWindow& window) : m_window(window) {}

    /// Shows the photo, the whole of it at rect, in points from the view's top left corner.
    ///
    /// @param image         the handed-in picture; its tiles are all there at once
    /// @param displayImage  its larger decode, or no picture; a bounded number of its tiles is added each time
    /// @return whether all is there; otherwise the next frame wants to be shown it again
    bool show(const Platform::Image& image, const Platform::Image& displayImage, const QRectF& rect,
        QSizeF viewSize);

private:
    class Layer;

    Layer& layer(const Platform::Image& image);
    template <typename Predicate>
    void removeLayers(Predicate isUnwanted);

    QQuickWindow& m_window;
    Platform::Image m_image;
    std::vector<Layer*> m_layers; // back to front; children of this node, which owns them
};
