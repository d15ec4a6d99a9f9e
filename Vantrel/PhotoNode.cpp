#include "Vantrel/PhotoNode.h"

#include "Vantrel/PhotoTiling.h"

#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGOpacityNode>

#include <algorithm>
#include <limits>
#include <map>
#include <memory>

using Platform::Image;

namespace {

/// Tiles of a larger decode that reach the graphics memory with one frame: 16 MiB, which a slow machine copies in well
/// under a frame's time.
constexpr int uploadsPerFrame = 4;

/// A part of a picture that shares its pixels and keeps them alive.
QImage part(const Image& image, int level, const QRect& rect) {
    const QImage& pixels = image.levels()[static_cast<std::size_t>(level)];
    const uchar* corner =
        pixels.constScanLine(rect.y()) + static_cast<qsizetype>(rect.x()) * pixels.depth() / 8;
    return QImage(
        corner, rect.width(), rect.height(), pixels.bytesPerLine(), pixels.format(),
        [](void* owner) { delete static_cast<Image*>(owner); }, new Image(image));
}

} // namespace

/// One picture of the photo, in tiles. A level's tiles stand under a node of its own, coarse levels behind fine ones.
class PhotoNode::Layer final : public QSGNode {
public:
    Layer(QQuickWindow& window, const Image& image)
        : m_window(window), m_image(image), m_levels(image.levels().size()) {
        for (QSGOpacityNode*& level : m_levels) {
            level = new QSGOpacityNode;
            prependChildNode(level);
        }
    }

    const Image& image() const { return m_image; }

    /// Puts the tiles where they belong, after adding those that are needed, but no more than so many.
    void arrange(const QRectF& rect, QSizeF viewSize, int mostNewTiles) {
        const PhotoTiling tiling(m_image.pixels().size(), static_cast<int>(m_image.levels().size()), rect,
            viewSize, m_window.effectiveDevicePixelRatio());
        const std::vector<TileID> needed = tiling.neededTiles();
        addTiles(tiling, needed, mostNewTiles);
        removeTiles(tiling, needed);
        placeTiles(tiling);
    }

    /// Whether all that the view shows is there.
    bool coversView() const { return m_coversView; }

    /// Whether all that is needed is there.
    bool isComplete() const { return m_isComplete; }

private:
    void addTiles(const PhotoTiling& tiling, const std::vector<TileID>& needed, int mostNewTiles) {
        m_coversView = true;
        m_isComplete = true;
        for (const TileID& tile : needed) {
            if (m_tiles.contains(tile)) {
                continue;
            }
            if (mostNewTiles == 0) {
                m_isComplete = false;
                m_coversView = m_coversView && !tiling.isVisible(tile);
                continue;
            }
            addTile(tile, tiling.texturePixels(tile));
            --mostNewTiles;
        }
    }

    void addTile(const TileID& tile, const QRect& pixels) {
        QSGImageNode* node = m_window.createImageNode();
        node->setOwnsTexture(true);
        node->setTexture(m_window.createTextureFromImage(
            part(m_image, tile.level, pixels), QQuickWindow::TextureIsOpaque));
        m_levels[static_cast<std::size_t>(tile.level)]->appendChildNode(node);
        m_tiles.emplace(tile, node);
    }

    /// Coarser tiles in view stay until the finer ones that hide them are there.
    void removeTiles(const PhotoTiling& tiling, const std::vector<TileID>& needed) {
        std::erase_if(m_tiles, [&](const auto& entry) {
            const auto& [tile, node] = entry;
            const bool standsIn = !m_coversView && tile.level > tiling.finerLevel() && tiling.isVisible(tile);
            if (standsIn || std::ranges::find(needed, tile) != needed.end()) {
                return false;
            }
            delete node;
            return true;
        });
    }

    void placeTiles(const PhotoTiling& tiling) {
        const bool isCrisp = tiling.isCrisp() && !m_image.origin().isReduced;
        for (std::size_t level = 0; level < m_levels.size(); ++level) {
            const bool isFiner = static_cast<int>(level) == tiling.finerLevel();
            m_levels[level]->setOpacity(isFiner ? tiling.finerShare() : 1);
        }
        for (const auto& [tile, node] : m_tiles) {
            const PhotoTiling::Place place = tiling.place(tile);
            node->setRect(place.target);
            node->setSourceRect(place.source);
            node->setFiltering(isCrisp ? QSGTexture::Nearest : QSGTexture::Linear);
        }
    }

    QQuickWindow& m_window;
    const Image m_image;
    std::vector<QSGOpacityNode*> m_levels;   // children of this node, which owns them
    std::map<TileID, QSGImageNode*> m_tiles; // children of the m_levels, which own them
    bool m_coversView = false;
    bool m_isComplete = false;
};

PhotoNode::Layer& PhotoNode::layer(const Image& image) {
    const auto held = std::ranges::find(m_layers, image, &Layer::image);
    if (held != m_layers.end()) {
        return **held;
    }
    auto* layer = new Layer(m_window, image);
    appendChildNode(layer);
    m_layers.push_back(layer);
    return *layer;
}

template <typename Predicate>
void PhotoNode::removeLayers(Predicate isUnwanted) {
    std::erase_if(m_layers, [&](Layer* layer) {
        const bool goes = isUnwanted(layer->image());
        if (goes) {
            delete layer;
        }
        return goes;
    });
}

bool PhotoNode::show(const Image& image, const Image& displayImage, const QRectF& rect, QSizeF viewSize) {
    if (m_image != image) {
        removeLayers([](const Image&) { return true; }); // another photo
        m_image = image;
    }
    layer(image).arrange(rect, viewSize, std::numeric_limits<int>::max());
    Layer& front = layer(displayImage.isNull() ? image : displayImage);
    if (!displayImage.isNull()) {
        front.arrange(rect, viewSize, uploadsPerFrame);
    }
    if (front.coversView()) {
        removeLayers([&](const Image& held) { return held != image && held != front.image(); });
    }
    for (Layer* layer : m_layers) {
        if (layer != &front && layer->image() != image) {
            layer->arrange(rect, viewSize, 0);
        }
    }
    return front.isComplete();
}
