#include "Tests/Vantrel/CanvasFixture.h"

#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Tests/Support/JpegWriter.h"

#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QTest>
#include <QWheelEvent>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

CanvasFixture::CanvasFixture(QSize viewSize) : canvas(new PhotoCanvasView(scheduler, window.contentItem())) {
    window.setColor(Qt::black);
    window.resize(viewSize);
    canvas->setSize(viewSize);
    canvas->setOnResolutionChange([this](const QString& label) { labels.append(label); });
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) {
        throw std::runtime_error("the window does not appear");
    }
}

void CanvasFixture::open(std::string_view name, const QImage& photo) {
    JpegOptions faithful;
    faithful.isSubsampled = false;
    faithful.quality = 100;
    open(folder.write(name, jpegFile(photo, faithful)));
}

void CanvasFixture::open(const Platform::FileURL& file) {
    const auto image = Platform::decodeImage(file, 1200);
    if (!image) {
        throw std::runtime_error("the photo cannot be decoded");
    }
    canvas->setFullResImageURL(file);
    canvas->setImage(*image);
}

void CanvasFixture::turnWheel(QPointF position, QPoint angle, Qt::KeyboardModifiers modifiers) {
    QWheelEvent event(position, window.mapToGlobal(position), QPoint(), angle, Qt::NoButton, modifiers,
        Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window, &event);
}

void CanvasFixture::scroll(QPointF position, QPoint points, Qt::KeyboardModifiers modifiers) {
    constexpr int anglePerPoint = 12; // as Wayland's touchpads have it
    QWheelEvent event(position, window.mapToGlobal(position), points, points * anglePerPoint, Qt::NoButton,
        modifiers, Qt::ScrollUpdate, false);
    QCoreApplication::sendEvent(&window, &event);
}

void CanvasFixture::gesture(
    Qt::NativeGestureType type, QPointF position, double value, QPointF delta, int fingers) {
    constexpr int mostFingers = 5;
    static const QPointingDevice touchpad(QStringLiteral("touchpad"), 1, QInputDevice::DeviceType::TouchPad,
        QPointingDevice::PointerType::Finger, QInputDevice::Capability::Position, mostFingers, 0);
    QNativeGestureEvent event(
        type, &touchpad, fingers, position, position, window.mapToGlobal(position), value, delta);
    QCoreApplication::sendEvent(&window, &event);
}

void CanvasFixture::zoomToNeed(qint64 points) {
    const double zoomNow = geometry().zoomScale;
    const QSizeF size = geometry().imageSize;
    const double zoom = (static_cast<double>(points) - 0.5) / std::max(size.width(), size.height());
    gesture(Qt::ZoomNativeGesture, QRectF(QPointF(), canvas->size()).center(), zoom / zoomNow - 1);
    gesture(Qt::EndNativeGesture);
}

void CanvasFixture::rest() {
    scheduler.advance(std::chrono::milliseconds(400));
    scheduler.runAll();
}

QImage CanvasFixture::picture() {
    QImage last;
    QImage next = window.grabWindow();
    while (next != last) { // tiles come over several frames
        last = next;
        QCoreApplication::processEvents();
        next = window.grabWindow();
    }
    return next;
}

QPointF CanvasFixture::imagePointAt(QPointF position) const {
    const QPointF upward(position.x(), geometry().viewSize.height() - position.y());
    return (upward - geometry().imageOffset) / geometry().zoomScale;
}
