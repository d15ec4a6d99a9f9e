#pragma once

#include "Platform/FileURL.h"
#include "Platform/Image.h"
#include "Platform/Task.h"
#include "Vantrel/CanvasGeometry.h"
#include "Vantrel/GestureRecognizer.h"
#include "Vantrel/ScrollEvent.h"
#include "Vantrel/TouchTracker.h"

#include <QQuickItem>

#include <functional>
#include <optional>

/// Draws one photo where its geometry puts it, lets the user zoom and move it, and decodes more of its pixels where
/// the zoom needs them. Paints no background of its own.
///
/// Main thread; updatePaintNode runs on the scene graph's render thread while the main thread waits.
class PhotoCanvasView : public QQuickItem {
    Q_OBJECT

public:
    /// Levels of resolution, in pixels on the longer side: the handed-in photo, then larger decodes.
    static constexpr qint64 handedInPixels = 1200;
    static constexpr qint64 resolutionLevels[] = {2400, 4096};
    static constexpr qint64 fullSize = -1; ///< no limit

    /// The scheduler outlives it and does its decoding and waiting.
    explicit PhotoCanvasView(Platform::TaskScheduler& scheduler, QQuickItem* parent = nullptr);

    /// Whether the next photos keep zoom and position instead of being fitted.
    void setKeepZoom(bool keepZoom) { m_keepZoom = keepZoom; }

    /// Receives a short text for the resolution on screen each time it is set anew.
    void setOnResolutionChange(std::function<void(const QString&)> callback);

    /// The photo to show. The same object again changes nothing.
    void setImage(const Platform::Image& image);

    /// The file of the photo, of which larger decodes are made. Another file drops that of the one before.
    void setFullResImageURL(const Platform::FileURL& url);

    /// Where the photo stands.
    const CanvasGeometry& geometry() const { return m_geometry; }

    /// The larger decode that is drawn in place of the photo handed in, or no picture.
    const Platform::Image& displayImage() const { return m_displayImage; }

    /// The picture that is drawn.
    const Platform::Image& activeDisplayImage() const;

    /// The level of resolution on screen.
    qint64 loadedMaxPixels() const { return m_loadedMaxPixels; }

    /// The longer side that the photo occupies at this zoom, in points; 0 without a photo.
    qint64 neededPixels() const;

    /// The level that gives so many pixels.
    static qint64 resolutionFor(qint64 needed);

    /// The short text that names a level.
    static QString resolutionLabel(qint64 level);

    /// One step of a wheel: zooms with Control, and moves the photo without.
    void scrollWheel(const ScrollEvent& event);

    /// Fits and centres the photo.
    void resetToFit();

    /// Starts a larger decode where the zoom needs one; also a smaller one where the full size is more than it needs.
    void loadForCurrentZoom();

    /// Reports the resolution on screen.
    void emitResolution();

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void touchEvent(QTouchEvent* event) override;
    void touchUngrabEvent() override;
    void wheelEvent(QWheelEvent* event) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;

private:
    void clampAndRedraw();
    void setFrameSize(QSizeF size);
    void handleMagnify();
    void handlePan();
    void nativeGesture(const QNativeGestureEvent& event);

    void loadAfterScrolling();
    void show(const Platform::Image& largerDecode, qint64 level);

    QPointF upward(QPointF itemPosition) const;
    QRectF imageRect() const;

    Platform::TaskScheduler& m_scheduler;
    bool m_keepZoom = false;
    std::function<void(const QString&)> m_onResolutionChange;
    Platform::Image m_image;
    Platform::FileURL m_fullResImageURL;
    Platform::Image m_displayImage;
    qint64 m_loadedMaxPixels = handedInPixels;
    std::optional<Platform::Task> m_loadTask;               // the decode in flight
    std::optional<Platform::Task> m_scrollLoadDebounceTask; // the pause after a step of the wheel
    CanvasGeometry m_geometry;

    PanGestureRecognizer m_pan{[this] { handlePan(); }};
    MagnificationGestureRecognizer m_pinch{[this] { handleMagnify(); }};
    TouchTracker m_touches{m_pan, m_pinch};
    QPointF m_lastMousePosition; // in the item
};
