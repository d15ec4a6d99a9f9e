#pragma once

#include <QColor>
#include <QQuickItem>
#include <qqmlregistration.h>

/// The ground of a panel that floats over the picture: a translucent fill in a rectangle with continuous corners, a
/// hairline around it, and a shadow, which falls around the item and not under it. Looks the same on every renderer.
/// Main thread; updatePaintNode runs on the scene graph's render thread while the main thread waits.
class PanelFrame : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

    Q_PROPERTY(QColor fill READ fill WRITE setFill NOTIFY fillChanged FINAL)
    /// Of the corners, in points. The item is to be at least three times as wide and as high.
    Q_PROPERTY(double radius READ radius WRITE setRadius NOTIFY radiusChanged FINAL)

public:
    explicit PanelFrame(QQuickItem* parent = nullptr);

    const QColor& fill() const { return m_fill; }
    void setFill(const QColor& fill);

    double radius() const { return m_radius; }
    void setRadius(double radius);

signals:
    void fillChanged();
    void radiusChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;

private:
    void redraw();

    QColor m_fill = Qt::black;
    double m_radius = 10;
    bool m_isStale = true; // the node's texture is not of these properties
};
