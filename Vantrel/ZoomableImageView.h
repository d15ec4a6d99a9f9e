#pragma once

#include "Platform/FileURL.h"
#include "Platform/Image.h"
#include "Platform/Task.h"

#include <QQuickItem>
#include <qqmlregistration.h>

class PhotoCanvasView;

/// The place of the photo canvas in the screen. Takes what the screen binds to it and pushes it into the canvas once
/// per update and in a fixed order, since bindings themselves have none; hands back the resolution that the canvas
/// reports. The canvas lives as long as there is a photo to show without a break. Main thread.
class ZoomableImageView : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

    Q_PROPERTY(Platform::TaskScheduler* taskScheduler MEMBER m_taskScheduler NOTIFY taskSchedulerChanged FINAL
            REQUIRED)
    Q_PROPERTY(Platform::Image image READ image WRITE setImage NOTIFY imageChanged FINAL)
    Q_PROPERTY(bool keepZoom READ keepZoom WRITE setKeepZoom NOTIFY keepZoomChanged FINAL)
    Q_PROPERTY(
        Platform::FileURL fullResURL READ fullResURL WRITE setFullResURL NOTIFY fullResURLChanged FINAL)
    Q_PROPERTY(QString resolutionInfo READ resolutionInfo NOTIFY resolutionInfoChanged FINAL)

public:
    explicit ZoomableImageView(QQuickItem* parent = nullptr);

    /// The photo to show.
    const Platform::Image& image() const { return m_image; }
    void setImage(const Platform::Image& image);

    /// Whether zoom and position stay when the photo changes.
    bool keepZoom() const { return m_keepZoom; }
    void setKeepZoom(bool keepZoom);

    /// The photo's file, of which the canvas decodes more pixels where the zoom needs them.
    const Platform::FileURL& fullResURL() const { return m_fullResURL; }
    void setFullResURL(const Platform::FileURL& url);

    /// Zooms about the centre as so many notches of the wheel do: in where positive, out where negative.
    Q_INVOKABLE void zoom(double notches);

    /// Moves the photo to the right and down as so many notches of the wheel do.
    void pan(double notchesRight, double notchesDown);

    /// Shows the whole photo.
    void fit();

    /// The last resolution that a canvas reported, in a short text; empty before the first. Follows the canvas on a
    /// later turn of the event loop, never during an update.
    const QString& resolutionInfo() const { return m_resolutionInfo; }

signals:
    void taskSchedulerChanged();
    void imageChanged();
    void keepZoomChanged();
    void fullResURLChanged();
    void resolutionInfoChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void updatePolish() override;

private:
    /// Carries what the canvas reports to the view that last updated it; nowhere before its first update.
    struct Coordinator {
        ZoomableImageView* parent = nullptr;
    };

    void makeCanvas();
    void dropCanvas();
    void setResolutionInfo(const QString& label);
    void writeResolutionInfo(const QString& label);

    Platform::TaskScheduler* m_taskScheduler = nullptr;
    PhotoCanvasView* m_canvas = nullptr; // a child item; nullptr while there is no photo
    Coordinator m_coordinator;
    Platform::Image m_image;
    bool m_keepZoom = false;
    Platform::FileURL m_fullResURL;
    QString m_resolutionInfo;
};
