#include "Vantrel/PhotoCanvasView.h"

#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Vantrel/PhotoNode.h"
#include "Vantrel/StandIn.h"

#include <QPointer>

#include <algorithm>
#include <cmath>
#include <memory>

using Platform::FileURL;
using Platform::Image;
using Platform::Result;
using Platform::Task;
using Platform::TaskPriority;

namespace {

/// How long the wheel rests before a larger decode begins.
constexpr std::chrono::milliseconds scrollLoadDelay{400};

} // namespace

PhotoCanvasView::PhotoCanvasView(Platform::TaskScheduler& scheduler, QQuickItem* parent)
    : QQuickItem(parent), m_scheduler(scheduler) {
    setFlag(ItemHasContents);
    setClip(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
}

void PhotoCanvasView::setOnResolutionChange(std::function<void(const QString&)> callback) {
    m_onResolutionChange = std::move(callback);
}

void PhotoCanvasView::setImage(const Image& image) {
    if (m_image == image) {
        return;
    }
    m_image = image;
    m_geometry.imageSize = image.size();
    if (m_keepZoom) {
        clampAndRedraw();
    } else {
        resetToFit();
    }
    if (image.isNull()) {
        update();
    }
}

void PhotoCanvasView::setFullResImageURL(const FileURL& url) {
    if (m_fullResImageURL == url) {
        return;
    }
    m_fullResImageURL = url;
    cancel(m_loadTask);
    m_loadTask.reset();
    m_displayImage = Image();
    m_loadedMaxPixels = handedInPixels;
    emitResolution();
    update();
}

const Image& PhotoCanvasView::activeDisplayImage() const {
    return m_displayImage.isNull() ? m_image : m_displayImage;
}

// Geometry

void PhotoCanvasView::clampAndRedraw() {
    if (m_geometry.clamp()) {
        update();
    }
}

void PhotoCanvasView::resetToFit() {
    if (m_geometry.resetToFit()) {
        update();
    }
}

void PhotoCanvasView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    setFrameSize(newGeometry.size());
}

void PhotoCanvasView::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) {
        update(); // the tiles meet at other device pixels
    }
}

void PhotoCanvasView::setFrameSize(QSizeF size) {
    if (m_geometry.resizeView(size)) {
        update();
    }
}

void PhotoCanvasView::handleMagnify() {
    if (m_image.isNull()) {
        return;
    }
    switch (m_pinch.state()) {
    case GestureState::began:
    case GestureState::changed:
        m_geometry.zoom(1 + m_pinch.magnification(), m_pinch.location());
        m_pinch.setMagnification(0);
        clampAndRedraw();
        break;
    case GestureState::ended:
    case GestureState::cancelled:
        m_geometry.updateFitTracking();
        loadForCurrentZoom();
        break;
    default:
        break;
    }
}

void PhotoCanvasView::handlePan() {
    if (m_image.isNull() || m_pan.state() != GestureState::changed) {
        return;
    }
    m_geometry.imageOffset += m_pan.translation();
    m_pan.setTranslation({});
    clampAndRedraw();
}

void PhotoCanvasView::scrollWheel(const ScrollEvent& event) {
    constexpr double zoomPerDelta = 0.002;
    constexpr double pointsPerLineDelta = 3;
    if (event.isControlPressed) {
        loadAfterScrolling();
        m_geometry.zoom(1 + event.deltaY * zoomPerDelta, upward(event.position));
    } else {
        const double points = event.hasPreciseScrollingDeltas ? 1 : pointsPerLineDelta;
        m_geometry.imageOffset += QPointF(event.scrollingDelta.x(), -event.scrollingDelta.y()) * points;
    }
    clampAndRedraw();
}

/// The geometry's vertical axis grows upward, the item's downward.
QPointF PhotoCanvasView::upward(QPointF itemPosition) const {
    return {itemPosition.x(), m_geometry.viewSize.height() - itemPosition.y()};
}

QRectF PhotoCanvasView::imageRect() const {
    const QSizeF shown = m_geometry.imageSize * m_geometry.zoomScale;
    return {upward(m_geometry.imageOffset) - QPointF(0, shown.height()), shown};
}

// Resolution

qint64 PhotoCanvasView::neededPixels() const {
    const QSizeF size = m_geometry.imageSize;
    return static_cast<qint64>(std::ceil(m_geometry.zoomScale * std::max(size.width(), size.height())));
}

qint64 PhotoCanvasView::resolutionFor(qint64 needed) {
    const auto level =
        std::ranges::find_if(resolutionLevels, [&](qint64 pixels) { return pixels >= needed; });
    return level == std::end(resolutionLevels) ? fullSize : *level;
}

void PhotoCanvasView::loadForCurrentZoom() {
    const qint64 needed = neededPixels();
    if (m_fullResImageURL.isEmpty() || m_image.isNull() || needed <= handedInPixels) {
        return;
    }
    const qint64 target = resolutionFor(needed);
    // The full size stands below every level: zoomed back, it gives way to a smaller decode.
    const bool isOnScreen = target == fullSize ? m_loadedMaxPixels == fullSize : m_loadedMaxPixels >= target;
    if (isOnScreen) {
        return;
    }
    cancel(m_loadTask);
    const auto work = [url = m_fullResImageURL,
                          maxPixelSize = target == fullSize ? 0 : static_cast<int>(target)](
                          const Task& task) { return Platform::decodeImage(url, maxPixelSize, task); };
    const auto deliver = [view = QPointer(this), url = m_fullResImageURL, image = m_image, target](
                             const Result<Image>& decoded) {
        if (view && view->m_fullResImageURL == url && decoded && canStandInFor(image, *decoded)) {
            view->show(decoded->withSize(image.size()), target);
        }
    };
    m_loadTask = m_scheduler.detached(TaskPriority::UserInitiated, work, deliver);
}

void PhotoCanvasView::show(const Image& largerDecode, qint64 level) {
    m_displayImage = largerDecode;
    m_loadedMaxPixels = level;
    emitResolution();
    update();
}

void PhotoCanvasView::loadAfterScrolling() {
    cancel(m_scrollLoadDebounceTask);
    m_scrollLoadDebounceTask = m_scheduler.sleep(scrollLoadDelay, [view = QPointer(this)] {
        if (view) {
            view->loadForCurrentZoom();
        }
    });
}

QString PhotoCanvasView::resolutionLabel(qint64 level) {
    switch (level) {
    case 1200:
        return QStringLiteral("1.6K");
    case 2400:
        return QStringLiteral("2.4K");
    case 4096:
        return QStringLiteral("4K");
    case fullSize:
        return QStringLiteral("Full");
    default:
        return QString::number(level / 1000) + QLatin1Char('K');
    }
}

void PhotoCanvasView::emitResolution() {
    if (m_onResolutionChange) {
        m_onResolutionChange(resolutionLabel(m_loadedMaxPixels));
    }
}

// Drawing

QSGNode* PhotoCanvasView::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData*) {
    std::unique_ptr<PhotoNode> node(static_cast<PhotoNode*>(oldNode));
    if (m_image.isNull()) {
        return nullptr;
    }
    if (!node) {
        node = std::make_unique<PhotoNode>(*window());
    }
    if (!node->show(m_image, m_displayImage, imageRect(), m_geometry.viewSize)) {
        QMetaObject::invokeMethod(this, &QQuickItem::update, Qt::QueuedConnection);
    }
    return node.release();
}
